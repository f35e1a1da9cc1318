// What an explanation rests on: the event, the diagnostics, and what the exported matching returns.

#ifndef QEL_TOOL_EXPLAIN_PURCHASE_FACTS_H_
#define QEL_TOOL_EXPLAIN_PURCHASE_FACTS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "purchase.h"
#include "qel/diagnostic_codes.h"
#include "qel/event_parameters.h"
#include "qel/receipt_item.h"

namespace qel::tool {

// A message that the library logged.
struct RecordedDiagnostic {
  int code = 0;
  std::string message;
  std::vector<std::variant<std::string, std::uint64_t>> context;
};

// An input without which a purchase has no event.
enum class MissingInput : std::uint8_t { kCurrency, kPrice, kQuantity };

// Refers to the purchase, which must outlive it.
struct PurchaseFacts {
  const Purchase& purchase;

  // What the library returned and logged.
  std::optional<EventParameters> event = std::nullopt;
  std::vector<RecordedDiagnostic> diagnostics = {};

  // Filled if the purchase has no event and no code that says why: the inputs that the event needs
  // and the purchase does not have. The library returns an event only if all of them are supplied.
  std::vector<MissingInput> missing = {};

  // The event, or the one that the library returns if `missing` is supplied.
  std::optional<EventParameters> classified = std::nullopt;

  // The entries of the product, earliest first, and those of them at the transaction's date.
  QELInAppPurchaseItems ofProduct = {};
  QELInAppPurchaseItems atDate = {};

  // The entry that the purchase is reported as; null if there is none.
  const QELInAppPurchaseItem* reported = nullptr;
  // Whether that entry was found by its date. Else it is the only one of the product.
  bool isFoundByDate = false;

  // The entry of the product right before the reported one; null if there is none.
  const QELInAppPurchaseItem* previous = nullptr;

  bool hasCode(DiagnosticCode code) const;

  // Returns whether the outcome depends on the entries at the transaction's date.
  bool isDateCompared() const;

  // Returns whether `classified` has the flag.
  bool isMarked(ParameterKey flag) const;

  // Views of the purchase's values; absent if the record is.
  OptionalText productIdentifier() const;
  OptionalText currency() const;
  OptionalText transactionIdentifier() const;
  OptionalText originalTransactionIdentifier() const;
  std::optional<Instant> transactionDate() const;
};

// Runs the library on `purchase`. Installs a monitor and removes it again, so no other thread may
// use the library meanwhile.
PurchaseFacts factsOf(const Purchase& purchase);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_PURCHASE_FACTS_H_
