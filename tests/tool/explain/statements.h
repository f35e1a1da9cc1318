// The oracle for explanations: the statements that they make, and when each is true by the event,
// the messages and the exported matching.

#ifndef QEL_TESTS_TOOL_EXPLAIN_STATEMENTS_H_
#define QEL_TESTS_TOOL_EXPLAIN_STATEMENTS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "explain/prose.h"
#include "purchase.h"
#include "qel/event_parameters.h"
#include "qel/receipt_item.h"

namespace qel::tool::testing {

// What the library returns and logs for a purchase.
struct Truth {
  const Purchase& purchase;
  std::optional<EventParameters> event;
  std::vector<int> codes;
  QELInAppPurchaseItems ofProduct;
  QELInAppPurchaseItems atDate;

  bool hasCode(int code) const { return std::count(codes.begin(), codes.end(), code) > 0; }
  bool has(ParameterKey key) const { return event.has_value() && event->contains(key); }
  // The entry of the product before the one at the transaction's date, or null.
  const QELInAppPurchaseItem* previous() const {
    if (atDate.size() != 1) return nullptr;
    for (std::size_t i = 1; i < ofProduct.size(); ++i) {
      if (&ofProduct[i].get() == &atDate.front().get()) return &ofProduct[i - 1].get();
    }
    return nullptr;
  }
};

std::optional<EventParameters> eventOf(const Purchase& purchase);
Truth truthOf(const Purchase& purchase);

// Returns whether `text` contains `words`.
bool contains(std::string_view text, std::string_view words);

// Returns whether the entry's two identifiers are equal, and whether its date can be read.
bool sameIds(const QELInAppPurchaseItem& item);
bool isReadable(const QELInAppPurchaseItem& item);

// Returns the latest entry of the product, which must have one.
const QELInAppPurchaseItem& latest(const Truth& truth);

OptionalText originalIdentifier(const Truth& truth);

// Returns whether the product's offer cannot be read, or has no price.
bool offerPriceIsUnknown(const Truth& truth);

// Returns how explanations show a text, how they name an entry, and how they begin to name its
// type.
std::string shown(const OptionalText& text);
std::string nameIn(const QELInAppPurchaseItem& item);
std::string typeIn(const QELInAppPurchaseItem& item);

// Returns the micros of the amount at the start of a text such as "-4.99 EUR". Returns std::nullopt
// if it has more than six decimals.
std::optional<std::int64_t> microsOf(std::string_view text);

// Checks that a sentence makes at least one known statement, and that all its known statements are
// true. Returns their number.
int checkSentence(const Prose& sentence, const Truth& truth);

}  // namespace qel::tool::testing

#endif  // QEL_TESTS_TOOL_EXPLAIN_STATEMENTS_H_
