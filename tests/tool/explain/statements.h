// The statements that explanations make, and when each is true: a second look at what the event,
// the messages and the exported matching say.

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
#include "purchase_reader.h"
#include "qel/event_parameters.h"
#include "qel/receipt_item.h"

namespace qel::tool::testing {

// What the component says about a purchase.
struct Truth {
  const Purchase& purchase;
  std::optional<EventParameters> event;
  std::vector<int> codes;
  QELInAppPurchaseItems ofProduct;
  QELInAppPurchaseItems atDate;

  bool hasCode(int code) const { return std::count(codes.begin(), codes.end(), code) > 0; }
  bool has(ParameterKey key) const { return event.has_value() && event->contains(key); }
  // The entry before the one at the date.
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

// Returns whether the text has the words.
bool contains(std::string_view text, std::string_view words);

// Returns whether the entry's two identifiers are equal, and whether its date can be read.
bool sameIds(const QELInAppPurchaseItem& item);
bool isReadable(const QELInAppPurchaseItem& item);

// The latest entry of the product, which must have one.
const QELInAppPurchaseItem& latest(const Truth& truth);

OptionalText originalIdentifier(const Truth& truth);

// Returns whether the product's offer cannot be read, or has no price.
bool offerPriceIsUnknown(const Truth& truth);

// Returns how explanations show a text, how they name an entry, and how they begin to name its
// type.
std::string shown(const OptionalText& text);
std::string nameIn(const QELInAppPurchaseItem& item);
std::string typeIn(const QELInAppPurchaseItem& item);

// Returns the micros of an amount that a text begins with, such as "-4.99 EUR".
std::optional<std::int64_t> microsOf(std::string_view text);

// Checks a sentence: it makes at least one known statement, and all that it makes are true. Returns
// how many it makes.
int checkSentence(const Prose& sentence, const Truth& truth);

}  // namespace qel::tool::testing

#endif  // QEL_TESTS_TOOL_EXPLAIN_STATEMENTS_H_
