// Purchase events for Objective-C and Swift: the one header that an app includes.
//
// Hand over the store's product and transaction and the receipt's entries as they are, and get the
// event's parameters back.

#ifndef QEL_FOUNDATION_H_
#define QEL_FOUNDATION_H_

#import <Foundation/Foundation.h>

#include "qel/export.h"

#ifndef NS_SWIFT_NAME
#define NS_SWIFT_NAME(name)
#endif

@class SKPaymentTransaction;
@class SKProduct;

NS_ASSUME_NONNULL_BEGIN

// Of the same name for a caller in Objective-C++.
#ifdef __cplusplus
extern "C" {
#endif

// One in-app purchase entry of an app's receipt, as the app's receipt parser reads it. The
// functions below state which operations they ask, and when.
NS_SWIFT_NAME(InAppPurchaseItem)
@protocol QELInAppPurchaseItem <NSObject>

- (nullable NSString*)productID;

// The purchase date as the receipt writes it: 2019-03-14T09:26:53Z.
- (nullable NSString*)purchaseDateIA5String;

// 0 non-consumable, 1 consumable, 2 non-renewing subscription, 3 auto-renewable subscription. Read
// with intValue; nil reads 0.
- (nullable NSNumber*)purchaseType;

// Any number on the entries of subscriptions, otherwise nil. Only its presence and its stringValue
// are used, so that a number of any size enters the deduplication identifier unchanged. A nil
// stringValue counts as an empty one.
- (nullable NSNumber*)webOrderLineItemID;

- (nullable NSString*)transactionID;

// The transaction that began the subscription; a first purchase carries its own identifier here.
- (nullable NSString*)originalTransactionID;

- (BOOL)isFreeTrial;

// Bought at an introductory price.
- (BOOL)isIntroductoryOffer;

@end

// Hears of each decision and each rejection, under a numeric code. A context is what the message is
// about: an NSString or an NSNumber.
//
// Threads: called on every thread that reports a purchase, on several at once. An exception that is
// raised here ends the program.
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

// Keys of an event that the rest of an app looks up: "invalid", "sub_convert" and "sub_renew".
FOUNDATION_EXPORT QEL_EXPORT NSString* const kQELParameterInAppPurchaseInvalid;
FOUNDATION_EXPORT QEL_EXPORT NSString* const kQELParameterIsSubscriptionConversion;
FOUNDATION_EXPORT QEL_EXPORT NSString* const kQELParameterIsSubscriptionRenewal;

// Returns the parameters of the event for one purchase, or nil when the records cannot yield a
// sound event. Names are NSString; identifiers are NSString too, except "_did"; everything else is
// an NSNumber of a signed 64-bit integer (longLongValue), amounts in micros of the currency.
//
// Asks the product for its identifier first. Reports a rejection to the monitor and returns nil if
// the product is nil, its identifier is nil or empty, or the transaction is nil; then neither the
// list nor an entry is asked anything. A nil list counts as an empty one.
//
// Otherwise asks each entry, from first to last, each of its operations once, in the order of the
// protocol. After the last entry, asks the store's objects, each operation when its answer is
// needed. Nothing is asked after the call. The store's record of an introductory offer is looked up
// by name, so that an app may run where the store does not have it yet.
//
// An exception that the list or an entry raises, the one for a list that is changed while it is
// read included, goes through to the caller. One that an object of the store raises ends the
// program.
//
// Threads: any, several calls at once, each with its own arguments.
FOUNDATION_EXPORT QEL_EXPORT
    NSDictionary<NSString*, id>* _Nullable QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        SKProduct* _Nullable product, SKPaymentTransaction* _Nullable transaction,
        NSArray<id<QELInAppPurchaseItem>>* _Nullable receiptItems)
        NS_SWIFT_NAME(inAppPurchaseEventParameters(product:transaction:receiptItems:));

// Returns the entries of `items` that are for the product `productIdentifier` and were bought at
// exactly `date`, earliest first; the last is the latest purchase. Without a date, only the product
// counts; with a nil or empty identifier, only the date. Entries of equal date keep their order in
// `items`.
//
// A date with a fraction of a second matches no entry. An entry without a readable purchase date
// matches no date; where only the product counts, it comes before all dated entries.
//
// The result is a new array of the caller's own entry objects; it is empty if no entry matches. An
// entry that stands twice in `items` is returned twice. Returns nil if `items` is nil or empty, or
// if there is neither an identifier that is not empty nor a date; then no entry is asked anything.
//
// Asks each entry, from first to last, for its purchaseDateIA5String and then for its productID,
// and for nothing else. Nothing is asked after the call.
//
// An exception that the list or an entry raises, the one for a list that is changed while it is
// read included, goes through to the caller.
//
// Threads: any, several calls at once, each with its own list.
FOUNDATION_EXPORT QEL_EXPORT
    NSArray<id<QELInAppPurchaseItem>>* _Nullable QELMatchingInAppPurchaseItems(
        NSArray<id<QELInAppPurchaseItem>>* _Nullable items, NSString* _Nullable productIdentifier,
        NSDate* _Nullable date)
        NS_SWIFT_NAME(matchingInAppPurchaseItems(_:productIdentifier:date:));

// Hands all messages to `monitor` from now on, in place of the one before, and keeps it; nil ends
// that. The one before may still receive the messages that are under way.
//
// Threads: safe from any thread, also while purchases are reported.
FOUNDATION_EXPORT QEL_EXPORT void QELSetDiagnosticsMonitor(
    id<QELDiagnosticsMonitor> _Nullable monitor) NS_SWIFT_NAME(setDiagnosticsMonitor(_:));

#ifdef __cplusplus
}  // extern "C"
#endif

NS_ASSUME_NONNULL_END

#endif  // QEL_FOUNDATION_H_
