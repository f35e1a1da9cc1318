#include <gtest/gtest.h>

#include <limits>
#include <ostream>

#include "qel/decimal.h"
#include "qel/instant.h"
#include "qel/receipt_item.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// --- Instants ---

struct InstantCase {
  const char* name;
  Instant instant;
  const char* text;
  friend std::ostream& operator<<(std::ostream& out, const InstantCase& c) { return out << c.text; }
};

const InstantCase kInstants[] = {
    {"Second", Instant(1552555613), "2019-03-14T09:26:53Z"},
    {"Fraction", Instant(1552555613, 250000000), "2019-03-14T09:26:53.250000000Z"},
    {"BeforeTheEpoch", Instant(-1, 999999999), "1969-12-31T23:59:59.999999999Z"},
    {"FirstWithATimestamp", Instant(-62167219200), "0000-01-01T00:00:00Z"},
    {"BeforeAll", Instant(-62167219201), "-62167219201 s"},
    {"LastWithATimestamp", Instant(253402300799), "9999-12-31T23:59:59Z"},
    {"AfterAll", Instant(253402300800), "253402300800 s"},
    {"Greatest", Instant(std::numeric_limits<std::int64_t>::max()), "9223372036854775807 s"},
};

class InstantPrintingTest : public ::testing::TestWithParam<InstantCase> {};

TEST_P(InstantPrintingTest, IsATimestamp) {
  EXPECT_EQ(toString(GetParam().instant), GetParam().text);
  EXPECT_EQ(::testing::PrintToString(GetParam().instant), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Instants, InstantPrintingTest, ::testing::ValuesIn(kInstants),
                         nameOfCase<InstantCase>);

// --- Decimals ---

struct DecimalCase {
  const char* name;
  Decimal decimal;
  const char* text;
  friend std::ostream& operator<<(std::ostream& out, const DecimalCase& c) { return out << c.text; }
};

const Decimal kGreatest38Digits = *Decimal::fromString("99999999999999999999999999999999999999");

const DecimalCase kDecimals[] = {
    {"Price", *Decimal::fromString("8.29"), "8.29"},
    {"Negative", *Decimal::fromString("-0.05"), "-0.05"},
    {"Zero", Decimal(), "0"},
    {"ZeroWithPlaces", Decimal::fromMinorUnits(0, 2), "0.00"},
    {"MinorUnits", Decimal::fromMinorUnits(500, 2), "5.00"},
    {"ZerosAtTheEnd", *Decimal::fromString("1200"), "1200"},
    {"Product", kGreatest38Digits.decimalNumberByMultiplyingBy(Decimal::initWithLongLong(10)),
     "999999999999999999999999999999999999990"},
    {"Large", *Decimal::fromString("12e100"), "12e100"},
    {"Small", *Decimal::fromString("12e-100"), "12e-100"},
    {"FortyPlaces", *Decimal::fromString("1e-40"), "0.0000000000000000000000000000000000000001"},
    {"FortyOnePlaces", *Decimal::fromString("1e-41"), "1e-41"},
    {"NotANumber", Decimal::notANumber(), "NaN"},
};

class DecimalPrintingTest : public ::testing::TestWithParam<DecimalCase> {};

TEST_P(DecimalPrintingTest, HasEveryDigit) {
  EXPECT_EQ(toString(GetParam().decimal), GetParam().text);
  EXPECT_EQ(::testing::PrintToString(GetParam().decimal), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Decimals, DecimalPrintingTest, ::testing::ValuesIn(kDecimals),
                         nameOfCase<DecimalCase>);

// --- Entries ---

TEST(ReceiptItemPrintingTest, HasTheFieldsThatArePresent) {
  const QELInAppPurchaseItem item{.productID = "monthly",
                                  .transactionID = "2000",
                                  .originalTransactionID = "1000",
                                  .webOrderLineItemID = "77",
                                  .purchaseDateIA5String = "2019-03-14T09:26:53Z",
                                  .purchaseType = 3,
                                  .isFreeTrial = true,
                                  .isIntroductoryOffer = true};
  EXPECT_EQ(::testing::PrintToString(item),
            "{productID: monthly, transactionID: 2000, originalTransactionID: 1000, "
            "webOrderLineItemID: 77, purchaseDateIA5String: 2019-03-14T09:26:53Z, "
            "purchaseType: 3, isFreeTrial, isIntroductoryOffer}");
}

TEST(ReceiptItemPrintingTest, LeavesOutWhatIsAbsent) {
  EXPECT_EQ(toString(QELInAppPurchaseItem()), "{}");
  EXPECT_EQ(toString(QELInAppPurchaseItem{.isFreeTrial = true}), "{isFreeTrial}");
}

}  // namespace
}  // namespace qel::testing
