// Store records over plain data, for tests, tools, and apps that hold copies of the store's values.
//
// Example:
//   const qel::PlainProduct product{.productIdentifier = "coins.100",
//                                   .price = qel::Decimal::fromString("8.29"),
//                                   .priceLocaleCurrencyCode = "EUR"};
//   const qel::PlainTransaction transaction{.transactionIdentifier = "1000000512"};
//   const auto event = qel::plainPurchaseEvent(&product, &transaction, receipt);

#ifndef QEL_PLAIN_RECORDS_H_
#define QEL_PLAIN_RECORDS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "qel/purchase_event.h"
#include "qel/receipt_item.h"
#include "qel/store_records.h"

namespace qel {

// The fields have the meanings of the operations of the same names in qel/store_records.h. An
// optional field that is not set is absent, except the quantity, which is 1.

struct PlainDiscount {
  std::optional<Decimal> price = std::nullopt;
  std::uint64_t paymentMode = 0;
};

struct PlainProduct {
  std::optional<std::string> productIdentifier = std::nullopt;
  std::optional<Decimal> price = std::nullopt;
  std::optional<std::string> priceLocaleCurrencyCode = std::nullopt;
  std::optional<std::string> localizedTitle = std::nullopt;
  std::optional<PlainDiscount> introductoryPrice = std::nullopt;

  bool hasDiscountClass = true;
  bool discountsAnswerPrice = true;
  bool discountsAnswerPaymentMode = true;
  bool answersIntroductoryPrice = true;
};

struct PlainOriginalTransaction {
  std::optional<std::string> transactionIdentifier = std::nullopt;
};

struct PlainTransaction {
  std::optional<std::string> transactionIdentifier = std::nullopt;
  std::optional<PlainOriginalTransaction> originalTransaction = std::nullopt;
  std::optional<Instant> transactionDate = std::nullopt;

  // Units of the payment. The transaction has no payment if this is absent.
  std::optional<std::int64_t> quantity = 1;
};

// The records refer to the data that they are made of, which must outlive them. A change of the
// data shows in the next call of an operation.
//
// Threads: safe from any thread while the data does not change.

class PlainDiscountRecord final : public StoreProductDiscount {
 public:
  // `discount` must be present whenever an operation is called.
  explicit PlainDiscountRecord(const std::optional<PlainDiscount>& discount)
      : discount_(discount) {}
  explicit PlainDiscountRecord(std::optional<PlainDiscount>&&) = delete;

  std::optional<Decimal> price() const override { return discount_->price; }
  std::uint64_t paymentMode() const override { return discount_->paymentMode; }

 private:
  const std::optional<PlainDiscount>& discount_;
};

class PlainProductRecord final : public StoreProduct {
 public:
  explicit PlainProductRecord(const PlainProduct& product)
      : product_(product), introductoryPrice_(product.introductoryPrice) {}
  explicit PlainProductRecord(PlainProduct&&) = delete;

  OptionalText productIdentifier() const override { return product_.productIdentifier; }
  std::optional<Decimal> price() const override { return product_.price; }
  OptionalText priceLocaleCurrencyCode() const override { return product_.priceLocaleCurrencyCode; }
  OptionalText localizedTitle() const override { return product_.localizedTitle; }
  bool hasDiscountClass() const override { return product_.hasDiscountClass; }
  bool discountsAnswerPrice() const override { return product_.discountsAnswerPrice; }
  bool discountsAnswerPaymentMode() const override { return product_.discountsAnswerPaymentMode; }
  bool answersIntroductoryPrice() const override { return product_.answersIntroductoryPrice; }
  const StoreProductDiscount* introductoryPrice() const override {
    return product_.introductoryPrice.has_value() ? &introductoryPrice_ : nullptr;
  }

 private:
  const PlainProduct& product_;
  PlainDiscountRecord introductoryPrice_;
};

class PlainPaymentRecord final : public StorePayment {
 public:
  // An absent quantity reads 0.
  explicit PlainPaymentRecord(const std::optional<std::int64_t>& quantity) : quantity_(quantity) {}
  explicit PlainPaymentRecord(std::optional<std::int64_t>&&) = delete;

  std::int64_t quantity() const override { return quantity_.value_or(0); }

 private:
  const std::optional<std::int64_t>& quantity_;
};

// Has an identifier and nothing else: no other operation of an original transaction is ever called.
class PlainOriginalTransactionRecord final : public StoreTransaction {
 public:
  // `original` must be present whenever an operation is called.
  explicit PlainOriginalTransactionRecord(const std::optional<PlainOriginalTransaction>& original)
      : original_(original) {}
  explicit PlainOriginalTransactionRecord(std::optional<PlainOriginalTransaction>&&) = delete;

  OptionalText transactionIdentifier() const override { return original_->transactionIdentifier; }
  const StoreTransaction* originalTransaction() const override { return nullptr; }
  std::optional<Instant> transactionDate() const override { return std::nullopt; }
  const StorePayment* payment() const override { return nullptr; }

 private:
  const std::optional<PlainOriginalTransaction>& original_;
};

class PlainTransactionRecord final : public StoreTransaction {
 public:
  explicit PlainTransactionRecord(const PlainTransaction& transaction)
      : transaction_(transaction),
        original_(transaction.originalTransaction),
        payment_(transaction.quantity) {}
  explicit PlainTransactionRecord(PlainTransaction&&) = delete;

  OptionalText transactionIdentifier() const override { return transaction_.transactionIdentifier; }
  const StoreTransaction* originalTransaction() const override {
    return transaction_.originalTransaction.has_value() ? &original_ : nullptr;
  }
  std::optional<Instant> transactionDate() const override { return transaction_.transactionDate; }
  const StorePayment* payment() const override {
    return transaction_.quantity.has_value() ? &payment_ : nullptr;
  }

 private:
  const PlainTransaction& transaction_;
  PlainOriginalTransactionRecord original_;
  PlainPaymentRecord payment_;
};

// Returns the event of a purchase that is given as plain data, as
// QELInAppPurchaseEventParametersFromProductAndTransactionV2 does for records. Both pointers may be
// null.
[[nodiscard]] inline std::optional<EventParameters> plainPurchaseEvent(
    const PlainProduct* product, const PlainTransaction* transaction,
    QELInAppPurchaseItemsView receiptItems) {
  std::optional<PlainProductRecord> productRecord;
  if (product != nullptr) productRecord.emplace(*product);
  std::optional<PlainTransactionRecord> transactionRecord;
  if (transaction != nullptr) transactionRecord.emplace(*transaction);
  return QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      productRecord.has_value() ? &*productRecord : nullptr,
      transactionRecord.has_value() ? &*transactionRecord : nullptr, receiptItems);
}

}  // namespace qel

#endif  // QEL_PLAIN_RECORDS_H_
