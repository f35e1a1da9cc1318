// Purchases for benchmarks as live objects, whose operations cost as little as possible.

#ifndef QEL_BENCH_LIVE_PURCHASE_H_
#define QEL_BENCH_LIVE_PURCHASE_H_

#import "qel/foundation.h"
#include "sample_purchases.h"

namespace qel::bench {

struct LivePurchase {
  SKProduct* product;
  SKPaymentTransaction* transaction;
  NSArray<id<QELInAppPurchaseItem>>* receipt;
};

// Returns `sample` as live objects, which are never freed.
LivePurchase livePurchaseOf(const SamplePurchase& sample);

}  // namespace qel::bench

#endif  // QEL_BENCH_LIVE_PURCHASE_H_
