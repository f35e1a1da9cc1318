// One purchase as live objects that are made once.

#ifndef QEL_TESTS_FOUNDATION_LIVE_PURCHASE_H_
#define QEL_TESTS_FOUNDATION_LIVE_PURCHASE_H_

#import "live_doubles.h"
#include "support/plain_purchase.h"

namespace qel::testing {

// A purchase whose objects live as long as it does.
struct LivePurchase {
  explicit LivePurchase(const OraclePurchase& purchase)
      : values(purchase), items(plainReceipt(purchase)) {
    if (values.product) {
      product = [[FakeProductWithOffers alloc] initWithValues:&*values.product asked:nullptr];
    }
    if (values.transaction) {
      transaction = [[FakeTransaction alloc] initWithValues:&*values.transaction asked:nullptr];
    }
    @autoreleasepool {
      receipt = [liveEntries(items) retain];
    }
  }
  ~LivePurchase() {
    [product release];
    [transaction release];
    [receipt release];
  }
  LivePurchase(const LivePurchase&) = delete;
  LivePurchase& operator=(const LivePurchase&) = delete;

  // Returns the entry point's event.
  NSDictionary<NSString*, id>* event() const {
    return QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        static_cast<SKProduct*>(product), static_cast<SKPaymentTransaction*>(transaction), receipt);
  }

  // Returns whether every object has as many owners as when it was made.
  bool isOwnedAsBefore() const {
    if (product != nil && [product retainCount] != 1) return false;
    if (transaction != nil && [transaction retainCount] != 1) return false;
    for (NSUInteger i = 0; i < [receipt count]; ++i) {
      if ([[receipt objectAtIndex:i] retainCount] != 1) return false;
    }
    return [receipt retainCount] == 1;
  }

  const OraclePurchase values;
  const std::vector<QELInAppPurchaseItem> items;
  id product = nil;
  id transaction = nil;
  NSMutableArray* receipt = nil;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_LIVE_PURCHASE_H_
