// Purchases to measure with as live objects: what an app and the store have, at the least cost.

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

// The purchase of `sample`. Its objects stay for good.
LivePurchase livePurchaseOf(const SamplePurchase& sample);

}  // namespace qel::bench

#endif  // QEL_BENCH_LIVE_PURCHASE_H_
