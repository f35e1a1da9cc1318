#include "micros_and_dedupe_id.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();

// --- Amounts of several units ---

// The exact product is `echo 'price*quantity*1000000' | bc`. From 2^53 = 9007199254740992 on, the
// nearest double is that of `python3 -c 'print(int(float("...")))'`, whose float() rounds
// correctly.
struct AmountCase {
  const char* name;
  const char* price;
  std::int64_t quantity;
  std::int64_t amount;
  friend std::ostream& operator<<(std::ostream& out, const AmountCase& c) { return out << c.name; }
};

class AmountTest : public ::testing::TestWithParam<AmountCase> {};

TEST_P(AmountTest, IsTheExactProductTruncatedTowardZero) {
  EXPECT_EQ(QELValueInMicrosFromPriceAndQuantity(decimal(GetParam().price), GetParam().quantity),
            GetParam().amount);
}

INSTANTIATE_TEST_SUITE_P(Prices, AmountTest,
                         ::testing::Values(AmountCase{"ThreeAt0_99", "0.99", 3, 2970000},
                                           AmountCase{"NineAt15_12", "15.12", 9, 136080000},
                                           AmountCase{"OneAt8_29", "8.29", 1, 8290000},
                                           AmountCase{"SevenAt0_29", "0.29", 7, 2030000},
                                           AmountCase{"ZeroDecimalCurrency", "1200", 2, 2400000000},
                                           AmountCase{"ThreeDecimalCurrency", "1.234", 5, 6170000},
                                           AmountCase{"FreeOfCharge", "0", 5, 0},
                                           AmountCase{"NoUnits", "0.99", 0, 0}),
                         nameOfCase<AmountCase>);

INSTANTIATE_TEST_SUITE_P(
    Truncation, AmountTest,
    ::testing::Values(AmountCase{"DropsAFraction", "1.2345678", 1, 1234567},
                      AmountCase{"DropsANegativeFractionTowardZero", "0.0000015", -1, -1},
                      AmountCase{"OfANegativePriceGoesTowardZero", "-0.0000019", 1, -1},
                      AmountCase{"OfTwoNegativesIsPositive", "-0.0000019", -1, 1},
                      AmountCase{"OfLessThanAMicroGivesZero", "0.00000099", 1, 0},
                      AmountCase{"OfTheLeastPriceGivesZero", "1e-128", 1, 0},
                      AmountCase{"ComesAfterBothProducts", "0.0000005", 3, 1}),
    nameOfCase<AmountCase>);

INSTANTIATE_TEST_SUITE_P(Signs, AmountTest,
                         ::testing::Values(AmountCase{"NegativeQuantity", "0.5", -4, -2000000},
                                           AmountCase{"NegativePrice", "-0.5", 4, -2000000},
                                           AmountCase{"BothNegative", "-0.5", -4, 2000000}),
                         nameOfCase<AmountCase>);

// Doubles from 2^53 to 2^54 are 2 apart, from 2^54 to 2^55 they are 4 apart, and just below 1 they
// are closer than 10^-15.
INSTANTIATE_TEST_SUITE_P(
    NearestDouble, AmountTest,
    ::testing::Values(
        AmountCase{"IsExactUpToTwoTo53", "9007199254.740991", 1, 9007199254740991},
        AmountCase{"HalfwayGoesDownToTheEvenOne", "9007199254.740993", 1, 9007199254740992},
        AmountCase{"HalfwayGoesUpToTheEvenOne", "9007199254.740995", 1, 9007199254740996},
        AmountCase{"PastHalfwayGoesUp", "9007199254.7409930000000000000000000001", 1,
                   9007199254740994},
        AmountCase{"FractionMayRoundUpToAnInteger", "9007199254.7409915", 1, 9007199254740992},
        AmountCase{"AlmostOneMicroIsOne", "0.00000099999999999999999999999999", 1, 1},
        AmountCase{"QuantityPastTwoTo53", "0.000001", 9007199254740993, 9007199254740992}),
    nameOfCase<AmountCase>);

// The exact product, 18014398509481986.0000000000000000000003, has 39 digits. Cut to 38 it would
// stand halfway, and go down to 18014398509481984.
INSTANTIATE_TEST_SUITE_P(
    Digits, AmountTest,
    ::testing::Values(AmountCase{"ThirtyNinthCounts", "6004799503.1606620000000000000000000001", 3,
                                 18014398509481988},
                      AmountCase{"AllThirtyEightOfThePriceCount",
                                 "12345678.901234567890123456789012345678", 3, 37037036703703}),
    nameOfCase<AmountCase>);

// The greatest double below 2^63 is 9223372036854774784; 9223372036854775296 is halfway from it to
// 2^63, which does not fit. Below -2^63, which fits, the next double is -9223372036854777856. What
// does not fit gives the same number as -2^63 itself.
INSTANTIATE_TEST_SUITE_P(
    Range, AmountTest,
    ::testing::Values(
        AmountCase{"GreatestThatFits", "9223372036854.774784", 1, 9223372036854774784},
        AmountCase{"JustBelowHalfwayToTwoTo63", "9223372036854.775295", 1, 9223372036854774784},
        AmountCase{"HalfwayToTwoTo63", "9223372036854.775296", 1, kLeast},
        AmountCase{"GreatestIntegerRoundsPastTheRange", "9223372036854.775807", 1, kLeast},
        AmountCase{"LeastDoubleAboveTheLeast", "-9223372036854.774784", 1, -9223372036854774784},
        AmountCase{"JustAboveHalfwayToTheLeast", "-9223372036854.775295", 1, -9223372036854774784},
        AmountCase{"TheLeastItself", "-9223372036854.775808", 1, kLeast},
        AmountCase{"BelowTheLeast", "-9223372036854.777856", 1, kLeast},
        AmountCase{"GreatestQuantity", "0.000001", kGreatest, kLeast},
        AmountCase{"LeastQuantity", "0.000001", kLeast, kLeast},
        AmountCase{"LeastQuantityOfASmallPrice", "0.0000005", kLeast, -4611686018427387904},
        AmountCase{"FarTooLarge", "1e127", 1, kLeast},
        AmountCase{"FarTooLargeNegative", "-1e127", 1, kLeast},
        AmountCase{"WidestProduct", "99999999999999999999999999999999999999e127", kGreatest,
                   kLeast},
        AmountCase{"NotANumber", "NaN", 1, kLeast},
        AmountCase{"NotANumberTimesZero", "NaN", 0, kLeast}),
    nameOfCase<AmountCase>);

// --- The amount of one unit ---

TEST(AmountFromPriceTest, IsThePriceInMicros) {
  EXPECT_EQ(amountFromPrice(decimal("8.29"), 1000000), 8290000);
}

TEST(AmountFromPriceTest, UsesTheGivenMultiplier) {
  EXPECT_EQ(amountFromPrice(decimal("8.29"), 100), 829);
  EXPECT_EQ(amountFromPrice(decimal("8.29"), -10), -82);
  EXPECT_EQ(amountFromPrice(decimal("8.29"), 0), 0);
}

TEST(AmountFromPriceTest, IsTruncatedTowardZero) {
  EXPECT_EQ(amountFromPrice(decimal("7.9"), 1), 7);
  EXPECT_EQ(amountFromPrice(decimal("-1.5"), 1), -1);
}

TEST(AmountFromPriceTest, OutsideTheRangeIsTheLeastInteger) {
  EXPECT_EQ(amountFromPrice(decimal("9223372036854.775296"), 1000000), kLeast);
  EXPECT_EQ(amountFromPrice(decimal("1e127"), 1000000), kLeast);
  EXPECT_EQ(amountFromPrice(Decimal::notANumber(), 1000000), kLeast);
}

TEST(AmountFromPriceTest, JustInsideTheRangeIsKept) {
  EXPECT_EQ(amountFromPrice(decimal("9223372036854.774784"), 1000000), 9223372036854774784);
}

// --- Identifiers that cannot be worked out ---

constexpr std::uint64_t kAllOnes = 0xFFFFFFFFFFFFFFFF;

struct InsufficientCase {
  const char* name;
  OptionalText originalTransactionID;
  OptionalText webOrderLineItemID;
  OptionalText productID;
  friend std::ostream& operator<<(std::ostream& out, const InsufficientCase& c) {
    return out << c.name;
  }
};

class InsufficientIdentifierTest : public ::testing::TestWithParam<InsufficientCase> {};

TEST_P(InsufficientIdentifierTest, IsAllOnes) {
  EXPECT_EQ(QELTransactionDedupeID(GetParam().originalTransactionID, GetParam().webOrderLineItemID,
                                   GetParam().productID),
            kAllOnes);
}

INSTANTIATE_TEST_SUITE_P(
    Pieces, InsufficientIdentifierTest,
    ::testing::Values(
        InsufficientCase{"OriginalAbsent", std::nullopt, "77", "monthly"},
        InsufficientCase{"OriginalEmpty", "", "77", "monthly"},
        InsufficientCase{"ProductAbsent", "1000", "77", std::nullopt},
        InsufficientCase{"ProductEmpty", "1000", "77", ""},
        InsufficientCase{"ProductEmptyWithoutAWebOrder", "1000", std::nullopt, ""},
        InsufficientCase{"BothAbsent", std::nullopt, std::nullopt, std::nullopt},
        InsufficientCase{"BothEmpty", "", std::nullopt, ""},
        InsufficientCase{"OriginalEmptyBeforeAnUnencodableProduct", "", "77", "\xED\xA0\x80"},
        InsufficientCase{"ProductEmptyAfterAnUnencodableOriginal", "\xED\xA0\x80", "77", ""}),
    nameOfCase<InsufficientCase>);

// A surrogate half stands as the three bytes of its code point. U+D83D U+DE00 is the pair of
// U+1F600.
constexpr const char* kHighHalf = "\xED\xA0\xBD";
constexpr const char* kLowHalf = "\xED\xB8\x80";

struct UnencodableIdentifierCase {
  const char* name;
  std::string originalTransactionID;
  std::string productID;
  friend std::ostream& operator<<(std::ostream& out, const UnencodableIdentifierCase& c) {
    return out << c.name;
  }
};

class UnencodableIdentifierTest : public ::testing::TestWithParam<UnencodableIdentifierCase> {};

TEST_P(UnencodableIdentifierTest, IsZero) {
  EXPECT_EQ(
      QELTransactionDedupeID(GetParam().originalTransactionID, std::nullopt, GetParam().productID),
      0U);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, UnencodableIdentifierTest,
    ::testing::Values(
        UnencodableIdentifierCase{"HighHalfInTheProduct", "1", std::string("p") + kHighHalf},
        UnencodableIdentifierCase{"LowHalfInTheProduct", "1", std::string(kLowHalf) + "p"},
        UnencodableIdentifierCase{"HighHalfInTheOriginal", kHighHalf, "p"},
        UnencodableIdentifierCase{"HalvesInTheWrongOrder", kLowHalf, kHighHalf},
        UnencodableIdentifierCase{"CutShortCharacter", "1", "caf\xC3"},
        UnencodableIdentifierCase{"StrayByte", "1", "\xA9"}),
    nameOfCase<UnencodableIdentifierCase>);

TEST(DedupeIdPiecesTest, WebOrderBetweenTheHalvesOfAPairKeepsThemApart) {
  EXPECT_EQ(QELTransactionDedupeID(kHighHalf, "7", kLowHalf), 0U);
}

// --- Identifiers ---

// The digest is the end of what `printf %s TEXT | md5sum` prints.
struct DedupeCase {
  const char* name;
  const char* originalTransactionID;
  OptionalText webOrderLineItemID;
  const char* productID;
  std::uint64_t identifier;
  friend std::ostream& operator<<(std::ostream& out, const DedupeCase& c) { return out << c.name; }
};

class DedupeIdTest : public ::testing::TestWithParam<DedupeCase> {};

TEST_P(DedupeIdTest, IsTheDigestOfTheJoinedText) {
  EXPECT_EQ(QELTransactionDedupeID(GetParam().originalTransactionID, GetParam().webOrderLineItemID,
                                   GetParam().productID),
            GetParam().identifier);
}

INSTANTIATE_TEST_SUITE_P(
    WebOrders, DedupeIdTest,
    ::testing::Values(
        DedupeCase{"Present_100077monthly", "1000", "77", "monthly", 1247304248623414521},
        DedupeCase{"Absent_1000monthly", "1000", std::nullopt, "monthly", 0x92794F831B539753},
        DedupeCase{"Empty_1000monthly", "1000", "", "monthly", 0x92794F831B539753},
        DedupeCase{"PastSigned64Bits", "1", "18446744073709551615", "p", 0x478687BB792FFA45},
        DedupeCase{"PastAll64Bits", "1", "100000000000000000000000000000000000000", "p",
                   0x01E504A533AE346F},
        DedupeCase{"NotAnInteger_11Point5p", "1", "1.5", "p", 0x14B42C44B342D9AB},
        DedupeCase{"Zero_10p", "1", "0", "p", 0x3C22FB2094F24EB1},
        DedupeCase{"Negative_1Minus5p", "1", "-5", "p", 0xE13022126A37526E},
        DedupeCase{"Least", "1", "-9223372036854775808", "p", 0xA47290F9B2CB7501},
        DedupeCase{"Greatest", "1", "9223372036854775807", "p", 0xA1159CF1E4E812C6}),
    nameOfCase<DedupeCase>);

// All three hash the text 123p.
INSTANTIATE_TEST_SUITE_P(
    NoSeparator, DedupeIdTest,
    ::testing::Values(DedupeCase{"SplitAfterOne", "1", "23", "p", 0x08FC2B1D61F806F6},
                      DedupeCase{"SplitAfterTwo", "12", "3", "p", 0x08FC2B1D61F806F6},
                      DedupeCase{"SplitAfterThree", "123", std::nullopt, "p", 0x08FC2B1D61F806F6}),
    nameOfCase<DedupeCase>);

// The bytes of U+00E9 are C3 A9, those of U+1F600 are F0 9F 98 80.
INSTANTIATE_TEST_SUITE_P(
    NonAscii, DedupeIdTest,
    ::testing::Values(DedupeCase{"ProductIsHashedAsUtf8", "1", std::nullopt, "caf\xC3\xA9",
                                 0x565A426C17E55040},
                      DedupeCase{"CharacterOfFourBytes", "1", std::nullopt, "\xF0\x9F\x98\x80p",
                                 0xE65D239BE671A5B8},
                      DedupeCase{"PairInOnePiece", "1", std::nullopt, "\xED\xA0\xBD\xED\xB8\x80p",
                                 0xE65D239BE671A5B8},
                      DedupeCase{"PairAcrossTwoPieces", "1\xED\xA0\xBD", std::nullopt,
                                 "\xED\xB8\x80p", 0xE65D239BE671A5B8}),
    nameOfCase<DedupeCase>);

TEST(DedupeIdPiecesTest, WebOrderMakesADifference) {
  EXPECT_NE(QELTransactionDedupeID("1000", "77", "monthly"),
            QELTransactionDedupeID("1000", std::nullopt, "monthly"));
}

}  // namespace
}  // namespace qel::testing
