#import "live_doubles.h"

#import <objc/runtime.h>

#include <cmath>
#include <cstdint>

#include "support/plain_purchase.h"

using qel::testing::Asked;
using qel::testing::Diagnostic;
using qel::testing::liveDate;
using qel::testing::liveDecimal;
using qel::testing::liveString;
using qel::testing::OracleOffer;
using qel::testing::OracleProduct;
using qel::testing::OracleTransaction;
using qel::testing::plainInstant;
using qel::testing::priceText;

namespace {

void note(Asked* asked, const char* operation) {
  if (asked != nullptr) asked->emplace_back(operation);
}

NSNumber* liveInteger(const std::optional<std::int64_t>& integer) {
  return integer.has_value() ? [NSNumber numberWithLongLong:*integer] : nil;
}

// The log of operations sent by performSelector:.
Asked* performedOperations = nullptr;

}  // namespace

// A locale that has any text, or none, for its currency code.
@interface FakeLocale : NSObject {
  const std::optional<std::string>* currencyCode_;
}
@end

@implementation FakeLocale
- (instancetype)initWithCurrencyCode:(const std::optional<std::string>*)currencyCode {
  if ((self = [super init]) != nil) currencyCode_ = currencyCode;
  return self;
}
- (id)objectForKey:(NSString*)key {
  return [key isEqual:NSLocaleCurrencyCode] ? liveString(*currencyCode_) : nil;
}
@end

// What an SKProductDiscount is made of, but for its operations, which come at run time.
@interface FakeDiscount : NSObject {
 @public
  const OracleOffer* values_;
  Asked* asked_;
}
@end

namespace {

// The log of calls to the class itself.
Asked* askedOfDiscountClass = nullptr;

NSDecimalNumber* priceOfDiscount(FakeDiscount* self, SEL) {
  note(self->asked_, "discount.price");
  return liveDecimal(priceText(self->values_->price));
}

NSUInteger paymentModeOfDiscount(FakeDiscount* self, SEL) {
  note(self->asked_, "discount.paymentMode");
  return self->values_->mode;
}

}  // namespace

@implementation FakeDiscount
+ (BOOL)instancesRespondToSelector:(SEL)selector {
  if (sel_isEqual(selector, @selector(price))) {
    note(askedOfDiscountClass, "product.discountsAnswerPrice");
  }
  if (sel_isEqual(selector, @selector(paymentMode))) {
    note(askedOfDiscountClass, "product.discountsAnswerPaymentMode");
  }
  return [super instancesRespondToSelector:selector];
}
- (id)performSelector:(SEL)selector {
  note(performedOperations, sel_getName(selector));
  return [super performSelector:selector];
}
@end

@implementation FakeProduct
- (instancetype)initWithValues:(const OracleProduct*)values asked:(Asked*)asked {
  if ((self = [super init]) != nil) {
    values_ = values;
    asked_ = asked;
  }
  return self;
}
- (NSString*)productIdentifier {
  note(asked_, "product.productIdentifier");
  return liveString(values_->identifier);
}
- (NSDecimalNumber*)price {
  note(asked_, "product.price");
  return liveDecimal(priceText(values_->price));
}
- (id)priceLocale {
  note(asked_, "product.priceLocaleCurrencyCode");
  return [[[FakeLocale alloc] initWithCurrencyCode:&values_->currency] autorelease];
}
- (NSString*)localizedTitle {
  note(asked_, "product.localizedTitle");
  return liveString(values_->title);
}
- (BOOL)respondsToSelector:(SEL)selector {
  if (sel_isEqual(selector, @selector(introductoryPrice))) {
    note(asked_, "product.answersIntroductoryPrice");
  }
  return [super respondsToSelector:selector];
}
- (id)performSelector:(SEL)selector {
  note(performedOperations, sel_getName(selector));
  return [super performSelector:selector];
}
@end

@implementation FakeProductWithOffers
- (id)introductoryPrice {
  note(asked_, "product.introductoryPrice");
  if (!values_->offer.has_value()) return nil;
  FakeDiscount* const discount =
      [[[NSClassFromString(@"SKProductDiscount") alloc] init] autorelease];
  discount->values_ = &*values_->offer;
  discount->asked_ = asked_;
  return discount;
}
@end

// Answers the operation of an SKPayment.
@interface FakePayment : NSObject {
  std::int64_t quantity_;
  Asked* asked_;
}
@end

@implementation FakePayment
- (instancetype)initWithQuantity:(std::int64_t)quantity asked:(Asked*)asked {
  if ((self = [super init]) != nil) {
    quantity_ = quantity;
    asked_ = asked;
  }
  return self;
}
- (NSInteger)quantity {
  note(asked_, "payment.quantity");
  return quantity_;
}
@end

// The transaction that another one continues.
@interface FakeOriginal : NSObject {
  const std::optional<std::string>* identifier_;
  Asked* asked_;
}
@end

@implementation FakeOriginal
- (instancetype)initWithIdentifier:(const std::optional<std::string>*)identifier
                             asked:(Asked*)asked {
  if ((self = [super init]) != nil) {
    identifier_ = identifier;
    asked_ = asked;
  }
  return self;
}
- (NSString*)transactionIdentifier {
  note(asked_, "original.transactionIdentifier");
  return liveString(*identifier_);
}
@end

@implementation FakeTransaction
- (instancetype)initWithValues:(const OracleTransaction*)values asked:(Asked*)asked {
  if ((self = [super init]) != nil) {
    values_ = values;
    asked_ = asked;
  }
  return self;
}
- (NSString*)transactionIdentifier {
  note(asked_, "transaction.transactionIdentifier");
  return liveString(values_->identifier);
}
- (id)originalTransaction {
  note(asked_, "transaction.originalTransaction");
  if (!values_->original.has_value()) return nil;
  return [[[FakeOriginal alloc] initWithIdentifier:&values_->original->identifier
                                             asked:asked_] autorelease];
}
- (NSDate*)transactionDate {
  note(asked_, "transaction.transactionDate");
  return liveDate(plainInstant(values_->date));
}
- (id)payment {
  note(asked_, "transaction.payment");
  if (!values_->quantity.has_value()) return nil;
  return [[[FakePayment alloc] initWithQuantity:*values_->quantity asked:asked_] autorelease];
}
@end

@implementation FakeEntry
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values asked:(Asked*)asked {
  if ((self = [super init]) != nil) {
    values_ = values;
    asked_ = asked;
  }
  return self;
}
- (NSString*)productID {
  note(asked_, "entry.productID");
  return liveString(values_->productID);
}
- (NSString*)purchaseDateIA5String {
  note(asked_, "entry.purchaseDateIA5String");
  return liveString(values_->purchaseDateIA5String);
}
- (NSNumber*)purchaseType {
  note(asked_, "entry.purchaseType");
  return liveInteger(values_->purchaseType);
}
- (NSNumber*)webOrderLineItemID {
  note(asked_, "entry.webOrderLineItemID");
  if (!values_->webOrderLineItemID.has_value()) return nil;
  // The platform writes some decimal numbers in another way than they were read.
  NSString* const text = liveString(values_->webOrderLineItemID);
  return [[[FakeNumber alloc] initWithText:text] autorelease];
}
- (NSString*)transactionID {
  note(asked_, "entry.transactionID");
  return liveString(values_->transactionID);
}
- (NSString*)originalTransactionID {
  note(asked_, "entry.originalTransactionID");
  return liveString(values_->originalTransactionID);
}
- (BOOL)isFreeTrial {
  note(asked_, "entry.isFreeTrial");
  return values_->isFreeTrial;
}
- (BOOL)isIntroductoryOffer {
  note(asked_, "entry.isIntroductoryOffer");
  return values_->isIntroductoryOffer;
}
@end

@implementation EntryThatGrowsItsList
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values list:(NSMutableArray*)list {
  if ((self = [super initWithValues:values asked:nullptr]) != nil) list_ = list;
  return self;
}
- (NSString*)productID {
  [list_ addObject:self];
  return [super productID];
}
@end

@implementation FakeNumber
- (instancetype)initWithText:(NSString*)text {
  if ((self = [super init]) != nil) text_ = [text copy];
  return self;
}
- (void)dealloc {
  [text_ release];
  [super dealloc];
}
- (NSString*)stringValue {
  return text_;
}
@end

@interface DateOfAnyTime : NSDate {
  double time_;
}
@end

@implementation DateOfAnyTime
- (instancetype)initWithTimeIntervalSinceReferenceDate:(NSTimeInterval)time {
  time_ = time;
  return self;
}
- (NSTimeInterval)timeIntervalSinceReferenceDate {
  return time_;
}
@end

@implementation FakeMonitor
- (instancetype)initWithList:(std::vector<Diagnostic>*)diagnostics {
  if ((self = [super init]) != nil) diagnostics_ = diagnostics;
  return self;
}

- (void)noteLevel:(NSInteger)level
             code:(NSInteger)code
          message:(NSString*)message
         contexts:(NSArray*)contexts {
  Diagnostic diagnostic{
      static_cast<int>(level), static_cast<int>(code), qel::testing::textOfLiveString(message), {}};
  for (id context in contexts) {
    if ([context isKindOfClass:[NSString class]]) {
      diagnostic.context.emplace_back(qel::testing::textOfLiveString(context));
    } else {
      diagnostic.context.emplace_back(std::uint64_t{[context unsignedLongLongValue]});
    }
  }
  diagnostics_->push_back(std::move(diagnostic));
}

- (void)logWithLevel:(NSInteger)level messageCode:(NSInteger)code message:(NSString*)message {
  [self noteLevel:level code:code message:message contexts:@[]];
}
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context {
  [self noteLevel:level code:code message:message contexts:@[ context ]];
}
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context1
             context:(id)context2 {
  [self noteLevel:level code:code message:message contexts:@[ context1, context2 ]];
}
@end

namespace qel::testing {

void registerDiscountClass(const OraclePlatform& platform) {
  if (!platform.hasDiscountClass) return;
  const Class made = objc_allocateClassPair([FakeDiscount class], "SKProductDiscount", 0);
  if (platform.discountsAnswerPrice) {
    class_addMethod(made, @selector(price), reinterpret_cast<IMP>(priceOfDiscount), "@@:");
  }
  if (platform.discountsAnswerPaymentMode) {
    class_addMethod(made, @selector(paymentMode), reinterpret_cast<IMP>(paymentModeOfDiscount),
                    "Q@:");
  }
  objc_registerClassPair(made);
}

NSString* liveString(const std::optional<std::string>& text) {
  if (!text.has_value()) return nil;
  NSMutableString* const string = [NSMutableString string];
  std::size_t start = 0;
  const auto appendUpTo = [&](std::size_t end) {
    NSString* const piece = [[NSString alloc] initWithBytes:text->data() + start
                                                     length:end - start
                                                   encoding:NSUTF8StringEncoding];
    [string appendString:piece];
    [piece release];
  };
  // Characters of three bytes are put in by their number: unpaired surrogates, which no encoding of
  // the platform knows, and byte order marks, which all leave out, are among them.
  for (std::size_t at = 0; at < text->size(); ++at) {
    const auto byte = [&](std::size_t offset) {
      return static_cast<unsigned char>((*text)[at + offset]);
    };
    if ((byte(0) & 0xF0) != 0xE0) continue;
    appendUpTo(at);
    [string appendFormat:@"%C", static_cast<unichar>((byte(0) & 0x0F) << 12 |
                                                     (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F))];
    start = at + 3;
  }
  appendUpTo(text->size());
  return [[string copy] autorelease];
}

NSDecimalNumber* liveDecimal(const std::optional<std::string>& text) {
  if (!text.has_value()) return nil;
  if (*text == "NaN") return [NSDecimalNumber notANumber];
  return [NSDecimalNumber decimalNumberWithString:liveString(text)];
}

NSDate* liveDate(const std::optional<Instant>& instant) {
  if (!instant.has_value()) return nil;
  constexpr std::int64_t kReferenceDate = 978307200;
  return [NSDate dateWithTimeIntervalSinceReferenceDate:static_cast<double>(instant->seconds() -
                                                                            kReferenceDate) +
                                                        instant->nanoseconds() * 1e-9];
}

NSDate* dateOfTime(double time) {
  return [[[DateOfAnyTime alloc] initWithTimeIntervalSinceReferenceDate:time] autorelease];
}

std::string textOfLiveString(NSString* string) {
  std::string text;
  for (NSUInteger i = 0; i < [string length]; ++i) {
    const unichar unit = [string characterAtIndex:i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < [string length] &&
        ([string characterAtIndex:i + 1] & 0xFC00) == 0xDC00) {
      NSString* const pair = [string substringWithRange:NSMakeRange(i++, 2)];
      text += [pair UTF8String];
    } else if (unit >= 0x800) {
      text += {static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 0x3F)),
               static_cast<char>(0x80 | (unit & 0x3F))};
    } else if (unit == 0) {
      text += '\0';
    } else {
      text += [[NSString stringWithCharacters:&unit length:1] UTF8String];
    }
  }
  return text;
}

NSMutableArray* liveEntries(const std::vector<QELInAppPurchaseItem>& items, Asked* asked) {
  NSMutableArray* const entries = [NSMutableArray array];
  for (const QELInAppPurchaseItem& item : items) {
    [entries addObject:[[[FakeEntry alloc] initWithValues:&item asked:asked] autorelease]];
  }
  return entries;
}

Outcome outcomeOfLiveObjects(const OraclePurchase& purchase, Asked* performed) {
  const std::vector<QELInAppPurchaseItem> receipt = plainReceipt(purchase);
  @autoreleasepool {
    performedOperations = performed;
    Outcome outcome = outcomeWithReceipt(purchase, liveEntries(receipt));
    performedOperations = nullptr;
    return outcome;
  }
}

Outcome outcomeWithReceipt(const OraclePurchase& purchase, NSArray* receipt) {
  Outcome outcome;
  @autoreleasepool {
    id product = nil;
    if (const auto& values = purchase.product) {
      const Class productClass =
          values->answersOffer ? [FakeProductWithOffers class] : [FakeProduct class];
      product = [[[productClass alloc] initWithValues:&*values asked:&outcome.asked] autorelease];
    }
    id transaction = nil;
    if (const auto& values = purchase.transaction) {
      transaction = [[[FakeTransaction alloc] initWithValues:&*values
                                                       asked:&outcome.asked] autorelease];
    }
    askedOfDiscountClass = &outcome.asked;
    QELSetDiagnosticsMonitor([[[FakeMonitor alloc] initWithList:&outcome.diagnostics] autorelease]);

    NSDictionary<NSString*, id>* const event =
        QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, receipt);

    QELSetDiagnosticsMonitor(nil);
    askedOfDiscountClass = nullptr;
    if (event != nil) outcome.event.emplace();
    for (NSString* key in event) {
      id const value = [event objectForKey:key];
      outcome.event->emplace(textOfLiveString(key),
                             [value isKindOfClass:[NSString class]]
                                 ? ParameterContent(textOfLiveString(value))
                                 : ParameterContent(std::int64_t{[value longLongValue]}));
    }
  }
  return outcome;
}

}  // namespace qel::testing
