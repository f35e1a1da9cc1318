// Finds the purchases of a product, or of an instant, in a receipt.

#ifndef QEL_RECEIPT_MATCHING_H_
#define QEL_RECEIPT_MATCHING_H_

#include <optional>

#include "qel/export.h"
#include "qel/instant.h"
#include "qel/receipt_item.h"
#include "qel/text.h"

// Returns the entries of `items` that match, earliest purchase first. An entry matches if its
// product identifier is `productIdentifier` and its purchase date is exactly `date`. An absent or
// empty identifier, or an absent date, is not compared. Entries of equal date keep their order.
//
// An entry whose purchase date cannot be read matches no date. If only the identifier is given, it
// can match, and comes before all dated entries.
//
// The result refers to the caller's own entries. An entry that is in `items` twice is
// returned twice if it matches. The result is empty if no entry matches. It is std::nullopt if
// `items` is empty, or if there is neither an identifier nor a date.
//
// Lets no exception through: if memory runs out, the program ends with std::terminate.
//
// Threads: any, several calls at once; `items` must not change during a call.
[[nodiscard]] QEL_EXPORT std::optional<qel::QELInAppPurchaseItems> QELMatchingInAppPurchaseItems(
    qel::QELInAppPurchaseItemsView items, const qel::OptionalText& productIdentifier,
    const std::optional<qel::Instant>& date) noexcept;

#endif  // QEL_RECEIPT_MATCHING_H_
