#include "base_parameters.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <ostream>

#include "qel/purchase_event.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

class BaseParametersTest : public ::testing::Test {
 protected:
  Purchase purchase;
  ScopedRecordingMonitor monitor;
};

// --- Input checks ---

TEST_F(BaseParametersTest, MissingProductIsRejected) {
  EXPECT_TRUE(isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      nullptr, &purchase.transactionRecord, listOf(purchase.receipt))));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40026)}));
  EXPECT_EQ(purchase.asked, Asked());
}

TEST_F(BaseParametersTest, MissingProductIsRejectedBeforeAMissingTransaction) {
  EXPECT_TRUE(
      isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(nullptr, nullptr, {})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40026)}));
}

TEST_F(BaseParametersTest, EmptyProductIdentifierIsRejectedBeforeAMissingTransaction) {
  purchase.product.productIdentifier = "";
  EXPECT_TRUE(isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      &purchase.productRecord, nullptr, listOf(purchase.receipt))));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40027)}));
}

TEST_F(BaseParametersTest, AbsentProductIdentifierIsRejectedWithNothingElseAsked) {
  purchase.product.productIdentifier = std::nullopt;
  EXPECT_TRUE(isNothing(purchase.event()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40027)}));
  EXPECT_EQ(purchase.asked, Asked({"product.productIdentifier"}));
}

TEST_F(BaseParametersTest, MissingTransactionIsRejectedBeforeAnythingIsBuilt) {
  EXPECT_TRUE(isNothing(QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      &purchase.productRecord, nullptr, listOf(purchase.receipt))));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40028)}));
  EXPECT_EQ(purchase.asked, Asked({"product.productIdentifier"}));
}

TEST_F(BaseParametersTest, EmptyReceiptIsNoRejectionButAnInvalidEvent) {
  purchase.receipt = {};
  EXPECT_TRUE(isEvent(purchase.event(), coinsEvent({{"invalid", 1}})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40020, {"coins"})}));
}

// --- Base parameters ---

TEST_F(BaseParametersTest, AbsentTitleLeavesTheNameOut) {
  purchase.product.localizedTitle = std::nullopt;
  EXPECT_TRUE(isEvent(purchase.event(), {{"_did", kDedupeIdOf1coins},
                                         {"currency", "USD"},
                                         {"price", 990000},
                                         {"product_id", "coins"},
                                         {"quantity", 3},
                                         {"value", 2970000}}));
}

struct BaseParametersCase {
  const char* name;
  void (*change)(Purchase&);
  Event changed;
  friend std::ostream& operator<<(std::ostream& out, const BaseParametersCase& c) {
    return out << c.name;
  }
};

class ChangedBaseParametersTest : public BaseParametersTest,
                                  public ::testing::WithParamInterface<BaseParametersCase> {};

TEST_P(ChangedBaseParametersTest, AreThoseOfTheRecords) {
  GetParam().change(purchase);
  Event expected = GetParam().changed;
  expected["_did"] = kDedupeIdOf1coins;
  EXPECT_TRUE(isEvent(purchase.event(), coinsEvent(expected)));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021)}));
}

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

INSTANTIATE_TEST_SUITE_P(
    Records, ChangedBaseParametersTest,
    ::testing::Values(
        BaseParametersCase{"Consumable", [](Purchase&) {}, {}},
        BaseParametersCase{"EmptyTitleIsAValue",
                           [](Purchase& purchase) { purchase.product.localizedTitle = ""; },
                           {{"product_name", ""}}},
        BaseParametersCase{
            "EmptyCurrencyCodeIsAValue",
            [](Purchase& purchase) { purchase.product.priceLocaleCurrencyCode = ""; },
            {{"currency", ""}}},
        BaseParametersCase{"PriceOfZeroIsAPrice",
                           [](Purchase& purchase) { purchase.product.price = Decimal(); },
                           {{"price", 0}, {"value", 0}}},
        BaseParametersCase{"NegativeQuantityCounts",
                           [](Purchase& purchase) { purchase.transaction.quantity = -4; },
                           {{"quantity", -4}, {"value", -3960000}}},
        BaseParametersCase{
            "NotANumberGivesTheLeastAmount",
            [](Purchase& purchase) { purchase.product.price = Decimal::notANumber(); },
            {{"price", kLeast}, {"value", kLeast}}}),
    nameOfCase<BaseParametersCase>);

// Both amounts are products of the price as it is: `echo '15.12*9*1000000' | bc` gives
// 136080000.00.
struct EventAmountCase {
  const char* name;
  const char* price;
  std::int64_t quantity;
  std::int64_t priceInMicros;
  std::int64_t value;
  friend std::ostream& operator<<(std::ostream& out, const EventAmountCase& c) {
    return out << c.name;
  }
};

class EventAmountTest : public BaseParametersTest,
                        public ::testing::WithParamInterface<EventAmountCase> {};

TEST_P(EventAmountTest, IsTheExactProductTruncatedTowardZero) {
  purchase.product.price = decimal(GetParam().price);
  purchase.transaction.quantity = GetParam().quantity;
  EXPECT_TRUE(isEvent(purchase.event(), coinsEvent({{"_did", kDedupeIdOf1coins},
                                                    {"price", GetParam().priceInMicros},
                                                    {"quantity", GetParam().quantity},
                                                    {"value", GetParam().value}})));
}

// In each case a product of doubles falls short of the value by 1; at 8.29, of the price too.
INSTANTIATE_TEST_SUITE_P(
    NoDoubleError, EventAmountTest,
    ::testing::Values(EventAmountCase{"OneAt8_29", "8.29", 1, 8290000, 8290000},
                      EventAmountCase{"NineAt15_12", "15.12", 9, 15120000, 136080000},
                      EventAmountCase{"SevenAt0_29", "0.29", 7, 290000, 2030000}),
    nameOfCase<EventAmountCase>);

INSTANTIATE_TEST_SUITE_P(
    FractionsOfAMicro, EventAmountTest,
    ::testing::Values(EventAmountCase{"AreDroppedFromEachAmount", "1.2345678", 1, 1234567, 1234567},
                      EventAmountCase{"AddUpInTheValue", "0.0000005", 3, 0, 1},
                      EventAmountCase{"AddUpToAMicroInTheValue", "0.0000005", 2, 0, 1},
                      EventAmountCase{"AddUpInANegativeValue", "-0.0000015", 3, -1, -4}),
    nameOfCase<EventAmountCase>);

// As signed numbers, the low 32 bits of these quantities are 0, 3, -2147483648 and -3.
INSTANTIATE_TEST_SUITE_P(
    QuantitiesOfMoreThan32Bits, EventAmountTest,
    ::testing::Values(
        EventAmountCase{"LowHalfZero", "0.01", std::int64_t{1} << 32, 10000, 42949672960000},
        EventAmountCase{"LowHalfThree", "0.01", (std::int64_t{1} << 32) + 3, 10000, 42949672990000},
        EventAmountCase{"SignBitOfTheLowHalf", "0.01", std::int64_t{1} << 31, 10000,
                        21474836480000},
        EventAmountCase{"Negative", "0.01", -(std::int64_t{1} << 32) - 3, 10000, -42949672990000}),
    nameOfCase<EventAmountCase>);

}  // namespace
}  // namespace qel::testing
