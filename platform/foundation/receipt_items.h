// The receipt's entries as the library's own records.

#ifndef QEL_PLATFORM_FOUNDATION_RECEIPT_ITEMS_H_
#define QEL_PLATFORM_FOUNDATION_RECEIPT_ITEMS_H_

#import "qel/foundation.h"

#include <vector>

#include "qel/receipt_item.h"

namespace qel::foundation {

// Reads every entry of `items`, from first to last; none for nil. Lets through what the list or an
// entry raises.
std::vector<QELInAppPurchaseItem> receiptItemsFrom(NSArray<id<QELInAppPurchaseItem>>* items);

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_RECEIPT_ITEMS_H_
