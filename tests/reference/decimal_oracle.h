// The oracle for decimal numbers, with GMP for exact integers and MPFR for rounding.

#ifndef QEL_TESTS_REFERENCE_DECIMAL_ORACLE_H_
#define QEL_TESTS_REFERENCE_DECIMAL_ORACLE_H_

#include <gmpxx.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::testing {

// coefficient x 10^exponent, of any size; negative zero is told from zero.
struct OracleDecimal {
  bool isNegative = false;
  mpz_class coefficient;  // never negative
  std::int64_t exponent = 0;

  static OracleDecimal ofInteger(std::int64_t integer);

  OracleDecimal times(const OracleDecimal& factor) const;

  // The nearest double, a tie going to the even one.
  double nearestDouble() const;

  // The nearest double cut toward zero; the least 64-bit integer when that does not fit 64 bits.
  std::int64_t truncatedNearestDouble() const;

  // The number written with all its digits: -123e-5.
  std::string written() const;
};

// What the text should be read as.
struct OracleReading {
  enum class Kind { kRejected, kNotANumber, kNumber };
  Kind kind = Kind::kRejected;
  OracleDecimal number;  // when `kind` is kNumber
};

// Reads the numbers of RFC 8259 that have a form of at most 38 digits and an exponent from -128 to
// 127, and the text NaN. A table of the grammar's states stands in for a scanner.
OracleReading oracleReading(std::string_view text);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_DECIMAL_ORACLE_H_
