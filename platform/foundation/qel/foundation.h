// Purchase events for Objective-C and Swift. An app includes this header only.
//
// The functions accept the store's live objects and the receipt's entries, and return the event's
// parameters.

#ifndef QEL_FOUNDATION_H_
#define QEL_FOUNDATION_H_

#import <Foundation/Foundation.h>

// Swift sees only those functions of a module whose classes the module declares in full.
#if __has_include(<StoreKit/StoreKit.h>)
#import <StoreKit/StoreKit.h>
#endif

#include "qel/export.h"

#ifndef NS_SWIFT_NAME
#define NS_SWIFT_NAME(name)
#endif

@class SKPaymentTransaction;
@class SKProduct;

NS_ASSUME_NONNULL_BEGIN

// C linkage, so that Objective-C and Objective-C++ find the same functions.
#ifdef __cplusplus
extern "C" {
#endif

// One in-app purchase entry of an app's receipt, implemented by the app's receipt parser. Each
// function below states which operations it calls, and when.
NS_SWIFT_NAME(InAppPurchaseItem)
@protocol QELInAppPurchaseItem <NSObject>

- (nullable NSString*)productID;

// The purchase date, as the text that the receipt has: 2019-03-14T09:26:53Z.
- (nullable NSString*)purchaseDateIA5String;

// 0 non-consumable, 1 consumable, 2 non-renewing subscription, 3 auto-renewable subscription. Read
// with intValue; nil reads 0.
- (nullable NSNumber*)purchaseType;

// Any number on the entries of subscriptions, otherwise nil. Only its presence and its stringValue
// are used, so that a number of any size enters the deduplication identifier unchanged. A nil
// stringValue counts as an empty one.
- (nullable NSNumber*)webOrderLineItemID;

- (nullable NSString*)transactionID;

// The transaction that began the subscription. Equals transactionID on a first purchase.
- (nullable NSString*)originalTransactionID;

- (BOOL)isFreeTrial;

// Bought at an introductory price.
- (BOOL)isIntroductoryOffer;

@end

// Receives each decision and each rejection under a numeric code. A context is a value that the
// message is about, such as the product's identifier: an NSString or an NSNumber.
//
// Threads: called on the thread that reports a purchase, on several threads at once. An exception
// that is raised here ends the program.
NS_SWIFT_NAME(DiagnosticsMonitor)
@protocol QELDiagnosticsMonitor <NSObject>

- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)messageCode
             message:(NSString*)message NS_SWIFT_NAME(log(level:messageCode:message:));

- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)messageCode
             message:(NSString*)message
             context:(id)context NS_SWIFT_NAME(log(level:messageCode:message:context:));

- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)messageCode
             message:(NSString*)message
             context:(id)context1
             context:(id)context2 NS_SWIFT_NAME(log(level:messageCode:message:context:context:));

@end

// Keys of an event: "invalid", "sub_convert" and "sub_renew".
FOUNDATION_EXPORT QEL_EXPORT NSString* const kQELParameterInAppPurchaseInvalid;
FOUNDATION_EXPORT QEL_EXPORT NSString* const kQELParameterIsSubscriptionConversion;
FOUNDATION_EXPORT QEL_EXPORT NSString* const kQELParameterIsSubscriptionRenewal;

// Returns the parameters of the event for one purchase. Returns nil if the product, its identifier
// or the transaction is missing, or if "price", "value" or "currency" would be. "product_id",
// "product_name" and "currency" are NSString. Every other value is an NSNumber with a signed 64-bit
// integer (longLongValue); amounts are in micros of the currency.
//
// Calls the product's productIdentifier first. If the product is nil, its identifier is nil or
// empty, or the transaction is nil, logs a message to the monitor and returns nil without reading
// the list. A nil list counts as an empty one.
//
// Then calls each operation of each entry once, entries from first to last, operations in the order
// of the protocol. Then calls the store's objects, each operation when its answer is needed. Calls
// nothing after it returns. Looks up the class of introductory offers by name at run time, because
// older systems do not have it.
//
// An exception that the list or an entry raises propagates to the caller, including the one for a
// list that changes while it is read. An exception that a store object raises ends the program.
//
// Threads: any, several calls at once, each with its own arguments.
FOUNDATION_EXPORT QEL_EXPORT
    NSDictionary<NSString*, id>* _Nullable QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        SKProduct* _Nullable product, SKPaymentTransaction* _Nullable transaction,
        NSArray<id<QELInAppPurchaseItem>>* _Nullable receiptItems)
        NS_SWIFT_NAME(inAppPurchaseEventParameters(product:transaction:receiptItems:));

// Returns the entries of `items` that match, earliest purchase first. An entry matches if its
// product identifier is `productIdentifier` and its purchase date is exactly `date`. A nil or empty
// identifier, or a nil date, is not compared. Entries of equal date keep their order.
//
// A date with a fraction of a second matches no entry. An entry whose purchase date cannot be read
// matches no date. If only the identifier is given, such an entry comes before all dated entries.
//
// The result is a new array of the caller's own entry objects. It is empty if no entry matches. An
// entry that is in `items` twice is returned twice. Returns nil if `items` is nil or empty, or if
// there is neither a date nor a non-empty identifier. In that case no entry is called.
//
// Calls purchaseDateIA5String and then productID of each entry, from first to last, and nothing
// else. Calls nothing after it returns.
//
// An exception that the list or an entry raises propagates to the caller, including the one for a
// list that changes while it is read.
//
// Threads: any, several calls at once, each with its own list.
FOUNDATION_EXPORT QEL_EXPORT
    NSArray<id<QELInAppPurchaseItem>>* _Nullable QELMatchingInAppPurchaseItems(
        NSArray<id<QELInAppPurchaseItem>>* _Nullable items, NSString* _Nullable productIdentifier,
        NSDate* _Nullable date)
        NS_SWIFT_NAME(matchingInAppPurchaseItems(_:productIdentifier:date:));

// Installs `monitor` in place of the previous one and retains it. Nil removes the monitor. The
// previous monitor may still receive messages that were sent before.
//
// Threads: safe from any thread, also while other threads report purchases.
FOUNDATION_EXPORT QEL_EXPORT void QELSetDiagnosticsMonitor(
    id<QELDiagnosticsMonitor> _Nullable monitor) NS_SWIFT_NAME(setDiagnosticsMonitor(_:));

#ifdef __cplusplus
}  // extern "C"
#endif

NS_ASSUME_NONNULL_END

#endif  // QEL_FOUNDATION_H_
