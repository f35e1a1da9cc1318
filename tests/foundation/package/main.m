// Reports one purchase and finds its entry in the receipt. The entry is dated February 42: only the
// platform's formatter reads that, as March 14.

#include <stdio.h>

#import "qel/foundation.h"

@interface Payment : NSObject
@end

@implementation Payment
- (NSInteger)quantity {
  return 2;
}
@end

@interface SKProduct : NSObject
@end

@implementation SKProduct
- (NSString*)productIdentifier {
  return @"monthly";
}
- (NSDecimalNumber*)price {
  return [NSDecimalNumber decimalNumberWithMantissa:829 exponent:-2 isNegative:NO];
}
- (NSLocale*)priceLocale {
  return [[[NSLocale alloc] initWithLocaleIdentifier:@"de_DE"] autorelease];
}
- (NSString*)localizedTitle {
  return @"Monthly";
}
@end

@interface SKPaymentTransaction : NSObject
@end

@implementation SKPaymentTransaction
- (NSString*)transactionIdentifier {
  return @"1000";
}
- (SKPaymentTransaction*)originalTransaction {
  return nil;
}
- (NSDate*)transactionDate {
  return [NSDate dateWithTimeIntervalSince1970:1552555613];  // 2019-03-14T09:26:53Z
}
- (Payment*)payment {
  return [[[Payment alloc] init] autorelease];
}
@end

@interface Entry : NSObject <QELInAppPurchaseItem>
@end

@implementation Entry
- (NSString*)productID {
  return @"monthly";
}
- (NSString*)purchaseDateIA5String {
  return @"2019-02-42T09:26:53Z";
}
- (NSNumber*)purchaseType {
  return [NSNumber numberWithInt:3];
}
- (NSNumber*)webOrderLineItemID {
  return nil;
}
- (NSString*)transactionID {
  return @"1000";
}
- (NSString*)originalTransactionID {
  return @"1000";
}
- (BOOL)isFreeTrial {
  return NO;
}
- (BOOL)isIntroductoryOffer {
  return NO;
}
@end

@interface Monitor : NSObject <QELDiagnosticsMonitor>
@end

@implementation Monitor
- (void)logWithLevel:(NSInteger)level messageCode:(NSInteger)code message:(NSString*)message {
  printf("%d\n", (int)code);
}
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context {
  printf("%d %s\n", (int)code, [[context description] UTF8String]);
}
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context1
             context:(id)context2 {
  printf("%d %s %s\n", (int)code, [[context1 description] UTF8String],
         [[context2 description] UTF8String]);
}
@end

// Returns whether matching in `receipt` by product and `date` returns `entry` itself, and matching
// by neither returns nil.
static BOOL isMatched(Entry* entry, NSArray* receipt, NSDate* date) {
  NSArray<id<QELInAppPurchaseItem>>* matching =
      QELMatchingInAppPurchaseItems(receipt, @"monthly", date);
  return [matching count] == 1 && [matching objectAtIndex:0] == entry &&
         QELMatchingInAppPurchaseItems(receipt, nil, nil) == nil;
}

int main(void) {
  @autoreleasepool {
    SKPaymentTransaction* transaction = [[[SKPaymentTransaction alloc] init] autorelease];
    Entry* entry = [[[Entry alloc] init] autorelease];
    NSArray* receipt = [NSArray arrayWithObject:entry];
    QELSetDiagnosticsMonitor([[[Monitor alloc] init] autorelease]);
    NSDictionary<NSString*, id>* event = QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        [[[SKProduct alloc] init] autorelease], transaction, receipt);
    QELSetDiagnosticsMonitor(nil);
    for (NSString* key in [[event allKeys] sortedArrayUsingSelector:@selector(compare:)]) {
      printf("%s = %s\n", [key UTF8String], [[[event objectForKey:key] description] UTF8String]);
    }
    if ([event objectForKey:kQELParameterInAppPurchaseInvalid] != nil) return 1;
    if (!isMatched(entry, receipt, [transaction transactionDate])) return 1;
  }
  return 0;
}
