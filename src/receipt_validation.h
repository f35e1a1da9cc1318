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
// returns `parameters` with the keys that record the decision: "invalid", "subscription", "_did",
// "free_trial", "price_is_discounted", "sub_convert" or "sub_renew". They come back unchanged when
// the receipt's one entry is no subscription and has mismatched identifiers, and nothing comes back
// when they or the identifier is empty.
//
// Takes `parameters` over. The transaction's own identifier, that of its original transaction, and
// its date may be absent. Each decision is reported to the monitor, but for one: a single entry
// that is neither a subscription nor of a type that the store names gets its "_did" in silence.
std::optional<EventParameters> QELValidatedInAppPurchaseParameters(
    QELInAppPurchaseItemsView receiptItems, const OptionalText& productIdentifier,
    const OptionalText& transactionIdentifier, const OptionalText& originalTransactionIdentifier,
    const std::optional<Instant>& transactionDate, EventParameters&& parameters);

}  // namespace qel

#endif  // QEL_SRC_RECEIPT_VALIDATION_H_
