// Decimal numbers, for money: exact where binary floating point is not.
//
// Threads: values; every operation is safe from any thread.

#ifndef QEL_PLATFORM_DECIMAL_H_
#define QEL_PLATFORM_DECIMAL_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "qel/export.h"

namespace qel {

// A sign, an integer coefficient and a power of ten, or not a number. 8.29 is 829 times ten to the
// -2.
//
// A number that is read has at most 38 digits and an exponent from -128 to 127, the range of the
// store's own decimals. A product has room for every digit: its coefficient has 256 bits, and the
// widest that an event needs (38 digits by two 63-bit integers) stays below 2^253.
class Decimal {
 public:
  // Zero.
  constexpr Decimal() = default;

  // Makes the decimal of an integer.
  static constexpr Decimal initWithLongLong(std::int64_t integer) {
    // Negating as unsigned gives the magnitude of the most negative integer too.
    const auto bits = static_cast<std::uint64_t>(integer);
    return Decimal(integer < 0, integer < 0 ? 0 - bits : bits, 0, 0);
  }

  // The value that is not a number. It stays so under multiplication.
  static constexpr Decimal notANumber() {
    Decimal result;
    result.isNan_ = true;
    return result;
  }

  // Reads a number in JSON number syntax (RFC 8259: -12.5e3; no leading plus sign, no leading
  // zeros), or the text NaN. Gives nothing for any other text, and for a number that the decimal
  // cannot hold exactly: one with no form of at most 38 digits and an exponent from -128 to 127.
  QEL_EXPORT static std::optional<Decimal> fromString(std::string_view text);

  // Multiplies exactly, and never rounds: gives not a number when either factor is, and when the
  // product needs a coefficient of more than 256 bits or an exponent beyond -256 to 254.
  QEL_EXPORT Decimal decimalNumberByMultiplyingBy(const Decimal& factor) const;

  // The nearest binary double, a tie going to the even one; infinite when the magnitude is too
  // large for a double. Depends on no locale.
  QEL_EXPORT double doubleValue() const;

 private:
  // 256 bits, least significant 64 first.
  using Coefficient = std::array<std::uint64_t, 4>;

  // Takes the coefficient's halves one by one, as they come: read again as a whole right after they
  // were written, they would stall the processor for longer than a product takes.
  constexpr Decimal(bool isNegative, std::uint64_t low, std::uint64_t high, int exponent)
      : coefficient_{low, high}, exponent_(exponent), isNegative_(isNegative) {}

  Coefficient coefficient_ = {};
  int exponent_ = 0;
  bool isNegative_ = false;
  bool isNan_ = false;
};

}  // namespace qel

#endif  // QEL_PLATFORM_DECIMAL_H_
