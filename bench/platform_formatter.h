// The entry point over Foundation once more, in a library of its own whose dates are read by
// NSDateFormatter. A program has one reader of dates; beside the portable one, this brings the
// other.

#ifndef QEL_BENCH_PLATFORM_FORMATTER_H_
#define QEL_BENCH_PLATFORM_FORMATTER_H_

#include "qel/export.h"
#import "qel/foundation.h"

namespace qel::bench {

// QELInAppPurchaseEventParametersFromProductAndTransactionV2, as a build with
// QEL_DATE_FORMATTER=foundation has it.
QEL_EXPORT NSDictionary<NSString*, id>* eventThroughPlatformFormatter(
    SKProduct* product, SKPaymentTransaction* transaction,
    NSArray<id<QELInAppPurchaseItem>>* receipt);

}  // namespace qel::bench

#endif  // QEL_BENCH_PLATFORM_FORMATTER_H_
