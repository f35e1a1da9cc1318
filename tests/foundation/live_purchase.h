// One purchase as live objects that are made once.

#ifndef QEL_TESTS_FOUNDATION_LIVE_PURCHASE_H_
#define QEL_TESTS_FOUNDATION_LIVE_PURCHASE_H_

#include "purchase_values.h"
#import "stand_ins.h"

namespace qel::testing {

// A purchase whose objects live as long as it does.
struct LivePurchase {
  explicit LivePurchase(const PurchaseValues& values) : values(values) {
    const ProductValues* const productValues =
        this->values.product ? &*this->values.product : nullptr;
    if (productValues != nullptr) {
      product = [[StandInProductWithOffers alloc] initWithValues:productValues asked:nullptr];
    }
    if (this->values.transaction) {
      transaction = [[StandInTransaction alloc] initWithValues:&*this->values.transaction
                                                         asked:nullptr];
    }
    receipt = [[NSMutableArray alloc] init];
    for (const QELInAppPurchaseItem& item : this->values.receipt) {
      StandInEntry* const entry = [[StandInEntry alloc] initWithValues:&item asked:nullptr];
      [receipt addObject:entry];
      [entry release];
    }
  }
  ~LivePurchase() {
    [product release];
    [transaction release];
    [receipt release];
  }
  LivePurchase(const LivePurchase&) = delete;
  LivePurchase& operator=(const LivePurchase&) = delete;

  // What the entry point makes of it.
  NSDictionary<NSString*, id>* event() const {
    return QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        static_cast<SKProduct*>(product), static_cast<SKPaymentTransaction*>(transaction), receipt);
  }

  // Everyone that could have been kept or let go: as many owners as when they were made.
  bool isOwnedAsBefore() const {
    if (product != nil && [product retainCount] != 1) return false;
    if (transaction != nil && [transaction retainCount] != 1) return false;
    for (NSUInteger i = 0; i < [receipt count]; ++i) {
      if ([[receipt objectAtIndex:i] retainCount] != 1) return false;
    }
    return [receipt retainCount] == 1;
  }

  const PurchaseValues values;
  id product = nil;
  id transaction = nil;
  NSMutableArray* receipt = nil;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_LIVE_PURCHASE_H_
