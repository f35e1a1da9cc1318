// Whether a purchase of an auto-renewable subscription converts a free trial or renews.

#ifndef QEL_SRC_SUBSCRIPTION_FLAGS_H_
#define QEL_SRC_SUBSCRIPTION_FLAGS_H_

#include "qel/event_parameters.h"
#include "qel/receipt_item.h"

namespace qel {

// Tells whether `item` is a purchase that continues no earlier one: its two transaction identifiers
// are present and equal.
bool isFirstPurchase(const QELInAppPurchaseItem& item);

// Marks the purchase of `item`, unless it is the first of its subscription: "sub_convert" when the
// entry before it in `items` is a free trial, otherwise "sub_renew". An item that stands first in
// `items`, or not at all, is a renewal. Leaves `parameters` as they are when `items` is empty.
//
// `items` are the receipt's entries of one product, earliest first.
void QELMaybeAddSubscriptionParameters(EventParameters& parameters, QELInAppPurchaseItemsView items,
                                       const QELInAppPurchaseItem& item);

}  // namespace qel

#endif  // QEL_SRC_SUBSCRIPTION_FLAGS_H_
