#include "qel/decimal.h"

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <cfloat>
#include <charconv>
#include <cstddef>
#include <limits>
#include <string>
#include <system_error>

namespace qel {
namespace {

__extension__ using Uint128 = unsigned __int128;
using Coefficient = std::array<std::uint64_t, 4>;

// Limits of a parsed number. A product may have twice the exponent.
constexpr int kMostDigits = 38;
constexpr int kLeastExponent = -128;
constexpr int kGreatestExponent = 127;

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

constexpr bool fitsOneLimb(const Coefficient& coefficient) {
  return coefficient[1] == 0 && coefficient[2] == 0 && coefficient[3] == 0;
}

constexpr std::uint64_t lowHalf(Uint128 number) { return static_cast<std::uint64_t>(number); }
constexpr std::uint64_t highHalf(Uint128 number) {
  return static_cast<std::uint64_t>(number >> 64);
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
      const bool isFirst = coefficient_ == 0;
      if (!shift(isFirst ? 1 : zeros_)) return false;
      coefficient_ += static_cast<unsigned>(digit - '0');
      zeros_ = 0;
    }
    return true;
  }

  // Multiplies by ten `places` times. Returns false if there are too many digits.
  bool shift(std::int64_t places) {
    if (places > kMostDigits - count_) return false;
    count_ += static_cast<int>(places);
    for (; places > 0; --places) coefficient_ *= 10;
    return true;
  }

  Uint128 coefficient() const { return coefficient_; }

  // Number of zeros after the last other digit.
  std::int64_t trailingZeros() const { return zeros_; }

 private:
  Uint128 coefficient_ = 0;
  int count_ = 0;
  std::int64_t zeros_ = 0;
};

// Returns the product, or std::nullopt if it needs more than 256 bits.
std::optional<Coefficient> wideProduct(const Coefficient& left, const Coefficient& right) {
  namespace mp = boost::multiprecision;
  constexpr unsigned kBitsOfLimb = 64;
  mp::uint256_t wideLeft;
  mp::uint256_t wideRight;
  mp::import_bits(wideLeft, left.begin(), left.end(), kBitsOfLimb, false);
  mp::import_bits(wideRight, right.begin(), right.end(), kBitsOfLimb, false);
  mp::uint512_t wideProduct;
  mp::multiply(wideProduct, wideLeft, wideRight);
  std::array<std::uint64_t, 8> limbs = {};
  mp::export_bits(wideProduct, limbs.begin(), kBitsOfLimb, false);

  const auto pastResult = limbs.begin() + 4;
  if (std::any_of(pastResult, limbs.end(), [](std::uint64_t limb) { return limb != 0; })) {
    return std::nullopt;
  }
  Coefficient result;
  std::copy(limbs.begin(), pastResult, result.begin());
  return result;
}

// Divides by ten in place and returns the remainder.
unsigned divideByTen(Coefficient& coefficient) {
  unsigned remainder = 0;
  for (std::size_t i = coefficient.size(); i-- > 0;) {
    const Uint128 dividend = Uint128{remainder} << 64 | coefficient[i];
    coefficient[i] = static_cast<std::uint64_t>(dividend / 10);
    remainder = static_cast<unsigned>(dividend % 10);
  }
  return remainder;
}

std::string decimalDigits(Coefficient coefficient) {
  std::string digits;
  do {
    digits.push_back(static_cast<char>('0' + divideByTen(coefficient)));
  } while (coefficient != Coefficient{});
  std::reverse(digits.begin(), digits.end());
  return digits;
}

// The powers of ten that are exact as doubles: 10^22 is the last.
constexpr std::array<double, 23> kPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Integers up to 2^53 are exact as doubles.
constexpr std::uint64_t kGreatestExactInteger = std::uint64_t{1} << DBL_MANT_DIG;

static_assert(std::numeric_limits<double>::is_iec559 && FLT_EVAL_METHOD == 0,
              "amounts need IEEE 754 doubles, and each operation on them rounded to one");

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

  std::string text = decimalDigits(coefficient);
  text += exponent < 0 ? "e-" : "e";
  text += decimalDigits({power});
  double result = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
  // A product can be too large for a double, but never too small.
  return error == std::errc() ? result : std::numeric_limits<double>::infinity();
}

}  // namespace

std::optional<Decimal> Decimal::fromString(std::string_view text) {
  if (text == "NaN") return notANumber();
  WrittenNumber number;
  if (!scan(text, number)) return std::nullopt;

  SignificantDigits digits;
  if (!digits.append(number.integer) || !digits.append(number.fraction)) return std::nullopt;
  if (digits.coefficient() == 0) return Decimal(number.isNegative, 0, 0, 0);

  std::int64_t exponent = exponentOf(number) + digits.trailingZeros() -
                          static_cast<std::int64_t>(number.fraction.size());
  if (exponent > kGreatestExponent) {
    if (!digits.shift(exponent - kGreatestExponent)) return std::nullopt;
    exponent = kGreatestExponent;
  }
  if (exponent < kLeastExponent) return std::nullopt;
  return Decimal(number.isNegative, lowHalf(digits.coefficient()), highHalf(digits.coefficient()),
                 static_cast<int>(exponent));
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
    const Uint128 product = Uint128{coefficient_[0]} * factor.coefficient_[0];
    return Decimal(isNegative, lowHalf(product), highHalf(product), exponent);
  }
  const std::optional<Coefficient> product = wideProduct(coefficient_, factor.coefficient_);
  if (!product.has_value()) return notANumber();
  Decimal result(isNegative, 0, 0, exponent);
  result.coefficient_ = *product;
  return result;
}

double Decimal::doubleValue() const {
  if (isNan_) return std::numeric_limits<double>::quiet_NaN();
  const double magnitude = nearestDouble(coefficient_, exponent_);
  return isNegative_ ? -magnitude : magnitude;
}

}  // namespace qel
