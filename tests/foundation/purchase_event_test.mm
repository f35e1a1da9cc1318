// The entry point, as an app calls it.

#import "qel/foundation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#import "live_purchase.h"
#include "own_process.h"
#include "qel/measurement.h"
#include "qel/purchase_event.h"

// Keeps the contexts of the messages it receives.
@interface MonitorOfContexts : FakeMonitor {
 @public
  NSMutableArray* contexts_;
}
@end

@implementation MonitorOfContexts
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context {
  [contexts_ addObject:context];
}
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context1
             context:(id)context2 {
  [contexts_ addObject:context1];
  [contexts_ addObject:context2];
}
@end

@interface ProductWithoutLocale : FakeProduct
@end

@implementation ProductWithoutLocale
- (id)priceLocale {
  return nil;
}
@end

namespace qel::testing {
namespace {

OracleEntry monthlyEntry(const char* date, const char* transactionId) {
  return {.productId = "monthly",
          .dateText = date,
          .type = kAutoRenewable,
          .transactionId = transactionId,
          .originalId = "1000"};
}

// A monthly subscription that renews after a free trial.
OraclePurchase renewal() {
  OraclePurchase purchase;
  purchase.product = OracleProduct{.identifier = "monthly",
                                   .price = oracleReading("4.99"),
                                   .currency = "EUR",
                                   .title = "Monthly",
                                   .answersOffer = true,
                                   .offer = OracleOffer{.price = oracleReading("1.99")}};
  purchase.transaction = OracleTransaction{.identifier = "2000",
                                           .original = OracleOriginal{"1000"},
                                           .date = OracleInstant{kAprilInstant.seconds(), 0},
                                           .quantity = 1};
  purchase.receipt = {monthlyEntry(kApril, "2000"), monthlyEntry(kMarch, "1000")};
  purchase.receipt[0].webOrder = "77";
  purchase.receipt[1].isFreeTrial = true;
  return purchase;
}

// The same bought at an introductory price.
OraclePurchase introductoryOffer() {
  OraclePurchase purchase = renewal();
  purchase.receipt[0].isOffer = true;
  return purchase;
}

const Event kRenewalEvent = monthlyEvent({{"_did", kDedupeIdOf100077monthly}, {"sub_convert", 1}});

TEST(PurchaseEventTest, GivesTheEventOfARenewal) {
  const Outcome outcome = outcomeOfLiveObjects(renewal());
  EXPECT_EQ(outcome.event, kRenewalEvent);
  EXPECT_TRUE(hasLogged(outcome.diagnostics, {logged(40008)}));
}

TEST(PurchaseEventTest, AsksTheStoreForWhatIsNeededAndNoMore) {
  Asked expected = questionsOfEveryPurchase();
  expected.insert(expected.end() - 1, "original.transactionIdentifier");
  EXPECT_EQ(outcomeOfLiveObjects(renewal()).asked, expected);
}

TEST(PurchaseEventTest, AsksNothingOfATransactionWhoseProductHasNoIdentifier) {
  OraclePurchase purchase = renewal();
  purchase.product->identifier = "";
  EXPECT_EQ(outcomeOfLiveObjects(purchase).asked, (Asked{"product.productIdentifier"}));
}

TEST(PurchaseEventTest, AsksEachEntryOnceBetweenTheInputChecksAndTheRest) {
  @autoreleasepool {
    const OraclePurchase purchase = renewal();
    Asked asked;
    id const product = [[[FakeProduct alloc] initWithValues:&*purchase.product
                                                      asked:&asked] autorelease];
    id const transaction = [[[FakeTransaction alloc] initWithValues:&*purchase.transaction
                                                              asked:&asked] autorelease];
    const std::vector<QELInAppPurchaseItem> items = plainReceipt(purchase);
    NSArray* const receipt = liveEntries(items, &asked);
    QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, receipt);

    const Asked ofEntry = {"entry.productID",     "entry.purchaseDateIA5String",
                           "entry.purchaseType",  "entry.webOrderLineItemID",
                           "entry.transactionID", "entry.originalTransactionID",
                           "entry.isFreeTrial",   "entry.isIntroductoryOffer"};
    Asked expected = {"product.productIdentifier"};
    expected.insert(expected.end(), ofEntry.begin(), ofEntry.end());
    expected.insert(expected.end(), ofEntry.begin(), ofEntry.end());
    ASSERT_GT(asked.size(), expected.size());
    EXPECT_EQ(Asked(asked.begin(), asked.begin() + std::ssize(expected)), expected);
    EXPECT_EQ(asked[expected.size()], "product.price");
    EXPECT_EQ(std::count(asked.begin(), asked.end(), "product.productIdentifier"), 1);
  }
}

// Checks that `purchase` is rejected with the one message `code`, and that the receipt is not read.
void expectRejectedBeforeTheReceipt(const OraclePurchase& purchase, int code) {
  @autoreleasepool {
    // Not a list, and a list without an entry: each raises an exception on every call.
    id const noList = @"no list";
    for (NSArray* receipt : { static_cast<NSArray*>(noList), @[ @"no entry" ] }) {
      const Outcome outcome = outcomeWithReceipt(purchase, receipt);
      EXPECT_EQ(outcome.event, std::nullopt);
      ASSERT_EQ(outcome.diagnostics.size(), 1u) << outcome;
      EXPECT_EQ(outcome.diagnostics[0].code, code);
    }
  }
}

TEST(PurchaseEventTest, LeavesTheReceiptUnreadWithoutAProduct) {
  OraclePurchase purchase = renewal();
  purchase.product.reset();
  expectRejectedBeforeTheReceipt(purchase, 40026);
  purchase.transaction.reset();
  expectRejectedBeforeTheReceipt(purchase, 40026);
}

TEST(PurchaseEventTest, LeavesTheReceiptUnreadWithoutAProductIdentifier) {
  OraclePurchase purchase = renewal();
  purchase.product->identifier = "";
  expectRejectedBeforeTheReceipt(purchase, 40027);
  purchase.product->identifier.reset();
  expectRejectedBeforeTheReceipt(purchase, 40027);
  purchase.transaction.reset();
  expectRejectedBeforeTheReceipt(purchase, 40027);
}

TEST(PurchaseEventTest, LeavesTheReceiptUnreadWithoutATransaction) {
  OraclePurchase purchase = renewal();
  purchase.transaction.reset();
  expectRejectedBeforeTheReceipt(purchase, 40028);
}

TEST(PurchaseEventTest, GivesStringsAndNumbersThatAProgramCanKeep) {
  @autoreleasepool {
    NSDictionary<NSString*, id>* event = nil;
    @autoreleasepool {
      event = [LivePurchase(renewal()).event() retain];
    }
    EXPECT_EQ([event count], kRenewalEvent.size());
    EXPECT_TRUE([[event objectForKey:@"product_id"] isEqual:@"monthly"]);
    EXPECT_TRUE([[event objectForKey:@"price"] isEqual:[NSNumber numberWithLongLong:4990000]]);
    EXPECT_EQ([[event objectForKey:@"_did"] longLongValue], kDedupeIdOf100077monthly);
    EXPECT_STREQ([[event objectForKey:@"_did"] objCType], @encode(long long));
    [event release];
  }
}

TEST(PurchaseEventTest, NamesTheKeysThatAProgramLooksUp) {
  @autoreleasepool {
    EXPECT_EQ(textOfLiveString(::kQELParameterInAppPurchaseInvalid),
              qel::kQELParameterInAppPurchaseInvalid);
    EXPECT_EQ(textOfLiveString(::kQELParameterIsSubscriptionConversion),
              qel::kQELParameterIsSubscriptionConversion);
    EXPECT_EQ(textOfLiveString(::kQELParameterIsSubscriptionRenewal),
              qel::kQELParameterIsSubscriptionRenewal);
  }
}

TEST(PurchaseEventTest, GivesNilAndSaysWhyWithoutAProductOrATransaction) {
  OraclePurchase purchase = renewal();
  purchase.transaction.reset();
  Outcome outcome = outcomeOfLiveObjects(purchase);
  EXPECT_EQ(outcome.event, std::nullopt);
  EXPECT_TRUE(hasLogged(outcome.diagnostics, {logged(40028)}));
  purchase.product.reset();
  outcome = outcomeOfLiveObjects(purchase);
  EXPECT_EQ(outcome.event, std::nullopt);
  EXPECT_TRUE(hasLogged(outcome.diagnostics, {logged(40026)}));
}

TEST(PurchaseEventTest, TakesANilReceiptForAnEmptyOne) {
  @autoreleasepool {
    const LivePurchase purchase(renewal());
    NSDictionary* const event = QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        purchase.product, purchase.transaction, nil);
    EXPECT_EQ([[event objectForKey:(::kQELParameterInAppPurchaseInvalid)] longLongValue], 1);
    EXPECT_TRUE([event isEqual:QELInAppPurchaseEventParametersFromProductAndTransactionV2(
                                   purchase.product, purchase.transaction, @[])]);
  }
}

TEST(PurchaseEventTest, IsNothingWithoutALocale) {
  @autoreleasepool {
    const OraclePurchase purchase = renewal();
    id const product = [[[ProductWithoutLocale alloc] initWithValues:&*purchase.product
                                                               asked:nullptr] autorelease];
    id const transaction = [[[FakeTransaction alloc] initWithValues:&*purchase.transaction
                                                              asked:nullptr] autorelease];
    EXPECT_EQ(QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, nil),
              nil);
  }
}

TEST(PurchaseEventTest, ReadsTheCurrencyOfAPlatformLocale) {
  @autoreleasepool {
    NSLocale* const locale =
        [[[NSLocale alloc] initWithLocaleIdentifier:@"de_DE@currency=CHF"] autorelease];
    EXPECT_TRUE([[locale objectForKey:NSLocaleCurrencyCode] isEqual:@"CHF"]);
  }
}

TEST(PurchaseEventTest, TellsTheMonitorWhatAMessageIsAbout) {
  OraclePurchase purchase = renewal();
  purchase.product->identifier = "caf\xC3\xA9 \xED\xA0\x80";
  purchase.receipt[0].productId = purchase.product->identifier;
  purchase.receipt[1] = purchase.receipt[0];
  EXPECT_TRUE(hasLogged(outcomeOfLiveObjects(purchase).diagnostics,
                        {logged(40024, {*purchase.product->identifier, std::uint64_t{2}})}));
  purchase.receipt.clear();
  EXPECT_TRUE(hasLogged(outcomeOfLiveObjects(purchase).diagnostics,
                        {logged(40020, {*purchase.product->identifier})}));
}

// GNUstep hands out a small number as an int, however it was made; the largest shows its type.
TEST(MonitorTest, ReceivesACountAsAnUnsignedNumber) {
  @autoreleasepool {
    MonitorOfContexts* const monitor = [[[MonitorOfContexts alloc] init] autorelease];
    monitor->contexts_ = [NSMutableArray array];
    QELSetDiagnosticsMonitor(monitor);
    constexpr std::uint64_t kCount = std::numeric_limits<std::uint64_t>::max();
    QELMeasurement::monitor()->logWithLevel(8, 40020, "message", kCount);
    QELMeasurement::monitor()->logWithLevel(8, 40024, "message", "monthly", kCount);
    QELSetDiagnosticsMonitor(nil);

    ASSERT_EQ([monitor->contexts_ count], 3u);
    EXPECT_TRUE([[monitor->contexts_ objectAtIndex:1] isEqual:@"monthly"]);
    for (NSUInteger i : {0u, 2u}) {
      NSNumber* const count = [monitor->contexts_ objectAtIndex:i];
      EXPECT_STREQ([count objCType], @encode(unsigned long long));
      EXPECT_EQ([count unsignedLongLongValue], kCount);
    }
  }
}

TEST(MonitorTest, IsKeptUntilAnotherIsInstalled) {
  @autoreleasepool {
    std::vector<Diagnostic> diagnostics;
    FakeMonitor* const monitor = [[FakeMonitor alloc] initWithList:&diagnostics];
    const NSUInteger before = [monitor retainCount];
    QELSetDiagnosticsMonitor(monitor);
    EXPECT_GT([monitor retainCount], before);
    QELSetDiagnosticsMonitor(nil);
    EXPECT_EQ([monitor retainCount], before);
    QELInAppPurchaseEventParametersFromProductAndTransactionV2(nil, nil, nil);
    EXPECT_TRUE(diagnostics.empty());
    [monitor release];
  }
}

// --- Introductory offers: what the platform and the product provide is looked up at run time ---

constexpr char kOfferPrice[] = "original_price";

TEST(IntroductoryOfferTest, IsReadByNameWhereThePlatformHasIt) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    const Outcome outcome = outcomeOfLiveObjects(introductoryOffer());
    ASSERT_TRUE(outcome.event.has_value());
    EXPECT_EQ(outcome.event->at("price"), ParameterContent(1990000));
    EXPECT_EQ(outcome.event->at(kOfferPrice), ParameterContent(4990000));
    const Asked lastQuestions(outcome.asked.end() - 7, outcome.asked.end());
    EXPECT_EQ(lastQuestions,
              (Asked{"product.discountsAnswerPaymentMode", "product.answersIntroductoryPrice",
                     "product.introductoryPrice", "discount.paymentMode", "discount.price",
                     "transaction.payment", "payment.quantity"}));
  });
}

// An app may be built where the store's class is not known, so two operations go by name. The
// payment mode is a number, which performSelector: cannot return.
TEST(IntroductoryOfferTest, IsSentItsOperationsByNameButThePaymentMode) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    Asked performed;
    const Outcome outcome = outcomeOfLiveObjects(introductoryOffer(), &performed);
    EXPECT_EQ(performed, (Asked{"introductoryPrice", "price"}));
    EXPECT_EQ(std::count(outcome.asked.begin(), outcome.asked.end(), "discount.paymentMode"), 1);
  });
}

TEST(IntroductoryOfferTest, IsNoFreeTrialBy32BitsOfItsPaymentMode) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    OraclePurchase purchase = introductoryOffer();
    purchase.product->offer->mode = (std::uint64_t{1} << 32) + 2;
    const Outcome outcome = outcomeOfLiveObjects(purchase);
    ASSERT_TRUE(outcome.event.has_value());
    EXPECT_EQ(outcome.event->at("price"), ParameterContent(1990000));
  });
}

TEST(IntroductoryOfferTest, LeavesThePriceOfAFreeTrialUnasked) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    OraclePurchase purchase = introductoryOffer();
    purchase.product->offer->mode = 2;
    const Outcome outcome = outcomeOfLiveObjects(purchase);
    ASSERT_TRUE(outcome.event.has_value());
    EXPECT_EQ(outcome.event->at("price"), ParameterContent(0));
    EXPECT_EQ(outcome.asked.back(), "discount.paymentMode");
  });
}

// Checks that the full price stands, and that `lastQuestion` was the last one asked.
void expectFullPrice(const OraclePurchase& purchase, const std::string& lastQuestion) {
  const Outcome outcome = outcomeOfLiveObjects(purchase);
  ASSERT_TRUE(outcome.event.has_value());
  EXPECT_EQ(outcome.event->at("price"), ParameterContent(4990000));
  EXPECT_EQ(outcome.event->count(kOfferPrice), 0u);
  EXPECT_EQ(outcome.asked.back(), lastQuestion);
}

TEST(IntroductoryOfferTest, IsNotAskedForWithoutTheClass) {
  ASSERT_EQ(NSClassFromString(@"SKProductDiscount"), Nil);
  expectFullPrice(introductoryOffer(), "transaction.transactionDate");
}

TEST(IntroductoryOfferTest, IsNotAskedForWhenTheClassHasNoPrice) {
  inProcessOfItsOwn([] {
    registerDiscountClass({.discountsAnswerPrice = false});
    expectFullPrice(introductoryOffer(), "product.discountsAnswerPrice");
  });
}

TEST(IntroductoryOfferTest, IsNotAskedForWhenTheClassHasNoPaymentMode) {
  inProcessOfItsOwn([] {
    registerDiscountClass({.discountsAnswerPaymentMode = false});
    expectFullPrice(introductoryOffer(), "product.discountsAnswerPaymentMode");
  });
}

TEST(IntroductoryOfferTest, IsNotAskedOfAProductThatDoesNotAnswerIt) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    OraclePurchase purchase = introductoryOffer();
    purchase.product->answersOffer = false;
    expectFullPrice(purchase, "product.answersIntroductoryPrice");
  });
}

TEST(IntroductoryOfferTest, ChangesNothingWhenTheProductHasNone) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    OraclePurchase purchase = introductoryOffer();
    purchase.product->offer.reset();
    expectFullPrice(purchase, "product.introductoryPrice");
  });
}

TEST(IntroductoryOfferTest, ChangesNothingWhenItHasNoPrice) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    OraclePurchase purchase = introductoryOffer();
    purchase.product->offer->price.reset();
    expectFullPrice(purchase, "discount.price");
  });
}

}  // namespace
}  // namespace qel::testing
