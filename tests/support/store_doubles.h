// Store records that log each call and pass it on to other records.

#ifndef QEL_TESTS_SUPPORT_STORE_DOUBLES_H_
#define QEL_TESTS_SUPPORT_STORE_DOUBLES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "qel/store_records.h"
#include "support/asked.h"

namespace qel::testing {

// The log and the record that a logged record calls. Both must outlive it.
template <typename Record>
class Logged : public Record {
 public:
  // The log names the record `name`.
  Logged(const Record& record, Asked& asked, std::string name)
      : record_(record), asked_(asked), name_(std::move(name)) {}

 protected:
  template <typename Answer>
  Answer call(const char* operation, Answer (Record::*get)() const) const {
    asked_.note(name_ + "." + operation);
    return (record_.*get)();
  }

  // Returns a logged record of `part`, which `place` owns. Returns null if `part` is null.
  template <typename LoggedPart, typename Part>
  const Part* logged(std::unique_ptr<LoggedPart>& place, const Part* part, const char* name) const {
    place = part != nullptr ? std::make_unique<LoggedPart>(*part, asked_, name) : nullptr;
    return place.get();
  }

 private:
  const Record& record_;
  Asked& asked_;
  std::string name_;
};

struct LoggedDiscount final : Logged<StoreProductDiscount> {
  using Logged::Logged;

  std::optional<Decimal> price() const override {
    return call("price", &StoreProductDiscount::price);
  }
  std::uint64_t paymentMode() const override {
    return call("paymentMode", &StoreProductDiscount::paymentMode);
  }
};

class LoggedProduct final : public Logged<StoreProduct> {
 public:
  LoggedProduct(const StoreProduct& product, Asked& asked) : Logged(product, asked, "product") {}

  OptionalText productIdentifier() const override {
    return call("productIdentifier", &StoreProduct::productIdentifier);
  }
  std::optional<Decimal> price() const override { return call("price", &StoreProduct::price); }
  OptionalText priceLocaleCurrencyCode() const override {
    return call("priceLocaleCurrencyCode", &StoreProduct::priceLocaleCurrencyCode);
  }
  OptionalText localizedTitle() const override {
    return call("localizedTitle", &StoreProduct::localizedTitle);
  }
  bool hasDiscountClass() const override {
    return call("hasDiscountClass", &StoreProduct::hasDiscountClass);
  }
  bool discountsAnswerPrice() const override {
    return call("discountsAnswerPrice", &StoreProduct::discountsAnswerPrice);
  }
  bool discountsAnswerPaymentMode() const override {
    return call("discountsAnswerPaymentMode", &StoreProduct::discountsAnswerPaymentMode);
  }
  bool answersIntroductoryPrice() const override {
    return call("answersIntroductoryPrice", &StoreProduct::answersIntroductoryPrice);
  }
  const StoreProductDiscount* introductoryPrice() const override {
    return logged(discount_, call("introductoryPrice", &StoreProduct::introductoryPrice),
                  "discount");
  }

 private:
  mutable std::unique_ptr<LoggedDiscount> discount_;
};

struct LoggedPayment final : Logged<StorePayment> {
  using Logged::Logged;

  std::int64_t quantity() const override { return call("quantity", &StorePayment::quantity); }
};

class LoggedTransaction final : public Logged<StoreTransaction> {
 public:
  LoggedTransaction(const StoreTransaction& transaction, Asked& asked,
                    const char* name = "transaction")
      : Logged(transaction, asked, name) {}

  OptionalText transactionIdentifier() const override {
    return call("transactionIdentifier", &StoreTransaction::transactionIdentifier);
  }
  const StoreTransaction* originalTransaction() const override {
    return logged(original_, call("originalTransaction", &StoreTransaction::originalTransaction),
                  "original");
  }
  std::optional<Instant> transactionDate() const override {
    return call("transactionDate", &StoreTransaction::transactionDate);
  }
  const StorePayment* payment() const override {
    return logged(payment_, call("payment", &StoreTransaction::payment), "payment");
  }

 private:
  mutable std::unique_ptr<LoggedTransaction> original_;
  mutable std::unique_ptr<LoggedPayment> payment_;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_STORE_DOUBLES_H_
