// Stand-ins for the store's records: plain data with the answers set beforehand, and a list of what
// was asked, in order.

#ifndef QEL_TESTS_SUPPORT_STORE_DOUBLES_H_
#define QEL_TESTS_SUPPORT_STORE_DOUBLES_H_

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "qel/store_records.h"
#include "support/asked.h"

namespace qel::testing {

// Appends each call of an operation of the record `name` to a log, if there is one.
class Questioned {
 public:
  Questioned(Asked* asked, std::string name) : asked_(asked), name_(std::move(name)) {}

 protected:
  void note(const char* operation) const {
    if (asked_ != nullptr) asked_->note(name_ + "." + operation);
  }

 private:
  Asked* asked_;
  std::string name_;
};

struct FakeDiscount : StoreProductDiscount, Questioned {
  explicit FakeDiscount(Asked* asked = nullptr) : Questioned(asked, "discount") {}

  std::optional<Decimal> thePrice;
  std::uint64_t thePaymentMode = 0;

  std::optional<Decimal> price() const override {
    note("price");
    return thePrice;
  }
  std::uint64_t paymentMode() const override {
    note("paymentMode");
    return thePaymentMode;
  }
};

struct FakeProduct : StoreProduct, Questioned {
  explicit FakeProduct(Asked* asked = nullptr) : Questioned(asked, "product") {}

  std::optional<std::string> theProductIdentifier;
  std::optional<Decimal> thePrice;
  std::optional<std::string> theCurrencyCode;
  std::optional<std::string> theLocalizedTitle;
  bool platformHasDiscountClass = true;
  bool discountsHavePrice = true;
  bool discountsHavePaymentMode = true;
  bool hasIntroductoryPrice = true;
  const StoreProductDiscount* theIntroductoryPrice = nullptr;

  OptionalText productIdentifier() const override {
    note("productIdentifier");
    return theProductIdentifier;
  }
  std::optional<Decimal> price() const override {
    note("price");
    return thePrice;
  }
  OptionalText priceLocaleCurrencyCode() const override {
    note("priceLocaleCurrencyCode");
    return theCurrencyCode;
  }
  OptionalText localizedTitle() const override {
    note("localizedTitle");
    return theLocalizedTitle;
  }
  bool hasDiscountClass() const override {
    note("hasDiscountClass");
    return platformHasDiscountClass;
  }
  bool discountsAnswerPrice() const override {
    note("discountsAnswerPrice");
    return discountsHavePrice;
  }
  bool discountsAnswerPaymentMode() const override {
    note("discountsAnswerPaymentMode");
    return discountsHavePaymentMode;
  }
  bool answersIntroductoryPrice() const override {
    note("answersIntroductoryPrice");
    return hasIntroductoryPrice;
  }
  const StoreProductDiscount* introductoryPrice() const override {
    note("introductoryPrice");
    return theIntroductoryPrice;
  }
};

struct FakePayment : StorePayment, Questioned {
  explicit FakePayment(Asked* asked = nullptr) : Questioned(asked, "payment") {}

  std::int64_t theQuantity = 0;

  std::int64_t quantity() const override {
    note("quantity");
    return theQuantity;
  }
};

struct FakeTransaction : StoreTransaction, Questioned {
  explicit FakeTransaction(Asked* asked = nullptr, std::string name = "transaction")
      : Questioned(asked, std::move(name)) {}

  std::optional<std::string> theTransactionIdentifier;
  const StoreTransaction* theOriginalTransaction = nullptr;
  std::optional<Instant> theTransactionDate;
  const StorePayment* thePayment = nullptr;

  OptionalText transactionIdentifier() const override {
    note("transactionIdentifier");
    return theTransactionIdentifier;
  }
  const StoreTransaction* originalTransaction() const override {
    note("originalTransaction");
    return theOriginalTransaction;
  }
  std::optional<Instant> transactionDate() const override {
    note("transactionDate");
    return theTransactionDate;
  }
  const StorePayment* payment() const override {
    note("payment");
    return thePayment;
  }
};

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_STORE_DOUBLES_H_
