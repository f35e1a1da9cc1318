#import "live_purchase.h"

#include <optional>
#include <string>

// Each operation below returns a field. Objects are never freed, because a benchmark creates few.

@interface BenchProduct : NSObject {
 @public
  NSString* productIdentifier_;
  NSDecimalNumber* price_;
  NSLocale* priceLocale_;
  NSString* localizedTitle_;
}
@end

@implementation BenchProduct
- (NSString*)productIdentifier {
  return productIdentifier_;
}
- (NSDecimalNumber*)price {
  return price_;
}
- (NSLocale*)priceLocale {
  return priceLocale_;
}
- (NSString*)localizedTitle {
  return localizedTitle_;
}
@end

@interface BenchPayment : NSObject
@end

@implementation BenchPayment
- (NSInteger)quantity {
  return 1;
}
@end

@interface BenchTransaction : NSObject {
 @public
  NSString* transactionIdentifier_;
  BenchTransaction* originalTransaction_;
  NSDate* transactionDate_;
  BenchPayment* payment_;
}
@end

@implementation BenchTransaction
- (NSString*)transactionIdentifier {
  return transactionIdentifier_;
}
- (BenchTransaction*)originalTransaction {
  return originalTransaction_;
}
- (NSDate*)transactionDate {
  return transactionDate_;
}
- (BenchPayment*)payment {
  return payment_;
}
@end

@interface BenchEntry : NSObject <QELInAppPurchaseItem> {
 @public
  NSString* productID_;
  NSString* purchaseDateIA5String_;
  NSNumber* purchaseType_;
  NSNumber* webOrderLineItemID_;
  NSString* transactionID_;
  NSString* originalTransactionID_;
}
@end

@implementation BenchEntry
- (NSString*)productID {
  return productID_;
}
- (NSString*)purchaseDateIA5String {
  return purchaseDateIA5String_;
}
- (NSNumber*)purchaseType {
  return purchaseType_;
}
- (NSNumber*)webOrderLineItemID {
  return webOrderLineItemID_;
}
- (NSString*)transactionID {
  return transactionID_;
}
- (NSString*)originalTransactionID {
  return originalTransactionID_;
}
- (BOOL)isFreeTrial {
  return NO;
}
- (BOOL)isIntroductoryOffer {
  return NO;
}
@end

namespace qel::bench {
namespace {

NSString* stringOf(const OptionalText& text) {
  return [[NSString alloc] initWithUTF8String:std::string(*text).c_str()];
}

NSNumber* numberOf(const std::optional<std::int64_t>& number) {
  return [[NSNumber alloc] initWithLongLong:*number];
}

NSDate* dateOf(const Instant& instant) {
  return [[NSDate alloc] initWithTimeIntervalSince1970:static_cast<double>(instant.seconds())];
}

BenchProduct* productOf(const PlainProduct& sample) {
  BenchProduct* const product = [[BenchProduct alloc] init];
  product->productIdentifier_ = stringOf(sample.productIdentifier);
  product->price_ = [[NSDecimalNumber alloc] initWithMantissa:499 exponent:-2 isNegative:NO];
  product->priceLocale_ = [[NSLocale alloc] initWithLocaleIdentifier:@"de_DE"];
  product->localizedTitle_ = stringOf(sample.localizedTitle);
  return product;
}

BenchTransaction* transactionOf(const PlainTransaction& sample) {
  BenchTransaction* const transaction = [[BenchTransaction alloc] init];
  transaction->transactionIdentifier_ = stringOf(sample.transactionIdentifier);
  transaction->originalTransaction_ = [[BenchTransaction alloc] init];
  transaction->originalTransaction_->transactionIdentifier_ =
      stringOf(sample.originalTransaction->transactionIdentifier);
  transaction->transactionDate_ = dateOf(*sample.transactionDate);
  transaction->payment_ = [[BenchPayment alloc] init];
  return transaction;
}

BenchEntry* entryOf(const QELInAppPurchaseItem& sample) {
  BenchEntry* const entry = [[BenchEntry alloc] init];
  entry->productID_ = stringOf(sample.productID);
  entry->purchaseDateIA5String_ = stringOf(sample.purchaseDateIA5String);
  entry->purchaseType_ = numberOf(sample.purchaseType);
  entry->webOrderLineItemID_ = numberOf(std::stoll(*sample.webOrderLineItemID));
  entry->transactionID_ = stringOf(sample.transactionID);
  entry->originalTransactionID_ = stringOf(sample.originalTransactionID);
  return entry;
}

}  // namespace

LivePurchase livePurchaseOf(const SamplePurchase& sample) {
  @autoreleasepool {
    NSMutableArray* const receipt = [[NSMutableArray alloc] init];
    for (const QELInAppPurchaseItem& entry : sample.entries) [receipt addObject:entryOf(entry)];
    id const product = productOf(sample.product);
    id const transaction = transactionOf(sample.transaction);
    return {static_cast<SKProduct*>(product), static_cast<SKPaymentTransaction*>(transaction),
            receipt};
  }
}

}  // namespace qel::bench
