// The entry point, as an app calls it.

#import "qel/foundation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "own_process.h"
#include "purchase_values.h"
#include "qel/measurement.h"
#include "qel/purchase_event.h"
#import "stand_ins.h"

// Keeps the contexts of the messages it receives.
@interface MonitorOfContexts : StandInMonitor {
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

namespace qel::testing {
namespace {

using Event = std::map<std::string, Outcome::Value>;

QELInAppPurchaseItem entryOf(std::string date, std::string transactionID) {
  QELInAppPurchaseItem item;
  item.productID = "monthly";
  item.purchaseDateIA5String = std::move(date);
  item.purchaseType = 3;
  item.transactionID = std::move(transactionID);
  item.originalTransactionID = "1000";
  return item;
}

// A monthly subscription that renews after a free trial.
PurchaseValues renewal() {
  PurchaseValues purchase;
  purchase.product = ProductValues{.identifier = "monthly",
                                   .price = "4.99",
                                   .currencyCode = "EUR",
                                   .title = "Monthly",
                                   .answersIntroductoryPrice = true,
                                   .introductoryPrice = DiscountValues{.price = "1.99"}};
  purchase.transaction = TransactionValues{.identifier = "2000",
                                           .hasOriginal = true,
                                           .originalIdentifier = "1000",
                                           .date = Instant{1555234013, 0},
                                           .quantity = 1};
  purchase.receipt = {entryOf("2019-04-14T09:26:53Z", "2000"),
                      entryOf("2019-03-14T09:26:53Z", "1000")};
  purchase.receipt[0].webOrderLineItemID = "77";
  purchase.receipt[1].isFreeTrial = true;
  return purchase;
}

// The same bought at an introductory price.
PurchaseValues introductoryOffer() {
  PurchaseValues purchase = renewal();
  purchase.receipt[0].isIntroductoryOffer = true;
  return purchase;
}

// The first 64 bits from the end of what md5sum prints for 100077monthly.
constexpr std::int64_t kDedupeId = 0x114F509B0A08BCF9;

const Event kRenewalEvent = {
    {"_did", kDedupeId},         {"currency", "EUR"}, {"price", 4990000}, {"product_id", "monthly"},
    {"product_name", "Monthly"}, {"quantity", 1},     {"sub_convert", 1}, {"value", 4990000}};

TEST(PurchaseEventTest, GivesTheEventOfARenewal) {
  const Outcome outcome = outcomeOfLiveObjects(renewal());
  EXPECT_EQ(outcome.event, kRenewalEvent);
  EXPECT_EQ(outcome.diagnostics,
            (std::vector<Diagnostic>{
                {8, 40008, "Transaction of auto-renewable subscription will be reported", {}}}));
}

TEST(PurchaseEventTest, AsksTheStoreForWhatIsNeededAndNoMore) {
  EXPECT_EQ(outcomeOfLiveObjects(renewal()).asked,
            (Asked{"product.productIdentifier", "product.price", "transaction.payment",
                   "payment.quantity", "transaction.payment", "payment.quantity",
                   "product.priceLocaleCurrencyCode", "product.localizedTitle",
                   "transaction.transactionIdentifier", "transaction.originalTransaction",
                   "transaction.transactionIdentifier", "transaction.transactionDate"}));
}

TEST(PurchaseEventTest, AsksNothingOfATransactionWhoseProductHasNoIdentifier) {
  PurchaseValues purchase = renewal();
  purchase.product->identifier = "";
  EXPECT_EQ(outcomeOfLiveObjects(purchase).asked, (Asked{"product.productIdentifier"}));
}

TEST(PurchaseEventTest, AsksEachEntryOnceBetweenTheInputChecksAndTheRest) {
  @autoreleasepool {
    const PurchaseValues purchase = renewal();
    Asked asked;
    id const product = [[[StandInProduct alloc] initWithValues:&*purchase.product
                                                         asked:&asked] autorelease];
    id const transaction = [[[StandInTransaction alloc] initWithValues:&*purchase.transaction
                                                                 asked:&asked] autorelease];
    NSMutableArray* const receipt = [NSMutableArray array];
    for (const QELInAppPurchaseItem& item : purchase.receipt) {
      [receipt addObject:[[[StandInEntry alloc] initWithValues:&item asked:&asked] autorelease]];
    }
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
void expectRejectedBeforeTheReceipt(const PurchaseValues& purchase, int code) {
  @autoreleasepool {
    // Neither is a list nor an entry: each raises an exception when it is asked for anything.
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
  PurchaseValues purchase = renewal();
  purchase.product.reset();
  expectRejectedBeforeTheReceipt(purchase, 40026);
  purchase.transaction.reset();
  expectRejectedBeforeTheReceipt(purchase, 40026);
}

TEST(PurchaseEventTest, LeavesTheReceiptUnreadWithoutAProductIdentifier) {
  PurchaseValues purchase = renewal();
  purchase.product->identifier = "";
  expectRejectedBeforeTheReceipt(purchase, 40027);
  purchase.product->identifier.reset();
  expectRejectedBeforeTheReceipt(purchase, 40027);
  purchase.transaction.reset();
  expectRejectedBeforeTheReceipt(purchase, 40027);
}

TEST(PurchaseEventTest, LeavesTheReceiptUnreadWithoutATransaction) {
  PurchaseValues purchase = renewal();
  purchase.transaction.reset();
  expectRejectedBeforeTheReceipt(purchase, 40028);
}

TEST(PurchaseEventTest, GivesStringsAndNumbersThatAProgramCanKeep) {
  @autoreleasepool {
    const PurchaseValues purchase = renewal();
    NSDictionary<NSString*, id>* event = nil;
    @autoreleasepool {
      id const product = [[[StandInProduct alloc] initWithValues:&*purchase.product
                                                           asked:nullptr] autorelease];
      id const transaction = [[[StandInTransaction alloc] initWithValues:&*purchase.transaction
                                                                   asked:nullptr] autorelease];
      NSMutableArray* const receipt = [NSMutableArray array];
      for (const QELInAppPurchaseItem& item : purchase.receipt) {
        [receipt addObject:[[[StandInEntry alloc] initWithValues:&item asked:nullptr] autorelease]];
      }
      event = [QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction,
                                                                          receipt) retain];
    }
    EXPECT_EQ([event count], kRenewalEvent.size());
    EXPECT_TRUE([[event objectForKey:@"product_id"] isEqual:@"monthly"]);
    EXPECT_TRUE([[event objectForKey:@"price"] isEqual:[NSNumber numberWithLongLong:4990000]]);
    EXPECT_EQ([[event objectForKey:@"_did"] longLongValue], kDedupeId);
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
  PurchaseValues purchase = renewal();
  purchase.transaction.reset();
  Outcome outcome = outcomeOfLiveObjects(purchase);
  EXPECT_EQ(outcome.event, std::nullopt);
  EXPECT_EQ(outcome.diagnostics,
            (std::vector<Diagnostic>{
                {8, 40028, "IAP Transaction cannot be created from nil transaction", {}}}));
  purchase.product.reset();
  outcome = outcomeOfLiveObjects(purchase);
  EXPECT_EQ(outcome.event, std::nullopt);
  EXPECT_EQ(outcome.diagnostics,
            (std::vector<Diagnostic>{
                {8, 40026, "IAP Transaction cannot be created from nil product", {}}}));
}

TEST(PurchaseEventTest, TakesANilReceiptForAnEmptyOne) {
  @autoreleasepool {
    const PurchaseValues purchase = renewal();
    id const product = [[[StandInProduct alloc] initWithValues:&*purchase.product
                                                         asked:nullptr] autorelease];
    id const transaction = [[[StandInTransaction alloc] initWithValues:&*purchase.transaction
                                                                 asked:nullptr] autorelease];
    NSDictionary* const event =
        QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, nil);
    EXPECT_EQ([[event objectForKey:(::kQELParameterInAppPurchaseInvalid)] longLongValue], 1);
    EXPECT_TRUE([event isEqual:QELInAppPurchaseEventParametersFromProductAndTransactionV2(
                                   product, transaction, @[])]);
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
  PurchaseValues purchase = renewal();
  purchase.product->identifier = "caf\xC3\xA9 \xED\xA0\x80";
  purchase.receipt[0].productID = purchase.product->identifier;
  purchase.receipt[1] = purchase.receipt[0];
  EXPECT_EQ(outcomeOfLiveObjects(purchase).diagnostics,
            (std::vector<Diagnostic>{
                {8,
                 40024,
                 "Subscription transaction with duplicate transaction date will be reported as "
                 "invalid",
                 {*purchase.product->identifier, std::uint64_t{2}}}}));
  purchase.receipt.clear();
  EXPECT_EQ(outcomeOfLiveObjects(purchase).diagnostics,
            (std::vector<Diagnostic>{{8,
                                      40020,
                                      "Transaction missing in receipt will be reported as invalid",
                                      {*purchase.product->identifier}}}));
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
    StandInMonitor* const monitor = [[StandInMonitor alloc] initWithList:&diagnostics];
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

// --- Introductory offers: what the platform and the product provide is asked at run time ---

constexpr char kOfferPrice[] = "original_price";

TEST(IntroductoryOfferTest, IsReadByNameWhereThePlatformHasIt) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    const Outcome outcome = outcomeOfLiveObjects(introductoryOffer());
    ASSERT_TRUE(outcome.event.has_value());
    EXPECT_EQ(outcome.event->at("price"), Outcome::Value(1990000));
    EXPECT_EQ(outcome.event->at(kOfferPrice), Outcome::Value(4990000));
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
    PurchaseValues purchase = introductoryOffer();
    purchase.product->introductoryPrice->paymentMode = (std::uint64_t{1} << 32) + 2;
    const Outcome outcome = outcomeOfLiveObjects(purchase);
    ASSERT_TRUE(outcome.event.has_value());
    EXPECT_EQ(outcome.event->at("price"), Outcome::Value(1990000));
  });
}

TEST(IntroductoryOfferTest, LeavesThePriceOfAFreeTrialUnasked) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    PurchaseValues purchase = introductoryOffer();
    purchase.product->introductoryPrice->paymentMode = 2;
    const Outcome outcome = outcomeOfLiveObjects(purchase);
    ASSERT_TRUE(outcome.event.has_value());
    EXPECT_EQ(outcome.event->at("price"), Outcome::Value(0));
    EXPECT_EQ(outcome.asked.back(), "discount.paymentMode");
  });
}

// Checks that the full price stands, and that `lastQuestion` was the last one asked.
void expectFullPrice(const PurchaseValues& purchase, const std::string& lastQuestion) {
  const Outcome outcome = outcomeOfLiveObjects(purchase);
  ASSERT_TRUE(outcome.event.has_value());
  EXPECT_EQ(outcome.event->at("price"), Outcome::Value(4990000));
  EXPECT_EQ(outcome.event->count(kOfferPrice), 0u);
  EXPECT_EQ(outcome.asked.back(), lastQuestion);
}

TEST(IntroductoryOfferTest, IsNotAskedForWithoutTheClass) {
  ASSERT_EQ(NSClassFromString(@"SKProductDiscount"), Nil);
  expectFullPrice(introductoryOffer(), "transaction.transactionDate");
}

TEST(IntroductoryOfferTest, IsNotAskedForWhenTheClassHasNoPrice) {
  inProcessOfItsOwn([] {
    registerDiscountClass({.answersPrice = false});
    expectFullPrice(introductoryOffer(), "product.discountsAnswerPrice");
  });
}

TEST(IntroductoryOfferTest, IsNotAskedForWhenTheClassHasNoPaymentMode) {
  inProcessOfItsOwn([] {
    registerDiscountClass({.answersPaymentMode = false});
    expectFullPrice(introductoryOffer(), "product.discountsAnswerPaymentMode");
  });
}

TEST(IntroductoryOfferTest, IsNotAskedOfAProductThatDoesNotAnswerIt) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    PurchaseValues purchase = introductoryOffer();
    purchase.product->answersIntroductoryPrice = false;
    expectFullPrice(purchase, "product.answersIntroductoryPrice");
  });
}

TEST(IntroductoryOfferTest, ChangesNothingWhenTheProductHasNone) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    PurchaseValues purchase = introductoryOffer();
    purchase.product->introductoryPrice.reset();
    expectFullPrice(purchase, "product.introductoryPrice");
  });
}

TEST(IntroductoryOfferTest, ChangesNothingWhenItHasNoPrice) {
  inProcessOfItsOwn([] {
    registerDiscountClass({});
    PurchaseValues purchase = introductoryOffer();
    purchase.product->introductoryPrice->price.reset();
    expectFullPrice(purchase, "discount.price");
  });
}

}  // namespace
}  // namespace qel::testing
