// Compares decimal numbers, and the amounts computed from them, with GMP and MPFR.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "decimal_oracle.h"
#include "joined.h"
#include "micros_and_dedupe_id.h"
#include "qel/decimal.h"
#include "qel/micros_multiplier.h"
#include "random_source.h"

namespace qel::testing {
namespace {

constexpr int kMostDigits = 38;
constexpr int kLeastExponent = -128;
constexpr int kGreatestExponent = 127;
constexpr std::int64_t kGreatestInteger = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeastInteger = std::numeric_limits<std::int64_t>::min();

mpz_class power(std::uint64_t base, std::uint64_t exponent) {
  mpz_class result;
  // The interface of GMP has this type.
  using Unsigned = unsigned long;  // NOLINT(google-runtime-int)
  mpz_ui_pow_ui(result.get_mpz_t(), static_cast<Unsigned>(base), static_cast<Unsigned>(exponent));
  return result;
}

// A number of the component and the same number as the oracle holds it.
struct BothNumbers {
  Decimal component;
  OracleDecimal expected;
};

BothNumbers ofInteger(std::int64_t integer) {
  return {Decimal::initWithLongLong(integer), OracleDecimal::ofInteger(integer)};
}

// Reads a text that both must take.
BothNumbers ofText(const std::string& text) {
  const std::optional<Decimal> component = Decimal::fromString(text);
  const OracleReading expected = oracleReading(text);
  EXPECT_TRUE(component.has_value()) << text;
  EXPECT_EQ(expected.kind, OracleReading::Kind::kNumber) << text;
  return {component.value_or(Decimal()), expected.number};
}

BothNumbers ofNumber(const mpz_class& coefficient, std::int64_t exponent) {
  return ofText(coefficient.get_str() + "e" + std::to_string(exponent));
}

BothNumbers operator*(const BothNumbers& left, const BothNumbers& right) {
  return {left.component.decimalNumberByMultiplyingBy(right.component),
          left.expected.times(right.expected)};
}

// Expects the same double, bit by bit: negative zero differs from zero.
void expectSameDouble(const BothNumbers& numbers) {
  const double component = numbers.component.doubleValue();
  const double expected = numbers.expected.nearestDouble();
  ASSERT_EQ(std::bit_cast<std::uint64_t>(component), std::bit_cast<std::uint64_t>(expected))
      << numbers.expected.written() << ": " << component << " is not " << expected;
}

void expectNotANumber(const Decimal& number) { ASSERT_TRUE(std::isnan(number.doubleValue())); }

// Expects that the component takes `text` exactly when the oracle does, as the same number.
void expectSameReading(const std::string& text) {
  const std::optional<Decimal> component = Decimal::fromString(text);
  const OracleReading expected = oracleReading(text);
  ASSERT_EQ(component.has_value(), expected.kind != OracleReading::Kind::kRejected) << text;
  if (expected.kind == OracleReading::Kind::kNotANumber) expectNotANumber(*component);
  if (expected.kind == OracleReading::Kind::kNumber)
    expectSameDouble({*component, expected.number});
}

// Expects the oracle's amount of `quantity` at the price that is written.
void expectSameAmount(const std::string& price, std::int64_t quantity) {
  const BothNumbers numbers = ofText(price);
  const OracleDecimal total = numbers.expected.times(OracleDecimal::ofInteger(quantity))
                                  .times(OracleDecimal::ofInteger(QELDataTypeMicrosMultiplier));
  ASSERT_EQ(QELValueInMicrosFromPriceAndQuantity(numbers.component, quantity),
            total.truncatedNearestDouble())
      << price << " x " << quantity;
}

std::string randomDigits(std::mt19937_64& random, int most) {
  std::string digits;
  for (int i = randomBetween(random, 1, most); i > 0; --i) {
    digits += static_cast<char>('0' + randomBetween(random, 0, 9));
  }
  return mpz_class(digits, 10).get_str();
}

std::string randomNumber(std::mt19937_64& random) {
  const std::string sign = randomBetween(random, 0, 1) == 0 ? "-" : "";
  const int exponent = randomBetween(random, kLeastExponent, kGreatestExponent);
  return sign + randomDigits(random, kMostDigits) + "e" + std::to_string(exponent);
}

// --- Reading ---

TEST(DecimalComparisonTest, EveryTextOfUpToSixCharactersIsReadAlike) {
  constexpr std::string_view kCharacters = "019-+.eE ";
  constexpr std::size_t kMostCharacters = 6;
  std::vector<std::string> texts = {""};
  for (std::size_t size = 0; size <= kMostCharacters; ++size) {
    std::vector<std::string> longer;
    for (const std::string& text : texts) {
      expectSameReading(text);
      if (size == kMostCharacters) continue;
      for (const char character : kCharacters) longer.push_back(text + character);
    }
    texts = std::move(longer);
  }
}

TEST(DecimalComparisonTest, EverySingleCharacterChangeIsReadAlike) {
  for (const std::string valid : {"-12.50e+03", "0.5", "1E-7", "NaN", "-0", "9007199254740993"}) {
    for (std::size_t i = 0; i <= valid.size(); ++i) {
      for (int byte = 0; byte < 256; ++byte) {
        std::string inserted = valid;
        expectSameReading(inserted.insert(i, 1, static_cast<char>(byte)));
        std::string replaced = valid;
        if (i < valid.size()) replaced[i] = static_cast<char>(byte);
        expectSameReading(replaced);
      }
      expectSameReading(valid.substr(0, i));
      expectSameReading(valid.substr(i));
      expectSameReading(valid.substr(0, i) + valid.substr(std::min(i + 1, valid.size())));
    }
  }
}

// Digits, zeros around them and exponents at and past every limit.
TEST(DecimalComparisonTest, EveryLimitOfDigitsAndExponentIsReadAlike) {
  for (const int digits : {1, 2, 37, 38, 39}) {
    const std::string nines(static_cast<std::size_t>(digits), '9');
    for (const std::size_t zeros : {0u, 1u, 2u, 36u, 37u, 38u, 200u}) {
      const std::string padding(zeros, '0');
      for (int exponent = -400; exponent <= 400; ++exponent) {
        const std::string written = "e" + std::to_string(exponent);
        expectSameReading(joined({nines, padding, written}));
        expectSameReading(joined({"-0.", padding, nines, written}));
        expectSameReading(joined({nines, ".", padding, written}));
        expectSameReading(joined({"1", padding, ".", nines, written}));
      }
    }
  }
}

TEST(DecimalComparisonTest, ExponentsOfAnyLengthAreReadAlike) {
  const std::string zeros(1000, '0');
  for (const std::string exponent :
       {"9999999999", "9223372036854775807", "9223372036854775808", "18446744073709551616",
        "340282366920938463463374607431768211456", "1000000000000000", "999999999999999"}) {
    for (const std::string sign : {"", "+", "-"}) {
      for (const std::string digits : {"0", "1", "-0.0", "10"}) {
        expectSameReading(joined({digits, "e", sign, exponent}));
        expectSameReading(joined({digits, "e", sign, zeros, exponent}));
        expectSameReading(joined({digits, "e", sign, zeros, "12"}));
        // A fraction whose zeros offset the exponent.
        const std::string last = digits.substr(digits.size() - 1);
        expectSameReading(joined({"0.", zeros, last, "e", sign, "1001"}));
      }
    }
  }
}

// --- The nearest double ---

TEST(DecimalComparisonTest, TheNearestDoubleOfEveryPowerOfTwoAndItsNeighbours) {
  for (std::uint64_t k = 0; k <= 126; ++k) {
    for (const int offset : {-1, 0, 1}) {
      for (std::int64_t exponent = kLeastExponent; exponent <= kGreatestExponent; ++exponent) {
        const mpz_class coefficient = power(2, k) + offset;
        expectSameDouble(ofNumber(coefficient, exponent));
      }
    }
  }
}

TEST(DecimalComparisonTest, TheNearestDoubleOfEveryPowerOfTenAndItsNeighbours) {
  for (std::int64_t exponent = kLeastExponent; exponent <= kGreatestExponent; ++exponent) {
    for (std::uint64_t zeros = 0; zeros < kMostDigits; ++zeros) {
      for (const int offset : {-1, 0, 1}) {
        const mpz_class coefficient = power(10, zeros) + offset;
        expectSameDouble(ofNumber(coefficient, exponent));
        expectSameDouble(ofText("-" + coefficient.get_str() + "e" + std::to_string(exponent)));
      }
    }
  }
}

TEST(DecimalComparisonTest, TheNearestDoubleOfEverySumOfExponents) {
  const std::array<mpz_class, 3> coefficients = {1, power(2, 53) + 1, power(10, kMostDigits) - 1};
  for (const mpz_class& left : coefficients) {
    for (const mpz_class& right : coefficients) {
      for (std::int64_t i = kLeastExponent; i <= kGreatestExponent; ++i) {
        const BothNumbers first = ofNumber(left, i);
        expectSameDouble(first * ofNumber(right, kLeastExponent));
        expectSameDouble(first * ofNumber(right, kGreatestExponent));
        expectSameDouble(first * ofNumber(right, i));
      }
    }
  }
}

// Expects the same double for the decimals of 38 digits next to numerator / denominator, on both
// sides of it.
void expectSameDoublesAround(const mpz_class& numerator, const mpz_class& denominator) {
  const mpz_class least = power(10, kMostDigits - 1);
  mpz_class scaled = numerator;
  mpz_class divisor = denominator;
  std::int64_t exponent = 0;
  while (scaled / divisor >= least * 10) {
    divisor *= 10;
    ++exponent;
  }
  while (scaled / divisor < least) {
    scaled *= 10;
    --exponent;
  }
  if (exponent < kLeastExponent || exponent > kGreatestExponent) return;
  const mpz_class below = scaled / divisor;
  for (const int offset : {-1, 0, 1, 2}) {
    const mpz_class coefficient = below + offset;
    if (coefficient < least * 10) expectSameDouble(ofNumber(coefficient, exponent));
  }
}

TEST(DecimalComparisonTest, TheNearestDoubleNextToHalfwayPointsOfEveryBinaryExponent) {
  std::mt19937_64 random = seededRandom();
  constexpr std::uint64_t kLeastMantissa = std::uint64_t{1} << 52;
  constexpr std::uint64_t kGreatestMantissa = 2 * kLeastMantissa - 1;
  for (int exponent = -480; exponent <= 500; ++exponent) {
    const auto magnitude = static_cast<std::uint64_t>(std::abs(exponent));
    std::vector<std::uint64_t> mantissas = {kLeastMantissa, kLeastMantissa + 1, kGreatestMantissa};
    for (int i = 0; i < 5; ++i) {
      mantissas.push_back(randomBetween(random, kLeastMantissa, kGreatestMantissa));
    }
    for (const std::uint64_t mantissa : mantissas) {
      const mpz_class halfway = 2 * mpz_class(std::to_string(mantissa)) + 1;
      if (exponent >= 0) {
        expectSameDoublesAround(halfway * power(2, magnitude), 1);
      } else {
        expectSameDoublesAround(halfway, power(2, magnitude));
      }
    }
  }
}

TEST(DecimalComparisonTest, TheNearestDoubleOfIntegersHalfwayBetweenDoubles) {
  std::mt19937_64 random = seededRandom();
  for (std::uint64_t shift = 0; shift <= 72; ++shift) {
    for (int i = 0; i < 200; ++i) {
      const std::uint64_t mantissa = (random() >> 11) | std::uint64_t{1} << 52;
      const mpz_class odd = 2 * mpz_class(std::to_string(mantissa)) + 1;
      const mpz_class halfway = odd * power(2, shift);
      if (halfway >= power(10, kMostDigits)) continue;
      for (const int offset : {-1, 0, 1})
        expectSameDouble(ofNumber(mpz_class(halfway + offset), 0));
    }
  }
}

// --- Products ---

TEST(DecimalComparisonTest, ProductsOfPowersOfTwoUpToTheWidest) {
  for (std::uint64_t left = 0; left <= 126; ++left) {
    for (std::uint64_t right = 0; right <= 126; ++right) {
      expectSameDouble(ofNumber(power(2, left), 0) * ofNumber(power(2, right), 0));
      expectSameDouble(ofNumber(mpz_class(power(2, left) - 1), 0) *
                       ofNumber(mpz_class(power(2, right) + 1), 0));
    }
  }
}

// Only a product that has all its digits comes out on the right side of a halfway point.
TEST(DecimalComparisonTest, ProductsNextToHalfwayPointsAreExact) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 50000; ++i) {
    const std::int64_t factor =
        static_cast<std::int64_t>(random() >> randomBetween(random, 1, 40)) | 1;
    const std::uint64_t mantissa = (random() >> 11) | std::uint64_t{1} << 52;
    const mpz_class odd = 2 * mpz_class(std::to_string(mantissa)) + 1;
    const mpz_class halfway =
        odd * power(2, randomBetween(random, std::uint64_t{20}, std::uint64_t{130}));
    const mpz_class below = halfway / mpz_class(std::to_string(factor));
    if (below == 0 || below + 1 >= power(10, kMostDigits)) continue;
    expectSameDouble(ofNumber(below, 0) * ofInteger(factor));
    expectSameDouble(ofInteger(-factor) * ofNumber(mpz_class(below + 1), 0));
    expectSameDouble(ofNumber(below, -6) * ofInteger(factor) *
                     ofInteger(QELDataTypeMicrosMultiplier));
  }
}

TEST(DecimalComparisonTest, ProductsHalfwayBetweenDoublesGoToTheEvenOne) {
  std::mt19937_64 random = seededRandom();
  for (int shift = 0; shift <= 62; ++shift) {
    const BothNumbers powerOfTwo = ofInteger(std::int64_t{1} << shift);
    for (int i = 0; i < 500; ++i) {
      const std::uint64_t mantissa = (random() >> 11) | std::uint64_t{1} << 52;
      const BothNumbers odd = ofInteger(static_cast<std::int64_t>(2 * mantissa + 1));
      expectSameDouble(odd * powerOfTwo);
      expectSameDouble(odd * powerOfTwo * powerOfTwo);
    }
  }
}

TEST(DecimalComparisonTest, RandomProductsAreExact) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 100000; ++i) {
    const BothNumbers price = ofText(randomNumber(random));
    const BothNumbers other = ofText(randomNumber(random));
    const BothNumbers units = ofInteger(static_cast<std::int64_t>(random()));
    expectSameDouble(price * other);
    expectSameDouble(units * price);
    expectSameDouble(units * price * ofInteger(QELDataTypeMicrosMultiplier));
    expectSameDouble(price * units * ofInteger(static_cast<std::int64_t>(random())));
  }
}

TEST(DecimalComparisonTest, EveryPairOfBoundaryIntegersMultipliesExactly) {
  std::vector<std::int64_t> integers = {kLeastInteger, kLeastInteger + 1, kGreatestInteger};
  for (int bit = 0; bit < 63; ++bit) {
    for (const std::int64_t offset : {-1, 0, 1}) {
      integers.push_back((std::int64_t{1} << bit) + offset);
      integers.push_back(-(std::int64_t{1} << bit) + offset);
    }
  }
  for (const std::int64_t left : integers) {
    for (const std::int64_t right : integers) expectSameDouble(ofInteger(left) * ofInteger(right));
  }
}

TEST(DecimalComparisonTest, TheWidestCoefficientIsHeldAndTheNextIsNotANumber) {
  // 2^256 - 1 = (2^64 - 1)(2^64 + 1)(2^128 + 1), and the last is a product of two primes.
  const BothNumbers widest = ofText("18446744073709551615") * ofText("18446744073709551617") *
                             ofText("59649589127497217") * ofText("5704689200685129054721");
  // As texts: to print numbers, GoogleTest would need the standard library of gmpxx.
  ASSERT_EQ(widest.expected.coefficient.get_str(), mpz_class(power(2, 256) - 1).get_str());
  expectSameDouble(widest);
  const BothNumbers half = ofText("18446744073709551616") * ofText("18446744073709551616") *
                           ofText("18446744073709551616") * ofText("9223372036854775808");
  ASSERT_EQ(half.expected.coefficient.get_str(), power(2, 255).get_str());
  expectSameDouble(half);
  expectNotANumber((half * ofInteger(2)).component);
  expectNotANumber((half * half).component);
  expectNotANumber((widest * widest).component);
}

TEST(DecimalComparisonTest, ProductsOnEitherSideOfTheWidestCoefficient) {
  std::mt19937_64 random = seededRandom();
  const mpz_class past = power(2, 256);
  for (int i = 0; i < 20000; ++i) {
    const mpz_class base(std::to_string(random()));
    const BothNumbers wide = ofNumber(mpz_class(base * 8 + 1), 0) *
                             ofNumber(mpz_class(base * 4 + 3), 0) *
                             ofNumber(mpz_class(base * 16 + 7), 0);
    const mpz_class greatest = (past - 1) / wide.expected.coefficient;
    if (greatest >= mpz_class(std::to_string(kGreatestInteger))) continue;
    const std::int64_t last = std::stoll(greatest.get_str());
    const BothNumbers fits = wide * ofInteger(last);
    ASSERT_TRUE(fits.expected.coefficient < past);
    expectSameDouble(fits);
    expectNotANumber((wide * ofInteger(last + 1)).component);
  }
}

TEST(DecimalComparisonTest, TheOutermostExponentsAreHeldAndTheNextAreNotANumber) {
  const BothNumbers least = ofText("1e-128") * ofText("1e-128");
  const BothNumbers greatest = ofText("1e127") * ofText("1e127");
  expectSameDouble(least);
  expectSameDouble(greatest);
  expectNotANumber((least * ofText("1e-1")).component);
  expectNotANumber((greatest * ofText("1e1")).component);
}

TEST(DecimalComparisonTest, NumbersAroundTheGreatestDoubleAndTooGreatOnes) {
  // Times 10^271. The greatest double is 1.797693134862315708...e308, and half a unit above it,
  // from where on the nearest is infinite, lies 1.79769313486231580793728971405303415079934...e308.
  for (const char* const digits :
       {"17976931348623157081452742373170435679", "17976931348623157081452742373170435680",
        "17976931348623158079372897140530341507", "17976931348623158079372897140530341508",
        "17976931348623159", "99999999999999999999999999999999999999"}) {
    const BothNumbers number =
        ofText(std::string(digits) + "e127") * ofText("1e127") * ofInteger(100'000'000'000'000'000);
    expectSameDouble(number);
    expectSameDouble(ofInteger(-1) * number);
  }
  const BothNumbers greatest = ofText("17976931348623158079372897140530341507e127") *
                               ofText("1e127") * ofInteger(100'000'000'000'000'000);
  EXPECT_EQ(greatest.component.doubleValue(), std::numeric_limits<double>::max());
}

TEST(DecimalComparisonTest, NotANumberStaysSo) {
  const Decimal notANumber = Decimal::notANumber();
  for (const Decimal& other : {Decimal(), notANumber, Decimal::initWithLongLong(kLeastInteger)}) {
    expectNotANumber(notANumber.decimalNumberByMultiplyingBy(other));
    expectNotANumber(other.decimalNumberByMultiplyingBy(notANumber));
  }
}

// --- Amounts ---

TEST(DecimalComparisonTest, AmountsAroundTheLimitsOf64Bits) {
  for (const std::string sign : {"", "-"}) {
    for (int offset = -3000; offset <= 3000; ++offset) {
      const mpz_class micros = power(2, 63) + offset;
      for (const std::string fraction : {"", ".000001", ".5", ".999999999999999999"}) {
        const std::string price = joined({sign, micros.get_str(), fraction, "e-6"});
        expectSameAmount(price, 1);
        expectSameAmount(price, -1);
        expectSameAmount(price + "0", 1);
      }
      for (int quantity = 2; quantity <= 16; ++quantity) {
        if (micros % quantity != 0) continue;
        const mpz_class unit = micros / quantity;
        expectSameAmount(sign + unit.get_str() + "e-6", quantity);
        expectSameAmount(sign + unit.get_str() + "e-6", -quantity);
      }
    }
  }
}

TEST(DecimalComparisonTest, AmountsAroundWholeMicrosOfEveryMagnitude) {
  for (const std::string sign : {"", "-"}) {
    for (std::uint64_t bit = 0; bit <= 64; ++bit) {
      const mpz_class micros = power(2, bit);
      for (const mpz_class& whole : {mpz_class(micros - 1), micros, mpz_class(micros + 1)}) {
        for (const std::string fraction :
             {"", ".1", ".5", ".9", ".999", ".999999999999", ".9999999999999999",
              ".99999999999999999", ".00000000000000001"}) {
          expectSameAmount(joined({sign, whole.get_str(), fraction, "e-6"}), 1);
        }
      }
    }
  }
}

TEST(DecimalComparisonTest, AmountsOfTheOutermostQuantities) {
  for (const std::int64_t quantity : {kLeastInteger, kLeastInteger + 1, kGreatestInteger}) {
    for (const char* const price :
         {"1", "-1", "0", "-0", "1e-6", "-1e-6", "1e-7", "1e-128", "1e127", "0.99",
          "99999999999999999999999999999999999999e127", "1.0000000000000001e-6"}) {
      expectSameAmount(price, quantity);
    }
  }
}

TEST(DecimalComparisonTest, RandomPricesGiveTheirAmounts) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 100000; ++i) {
    const std::string digits = randomDigits(random, 14);
    const int exponent = randomBetween(random, -9, 1);
    const std::int64_t quantity =
        static_cast<std::int64_t>(random()) >> randomBetween(random, 20, 63);
    expectSameAmount(digits + "e" + std::to_string(exponent), quantity);
    expectSameAmount(randomNumber(random), quantity);
  }
}

TEST(DecimalComparisonTest, OneUnitCostsWhatThePriceGives) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 50000; ++i) {
    const std::string text =
        randomDigits(random, 25) + "e" + std::to_string(randomBetween(random, -24, 0));
    const BothNumbers price = ofText(text);
    const std::int64_t multiplier = static_cast<std::int64_t>(random()) >> 20;
    ASSERT_EQ(amountFromPrice(price.component, multiplier),
              price.expected.times(OracleDecimal::ofInteger(multiplier)).truncatedNearestDouble())
        << text << " x " << multiplier;
  }
}

TEST(DecimalComparisonTest, AnAmountThatIsNotANumberIsTheLeastInteger) {
  EXPECT_EQ(QELValueInMicrosFromPriceAndQuantity(Decimal::notANumber(), 1), kLeastInteger);
  EXPECT_EQ(amountFromPrice(Decimal::notANumber(), 1000000), kLeastInteger);
}

}  // namespace
}  // namespace qel::testing
