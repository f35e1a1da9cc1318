// Holding a store transaction against the receipt.

#ifndef QEL_SRC_RECEIPT_VALIDATION_H_
#define QEL_SRC_RECEIPT_VALIDATION_H_

#include <optional>

#include "qel/event_parameters.h"
#include "qel/instant.h"
#include "qel/receipt_item.h"
#include "qel/text.h"

namespace qel {

// Classifies the purchase of `productIdentifier` by the receipt's entries for that product, and
// returns `base` with the keys that record the decision: "invalid", "subscription", "_did",
// "free_trial", "price_is_discounted", "sub_convert" or "sub_renew". They come back unchanged
// when the receipt's one entry has mismatched identifiers, and nothing comes back when they or
// the identifier is empty.
//
// The transaction's own identifier, that of its original transaction, and its date may be absent.
// Each decision is reported to the monitor.
std::optional<EventParameters> QELValidatedInAppPurchaseParameters(
    QELInAppPurchaseItemsView receiptItems, const OptionalText& productIdentifier,
    const OptionalText& transactionIdentifier, const OptionalText& originalTransactionIdentifier,
    const std::optional<Instant>& transactionDate, EventParameters parameters);

}  // namespace qel

#endif  // QEL_SRC_RECEIPT_VALIDATION_H_
