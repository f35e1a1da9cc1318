// The plain data of a purchase that is given to the oracle.

#ifndef QEL_TESTS_SUPPORT_PLAIN_PURCHASE_H_
#define QEL_TESTS_SUPPORT_PLAIN_PURCHASE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "qel/plain_records.h"
#include "qel/receipt_item.h"
#include "reference/event_oracle.h"

namespace qel::testing {

// Returns the text of a price for Decimal::fromString().
inline OracleText priceText(const std::optional<OracleReading>& price) {
  if (!price.has_value()) return std::nullopt;
  return price->kind == OracleReading::Kind::kNotANumber ? "NaN" : price->number.written();
}

inline std::optional<Decimal> plainPrice(const std::optional<OracleReading>& price) {
  if (!price.has_value()) return std::nullopt;
  return Decimal::fromString(*priceText(price)).value();
}

inline std::optional<Instant> plainInstant(const std::optional<OracleInstant>& instant) {
  if (!instant.has_value()) return std::nullopt;
  return Instant(instant->seconds, instant->nanoseconds);
}

inline PlainProduct plainProduct(const OracleProduct& product, const OraclePlatform& platform) {
  PlainProduct plain = {.productIdentifier = product.identifier,
                        .price = plainPrice(product.price),
                        .priceLocaleCurrencyCode = product.currency,
                        .localizedTitle = product.title,
                        .hasDiscountClass = platform.hasDiscountClass,
                        .discountsAnswerPrice = platform.discountsAnswerPrice,
                        .discountsAnswerPaymentMode = platform.discountsAnswerPaymentMode,
                        .answersIntroductoryPrice = product.answersOffer};
  if (const auto& offer = product.offer)
    plain.introductoryPrice = PlainDiscount{plainPrice(offer->price), offer->mode};
  return plain;
}

inline PlainTransaction plainTransaction(const OracleTransaction& transaction) {
  PlainTransaction plain = {.transactionIdentifier = transaction.identifier,
                            .transactionDate = plainInstant(transaction.date),
                            .quantity = transaction.quantity};
  if (const auto& original = transaction.original)
    plain.originalTransaction = PlainOriginalTransaction{original->identifier};
  return plain;
}

inline QELInAppPurchaseItem plainEntry(const OracleEntry& entry) {
  return {.productID = entry.productId,
          .transactionID = entry.transactionId,
          .originalTransactionID = entry.originalId,
          .webOrderLineItemID = entry.webOrder,
          .purchaseDateIA5String = entry.dateText,
          .purchaseType = entry.type,
          .isFreeTrial = entry.isFreeTrial,
          .isIntroductoryOffer = entry.isOffer};
}

inline std::vector<QELInAppPurchaseItem> plainReceipt(const OraclePurchase& purchase) {
  std::vector<QELInAppPurchaseItem> receipt;
  for (const OracleEntry& entry : purchase.receipt) receipt.push_back(plainEntry(entry));
  return receipt;
}

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_PLAIN_PURCHASE_H_
