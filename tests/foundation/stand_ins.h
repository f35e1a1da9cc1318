// Objective-C objects that stand in for those of the store and of the app, under the same operation
// names. Each answers from plain values, with fresh objects every time, and notes what it is asked.

#ifndef QEL_TESTS_FOUNDATION_STAND_INS_H_
#define QEL_TESTS_FOUNDATION_STAND_INS_H_

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>
#include <vector>

#include "purchase_values.h"
#import "qel/foundation.h"

// All objects below read values that someone else keeps alive, and note in a list, which may be
// null, what they are asked.

// Answers the operations of an SKProduct before there were introductory offers.
@interface StandInProduct : NSObject {
 @protected
  const qel::testing::ProductValues* values_;
  qel::testing::Asked* asked_;
}
- (instancetype)initWithValues:(const qel::testing::ProductValues*)values
                         asked:(qel::testing::Asked*)asked;
@end

// Answers introductoryPrice too.
@interface StandInProductWithOffers : StandInProduct
@end

// Answers the operations of an SKPaymentTransaction.
@interface StandInTransaction : NSObject {
  const qel::testing::TransactionValues* values_;
  qel::testing::Asked* asked_;
}
- (instancetype)initWithValues:(const qel::testing::TransactionValues*)values
                         asked:(qel::testing::Asked*)asked;
@end

// An entry of the receipt.
@interface StandInEntry : NSObject <QELInAppPurchaseItem> {
  const qel::QELInAppPurchaseItem* values_;
  qel::testing::Asked* asked_;
}
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values
                         asked:(qel::testing::Asked*)asked;
@end

// An entry that adds itself to the list that it stands in, when it is asked for its product.
@interface StandInEntryThatGrowsItsList : StandInEntry {
  NSMutableArray* list_;
}
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values list:(NSMutableArray*)list;
@end

// A number that answers stringValue, with any text or nil, and raises when it is asked anything
// else.
@interface StandInNumber : NSNumber {
  NSString* text_;
}
- (instancetype)initWithText:(NSString*)text;
@end

// Keeps the messages it is told.
@interface StandInMonitor : NSObject <QELDiagnosticsMonitor> {
  std::vector<qel::testing::Diagnostic>* diagnostics_;
}
- (instancetype)initWithList:(std::vector<qel::testing::Diagnostic>*)diagnostics;
@end

namespace qel::testing {

// Registers the class SKProductDiscount with the operations that `discountClass` says, or none.
// A class stays for good: call it once in a process, and see inProcessOfItsOwn.
void registerDiscountClass(const DiscountClass& discountClass);

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

// What the entry point makes of `purchase` when its records are live objects. Appends to
// `performed`, if not null, the operations that the product and its offer are sent by
// performSelector:.
Outcome outcomeOfLiveObjects(const PurchaseValues& purchase, Asked* performed = nullptr);

// The same with `receipt` in place of the purchase's own.
Outcome outcomeWithReceipt(const PurchaseValues& purchase, NSArray* receipt);

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_STAND_INS_H_
