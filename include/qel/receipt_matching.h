// Finding the purchases of a product, or of a moment, in a receipt.

#ifndef QEL_RECEIPT_MATCHING_H_
#define QEL_RECEIPT_MATCHING_H_

#include <optional>

#include "qel/export.h"
#include "qel/instant.h"
#include "qel/receipt_item.h"
#include "qel/text.h"

// Returns the entries of `items` that are for the product `productIdentifier` and were bought at
// exactly `date`, earliest first; the last is the latest purchase. Without a date, only the product
// counts; with an absent or empty identifier, only the date. Entries of equal date keep their order
// in `items`.
//
// An entry without a readable purchase date matches no date. Where only the product counts it is
// taken, and stands before all dated entries.
//
// The result holds references to the caller's own entries; an entry that stands twice in `items` is
// taken twice. It is empty when none matches, and nothing when there is no question to answer:
// `items` is empty, or there is neither an identifier nor a date.
//
// Lets no exception through: if memory runs out, the program ends with std::terminate.
//
// Threads: any, several calls at once; `items` must not change during a call.
QEL_EXPORT std::optional<qel::QELInAppPurchaseItems> QELMatchingInAppPurchaseItems(
    qel::QELInAppPurchaseItemsView items, const qel::OptionalText& productIdentifier,
    const std::optional<qel::Instant>& date) noexcept;

#endif  // QEL_RECEIPT_MATCHING_H_
