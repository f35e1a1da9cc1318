// Store records over the store's live objects.
//
// Each call of an operation calls the operation of the same name of the object once. An exception
// that an object raises ends the program.

#ifndef QEL_PLATFORM_FOUNDATION_STORE_ADAPTERS_H_
#define QEL_PLATFORM_FOUNDATION_STORE_ADAPTERS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "qel/store_records.h"
#include "store_operations.h"
#include "strong.h"

namespace qel::foundation {

class FoundationDiscount : public StoreProductDiscount {
 public:
  explicit FoundationDiscount(id<QELStoreDiscountOperations> discount) : discount_(discount) {}

  std::optional<Decimal> price() const noexcept override;
  std::uint64_t paymentMode() const noexcept override;

 private:
  const Strong<id<QELStoreDiscountOperations>> discount_;
};

class FoundationProduct : public StoreProduct {
 public:
  explicit FoundationProduct(id<QELStoreProductOperations> product) : product_(product) {}

  OptionalText productIdentifier() const noexcept override;
  std::optional<Decimal> price() const noexcept override;
  OptionalText priceLocaleCurrencyCode() const noexcept override;
  OptionalText localizedTitle() const noexcept override;

  // Looks up the class. The next two operations use the class that was found.
  bool hasDiscountClass() const noexcept override;
  bool discountsAnswerPrice() const noexcept override;
  bool discountsAnswerPaymentMode() const noexcept override;
  bool answersIntroductoryPrice() const noexcept override;
  const StoreProductDiscount* introductoryPrice() const noexcept override;

 private:
  const Strong<id<QELStoreProductOperations>> product_;
  mutable Class discountClass_ = Nil;

  // The last answer of each operation, valid until the operation is called again.
  mutable std::optional<std::string> productIdentifier_;
  mutable std::optional<std::string> currencyCode_;
  mutable std::optional<std::string> localizedTitle_;
  mutable std::optional<FoundationDiscount> introductoryPrice_;
};

class FoundationPayment : public StorePayment {
 public:
  explicit FoundationPayment(id<QELStorePaymentOperations> payment) : payment_(payment) {}

  std::int64_t quantity() const noexcept override;

 private:
  const Strong<id<QELStorePaymentOperations>> payment_;
};

class FoundationTransaction : public StoreTransaction {
 public:
  explicit FoundationTransaction(id<QELStoreTransactionOperations> transaction)
      : transaction_(transaction) {}

  OptionalText transactionIdentifier() const noexcept override;
  const StoreTransaction* originalTransaction() const noexcept override;
  std::optional<Instant> transactionDate() const noexcept override;
  const StorePayment* payment() const noexcept override;

 private:
  const Strong<id<QELStoreTransactionOperations>> transaction_;

  // The last answer of each operation, valid until the operation is called again.
  mutable std::optional<std::string> transactionIdentifier_;
  mutable std::unique_ptr<const FoundationTransaction> originalTransaction_;
  mutable std::optional<FoundationPayment> payment_;
};

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_STORE_ADAPTERS_H_
