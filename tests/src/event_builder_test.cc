#include "event_builder.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>

#include "discount_parameters.h"
#include "qel/purchase_event.h"
#include "receipt_validation.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

class EventBuilderTest : public ::testing::Test {
 protected:
  Purchase purchase;
  ScopedRecordingMonitor monitor;
};

// --- Required keys ---

TEST_F(EventBuilderTest, MissingCurrencyCodeGivesNoEventAndLogsNothingOfItsOwn) {
  makeMonthly(purchase, {freeTrial(firstMonth())});
  purchase.product.priceLocaleCurrencyCode = std::nullopt;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40009), logged(40010)}));
}

TEST_F(EventBuilderTest, MissingPaymentGivesNoEvent) {
  purchase.transaction.quantity = std::nullopt;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, FreeTrialNeedsNoPriceAndNoQuantity) {
  makeMonthly(purchase, {freeTrial(firstMonth())});
  purchase.transaction.quantity = 0;
  Event expected = {{"_did", kDedupeIdOf100077monthly},
                    {"currency", "EUR"},
                    {"free_trial", 1},
                    {"original_price", 4990000},
                    {"price", 0},
                    {"price_is_discounted", 1},
                    {"product_id", "monthly"},
                    {"product_name", "Monthly"},
                    {"subscription", 1},
                    {"value", 0}};
  EXPECT_TRUE(isEvent(purchase.event(), expected));

  purchase.product.price = std::nullopt;
  purchase.transaction.quantity = 1;
  expected.erase("original_price");
  EXPECT_TRUE(isEvent(purchase.event(), expected));
}

// --- The stages together ---

TEST_F(EventBuilderTest, WhenValidationReturnsNothingTheDiscountStageDoesToo) {
  const std::optional<EventParameters> validated = QELValidatedInAppPurchaseParameters(
      listOf(purchase.receipt), "coins", "1", std::nullopt, kMarchInstant, EventParameters());
  EXPECT_TRUE(isNothing(validated));
  EXPECT_TRUE(isNothing(QELDiscountParameters(validated, purchase.productRecord,
                                              purchase.transactionRecord, 1000000)));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {}));
  EXPECT_EQ(purchase.asked, Asked());
}

TEST_F(EventBuilderTest, PricedOfferReplacesPriceAndValueAndKeepsTheOriginalPrice) {
  makeIntroductoryOffer(purchase, "1.99", 0);
  purchase.transaction.quantity = 2;
  EXPECT_TRUE(isEvent(purchase.event(), monthlyEvent({{"_did", kDedupeIdOf100077monthly},
                                                      {"original_price", 4990000},
                                                      {"price", 1990000},
                                                      {"price_is_discounted", 1},
                                                      {"quantity", 2},
                                                      {"subscription", 1},
                                                      {"value", 3980000}})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40018), logged(40010)}));
}

// Whether every value of `event` is an object of its own.
bool hasDistinctValues(const EventParameters& event) {
  std::set<const QELValue*> values;
  for (const EventParameters::Entry entry : event) {
    if (!values.insert(&entry.value).second) return false;
  }
  return true;
}

TEST_F(EventBuilderTest, EveryValueOfAFreeProductIsAnObjectOfItsOwn) {
  purchase.product.price = Decimal();
  purchase.transaction.quantity = 1;
  const std::optional<EventParameters> event = purchase.event();
  ASSERT_TRUE(event.has_value());
  EXPECT_TRUE(hasDistinctValues(*event));
}

TEST_F(EventBuilderTest, EveryValueOfAFreeTrialOfAFreeProductIsAnObjectOfItsOwn) {
  makeMonthly(purchase, {freeTrial(firstMonth())});
  purchase.product.price = Decimal();
  const std::optional<EventParameters> event = purchase.event();
  ASSERT_TRUE(event.has_value());
  EXPECT_TRUE(hasDistinctValues(*event));
}

TEST_F(EventBuilderTest, OfferWithoutAPriceKeepsTheFullPrice) {
  makeIntroductoryOffer(purchase, "1.99", 0);
  purchase.product.introductoryPrice->price = std::nullopt;
  EXPECT_TRUE(isEvent(purchase.event(), monthlyEvent({{"_did", kDedupeIdOf100077monthly},
                                                      {"price_is_discounted", 1},
                                                      {"subscription", 1}})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40018), logged(40010)}));
}

// The web order line item 77 is part of the identifier, which is
// `printf 100077monthly | md5sum | cut -c17-32` as a number.
TEST_F(EventBuilderTest, MonthlySubscriptionRenewedAfterAFreeTrialIsAConversion) {
  const QELInAppPurchaseItem trial =
      freeTrial(entryOf(kAutoRenewable, "monthly", kFebruary, "1000", "1000"));
  const QELInAppPurchaseItem renewal =
      withWebOrder(entryOf(kAutoRenewable, "monthly", kMarch, "2000", "1000"), "77");
  makeMonthly(purchase, {trial, renewal});
  purchase.transaction.transactionIdentifier = "2000";
  purchase.transaction.originalTransaction = PlainOriginalTransaction{"1000"};

  EXPECT_TRUE(isEvent(purchase.event(),
                      monthlyEvent({{"_did", kDedupeIdOf100077monthly}, {"sub_convert", 1}})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40008)}));
}

TEST_F(EventBuilderTest, TransactionDateKeepsItsFractionAndSoMatchesNoEntry) {
  makeMonthly(purchase, {firstMonth()});
  purchase.transaction.transactionDate = Instant{kMarchInstant.seconds(), 250000000};
  EXPECT_TRUE(isEvent(purchase.event(), monthlyEvent({{"invalid", 1}, {"subscription", 1}})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40023, {"monthly"})}));
}

TEST_F(EventBuilderTest, RestoredNonConsumableDependsOnTheOriginalTransactionOfTheStore) {
  purchase.receipt = {entryOf(kNonConsumable, "coins", kMarch, "1", "1")};
  purchase.transaction.transactionIdentifier = "2";
  purchase.transaction.originalTransaction = PlainOriginalTransaction{"1"};
  EXPECT_TRUE(isEvent(purchase.event(), coinsEvent({{"invalid", 1}})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40005)}));
}

TEST_F(EventBuilderTest, RepeatedCallsGiveTheSameEvent) {
  const std::optional<EventParameters> first = purchase.event();
  ASSERT_TRUE(first.has_value());
  EXPECT_TRUE(isEvent(purchase.event(), eventOf(*first)));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021), logged(40021)}));
}

TEST_F(EventBuilderTest, WithoutAMonitorTheEventIsTheSame) {
  const std::optional<EventParameters> watched = purchase.event();
  ASSERT_TRUE(watched.has_value());
  QELMeasurement::setMonitor(nullptr);
  EXPECT_TRUE(isEvent(purchase.event(), eventOf(*watched)));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

// --- What the store's records are asked ---

TEST_F(EventBuilderTest, AsksTheRecordsInOrderAndTheQuantityAgainForItsValue) {
  purchase.event();
  EXPECT_EQ(purchase.asked, questionsOfEveryPurchase());
}

TEST_F(EventBuilderTest, AsksTheOriginalTransactionForItsIdentifierOnly) {
  purchase.transaction.originalTransaction.emplace();
  purchase.event();
  Asked expected = questionsOfEveryPurchase();
  expected.insert(expected.end() - 1, "original.transactionIdentifier");
  EXPECT_EQ(purchase.asked, expected);
}

TEST_F(EventBuilderTest, DoesNotReadTheQuantityWithoutAPrice) {
  purchase.product.price = std::nullopt;
  purchase.event();
  EXPECT_EQ(purchase.asked,
            Asked({"product.productIdentifier", "product.price", "product.priceLocaleCurrencyCode",
                   "product.localizedTitle", "transaction.transactionIdentifier",
                   "transaction.originalTransaction", "transaction.transactionDate"}));
}

TEST_F(EventBuilderTest, ReadsAQuantityOfZeroOnce) {
  purchase.transaction.quantity = 0;
  purchase.event();
  EXPECT_EQ(purchase.asked,
            Asked({"product.productIdentifier", "product.price", "transaction.payment",
                   "payment.quantity", "product.priceLocaleCurrencyCode", "product.localizedTitle",
                   "transaction.transactionIdentifier", "transaction.originalTransaction",
                   "transaction.transactionDate"}));
}

TEST_F(EventBuilderTest, DoesNotAskForDiscountsOfAFreeTrial) {
  makeMonthly(purchase, {freeTrial(introductoryOffer(firstMonth()))});
  purchase.event();
  EXPECT_EQ(purchase.asked, questionsOfEveryPurchase());
}

TEST_F(EventBuilderTest, ReadsTheQuantityAThirdTimeForAPricedOffer) {
  makeIntroductoryOffer(purchase, "1.99", 1);
  purchase.event();
  Asked expected = questionsOfEveryPurchase();
  expected.insert(expected.end(),
                  {"product.hasDiscountClass", "product.discountsAnswerPrice",
                   "product.discountsAnswerPaymentMode", "product.answersIntroductoryPrice",
                   "product.introductoryPrice", "discount.paymentMode", "discount.price",
                   "transaction.payment", "payment.quantity"});
  EXPECT_EQ(purchase.asked, expected);
}

TEST_F(EventBuilderTest, TakesValueAndQuantityFromTheSecondReading) {
  purchase.transaction.quantity = 0;
  purchase.asked.onNote = [this](const std::string& operation) {
    if (operation == "payment.quantity") ++*purchase.transaction.quantity;
  };
  EXPECT_TRUE(
      isEvent(purchase.event(),
              coinsEvent({{"_did", kDedupeIdOf1coins}, {"quantity", 2}, {"value", 1980000}})));
}

}  // namespace
}  // namespace qel::testing
