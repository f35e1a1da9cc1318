// What the platform fails at fails as on the platform.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#import "live_doubles.h"

// A product of the store that has gone away.
@interface ProductThatRaises : FakeProduct
@end

@implementation ProductThatRaises
- (NSDecimalNumber*)price {
  [NSException raise:@"StoreHasGoneException" format:@"the store has gone"];
  return nil;
}
@end

@interface MonitorThatRaises : FakeMonitor
@end

@implementation MonitorThatRaises
- (void)logWithLevel:(NSInteger)level messageCode:(NSInteger)code message:(NSString*)message {
  [NSException raise:@"MonitorException" format:@"the monitor has gone"];
}
@end

namespace qel::testing {
namespace {

// The name of the exception that the entry point lets through for `receipt`; empty for none.
std::string raisedFor(NSArray* receipt) {
  const OracleProduct productValues = {.identifier = "monthly"};
  const OracleTransaction transactionValues;
  id const product = [[[FakeProduct alloc] initWithValues:&productValues
                                                    asked:nullptr] autorelease];
  id const transaction = [[[FakeTransaction alloc] initWithValues:&transactionValues
                                                            asked:nullptr] autorelease];
  return raisedBy([&] {
    QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, receipt);
  });
}

NSMutableArray* listThatGrows(const QELInAppPurchaseItem& item) {
  NSMutableArray* const list = [NSMutableArray array];
  [list addObject:[[[EntryThatGrowsItsList alloc] initWithValues:&item list:list] autorelease]];
  return list;
}

TEST(FailureTest, LetsThroughThatTheListWasChangedWhileItWasWalked) {
  @autoreleasepool {
    const QELInAppPurchaseItem item;
    EXPECT_EQ(raisedFor(listThatGrows(item)), "NSGenericException");
  }
}

TEST(FailureTest, LetsThroughThatAnEntryIsNoEntry) {
  @autoreleasepool {
    EXPECT_EQ(raisedFor(@[ @"no entry" ]), "NSInvalidArgumentException");
  }
}

TEST(FailureTest, WorksOnAfterAFailure) {
  @autoreleasepool {
    const QELInAppPurchaseItem item;
    EXPECT_EQ(raisedFor(listThatGrows(item)), "NSGenericException");
    EXPECT_EQ(raisedFor(@[]), "");
  }
}

TEST(FailureTest, KeepsNothingOfAListThatWasChanged) {
  const QELInAppPurchaseItem item;
  NSMutableArray* const list = [[NSMutableArray alloc] init];
  EntryThatGrowsItsList* const entry = [[EntryThatGrowsItsList alloc] initWithValues:&item
                                                                                list:list];
  [list addObject:entry];
  @autoreleasepool {
    EXPECT_EQ(raisedFor(list), "NSGenericException");
  }
  EXPECT_EQ([list retainCount], 1u);
  [list release];
  EXPECT_EQ([entry retainCount], 1u);
  [entry release];
}

constexpr int kTerminated = 3;

// Calls, and catches whatever is let through. The standard library's own handler does not know
// Objective-C's exceptions, and breaks down over them.
void callAndCatch(id product, id transaction) {
  std::set_terminate([] {
    std::fputs("terminated\n", stderr);
    std::_Exit(kTerminated);
  });
  @try {
    QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, nil);
  } @catch (id) {
  }
}

TEST(FailureDeathTest, EndsTheProgramWhenTheStoreRaises) {
  @autoreleasepool {
    const OracleProduct values = {.identifier = "monthly"};
    const OracleTransaction transactionValues;
    id const product = [[[ProductThatRaises alloc] initWithValues:&values
                                                            asked:nullptr] autorelease];
    id const transaction = [[[FakeTransaction alloc] initWithValues:&transactionValues
                                                              asked:nullptr] autorelease];
    EXPECT_EXIT(callAndCatch(product, transaction), ::testing::ExitedWithCode(kTerminated),
                "terminated");
  }
}

TEST(FailureDeathTest, EndsTheProgramWhenTheMonitorRaises) {
  @autoreleasepool {
    std::vector<Diagnostic> diagnostics;
    QELSetDiagnosticsMonitor([[[MonitorThatRaises alloc] initWithList:&diagnostics] autorelease]);
    EXPECT_EXIT(callAndCatch(nil, nil), ::testing::ExitedWithCode(kTerminated), "terminated");
    QELSetDiagnosticsMonitor(nil);
  }
}

}  // namespace
}  // namespace qel::testing
