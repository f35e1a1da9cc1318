// The oracle for decimal numbers, with GMP for exact integers and MPFR for rounding.

#ifndef QEL_TESTS_REFERENCE_DECIMAL_ORACLE_H_
#define QEL_TESTS_REFERENCE_DECIMAL_ORACLE_H_

#include <gmpxx.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::testing {

// coefficient x 10^exponent, of any size. Negative zero differs from zero.
struct OracleDecimal {
  bool isNegative = false;
  mpz_class coefficient;  // never negative
  std::int64_t exponent = 0;

  static OracleDecimal ofInteger(std::int64_t integer);

  OracleDecimal times(const OracleDecimal& factor) const;

  // Returns the nearest double, the even one in a tie.
  double nearestDouble() const;

  // Returns the nearest double truncated toward zero, or the least 64-bit integer if that does not
  // fit 64 bits.
  std::int64_t truncatedNearestDouble() const;

  // Returns the number with all its digits: -123e-5.
  std::string written() const;
};

// The expected result of parsing a text.
struct OracleReading {
  enum class Kind { kRejected, kNotANumber, kNumber };
  Kind kind = Kind::kRejected;
  OracleDecimal number;  // when `kind` is kNumber
};

// Parses the numbers of RFC 8259 that have a form of at most 38 digits and an exponent from -128 to
// 127, and the text NaN. It uses a table of the grammar's states.
OracleReading oracleReading(std::string_view text);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_DECIMAL_ORACLE_H_
