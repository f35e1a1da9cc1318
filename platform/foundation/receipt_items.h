// Converts the receipt's entries into the library's records.

#ifndef QEL_PLATFORM_FOUNDATION_RECEIPT_ITEMS_H_
#define QEL_PLATFORM_FOUNDATION_RECEIPT_ITEMS_H_

#import "qel/foundation.h"

#include <vector>

#include "qel/receipt_item.h"

namespace qel::foundation {

// Returns the records of all entries of `items`, in their order. Returns an empty vector for nil.
// An exception that the list or an entry raises propagates.
std::vector<QELInAppPurchaseItem> receiptItemsFrom(NSArray<id<QELInAppPurchaseItem>>* items);

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_RECEIPT_ITEMS_H_
