// Decimal numbers, for money: exact where binary floating point is not.
//
// Threads: values; every operation is safe from any thread.

#ifndef QEL_PLATFORM_DECIMAL_H_
#define QEL_PLATFORM_DECIMAL_H_

#include <array>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "qel/export.h"

namespace qel {

class Decimal;

// Returns `decimal` in JSON syntax, every digit of it, or NaN.
[[nodiscard]] QEL_EXPORT std::string toString(const Decimal& decimal);

// A decimal number: a sign, an integer coefficient and a power of ten, or not a number (NaN). 8.29
// is 829 times ten to the power of -2.
//
// A parsed number has at most 38 digits and an exponent from -128 to 127, the range of the store's
// own decimals. A product keeps every digit: its coefficient has 256 bits, and the widest product
// of an event (38 digits by two 63-bit integers) stays below 2^253.
class Decimal {
 public:
  // Zero.
  constexpr Decimal() = default;

  // Returns the decimal of `integer`.
  [[nodiscard]] static constexpr Decimal initWithLongLong(std::int64_t integer) {
    // Negating as unsigned gives the magnitude of the most negative integer too.
    const auto bits = static_cast<std::uint64_t>(integer);
    return Decimal(integer < 0, integer < 0 ? 0 - bits : bits, 0, 0);
  }

  // Returns `units` divided by ten to the power of `digits`: fromMinorUnits(499, 2) is 4.99.
  // Returns NaN if `digits` is not from 0 to 38.
  [[nodiscard]] static constexpr Decimal fromMinorUnits(std::int64_t units, int digits) {
    if (digits < 0 || digits > 38) return notANumber();
    Decimal result = initWithLongLong(units);
    result.exponent_ = -digits;
    return result;
  }

  // Returns NaN. A product with NaN is NaN.
  [[nodiscard]] static constexpr Decimal notANumber() {
    Decimal result;
    result.isNan_ = true;
    return result;
  }

  // Parses a number in JSON syntax (RFC 8259: -12.5e3; no leading plus sign, no leading zeros), or
  // the text NaN. Returns std::nullopt for any other text, and for a number that has no exact form
  // of at most 38 digits and an exponent from -128 to 127.
  //
  // Example: Decimal::fromString("8.29")
  [[nodiscard]] QEL_EXPORT static std::optional<Decimal> fromString(std::string_view text);

  // Returns whether `text` is a number in JSON syntax (RFC 8259), of any size.
  [[nodiscard]] QEL_EXPORT static bool isJsonNumber(std::string_view text);

  // Returns the exact product, never a rounded one. Returns NaN if either factor is NaN, or if the
  // product needs a coefficient of more than 256 bits or an exponent outside -256 to 254.
  [[nodiscard]] QEL_EXPORT Decimal decimalNumberByMultiplyingBy(const Decimal& factor) const;

  // Returns the nearest double, the even one in a tie. Returns an infinity if the magnitude is too
  // large for a double, and NaN for NaN. Depends on no locale.
  [[nodiscard]] QEL_EXPORT double doubleValue() const;

  // Returns whether both are the same number: 1.0 equals 1, and NaN equals nothing.
  QEL_EXPORT bool operator==(const Decimal& other) const;

  friend std::string toString(const Decimal& decimal);

  template <typename Traits>
  friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                                      const Decimal& decimal) {
    return out << toString(decimal);
  }

 private:
  // 256 bits, least significant 64 first.
  using Coefficient = std::array<std::uint64_t, 4>;

  // Takes the two least significant limbs; the others are 0. Passed as one array they would be
  // written and read back as a whole, which stalls the processor (store forwarding) for longer than
  // a product takes.
  constexpr Decimal(bool isNegative, std::uint64_t low, std::uint64_t high, int exponent)
      : coefficient_{low, high}, exponent_(exponent), isNegative_(isNegative) {}

  Coefficient coefficient_ = {};
  int exponent_ = 0;
  bool isNegative_ = false;
  bool isNan_ = false;
};

}  // namespace qel

#endif  // QEL_PLATFORM_DECIMAL_H_
