// What the store's objects are asked, under the store framework's own names. Any object that
// answers these operations can stand in the place of the store's.

#ifndef QEL_PLATFORM_FOUNDATION_STORE_OPERATIONS_H_
#define QEL_PLATFORM_FOUNDATION_STORE_OPERATIONS_H_

#import <Foundation/Foundation.h>

// An SKProductDiscount. The class came late to the store, so it is found by its name at run time.
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
