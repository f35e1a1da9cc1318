// Entries of a receipt in words.

#ifndef QEL_TOOL_EXPLAIN_ENTRY_TEXT_H_
#define QEL_TOOL_EXPLAIN_ENTRY_TEXT_H_

#include <cstdint>
#include <string>

#include "explain/prose.h"
#include "qel/receipt_item.h"

namespace qel::tool {

// How a page marks an entry.
enum class EntryKind : std::uint8_t { kPaid, kFreeTrial, kIntroductoryOffer };

EntryKind kindOf(const QELInAppPurchaseItem& item);

// Returns what was bought, in a word or two: "free trial", "paid period", "consumable".
std::string kindText(const QELInAppPurchaseItem& item);

// Returns the purchase type with its meaning: "type 3 (auto-renewable subscription)".
std::string typeText(const QELInAppPurchaseItem& item);

// Returns the identifiers: "2000 of 1000", or "1000" if both are equal.
Prose identifiersText(const QELInAppPurchaseItem& item);

// Returns what to call the entry in a sentence: its transaction identifier.
Prose nameOf(const QELInAppPurchaseItem& item);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_ENTRY_TEXT_H_
