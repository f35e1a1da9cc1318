#include "value_conversion.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "text_conversion.h"

namespace qel::foundation {
namespace {

// Seconds from 1970-01-01T00:00:00Z to 2001-01-01T00:00:00Z, where Foundation's time begins.
constexpr std::int64_t kReferenceDate = 978'307'200;

constexpr std::int32_t kNanosecondsInSecond = 1'000'000'000;

// Returns the nanoseconds of `fraction`, from 0 to 1 second. Returns 0 only for 0. A fraction of 1
// occurs: a tiny negative time minus its floor rounds to 1.
std::int32_t nanosecondsOf(double fraction) {
  if (fraction == 0) return 0;
  return std::clamp(static_cast<std::int32_t>(fraction * kNanosecondsInSecond), 1,
                    kNanosecondsInSecond - 1);
}

}  // namespace

std::optional<Decimal> decimalFrom(NSDecimalNumber* number) {
  if (number == nil) return std::nullopt;
  const NSDecimal decimal = [number decimalValue];
  // Without a locale, the text has ASCII digits, a decimal point and maybe an exponent.
  const std::string digits = textFrom(NSDecimalString(&decimal, nil)).value_or(std::string());
  // The platform's decimals have at most 38 digits and an exponent from -128 to 127, so each of
  // them can be parsed. NaN keeps an unexpected one from counting as an absent price.
  return Decimal::fromString(digits).value_or(Decimal::notANumber());
}

std::optional<Instant> instantFrom(NSDate* date) {
  if (date == nil) return std::nullopt;
  const double time = [date timeIntervalSinceReferenceDate];
  // NaN equals no date, and no purchase date has a fraction of a second.
  if (std::isnan(time)) return Instant{std::numeric_limits<std::int64_t>::max(), 1};

  // 2^62 seconds, which leaves room for the shift to 1970.
  constexpr double kBeyondInstants = 4611686018427387904.0;
  if (time >= kBeyondInstants) return Instant{std::numeric_limits<std::int64_t>::max(), 0};
  if (time <= -kBeyondInstants) return Instant{std::numeric_limits<std::int64_t>::min(), 0};

  // Separates the fraction before the addition, which would round it.
  const double seconds = std::floor(time);
  return Instant{static_cast<std::int64_t>(seconds) + kReferenceDate,
                 nanosecondsOf(time - seconds)};
}

}  // namespace qel::foundation
