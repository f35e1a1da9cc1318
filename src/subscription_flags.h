// The conversion and renewal flags of a subscription.

#ifndef QEL_SRC_SUBSCRIPTION_FLAGS_H_
#define QEL_SRC_SUBSCRIPTION_FLAGS_H_

#include "qel/event_parameters.h"
#include "qel/receipt_item.h"

namespace qel {

// Returns whether `item` is the first purchase of its subscription: its two transaction identifiers
// are present and equal.
bool isFirstPurchase(const QELInAppPurchaseItem& item);

// Marks the purchase of `item`, unless it is the first of its subscription: sets "sub_convert" if
// the entry before it in `items` is a free trial, otherwise "sub_renew". An entry that is the first
// of `items`, or not among them, is a renewal. Does nothing if `items` is empty.
//
// `items` are the receipt's entries of one product, earliest first.
void QELMaybeAddSubscriptionParameters(EventParameters& parameters, QELInAppPurchaseItemsView items,
                                       const QELInAppPurchaseItem& item);

}  // namespace qel

#endif  // QEL_SRC_SUBSCRIPTION_FLAGS_H_
