// Test doubles for the objects of the store and of the app, under the same operation names. Each
// answers from plain values, with new objects every time, and logs the call.

#ifndef QEL_TESTS_FOUNDATION_LIVE_DOUBLES_H_
#define QEL_TESTS_FOUNDATION_LIVE_DOUBLES_H_

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>
#include <vector>

#include "outcome.h"
#import "qel/foundation.h"

// The values and the log must outlive a double. The log may be null.

// Answers the operations of an SKProduct before there were introductory offers.
@interface FakeProduct : NSObject {
 @protected
  const qel::testing::OracleProduct* values_;
  qel::testing::Asked* asked_;
}
- (instancetype)initWithValues:(const qel::testing::OracleProduct*)values
                         asked:(qel::testing::Asked*)asked;
@end

// Answers introductoryPrice too.
@interface FakeProductWithOffers : FakeProduct
@end

// Answers the operations of an SKPaymentTransaction.
@interface FakeTransaction : NSObject {
  const qel::testing::OracleTransaction* values_;
  qel::testing::Asked* asked_;
}
- (instancetype)initWithValues:(const qel::testing::OracleTransaction*)values
                         asked:(qel::testing::Asked*)asked;
@end

// An entry of the receipt.
@interface FakeEntry : NSObject <QELInAppPurchaseItem> {
  const qel::QELInAppPurchaseItem* values_;
  qel::testing::Asked* asked_;
}
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values
                         asked:(qel::testing::Asked*)asked;
@end

// An entry that adds itself to its list when it is asked for its product.
@interface EntryThatGrowsItsList : FakeEntry {
  NSMutableArray* list_;
}
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values list:(NSMutableArray*)list;
@end

// A number that answers stringValue with any text or nil, and raises for any other operation.
@interface FakeNumber : NSNumber {
  NSString* text_;
}
- (instancetype)initWithText:(NSString*)text;
@end

// Keeps the messages that it receives.
@interface FakeMonitor : NSObject <QELDiagnosticsMonitor> {
  std::vector<qel::testing::Diagnostic>* diagnostics_;
}
- (instancetype)initWithList:(std::vector<qel::testing::Diagnostic>*)diagnostics;
@end

namespace qel::testing {

// Registers the class SKProductDiscount with the operations that `platform` has, or no class. A
// class stays registered: call this once per process, and see inProcessOfItsOwn().
void registerDiscountClass(const OraclePlatform& platform);

// A string of `text`, unpaired surrogates included; nil for absent.
NSString* liveString(const std::optional<std::string>& text);

// A decimal number of `text`; nil for absent.
NSDecimalNumber* liveDecimal(const std::optional<std::string>& text);

// A date of `instant`; nil for absent.
NSDate* liveDate(const std::optional<Instant>& instant);

// A date `time` seconds after 2001 began: any time, also one that no calendar has or that is not a
// number.
NSDate* dateOfTime(double time);

// The text of `string`, read unit by unit.
std::string textOfLiveString(NSString* string);

// The name of the exception that `body` lets through; empty for none.
template <typename Body>
std::string raisedBy(Body body) {
  std::string name;
  @try {
    body();
  } @catch (NSException* exception) {
    name = textOfLiveString([exception name]);
  }
  return name;
}

// Returns doubles for `items`, which must outlive the list. Autoreleased.
NSMutableArray* liveEntries(const std::vector<QELInAppPurchaseItem>& items, Asked* asked = nullptr);

// Returns the outcome of the entry point for `purchase` as live objects. Appends to `performed`, if
// not null, the operations that the product and its offer receive through performSelector:.
Outcome outcomeOfLiveObjects(const OraclePurchase& purchase, Asked* performed = nullptr);

// The same with `receipt` in place of the purchase's own.
Outcome outcomeWithReceipt(const OraclePurchase& purchase, NSArray* receipt);

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_LIVE_DOUBLES_H_
