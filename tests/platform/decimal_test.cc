#include "qel/decimal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();

const std::string k37Nines(37, '9');
const std::string k38Nines(38, '9');

// Reads a number for a table. One that cannot be read fails its own case, not the whole table.
Decimal read(std::string_view text) {
  return Decimal::fromString(text).value_or(Decimal::notANumber());
}

Decimal integer(std::int64_t value) { return Decimal::initWithLongLong(value); }

Decimal operator*(const Decimal& left, const Decimal& right) {
  return left.decimalNumberByMultiplyingBy(right);
}

// --- Conversion to a double ---

// Expected doubles are those of python3's float.hex(numerator / denominator) of the exact fraction,
// a division that rounds to the nearest double and a tie to the even one.
struct DoubleCase {
  const char* name;
  Decimal number;
  double nearest;
  friend std::ostream& operator<<(std::ostream& out, const DoubleCase& c) { return out << c.name; }
};

class DoubleTest : public ::testing::TestWithParam<DoubleCase> {};

TEST_P(DoubleTest, IsTheNearest) { EXPECT_EQ(GetParam().number.doubleValue(), GetParam().nearest); }

INSTANTIATE_TEST_SUITE_P(
    Written, DoubleTest,
    ::testing::Values(DoubleCase{"Zero", read("0"), 0.0},
                      DoubleCase{"NegativeZero", read("-0"), 0.0},
                      DoubleCase{"ZeroWithAFraction", read("0.000"), 0.0},
                      DoubleCase{"Integer", read("42"), 42.0},
                      DoubleCase{"NegativeInteger", read("-42"), -42.0},
                      DoubleCase{"TrailingZeros", read("4200"), 4200.0},
                      DoubleCase{"Fraction", read("8.29"), 0x1.0947ae147ae14p+3},
                      DoubleCase{"FractionWithTrailingZeros", read("8.2900"), 0x1.0947ae147ae14p+3},
                      DoubleCase{"Tenth", read("0.1"), 0x1.999999999999ap-4},
                      DoubleCase{"ZerosWithinAFraction", read("10.0625"), 10.0625},
                      DoubleCase{"Exponent", read("1.5e3"), 1500.0},
                      DoubleCase{"CapitalExponent", read("1.5E3"), 1500.0},
                      DoubleCase{"ExponentWithAPlus", read("1.5e+3"), 1500.0},
                      DoubleCase{"NegativeExponent", read("-12.5e-1"), -1.25},
                      DoubleCase{"ExponentWithLeadingZeros", read("25e-002"), 0.25},
                      DoubleCase{"ZeroInteger", read("0.5"), 0.5}),
    nameOfCase<DoubleCase>);

// Around the limits within which one operation on exact doubles is enough.
INSTANTIATE_TEST_SUITE_P(
    FewDigits, DoubleTest,
    ::testing::Values(
        DoubleCase{"TwoTo53", read("9007199254740992"), 0x1p+53},
        DoubleCase{"TwoTo53ByTenTo22", read("9007199254740992e22"), 0x1.0f0cf064dd592p+126},
        DoubleCase{"PastTwoTo53ByTenTo22", read("9007199254740993e22"), 0x1.0f0cf064dd593p+126},
        DoubleCase{"TwoTo53ByTenTo23", read("9007199254740992e23"), 0x1.52d02c7e14af6p+129},
        DoubleCase{"TwoTo53ByTenToMinus22", read("9007199254740992e-22"), 0x1.e392010175ee6p-21},
        DoubleCase{"PastTwoTo53ByTenToMinus22", read("9007199254740993e-22"),
                   0x1.e392010175ee7p-21},
        DoubleCase{"TwoTo53ByTenToMinus23", read("9007199254740992e-23"), 0x1.82db34012b251p-24},
        DoubleCase{"SevenByTenTo23", read("7e23"), 0x1.287626ee52198p+79},
        DoubleCase{"ThreeByTenToMinus23", read("3e-23"), 0x1.22246700e05bdp-75}),
    nameOfCase<DoubleCase>);

// From 2^53 on doubles are 2 apart. (2^53 + 1) x 5^53 x 10^-53 is 1 + 2^-53, halfway between 1 and
// the next double.
const Decimal kFiveTo53ByTenToMinus53 = read("11102230246251565404236316680908203125e-53");

INSTANTIATE_TEST_SUITE_P(
    Halfway, DoubleTest,
    ::testing::Values(
        DoubleCase{"GoesDownToTheEvenOne", read("9007199254740993"), 0x1p+53},
        DoubleCase{"GoesUpToTheEvenOne", read("9007199254740995"), 0x1.0000000000002p+53},
        DoubleCase{"OfANegativeGoesToTheEvenOne", read("-9007199254740993"), -0x1p+53},
        DoubleCase{"ExceededByTheLastOf38DigitsGoesUp",
                   read("9007199254740993.0000000000000000000001"), 0x1.0000000000001p+53},
        DoubleCase{"MissedByTheLastOf38DigitsGoesDown",
                   read("9007199254740994.9999999999999999999999"), 0x1.0000000000001p+53},
        DoubleCase{"BelowTwoGoesDownToTheEvenOne",
                   integer(9007199254740993) * kFiveTo53ByTenToMinus53, 1.0},
        DoubleCase{"BelowTwoGoesUpToTheEvenOne",
                   integer(9007199254740995) * kFiveTo53ByTenToMinus53, 0x1.0000000000002p+0}),
    nameOfCase<DoubleCase>);

// 2^1024 - 2^970, halfway from the greatest double to the first that does not exist, begins with
// 1.79769313486231580793728...e308.
Decimal timesTenTo286(const char* coefficient) {
  const Decimal tenTo127 = read("1e127");
  const Decimal tenTo16 = integer(10000000000000000);
  return read(coefficient) * tenTo127 * tenTo127 * tenTo16 * tenTo16;
}

INSTANTIATE_TEST_SUITE_P(
    Extremes, DoubleTest,
    ::testing::Values(
        DoubleCase{"ThirtyEightDigits", read("12345678901234567890123456789012345678"),
                   0x1.29361ede00466p+123},
        DoubleCase{"GreatestThatIsRead", read(k38Nines + "e127"), 0x1.15d847ad00087p+548},
        DoubleCase{"LeastThatIsRead", read("1e-128"), 0x1.bba08cf8c979dp-426},
        DoubleCase{"GreatestExponentOfAProduct", read("1e127") * read("1e127"),
                   0x1.b4781ead1989ep+843},
        DoubleCase{"LeastExponentOfAProduct", read("1e-128") * read("1e-128"),
                   0x1.8062864ac6f43p-851},
        DoubleCase{"GreatestDouble", timesTenTo286("17976931348623158079372"),
                   std::numeric_limits<double>::max()},
        DoubleCase{"PastTheGreatestDouble", timesTenTo286("17976931348623158079373"), kInfinity},
        DoubleCase{"PastTheGreatestDoubleNegative", timesTenTo286("-17976931348623158079373"),
                   -kInfinity},
        DoubleCase{"GreatestProduct", read(k38Nines + "e127") * read(k38Nines + "e127"),
                   kInfinity}),
    nameOfCase<DoubleCase>);

INSTANTIATE_TEST_SUITE_P(Integers, DoubleTest,
                         ::testing::Values(DoubleCase{"None", Decimal(), 0.0},
                                           DoubleCase{"Zero", integer(0), 0.0},
                                           DoubleCase{"One", integer(1), 1.0},
                                           DoubleCase{"MinusOne", integer(-1), -1.0},
                                           DoubleCase{"Greatest", integer(kGreatest), 0x1p+63},
                                           DoubleCase{"Least", integer(kLeast), -0x1p+63}),
                         nameOfCase<DoubleCase>);

TEST(DecimalTest, NotANumberIsNotANumberAsADoubleEither) {
  EXPECT_TRUE(std::isnan(Decimal::notANumber().doubleValue()));
  EXPECT_TRUE(std::isnan(decimal("NaN").doubleValue()));
}

// --- Products ---

INSTANTIATE_TEST_SUITE_P(
    Products, DoubleTest,
    ::testing::Values(
        DoubleCase{"OfMoney", read("15.12") * integer(9) * integer(1000000), 136080000.0},
        DoubleCase{"OfASmallPrice", read("0.29") * integer(7) * integer(1000000), 2030000.0},
        DoubleCase{"ByZero", read("8.29") * integer(0), 0.0},
        DoubleCase{"ByZeroOfTheGreatestExponent", read("1e127") * integer(0), 0.0},
        DoubleCase{"ByZeroOfTheLeastExponent", read("1e-128") * integer(0), 0.0},
        DoubleCase{"OfPositiveAndNegative", read("2.5") * integer(-2), -5.0},
        DoubleCase{"OfNegativeAndPositive", read("-2.5") * integer(2), -5.0},
        DoubleCase{"OfTwoNegatives", read("-2.5") * integer(-2), 5.0},
        DoubleCase{"OfFractions", read("0.25") * read("0.5"), 0.125},
        DoubleCase{"OfOppositeExponents", read("1e127") * read("1e-127"), 1.0},
        // Exact: 4294967296 squared is 2^64, and 18446744073709551615 is 2^64 - 1.
        DoubleCase{"PastOneLimb", integer(4294967296) * integer(4294967296), 0x1p+64},
        DoubleCase{"OfTwoFullLimbs", read("18446744073709551615") * read("18446744073709551615"),
                   0x1p+128},
        DoubleCase{"OfAWideAndANarrowFactor",
                   read("85070591730234615865843651857942052864") * integer(4), 0x1p+128},
        DoubleCase{"OfANarrowAndAWideFactor",
                   integer(2) * read("85070591730234615865843651857942052864"), 0x1p+127},
        DoubleCase{"Widest", read(k38Nines) * integer(kGreatest) * integer(kGreatest),
                   0x1.2ced32a16a1b1p+252}),
    nameOfCase<DoubleCase>);

// Each digit of a product counts: 9007199254740993 is halfway between two doubles, and what follows
// it is beyond the digits of either factor.
TEST(DecimalTest, ProductKeepsEveryDigit) {
  const Decimal halfway = integer(9007199254740993);
  const Decimal slightlyMore = decimal("1.0000000000000000000000000000000000001");
  EXPECT_EQ(halfway.doubleValue(), 9007199254740992.0);
  EXPECT_EQ((halfway * slightlyMore).doubleValue(), 9007199254740994.0);
}

// 2^126 x 2^126 x 15 stays below 2^256; 2^126 x 2^126 x 16 is 2^256.
TEST(DecimalTest, ProductOf256BitsFitsAndOneOf257IsNotANumber) {
  const Decimal twoTo126 = decimal("85070591730234615865843651857942052864");
  EXPECT_EQ((twoTo126 * twoTo126 * integer(15)).doubleValue(), 15 * 0x1p+252);
  EXPECT_TRUE(std::isnan((twoTo126 * twoTo126 * integer(16)).doubleValue()));
}

// 2^256 - 1 is (2^64 - 1) x (2^64 + 1) x 59649589127497217 x 5704689200685129054721.
TEST(DecimalTest, ProductOf256OnesFits) {
  const Decimal product = decimal("18446744073709551615") * decimal("18446744073709551617") *
                          integer(59649589127497217) * decimal("5704689200685129054721");
  EXPECT_EQ(product.doubleValue(), 0x1p+256);
  EXPECT_TRUE(std::isnan((product * integer(2)).doubleValue()));
}

TEST(DecimalTest, ProductPastTheGreatestExponentIsNotANumber) {
  const Decimal tenTo254 = decimal("1e127") * decimal("1e127");
  EXPECT_FALSE(std::isnan((tenTo254 * integer(10)).doubleValue()));
  EXPECT_TRUE(std::isnan((tenTo254 * decimal("1e1")).doubleValue()));
}

TEST(DecimalTest, ProductPastTheLeastExponentIsNotANumber) {
  const Decimal tenToMinus256 = decimal("1e-128") * decimal("1e-128");
  EXPECT_FALSE(std::isnan((tenToMinus256 * integer(10)).doubleValue()));
  EXPECT_TRUE(std::isnan((tenToMinus256 * decimal("0.1")).doubleValue()));
}

TEST(DecimalTest, ProductWithNotANumberIsNotANumber) {
  const Decimal nan = Decimal::notANumber();
  EXPECT_TRUE(std::isnan((nan * integer(2)).doubleValue()));
  EXPECT_TRUE(std::isnan((integer(2) * nan).doubleValue()));
  EXPECT_TRUE(std::isnan((nan * integer(0)).doubleValue()));
  EXPECT_TRUE(std::isnan((nan * nan).doubleValue()));
}

// --- What can be read ---

struct DecimalTextCase {
  const char* name;
  std::string text;
  friend std::ostream& operator<<(std::ostream& out, const DecimalTextCase& c) {
    return out << c.text;
  }
};

class ReadableDecimalTest : public ::testing::TestWithParam<DecimalTextCase> {};

TEST_P(ReadableDecimalTest, IsRead) {
  EXPECT_TRUE(Decimal::fromString(GetParam().text).has_value());
}

class UnreadableDecimalTest : public ::testing::TestWithParam<DecimalTextCase> {};

TEST_P(UnreadableDecimalTest, GivesNothing) {
  EXPECT_FALSE(Decimal::fromString(GetParam().text).has_value());
}

INSTANTIATE_TEST_SUITE_P(
    Syntax, UnreadableDecimalTest,
    ::testing::Values(
        DecimalTextCase{"Empty", ""}, DecimalTextCase{"LoneMinus", "-"},
        DecimalTextCase{"LeadingPlus", "+1"}, DecimalTextCase{"TwoSigns", "--1"},
        DecimalTextCase{"LeadingZero", "01"}, DecimalTextCase{"TwoZeros", "00"},
        DecimalTextCase{"NegativeLeadingZero", "-01"}, DecimalTextCase{"NoInteger", ".5"},
        DecimalTextCase{"NoIntegerNegative", "-.5"}, DecimalTextCase{"NoFraction", "1."},
        DecimalTextCase{"NoFractionBeforeAnExponent", "1.e5"}, DecimalTextCase{"NoExponent", "1e"},
        DecimalTextCase{"NoExponentAfterItsSign", "1e+"},
        DecimalTextCase{"NoNegativeExponent", "1e-"}, DecimalTextCase{"TwoExponentSigns", "1e+-5"},
        DecimalTextCase{"FractionalExponent", "1e5.0"}, DecimalTextCase{"TwoPoints", "1.5.2"},
        DecimalTextCase{"LeadingSpace", " 1"}, DecimalTextCase{"TrailingSpace", "1 "},
        DecimalTextCase{"TrailingLetter", "1x"},
        DecimalTextCase{"TrailingNul", std::string("1\0", 2)},
        DecimalTextCase{"DecimalComma", "1,5"}, DecimalTextCase{"Grouping", "1,000.5"},
        DecimalTextCase{"Hexadecimal", "0x10"}, DecimalTextCase{"Infinity", "Infinity"},
        DecimalTextCase{"LowerCaseNan", "nan"}, DecimalTextCase{"UpperCaseNan", "NAN"},
        DecimalTextCase{"NegativeNan", "-NaN"}, DecimalTextCase{"NanAndMore", "NaN1"},
        DecimalTextCase{"FullWidthDigit", "\xEF\xBC\x91"},
        DecimalTextCase{"ArabicDigit", "\xD9\xA1"}, DecimalTextCase{"CharacterBeforeZero", "/"},
        DecimalTextCase{"CharacterAfterNine", ":"}),
    nameOfCase<DecimalTextCase>);

// Leading and trailing zeros are no digits of the coefficient, and an exponent above the limit can
// be made smaller by writing zeros out, as far as there is room in 38 digits.
INSTANTIATE_TEST_SUITE_P(
    Digits, ReadableDecimalTest,
    ::testing::Values(DecimalTextCase{"ThirtyEight", k38Nines},
                      DecimalTextCase{"ThirtyEightNegative", "-" + k38Nines},
                      DecimalTextCase{"ThirtyEightAfterThePoint", "0." + k38Nines},
                      DecimalTextCase{"ThirtyEightAroundThePoint", "9." + k37Nines},
                      DecimalTextCase{"ThirtyEightAndAZero", k38Nines + "0"},
                      DecimalTextCase{"ThirtyEightAndAFractionOfZeros", k38Nines + ".00"},
                      DecimalTextCase{"ThirtyEightAfterManyZeros",
                                      "0." + std::string(90, '0') + k38Nines},
                      DecimalTextCase{"ThirtyEightFromOneToOne", "1" + std::string(36, '0') + "1"}),
    nameOfCase<DecimalTextCase>);

INSTANTIATE_TEST_SUITE_P(
    Digits, UnreadableDecimalTest,
    ::testing::Values(DecimalTextCase{"ThirtyNine", k38Nines + "9"},
                      DecimalTextCase{"ThirtyNineAfterThePoint", "0." + k38Nines + "1"},
                      DecimalTextCase{"ThirtyNineAroundThePoint", k38Nines + ".1"},
                      DecimalTextCase{"ThirtyNineFromOneToOne", "1" + std::string(37, '0') + "1"},
                      DecimalTextCase{
                          "ThirtyNineFromOneToOneAroundThePoint",
                          "1" + std::string(30, '0') + "." + std::string(7, '0') + "1"}),
    nameOfCase<DecimalTextCase>);

INSTANTIATE_TEST_SUITE_P(
    Exponents, ReadableDecimalTest,
    ::testing::Values(DecimalTextCase{"Greatest", "1e127"},
                      DecimalTextCase{"GreatestOf38Digits", k38Nines + "e127"},
                      DecimalTextCase{"GreatestWithZerosWrittenOut", "1e164"},
                      DecimalTextCase{"GreatestOf37DigitsWithAZeroWrittenOut", k37Nines + "e128"},
                      DecimalTextCase{"GreatestAsZeros", "1" + std::string(164, '0')},
                      DecimalTextCase{"GreatestAsAFraction", "0.1e165"},
                      DecimalTextCase{"Least", "1e-128"},
                      DecimalTextCase{"LeastOf38Digits", k38Nines + "e-128"},
                      DecimalTextCase{"LeastAfterATrailingZero", "10e-129"},
                      DecimalTextCase{"LeastAsZeros", "0." + std::string(127, '0') + "1"},
                      DecimalTextCase{"ZeroWithAHugeExponent", "0e99999999999999999999"},
                      DecimalTextCase{"ZeroWithAHugeNegativeExponent",
                                      "-0.0e-99999999999999999999"}),
    nameOfCase<DecimalTextCase>);

INSTANTIATE_TEST_SUITE_P(
    Exponents, UnreadableDecimalTest,
    ::testing::Values(DecimalTextCase{"PastTheGreatest", "1e165"},
                      DecimalTextCase{"PastTheGreatestOf38Digits", k38Nines + "e128"},
                      DecimalTextCase{"PastTheGreatestOf37Digits", k37Nines + "e129"},
                      DecimalTextCase{"PastTheGreatestAsZeros", "1" + std::string(165, '0')},
                      DecimalTextCase{"PastTheLeast", "1e-129"},
                      DecimalTextCase{"PastTheLeastOf38Digits", k38Nines + "e-129"},
                      DecimalTextCase{"PastTheLeastAsZeros", "0." + std::string(128, '0') + "1"},
                      DecimalTextCase{"Huge", "1e99999999999999999999"},
                      DecimalTextCase{"HugeNegative", "1e-99999999999999999999"},
                      DecimalTextCase{"PastThe64BitRange", "1e18446744073709551617"},
                      DecimalTextCase{"NegativePastThe64BitRange", "1e-18446744073709551617"}),
    nameOfCase<DecimalTextCase>);

TEST(DecimalTest, HugeExponentCanBeOutweighedByZeros) {
  EXPECT_EQ(decimal("0." + std::string(999, '0') + "5e1000").doubleValue(), 5.0);
  EXPECT_EQ(decimal("5" + std::string(1000, '0') + "e-1000").doubleValue(), 5.0);
}

// --- Minor units ---

TEST(MinorUnitsTest, AreDividedByAPowerOfTen) {
  EXPECT_EQ(Decimal::fromMinorUnits(499, 2), decimal("4.99"));
  EXPECT_EQ(Decimal::fromMinorUnits(-499, 2), decimal("-4.99"));
  EXPECT_EQ(Decimal::fromMinorUnits(120, 0), decimal("120"));
  EXPECT_EQ(Decimal::fromMinorUnits(1, 38), decimal("1e-38"));
  EXPECT_EQ(Decimal::fromMinorUnits(499, 2).doubleValue(), 4.99);
}

TEST(MinorUnitsTest, AreNotANumberWithOtherDigits) {
  EXPECT_TRUE(std::isnan(Decimal::fromMinorUnits(499, -1).doubleValue()));
  EXPECT_TRUE(std::isnan(Decimal::fromMinorUnits(499, 39).doubleValue()));
}

// --- Equality ---

TEST(DecimalEqualityTest, IsThatOfTheNumbers) {
  EXPECT_EQ(Decimal::initWithLongLong(10), decimal("10"));
  EXPECT_EQ(Decimal::initWithLongLong(10), Decimal::fromMinorUnits(1000, 2));
  EXPECT_EQ(decimal("0"), decimal("-0.00"));
  EXPECT_EQ(Decimal::fromMinorUnits(0, 2), Decimal());
  EXPECT_NE(decimal("1"), decimal("-1"));
  EXPECT_NE(decimal("1"), decimal("10"));
  EXPECT_NE(decimal("1"), decimal("2"));
  EXPECT_NE(decimal("0"), decimal("1"));
  EXPECT_NE(decimal("1"), decimal("0"));
}

TEST(DecimalEqualityTest, ComparesEveryDigitOfAProduct) {
  const Decimal third = decimal("33333333333333333333333333333333333333");
  const Decimal product = third.decimalNumberByMultiplyingBy(third);
  EXPECT_EQ(product, third.decimalNumberByMultiplyingBy(third));
  EXPECT_NE(product,
            third.decimalNumberByMultiplyingBy(decimal("33333333333333333333333333333333333334")));
}

TEST(DecimalEqualityTest, NotANumberEqualsNothing) {
  EXPECT_NE(Decimal::notANumber(), Decimal::notANumber());
  EXPECT_NE(Decimal::notANumber(), Decimal());
  EXPECT_NE(Decimal(), Decimal::notANumber());
}

// --- JSON numbers ---

class JsonNumberTest : public ::testing::TestWithParam<const char*> {};

TEST_P(JsonNumberTest, IsANumber) { EXPECT_TRUE(Decimal::isJsonNumber(GetParam())); }

INSTANTIATE_TEST_SUITE_P(IsJsonNumber, JsonNumberTest,
                         ::testing::Values("0", "-0", "7", "-7", "10", "1234567890", "0.0", "-0.5",
                                           "10.25", "1e5", "1E5", "1e+5", "1e-5", "0e0", "0.5E-10",
                                           "1e007", "99999999999999999999999999"));

class NoJsonNumberTest : public ::testing::TestWithParam<const char*> {};

TEST_P(NoJsonNumberTest, IsNone) { EXPECT_FALSE(Decimal::isJsonNumber(GetParam())); }

INSTANTIATE_TEST_SUITE_P(IsJsonNumber, NoJsonNumberTest,
                         ::testing::Values("", "-", "+1", "00", "01", "-01", ".5", "5.", "-.5",
                                           "1.e5", "1e", "1e+", "1e-", "e5", "1e5.0", "1.2.3",
                                           "0x10", "1_000", "1,5", " 1", "1 ", "--1", "1e5e5",
                                           "Infinity", "-Infinity", "NaN", "nan", "1a", "1e1a"));

}  // namespace
}  // namespace qel::testing
