#include "qel/decimal.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <span>
#include <string>

#include "portable/wide_integer.h"

namespace qel {
namespace {

constexpr std::size_t kCoefficientLimbs = 4;
using Coefficient = std::array<Limb, kCoefficientLimbs>;

// Limits of a parsed number. A product may have twice the exponent.
constexpr int kMostDigits = 38;
constexpr int kLeastExponent = -128;
constexpr int kGreatestExponent = 127;

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

constexpr bool fitsOneLimb(const Coefficient& coefficient) {
  return coefficient[1] == 0 && coefficient[2] == 0 && coefficient[3] == 0;
}

// Removes the digits at the start of `text` and returns them.
std::string_view takeDigits(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

// Removes `character` from the start of `text` if it is there. Returns whether it was.
bool takeCharacter(std::string_view& text, char character) {
  if (!text.starts_with(character)) return false;
  text.remove_prefix(1);
  return true;
}

// The pieces of a number in JSON syntax.
struct WrittenNumber {
  bool isNegative = false;
  std::string_view integer;
  std::string_view fraction;
  bool exponentIsNegative = false;
  std::string_view exponent;
};

// Splits `text` into the pieces of `number`, which must be fresh. Returns false if it is not a
// number.
bool scan(std::string_view text, WrittenNumber& number) {
  number.isNegative = takeCharacter(text, '-');
  number.integer = takeDigits(text);
  if (number.integer.empty()) return false;
  if (number.integer.size() > 1 && number.integer.starts_with('0')) return false;
  if (takeCharacter(text, '.')) {
    number.fraction = takeDigits(text);
    if (number.fraction.empty()) return false;
  }
  if (takeCharacter(text, 'e') || takeCharacter(text, 'E')) {
    number.exponentIsNegative = takeCharacter(text, '-');
    if (!number.exponentIsNegative) takeCharacter(text, '+');
    number.exponent = takeDigits(text);
    if (number.exponent.empty()) return false;
  }
  return text.empty();
}

// Returns the exponent of `number`, at most 10^15 in magnitude, which is out of every range.
std::int64_t exponentOf(const WrittenNumber& number) {
  constexpr std::int64_t kOutOfEveryRange = 1'000'000'000'000'000;
  std::int64_t exponent = 0;
  for (const char digit : number.exponent) {
    exponent = std::min(exponent * 10 + (digit - '0'), kOutOfEveryRange);
  }
  return number.exponentIsNegative ? -exponent : exponent;
}

// An integer of at most 38 digits, collected from the left without the zeros at either end.
class SignificantDigits {
 public:
  // Appends digits. Returns false if there are too many.
  bool append(std::string_view digits) {
    for (const char digit : digits) {
      ++zeros_;
      if (digit == '0') continue;
      const bool isFirst = count_ == 0;
      if (!shift(isFirst ? 1 : zeros_, static_cast<Limb>(digit - '0'))) return false;
      zeros_ = 0;
    }
    return true;
  }

  // Appends `places` digits: zeros, and `last` as the last. Returns false if there are too many.
  bool shift(std::int64_t places, Limb last) {
    if (places > kMostDigits - count_) return false;
    count_ += static_cast<int>(places);
    for (; places > 1; --places) multiplyAndAdd(coefficient_, 10, 0);
    multiplyAndAdd(coefficient_, 10, last);
    return true;
  }

  const std::array<Limb, 2>& coefficient() const { return coefficient_; }

  // Number of zeros after the last other digit.
  std::int64_t trailingZeros() const { return zeros_; }

 private:
  std::array<Limb, 2> coefficient_ = {};
  int count_ = 0;
  std::int64_t zeros_ = 0;
};

// The powers of ten that are exact as doubles: 10^22 is the last.
constexpr std::array<double, 23> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Integers up to 2^53 are exact as doubles.
constexpr std::uint64_t kGreatestExactInteger = std::uint64_t{1} << DBL_MANT_DIG;

static_assert(std::numeric_limits<double>::is_iec559 &&
                  (FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1),
              "amounts need IEEE 754 doubles, and each operation on them rounded to one");

// Returns how many limbs ten to the power of `power` can have, and one more.
constexpr std::size_t limbsOfPower(int power) {
  return (static_cast<std::size_t>(power) + kLimbDigits - 1) / kLimbDigits + 1;
}

// Multiplies by ten to the power of `exponent`, or divides if it is negative. Returns whether the
// quotient is exact; otherwise it is rounded down.
bool scaleByPowerOfTen(std::span<Limb> integer, int exponent) {
  constexpr int kMostDigitsAtOnce = 9;
  bool isExact = true;
  for (int left = std::abs(exponent); left > 0; left -= kMostDigitsAtOnce) {
    const auto power = static_cast<std::size_t>(std::min(left, kMostDigitsAtOnce));
    const auto factor = static_cast<std::uint32_t>(kPowersOfTen[power]);
    if (exponent > 0) {
      multiplyAndAdd(integer, factor, 0);
    } else if (divide(integer, factor) != 0) {
      isExact = false;
    }
  }
  return isExact;
}

// Returns the double nearest to integer times two to the power of exponent, or to a number slightly
// greater if `isExact` is false. The integer must be 2^64 or more, and is overwritten.
double roundedToDouble(std::span<Limb> integer, int exponent, bool isExact) {
  std::size_t highest = integer.size() - 1;
  while (integer[highest] == 0) --highest;
  const int zeroBits = std::countl_zero(integer[highest]);
  Limb& next = integer[highest - 1];
  Limb leading = integer[highest] << zeroBits | next >> 1 >> (kLimbBits - 1 - zeroBits);
  next <<= zeroBits;
  // The 64 leading bits are more than a double has, so that the last one can stand for all that
  // follow: the conversion rounds as if it saw them.
  if (!isExact || !isZero(integer.first(highest))) leading |= 1;
  exponent += kLimbBits * static_cast<int>(highest) - zeroBits;
  return std::ldexp(static_cast<double>(leading), exponent);
}

// Returns the double nearest to coefficient times ten to the power of exponent, for any coefficient
// but zero. std::from_chars would do the same, but not every standard library has it for doubles.
double nearestDoubleOfAny(const Coefficient& coefficient, int exponent) {
  const std::size_t limbs = limbsOfPower(std::abs(exponent));
  std::array<Limb, kCoefficientLimbs + limbsOfPower(-2 * kLeastExponent)> storage = {};
  const std::span integer = std::span(storage).first(kCoefficientLimbs + limbs);
  // Limbs of zeros below the coefficient, so that a quotient stays above 2^64.
  const std::size_t zeroLimbs = exponent < 0 ? limbs : 1;
  std::copy(coefficient.begin(), coefficient.end(), integer.subspan(zeroLimbs).begin());
  const bool isExact = scaleByPowerOfTen(integer, exponent);
  return roundedToDouble(integer, -kLimbBits * static_cast<int>(zeroLimbs), isExact);
}

// Returns the double nearest to coefficient times ten to the power of exponent.
double nearestDouble(const Coefficient& coefficient, int exponent) {
  // One operation on two exact doubles rounds only once, so its result is the nearest double.
  // Nearly all prices take this path.
  const auto power = static_cast<std::size_t>(exponent < 0 ? -exponent : exponent);
  if (fitsOneLimb(coefficient) && coefficient[0] <= kGreatestExactInteger &&
      power < kPowersOfTen.size()) {
    const auto integer = static_cast<double>(coefficient[0]);
    return exponent < 0 ? integer / kPowersOfTen[power] : integer * kPowersOfTen[power];
  }
  return isZero(coefficient) ? 0 : nearestDoubleOfAny(coefficient, exponent);
}

// Divides `coefficient` by ten, and increments `exponent`, as often as nothing is left over. The
// coefficient must not be zero.
void removeTrailingZeros(Coefficient& coefficient, int& exponent) {
  for (;;) {
    Coefficient quotient = coefficient;
    if (divide(quotient, 10) != 0) return;
    coefficient = quotient;
    ++exponent;
  }
}

// Returns `coefficient` in decimal, without a leading zero unless it is zero.
std::string digitsOf(Coefficient coefficient) {
  std::string digits;
  do {
    digits.push_back(static_cast<char>('0' + divide(coefficient, 10)));
  } while (!isZero(coefficient));
  std::reverse(digits.begin(), digits.end());
  return digits;
}

}  // namespace

std::optional<Decimal> Decimal::fromString(std::string_view text) {
  if (text == "NaN") return notANumber();
  WrittenNumber number;
  if (!scan(text, number)) return std::nullopt;

  SignificantDigits digits;
  if (!digits.append(number.integer) || !digits.append(number.fraction)) return std::nullopt;
  if (isZero(digits.coefficient())) return Decimal(number.isNegative, 0, 0, 0);

  std::int64_t exponent = exponentOf(number) + digits.trailingZeros() -
                          static_cast<std::int64_t>(number.fraction.size());
  if (exponent > kGreatestExponent) {
    if (!digits.shift(exponent - kGreatestExponent, 0)) return std::nullopt;
    exponent = kGreatestExponent;
  }
  if (exponent < kLeastExponent) return std::nullopt;
  const auto [low, high] = digits.coefficient();
  return Decimal(number.isNegative, low, high, static_cast<int>(exponent));
}

bool Decimal::isJsonNumber(std::string_view text) {
  WrittenNumber number;
  return scan(text, number);
}

Decimal Decimal::decimalNumberByMultiplyingBy(const Decimal& factor) const {
  if (isNan_ || factor.isNan_) return notANumber();
  const bool isNegative = isNegative_ != factor.isNegative_;
  const int exponent = exponent_ + factor.exponent_;
  if (exponent < 2 * kLeastExponent || exponent > 2 * kGreatestExponent) return notANumber();
  if (fitsOneLimb(coefficient_) && fitsOneLimb(factor.coefficient_)) {
    const auto [low, high] = multiplyLimbs(coefficient_[0], factor.coefficient_[0]);
    return Decimal(isNegative, low, high, exponent);
  }
  const auto product = multiply(coefficient_, factor.coefficient_);
  const auto pastResult = product.begin() + kCoefficientLimbs;
  if (!isZero({pastResult, product.end()})) return notANumber();
  Decimal result(isNegative, 0, 0, exponent);
  std::copy(product.begin(), pastResult, result.coefficient_.begin());
  return result;
}

double Decimal::doubleValue() const {
  if (isNan_) return std::numeric_limits<double>::quiet_NaN();
  const double magnitude = nearestDouble(coefficient_, exponent_);
  return isNegative_ ? -magnitude : magnitude;
}

bool Decimal::operator==(const Decimal& other) const {
  if (isNan_ || other.isNan_) return false;
  if (isZero(coefficient_) || isZero(other.coefficient_)) {
    return isZero(coefficient_) && isZero(other.coefficient_);
  }
  Coefficient left = coefficient_;
  Coefficient right = other.coefficient_;
  int leftExponent = exponent_;
  int rightExponent = other.exponent_;
  removeTrailingZeros(left, leftExponent);
  removeTrailingZeros(right, rightExponent);
  return isNegative_ == other.isNegative_ && leftExponent == rightExponent && left == right;
}

std::string toString(const Decimal& decimal) {
  // More digits than this before or after the point are written as an exponent.
  constexpr int kMostPlaces = 40;
  if (decimal.isNan_) return "NaN";
  std::string text = digitsOf(decimal.coefficient_);
  const int exponent = decimal.exponent_;
  const auto places = static_cast<std::size_t>(std::abs(exponent));
  if (exponent >= 0 && exponent <= kMostPlaces) {
    if (!isZero(decimal.coefficient_)) text.append(places, '0');
  } else if (exponent < 0 && exponent >= -kMostPlaces) {
    if (text.size() <= places) text.insert(0, places + 1 - text.size(), '0');
    text.insert(text.size() - places, 1, '.');
  } else {
    text.append(exponent < 0 ? "e-" : "e").append(digitsOf({places}));
  }
  if (decimal.isNegative_) text.insert(0, 1, '-');
  return text;
}

}  // namespace qel
