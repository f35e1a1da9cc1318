// The operations of the store's objects that the library calls, under the store framework's names.
// Any object with these operations can replace the store's.

#ifndef QEL_PLATFORM_FOUNDATION_STORE_OPERATIONS_H_
#define QEL_PLATFORM_FOUNDATION_STORE_OPERATIONS_H_

#import <Foundation/Foundation.h>

// An SKProductDiscount. Older systems lack the class, so it is looked up by name at run time.
@protocol QELStoreDiscountOperations <NSObject>
- (NSDecimalNumber*)price;
- (NSUInteger)paymentMode;
@end

// An SKProduct.
@protocol QELStoreProductOperations <NSObject>
- (NSString*)productIdentifier;
- (NSDecimalNumber*)price;
- (NSLocale*)priceLocale;
- (NSString*)localizedTitle;
@optional
- (id<QELStoreDiscountOperations>)introductoryPrice;
@end

// An SKPayment.
@protocol QELStorePaymentOperations <NSObject>
- (NSInteger)quantity;
@end

// An SKPaymentTransaction.
@protocol QELStoreTransactionOperations <NSObject>
- (NSString*)transactionIdentifier;
- (id<QELStoreTransactionOperations>)originalTransaction;
- (NSDate*)transactionDate;
- (id<QELStorePaymentOperations>)payment;
@end

#endif  // QEL_PLATFORM_FOUNDATION_STORE_OPERATIONS_H_
