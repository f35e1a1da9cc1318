// The validation stage of an event: classifies a purchase by the entries of the receipt.

#ifndef QEL_SRC_RECEIPT_VALIDATION_H_
#define QEL_SRC_RECEIPT_VALIDATION_H_

#include <optional>

#include "qel/event_parameters.h"
#include "qel/instant.h"
#include "qel/receipt_item.h"
#include "qel/text.h"

namespace qel {

// Checks a transaction of `productIdentifier` against the receipt's entries of that product.
// Returns `parameters` with the keys that record the decision: "invalid", "subscription", "_did",
// "free_trial", "price_is_discounted", "sub_convert" or "sub_renew". Returns them unchanged if the
// only entry is not of a subscription and its two transaction identifiers are not equal. Returns
// std::nullopt if `parameters` or `productIdentifier` is empty.
//
// The identifier of the transaction, that of its original transaction, and its date may be absent.
// Each decision is logged, with one exception: a single entry that is not of a subscription and
// whose type is neither 0 nor 1.
std::optional<EventParameters> QELValidatedInAppPurchaseParameters(
    QELInAppPurchaseItemsView receiptItems, const OptionalText& productIdentifier,
    const OptionalText& transactionIdentifier, const OptionalText& originalTransactionIdentifier,
    const std::optional<Instant>& transactionDate, EventParameters&& parameters);

}  // namespace qel

#endif  // QEL_SRC_RECEIPT_VALIDATION_H_
