#include "decimal_oracle.h"

// Declares the functions of MPFR for intmax_t: a long has 32 bits on some systems.
#define MPFR_USE_INTMAX_T
#include <mpfr.h>

#include <cstddef>
#include <limits>

namespace qel::testing {
namespace {

// A binary number with the 53 bits of a double, and an exponent that no decimal here can leave.
class Binary53 {
 public:
  explicit Binary53(const std::string& written) {
    mpfr_init2(value_, std::numeric_limits<double>::digits);
    mpfr_strtofr(value_, written.c_str(), nullptr, 10, MPFR_RNDN);
  }
  ~Binary53() { mpfr_clear(value_); }
  Binary53(const Binary53&) = delete;
  Binary53& operator=(const Binary53&) = delete;

  double toDouble() const { return mpfr_get_d(value_, MPFR_RNDN); }
  bool fitsInt64() const { return mpfr_fits_intmax_p(value_, MPFR_RNDZ) != 0; }
  std::int64_t toInt64() const { return mpfr_get_sj(value_, MPFR_RNDZ); }

 private:
  mpfr_t value_;
};

enum class State {
  kStart,
  kMinus,
  kZero,
  kInteger,
  kPoint,
  kFraction,
  kExponentMark,
  kExponentSign,
  kExponent,
  kRejected
};

// The state of the grammar after `character` in `state`.
State next(State state, char character) {
  const bool isZero = character == '0';
  const bool isDigit = character >= '0' && character <= '9';
  const bool isPoint = character == '.';
  const bool isMark = character == 'e' || character == 'E';
  switch (state) {
    case State::kStart:
      if (character == '-') return State::kMinus;
      [[fallthrough]];
    case State::kMinus:
      return isZero ? State::kZero : isDigit ? State::kInteger : State::kRejected;
    case State::kZero:
      return isPoint ? State::kPoint : isMark ? State::kExponentMark : State::kRejected;
    case State::kInteger:
      if (isDigit) return State::kInteger;
      return isPoint ? State::kPoint : isMark ? State::kExponentMark : State::kRejected;
    case State::kPoint:
      return isDigit ? State::kFraction : State::kRejected;
    case State::kFraction:
      return isDigit ? State::kFraction : isMark ? State::kExponentMark : State::kRejected;
    case State::kExponentMark:
      if (character == '+' || character == '-') return State::kExponentSign;
      [[fallthrough]];
    case State::kExponentSign:
    case State::kExponent:
      return isDigit ? State::kExponent : State::kRejected;
    case State::kRejected:
      return State::kRejected;
  }
  return State::kRejected;
}

// The characters of a number, sorted by what they are part of.
struct Pieces {
  std::string digits;    // of the integer and the fraction
  std::string exponent;  // with its sign
  std::size_t fractionSize = 0;
};

std::optional<Pieces> piecesOf(std::string_view text) {
  Pieces pieces;
  State state = State::kStart;
  for (const char character : text) {
    state = next(state, character);
    switch (state) {
      case State::kFraction:
        ++pieces.fractionSize;
        [[fallthrough]];
      case State::kZero:
      case State::kInteger:
        pieces.digits += character;
        break;
      case State::kExponentSign:
      case State::kExponent:
        if (character != '+') pieces.exponent += character;
        break;
      default:
        break;
    }
  }
  const bool isWhole = state == State::kZero || state == State::kInteger ||
                       state == State::kFraction || state == State::kExponent;
  return isWhole ? std::optional(pieces) : std::nullopt;
}

}  // namespace

OracleDecimal OracleDecimal::ofInteger(std::int64_t integer) {
  const mpz_class exact(std::to_string(integer), 10);
  return {sgn(exact) < 0, abs(exact), 0};
}

OracleDecimal OracleDecimal::times(const OracleDecimal& factor) const {
  return {isNegative != factor.isNegative, coefficient * factor.coefficient,
          exponent + factor.exponent};
}

double OracleDecimal::nearestDouble() const { return Binary53(written()).toDouble(); }

std::int64_t OracleDecimal::truncatedNearestDouble() const {
  const Binary53 nearest(written());
  return nearest.fitsInt64() ? nearest.toInt64() : std::numeric_limits<std::int64_t>::min();
}

std::string OracleDecimal::written() const {
  return (isNegative ? "-" : "") + coefficient.get_str() + "e" + std::to_string(exponent);
}

OracleReading oracleReading(std::string_view text) {
  if (text == "NaN") return {OracleReading::Kind::kNotANumber, {}};
  std::optional<Pieces> pieces = piecesOf(text);
  if (!pieces.has_value()) return {};

  OracleReading reading = {OracleReading::Kind::kNumber, {}};
  reading.number.isNegative = text.front() == '-';
  const std::size_t last = pieces->digits.find_last_not_of('0');
  if (last == std::string::npos) return reading;

  // The form with the fewest digits has none of the zeros at the end. Of an exponent that is too
  // great they are put back, for as long as there is room.
  mpz_class exponent(pieces->exponent.empty() ? "0" : pieces->exponent, 10);
  exponent -= pieces->fractionSize;
  exponent += pieces->digits.size() - 1 - last;
  std::string digits = pieces->digits.substr(0, last + 1);
  digits.erase(0, digits.find_first_not_of('0'));
  while (exponent > 127 && digits.size() <= 38) {
    digits += '0';
    --exponent;
  }
  if (digits.size() > 38 || exponent < -128 || exponent > 127) return {};
  reading.number.coefficient = mpz_class(digits, 10);
  reading.number.exponent = exponent.get_si();
  return reading;
}

}  // namespace qel::testing
