// Mistakes that an embedder can make, and the warning or error that clang must report for each.
// Clang checks the comments itself (-Xclang -verify). The file is never linked.

#include <memory>
#include <optional>
#include <string>

#include "qel/plain_records.h"
#include "qel/receipt_matching.h"

using qel::Decimal;
using qel::EventParameters;
using qel::Instant;
using qel::OptionalText;
using qel::PlainProduct;
using qel::PlainProductRecord;
using qel::QELInAppPurchaseItem;
using qel::QELInAppPurchaseItemsView;
using qel::QELValue;
using qel::QELValuePtr;

struct StoreObject {
  std::string stdString() const;
  std::optional<std::string> optionalString() const;
};

// A text that ends before the record can be asked for it.
OptionalText viewOfATemporary(const StoreObject& object) {
  // expected-warning@+1 {{returning address of local temporary object}}
  return object.stdString();
}
OptionalText viewOfATemporaryOptional(const StoreObject& object) {
  // expected-warning@+1 {{returning address of local temporary object}}
  return object.optionalString();
}

// An event that ends before the loop over it.
void loopOverATemporary(QELInAppPurchaseItemsView receipt) {
  // expected-warning@+1 {{object backing the pointer will be destroyed}}
  for (const auto& entry : *qel::plainPurchaseEvent(nullptr, nullptr, receipt)) (void)entry;
  // expected-warning@+1 {{object backing the pointer will be destroyed}}
  for (const auto& item : *QELMatchingInAppPurchaseItems(receipt, "coins", {})) (void)item;
}

// Results that were meant to be used.
void dropTheResult(QELInAppPurchaseItemsView receipt, const EventParameters& event) {
  // expected-warning@+1 {{ignoring return value}}
  QELInAppPurchaseEventParametersFromProductAndTransactionV2(nullptr, nullptr, receipt);
  // expected-warning@+1 {{ignoring return value}}
  QELMatchingInAppPurchaseItems(receipt, "coins", std::nullopt);
  Decimal::fromString("8.29");  // expected-warning {{ignoring return value}}
  event.contains("invalid");    // expected-warning {{ignoring return value}}
}

// Values of another kind.
void convertByMistake() {
  // expected-error@+1 {{call to deleted constructor}}
  const PlainProductRecord record(PlainProduct{});
  // expected-error@+1 {{no viable conversion}}
  const int amount = QELValue::initWithInt64(1);
  // expected-error@+1 {{no viable conversion}}
  const Instant instant = 1552555613;
  (void)amount, (void)instant, (void)record;
}

// What must compile without a warning.
void correctUses(QELInAppPurchaseItemsView receipt, const char* mayBeNull) {
  const QELInAppPurchaseItem item{.productID = "coins", .purchaseType = 1};
  const OptionalText text = mayBeNull;
  const auto event =
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(nullptr, nullptr, receipt);
  if (event.has_value()) {
    for (const auto& [key, value] : *event) (void)key, (void)value;
  }
  if (QELValuePtr value = QELValue::initWithInt64(1)) (void)value->int64Value();
  (void)item, (void)text;
}
