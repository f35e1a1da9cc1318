// One purchase as plain values, from which the component's records and the platform's live objects
// are both made, and what comes of it.

#ifndef QEL_TESTS_FOUNDATION_PURCHASE_VALUES_H_
#define QEL_TESTS_FOUNDATION_PURCHASE_VALUES_H_

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "qel/instant.h"
#include "qel/receipt_item.h"
#include "support/recording_monitor.h"
#include "support/store_doubles.h"

namespace qel::testing {

struct DiscountValues {
  // Prices are written as numbers in JSON syntax, or NaN.
  std::optional<std::string> price;
  std::uint64_t paymentMode = 0;
};

struct ProductValues {
  std::optional<std::string> identifier;
  std::optional<std::string> price;
  bool hasLocale = true;
  std::optional<std::string> currencyCode;
  std::optional<std::string> title;
  bool answersIntroductoryPrice = false;
  std::optional<DiscountValues> introductoryPrice;
};

struct TransactionValues {
  std::optional<std::string> identifier;
  bool hasOriginal = false;
  std::optional<std::string> originalIdentifier;
  // Fractions of a second are such that a double holds them exactly.
  std::optional<Instant> date;
  std::optional<std::int64_t> quantity;
};

struct PurchaseValues {
  std::optional<ProductValues> product;
  std::optional<TransactionValues> transaction;
  std::vector<QELInAppPurchaseItem> receipt;
};

// What the platform provides for introductory offers.
struct DiscountClass {
  bool exists = true;
  bool answersPrice = true;
  bool answersPaymentMode = true;
};

// All that can be seen of one call of the component.
struct Outcome {
  using Value = std::variant<std::int64_t, std::string>;

  std::optional<std::map<std::string, Value>> event;
  std::vector<Diagnostic> diagnostics;
  // What the store's records were asked, in order, but for the lookup of the class: nobody can see
  // that in a live object.
  Asked asked;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

// Writes an outcome out for a test that fails.
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

// What the component makes of `purchase` when its records are plain C++.
Outcome outcomeOfPlainRecords(const PurchaseValues& purchase, const DiscountClass& discountClass);

// Returns the outcome that the oracle expects. `asked` is empty: the oracle has no records.
Outcome outcomeOfOracle(const PurchaseValues& purchase, const DiscountClass& discountClass);

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_PURCHASE_VALUES_H_
