#include <iostream>

#include "qel/purchase_event.h"

// The store's records, over whatever the app has. Here: one product, bought once.
class Product : public qel::StoreProduct {
  qel::OptionalText productIdentifier() const override { return "coins.100"; }
  std::optional<qel::Decimal> price() const override { return qel::Decimal::fromString("8.29"); }
  qel::OptionalText priceLocaleCurrencyCode() const override { return "EUR"; }
  qel::OptionalText localizedTitle() const override { return "100 coins"; }
  bool hasDiscountClass() const override { return false; }
  bool discountsAnswerPrice() const override { return false; }
  bool discountsAnswerPaymentMode() const override { return false; }
  bool answersIntroductoryPrice() const override { return false; }
  const qel::StoreProductDiscount* introductoryPrice() const override { return nullptr; }
};

class Payment : public qel::StorePayment {
  std::int64_t quantity() const override { return 2; }
};

class Transaction : public qel::StoreTransaction {
  qel::OptionalText transactionIdentifier() const override { return "1000000512"; }
  const qel::StoreTransaction* originalTransaction() const override { return nullptr; }
  std::optional<qel::Instant> transactionDate() const override { return std::nullopt; }
  const qel::StorePayment* payment() const override { return &payment_; }

  Payment payment_;
};

int main() {
  qel::QELInAppPurchaseItem entry;
  entry.productID = "coins.100";
  entry.purchaseType = 1;  // consumable
  entry.transactionID = "1000000512";
  entry.originalTransactionID = "1000000512";
  entry.purchaseDateIA5String = "2019-03-14T09:26:53Z";
  const qel::QELInAppPurchaseItems receipt = {entry};

  const Product product;
  const Transaction transaction;
  const auto event =
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(&product, &transaction, receipt);
  if (!event.has_value()) return 1;
  for (const auto& [key, value] : *event) {
    std::cout << key << " = ";
    if (const auto text = value.stringValue()) {
      std::cout << *text << '\n';
    } else {
      std::cout << value.int64Value() << '\n';
    }
  }
}
