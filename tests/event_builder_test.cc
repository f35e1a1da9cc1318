#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <optional>
#include <ostream>
#include <set>
#include <span>
#include <utility>

#include "completed_event.h"
#include "discount_parameters.h"
#include "purchase_fixtures.h"
#include "qel/purchase_event.h"
#include "receipt_validation.h"

namespace qel::testing {
namespace {

class EventBuilderTest : public ::testing::Test {
 protected:
  Purchase purchase;
  ScopedRecordingMonitor monitor;
};

// --- Input checks ---

TEST_F(EventBuilderTest, MissingProductIsRejected) {
  EXPECT_TRUE(isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      nullptr, &purchase.transaction, listOf(purchase.receipt))));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40026)}));
  EXPECT_EQ(purchase.asked, Asked());
}

TEST_F(EventBuilderTest, MissingProductIsRejectedBeforeAMissingTransaction) {
  EXPECT_TRUE(
      isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(nullptr, nullptr, {})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40026)}));
}

TEST_F(EventBuilderTest, EmptyProductIdentifierIsRejectedBeforeAMissingTransaction) {
  purchase.product.theProductIdentifier = "";
  EXPECT_TRUE(isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      &purchase.product, nullptr, listOf(purchase.receipt))));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40027)}));
}

TEST_F(EventBuilderTest, AbsentProductIdentifierIsRejectedWithNothingElseAsked) {
  purchase.product.theProductIdentifier = std::nullopt;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40027)}));
  EXPECT_EQ(purchase.asked, Asked({"product.productIdentifier"}));
}

TEST_F(EventBuilderTest, MissingTransactionIsRejectedBeforeAnythingIsBuilt) {
  EXPECT_TRUE(isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      &purchase.product, nullptr, listOf(purchase.receipt))));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40028)}));
  EXPECT_EQ(purchase.asked, Asked({"product.productIdentifier"}));
}

TEST_F(EventBuilderTest, EmptyReceiptIsNoRejectionButAnInvalidEvent) {
  purchase.receipt = {};
  EXPECT_TRUE(isEvent(purchase.event(), {{"currency", "USD"},
                                         {"invalid", 1},
                                         {"price", 990000},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", 3},
                                         {"value", 2970000}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40020, {"coins"})}));
}

// --- Base parameters ---

TEST_F(EventBuilderTest, ConsumableCarriesAllBaseParametersAndItsIdentifier) {
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", 990000},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", 3},
                                         {"value", 2970000}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, AbsentTitleLeavesTheNameOut) {
  purchase.product.theLocalizedTitle = std::nullopt;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", 990000},
                                         {"product_id", "coins"},
                                         {"quantity", 3},
                                         {"value", 2970000}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, EmptyTitleAndEmptyCurrencyCodeAreValues) {
  purchase.product.theLocalizedTitle = "";
  purchase.product.theCurrencyCode = "";
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", ""},
                                         {"price", 990000},
                                         {"product_id", "coins"},
                                         {"product_name", ""},
                                         {"quantity", 3},
                                         {"value", 2970000}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, PriceOfZeroIsAPrice) {
  purchase.product.thePrice = Decimal();
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", 0},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", 3},
                                         {"value", 0}}));
}

TEST_F(EventBuilderTest, NegativeQuantityCounts) {
  purchase.payment.theQuantity = -4;
  purchase.product.thePrice = decimal("0.5");
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", 500000},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", -4},
                                         {"value", -2000000}}));
}

TEST_F(EventBuilderTest, PriceThatIsNotANumberGivesTheLeastAmount) {
  purchase.product.thePrice = Decimal::notANumber();
  constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", kLeast},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", 3},
                                         {"value", kLeast}}));
}

// Both amounts are products of the price as it is: `echo '15.12*9*1000000' | bc` gives
// 136080000.00.
struct AmountCase {
  const char* name;
  const char* price;
  std::int64_t quantity;
  std::int64_t priceInMicros;
  std::int64_t value;
  friend std::ostream& operator<<(std::ostream& out, const AmountCase& c) { return out << c.name; }
};

class EventAmountTest : public EventBuilderTest,
                        public ::testing::WithParamInterface<AmountCase> {};

TEST_P(EventAmountTest, IsTheExactProductTruncatedTowardZero) {
  purchase.product.thePrice = decimal(GetParam().price);
  purchase.payment.theQuantity = GetParam().quantity;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", GetParam().priceInMicros},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", GetParam().quantity},
                                         {"value", GetParam().value}}));
}

// In each case a product of doubles falls short of the value by 1; at 8.29, of the price too.
INSTANTIATE_TEST_SUITE_P(NoDoubleError, EventAmountTest,
                         ::testing::Values(AmountCase{"OneAt8_29", "8.29", 1, 8290000, 8290000},
                                           AmountCase{"NineAt15_12", "15.12", 9, 15120000,
                                                      136080000},
                                           AmountCase{"SevenAt0_29", "0.29", 7, 290000, 2030000}),
                         nameOfCase<AmountCase>);

INSTANTIATE_TEST_SUITE_P(
    FractionsOfAMicro, EventAmountTest,
    ::testing::Values(AmountCase{"AreDroppedFromEachAmount", "1.2345678", 1, 1234567, 1234567},
                      AmountCase{"AddUpInTheValue", "0.0000005", 3, 0, 1},
                      AmountCase{"AddUpToAMicroInTheValue", "0.0000005", 2, 0, 1},
                      AmountCase{"AddUpInANegativeValue", "-0.0000015", 3, -1, -4}),
    nameOfCase<AmountCase>);

// As signed numbers, the low 32 bits of these quantities are 0, 3, -2147483648 and -3.
INSTANTIATE_TEST_SUITE_P(
    QuantitiesOfMoreThan32Bits, EventAmountTest,
    ::testing::Values(
        AmountCase{"LowHalfZero", "0.01", std::int64_t{1} << 32, 10000, 42949672960000},
        AmountCase{"LowHalfThree", "0.01", (std::int64_t{1} << 32) + 3, 10000, 42949672990000},
        AmountCase{"SignBitOfTheLowHalf", "0.01", std::int64_t{1} << 31, 10000, 21474836480000},
        AmountCase{"Negative", "0.01", -(std::int64_t{1} << 32) - 3, 10000, -42949672990000}),
    nameOfCase<AmountCase>);

// --- Required keys ---

TEST_F(EventBuilderTest, MissingPriceGivesNoEventAndLogsNothingOfItsOwn) {
  purchase.product.thePrice = std::nullopt;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, MissingCurrencyCodeGivesNoEventAndLogsNothingOfItsOwn) {
  purchase.product.theCurrencyCode = std::nullopt;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, MissingCurrencyCodeGivesNoEventForAFreeTrialEither) {
  makeMonthly(purchase, {freeTrial(firstMonth())});
  purchase.product.theCurrencyCode = std::nullopt;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40009), logged(40010)}));
}

TEST_F(EventBuilderTest, QuantityOfZeroGivesNoEvent) {
  purchase.payment.theQuantity = 0;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, MissingPaymentReadsAQuantityOfZero) {
  purchase.transaction.thePayment = nullptr;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

TEST_F(EventBuilderTest, QuantityOfZeroGivesNoEventForAPricedOffer) {
  makeIntroductoryOffer(purchase, "1.99", 0);
  purchase.payment.theQuantity = 0;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40018), logged(40010)}));
}

TEST_F(EventBuilderTest, QuantityOfZeroIsMadeUpForByAFreeTrial) {
  makeMonthly(purchase, {freeTrial(firstMonth())});
  purchase.payment.theQuantity = 0;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf100077monthly},
                                         {"currency", "EUR"},
                                         {"free_trial", 1},
                                         {"original_price", 4990000},
                                         {"price", 0},
                                         {"price_is_discounted", 1},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"subscription", 1},
                                         {"value", 0}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40009), logged(40010)}));
}

TEST_F(EventBuilderTest, QuantityOfZeroIsMadeUpForByAnOfferOfPaymentModeTwo) {
  makeIntroductoryOffer(purchase, "1.99", 2);
  purchase.payment.theQuantity = 0;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf100077monthly},
                                         {"currency", "EUR"},
                                         {"original_price", 4990000},
                                         {"price", 0},
                                         {"price_is_discounted", 1},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"subscription", 1},
                                         {"value", 0}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40018), logged(40010)}));
}

TEST_F(EventBuilderTest, MissingPriceIsMadeUpForByAFreeTrial) {
  makeMonthly(purchase, {freeTrial(firstMonth())});
  purchase.product.thePrice = std::nullopt;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf100077monthly},
                                         {"currency", "EUR"},
                                         {"free_trial", 1},
                                         {"price", 0},
                                         {"price_is_discounted", 1},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"subscription", 1},
                                         {"value", 0}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40009), logged(40010)}));
}

TEST_F(EventBuilderTest, MissingPriceIsMadeUpForByAPricedOffer) {
  makeIntroductoryOffer(purchase, "1.99", 0);
  purchase.product.thePrice = std::nullopt;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf100077monthly},
                                         {"currency", "EUR"},
                                         {"price", 1990000},
                                         {"price_is_discounted", 1},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"subscription", 1},
                                         {"value", 1990000}}));
}

// --- The stages together ---

TEST_F(EventBuilderTest, WhenValidationReturnsNothingTheDiscountStageDoesToo) {
  const std::optional<EventParameters> validated = QELValidatedInAppPurchaseParameters(
      listOf(purchase.receipt), "coins", "1", std::nullopt, kMarchInstant, EventParameters());
  EXPECT_TRUE(isNothing(validated));
  EXPECT_TRUE(
      isNothing(QELDiscountParameters(validated, purchase.product, purchase.transaction, 1000000)));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {}));
  EXPECT_EQ(purchase.asked, Asked());
}

TEST_F(EventBuilderTest, PricedOfferReplacesPriceAndValueAndKeepsTheOriginalPrice) {
  makeIntroductoryOffer(purchase, "1.99", 0);
  purchase.payment.theQuantity = 2;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf100077monthly},
                                         {"currency", "EUR"},
                                         {"original_price", 4990000},
                                         {"price", 1990000},
                                         {"price_is_discounted", 1},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"quantity", 2},
                                         {"subscription", 1},
                                         {"value", 3980000}}));
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
  purchase.product.thePrice = Decimal();
  purchase.payment.theQuantity = 1;
  const std::optional<EventParameters> event = purchase.event();
  ASSERT_TRUE(event.has_value());
  EXPECT_TRUE(hasDistinctValues(*event));
}

TEST_F(EventBuilderTest, EveryValueOfAFreeTrialOfAFreeProductIsAnObjectOfItsOwn) {
  makeMonthly(purchase, {freeTrial(firstMonth())});
  purchase.product.thePrice = Decimal();
  const std::optional<EventParameters> event = purchase.event();
  ASSERT_TRUE(event.has_value());
  EXPECT_TRUE(hasDistinctValues(*event));
}

TEST_F(EventBuilderTest, OfferWithoutAPriceKeepsTheFullPrice) {
  makeIntroductoryOffer(purchase, "1.99", 0);
  purchase.offer.thePrice = std::nullopt;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf100077monthly},
                                         {"currency", "EUR"},
                                         {"price", 4990000},
                                         {"price_is_discounted", 1},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"quantity", 1},
                                         {"subscription", 1},
                                         {"value", 4990000}}));
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
  purchase.transaction.theTransactionIdentifier = "2000";
  purchase.original.theTransactionIdentifier = "1000";
  purchase.transaction.theOriginalTransaction = &purchase.original;

  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf100077monthly},
                                         {"currency", "EUR"},
                                         {"price", 4990000},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"quantity", 1},
                                         {"sub_convert", 1},
                                         {"value", 4990000}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40008)}));
}

TEST_F(EventBuilderTest, TransactionDateKeepsItsFractionAndSoMatchesNoEntry) {
  makeMonthly(purchase, {firstMonth()});
  purchase.transaction.theTransactionDate = Instant{kMarchInstant.seconds, 250000000};
  EXPECT_TRUE(isEvent(purchase.event(), {{"currency", "EUR"},
                                         {"invalid", 1},
                                         {"price", 4990000},
                                         {"product_id", "monthly"},
                                         {"product_name", "Monthly"},
                                         {"quantity", 1},
                                         {"subscription", 1},
                                         {"value", 4990000}}));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40023, {"monthly"})}));
}

TEST_F(EventBuilderTest, RestoredNonConsumableDependsOnTheOriginalTransactionOfTheStore) {
  purchase.receipt = {entryOf(kNonConsumable, "coins", kMarch, "1", "1")};
  purchase.transaction.theTransactionIdentifier = "2";
  purchase.original.theTransactionIdentifier = "1";
  purchase.transaction.theOriginalTransaction = &purchase.original;
  EXPECT_TRUE(isEvent(purchase.event(), {{"currency", "USD"},
                                         {"invalid", 1},
                                         {"price", 990000},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", 3},
                                         {"value", 2970000}}));
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
  purchase.transaction.theOriginalTransaction = &purchase.original;
  purchase.event();
  Asked expected = questionsOfEveryPurchase();
  expected.insert(expected.end() - 1, "original.transactionIdentifier");
  EXPECT_EQ(purchase.asked, expected);
}

TEST_F(EventBuilderTest, DoesNotReadTheQuantityWithoutAPrice) {
  purchase.product.thePrice = std::nullopt;
  purchase.event();
  EXPECT_EQ(purchase.asked,
            Asked({"product.productIdentifier", "product.price", "product.priceLocaleCurrencyCode",
                   "product.localizedTitle", "transaction.transactionIdentifier",
                   "transaction.originalTransaction", "transaction.transactionDate"}));
}

TEST_F(EventBuilderTest, ReadsAQuantityOfZeroOnce) {
  purchase.payment.theQuantity = 0;
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

// A payment whose quantity counts up each time it is asked.
class CountingPayment : public StorePayment {
 public:
  std::int64_t quantity() const override { return ++asked_; }

 private:
  mutable std::int64_t asked_ = 0;
};

TEST_F(EventBuilderTest, TakesValueAndQuantityFromTheSecondReading) {
  const CountingPayment payment;
  purchase.transaction.thePayment = &payment;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", 990000},
                                         {"product_id", "coins"},
                                         {"product_name", "Coins"},
                                         {"quantity", 2},
                                         {"value", 1980000}}));
}

// --- Completion ---

constexpr std::array kRequired = {ParameterKey::kPrice, ParameterKey::kValue,
                                  ParameterKey::kCurrency, ParameterKey::kProductId};

EventParameters integersUnder(std::span<const ParameterKey> keys, std::int64_t integer) {
  EventParameters parameters;
  for (const ParameterKey key : keys) parameters.set(key, QELValue::initWithInt64(integer));
  return parameters;
}

TEST(CompletedEventTest, IsNothingWithoutValidatedParameters) {
  EXPECT_EQ(completedEvent(std::nullopt, std::nullopt), std::nullopt);
  EXPECT_EQ(completedEvent(std::nullopt, integersUnder(kRequired, 1)), std::nullopt);
}

TEST(CompletedEventTest, NeedsEachRequiredKeyAndNoOther) {
  for (unsigned present = 0; present < 16; ++present) {
    EventParameters validated = integersUnder(std::array{ParameterKey::kQuantity}, 2);
    for (unsigned i = 0; i < kRequired.size(); ++i) {
      if ((present >> i & 1) != 0) validated.set(kRequired[i], QELValue::initWithInt64(i));
    }
    EXPECT_EQ(completedEvent(std::move(validated), std::nullopt).has_value(), present == 15)
        << present;
  }
}

TEST(CompletedEventTest, TakesRequiredKeysFromTheDiscountToo) {
  const std::optional<EventParameters> event =
      completedEvent(integersUnder(std::span(kRequired).subspan(2), 1),
                     integersUnder(std::span(kRequired).first(2), 0));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->find(ParameterKey::kPrice)->int64Value(), 0);
  EXPECT_EQ(event->find(ParameterKey::kCurrency)->int64Value(), 1);
}

TEST(CompletedEventTest, TheDiscountWins) {
  const std::optional<EventParameters> event =
      completedEvent(integersUnder(kRequired, 1), integersUnder(std::span(kRequired).first(1), 2));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->find(ParameterKey::kPrice)->int64Value(), 2);
  EXPECT_EQ(event->find(ParameterKey::kValue)->int64Value(), 1);
}

// --- Exported names ---

TEST(ExportedKeysTest, HaveTheTextsThatEventsCarry) {
  EXPECT_EQ(kQELParameterInAppPurchaseInvalid, "invalid");
  EXPECT_EQ(kQELParameterIsSubscriptionConversion, "sub_convert");
  EXPECT_EQ(kQELParameterIsSubscriptionRenewal, "sub_renew");
}

TEST_F(EventBuilderTest, ResultIsLookedUpByAnExportedKey) {
  purchase.receipt = {};
  const std::optional<EventParameters> event = purchase.event();
  ASSERT_TRUE(event.has_value());
  const QELValuePtr invalid = event->find(kQELParameterInAppPurchaseInvalid);
  ASSERT_NE(invalid, nullptr);
  EXPECT_EQ(invalid->int64Value(), 1);
}

}  // namespace
}  // namespace qel::testing
