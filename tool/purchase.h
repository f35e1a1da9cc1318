// One purchase as a line of input gives it: the store's records over plain data, and the receipt.

#ifndef QEL_TOOL_PURCHASE_H_
#define QEL_TOOL_PURCHASE_H_

#include <cstdint>
#include <deque>
#include <optional>

#include "qel/receipt_item.h"
#include "qel/store_records.h"

namespace qel::tool {

struct ReadDiscount final : StoreProductDiscount {
  std::optional<Decimal> readPrice;
  std::uint64_t readPaymentMode = 0;

  std::optional<Decimal> price() const override { return readPrice; }
  std::uint64_t paymentMode() const override { return readPaymentMode; }
};

// What the platform of a purchase knows of introductory offers.
struct ReadPlatform {
  bool hasDiscountClass = true;
  bool discountsAnswerPrice = true;
  bool discountsAnswerPaymentMode = true;
};

struct ReadProduct final : StoreProduct {
  OptionalText readProductIdentifier;
  std::optional<Decimal> readPrice;
  OptionalText readCurrencyCode;
  OptionalText readLocalizedTitle;
  bool readAnswersIntroductoryPrice = false;
  std::optional<ReadDiscount> readIntroductoryPrice;
  ReadPlatform platform;

  OptionalText productIdentifier() const override { return readProductIdentifier; }
  std::optional<Decimal> price() const override { return readPrice; }
  OptionalText priceLocaleCurrencyCode() const override { return readCurrencyCode; }
  OptionalText localizedTitle() const override { return readLocalizedTitle; }
  bool hasDiscountClass() const override { return platform.hasDiscountClass; }
  bool discountsAnswerPrice() const override { return platform.discountsAnswerPrice; }
  bool discountsAnswerPaymentMode() const override { return platform.discountsAnswerPaymentMode; }
  bool answersIntroductoryPrice() const override { return readAnswersIntroductoryPrice; }
  const StoreProductDiscount* introductoryPrice() const override {
    return readIntroductoryPrice.has_value() ? &*readIntroductoryPrice : nullptr;
  }
};

struct ReadPayment final : StorePayment {
  std::int64_t readQuantity = 0;

  std::int64_t quantity() const override { return readQuantity; }
};

// Only the identifier of an original transaction is ever asked.
struct ReadOriginalTransaction final : StoreTransaction {
  OptionalText readTransactionIdentifier;

  OptionalText transactionIdentifier() const override { return readTransactionIdentifier; }
  const StoreTransaction* originalTransaction() const override { return nullptr; }
  std::optional<Instant> transactionDate() const override { return std::nullopt; }
  const StorePayment* payment() const override { return nullptr; }
};

struct ReadTransaction final : StoreTransaction {
  OptionalText readTransactionIdentifier;
  std::optional<ReadOriginalTransaction> readOriginalTransaction;
  std::optional<Instant> readTransactionDate;
  std::optional<ReadPayment> readPayment;

  OptionalText transactionIdentifier() const override { return readTransactionIdentifier; }
  const StoreTransaction* originalTransaction() const override {
    return readOriginalTransaction.has_value() ? &*readOriginalTransaction : nullptr;
  }
  std::optional<Instant> transactionDate() const override { return readTransactionDate; }
  const StorePayment* payment() const override {
    return readPayment.has_value() ? &*readPayment : nullptr;
  }
};

// Texts are views of the line and of the reader's own memory.
struct Purchase {
  OptionalText id;
  std::optional<ReadProduct> product;
  std::optional<ReadTransaction> transaction;
  QELInAppPurchaseItems receipt;

  const StoreProduct* productRecord() const { return product.has_value() ? &*product : nullptr; }
  const StoreTransaction* transactionRecord() const {
    return transaction.has_value() ? &*transaction : nullptr;
  }
};

}  // namespace qel::tool

#endif  // QEL_TOOL_PURCHASE_H_
