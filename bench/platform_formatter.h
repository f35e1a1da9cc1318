// The function for live objects again, in a library that reads dates with NSDateFormatter. A
// program has one date reader, so a benchmark of both needs this second library.

#ifndef QEL_BENCH_PLATFORM_FORMATTER_H_
#define QEL_BENCH_PLATFORM_FORMATTER_H_

#include "qel/export.h"
#import "qel/foundation.h"

namespace qel::bench {

// Calls QELInAppPurchaseEventParametersFromProductAndTransactionV2 as built with
// QEL_DATE_FORMATTER=foundation.
QEL_EXPORT NSDictionary<NSString*, id>* eventThroughPlatformFormatter(
    SKProduct* product, SKPaymentTransaction* transaction,
    NSArray<id<QELInAppPurchaseItem>>* receipt);

}  // namespace qel::bench

#endif  // QEL_BENCH_PLATFORM_FORMATTER_H_
