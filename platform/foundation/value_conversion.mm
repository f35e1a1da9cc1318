#include "value_conversion.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "text_conversion.h"

namespace qel::foundation {
namespace {

// Foundation counts from 2001-01-01T00:00:00Z, this many seconds after 1970 began.
constexpr std::int64_t kReferenceDate = 978'307'200;

constexpr std::int32_t kNanosecondsInSecond = 1'000'000'000;

// Nanoseconds of a fraction of a second, 0 to 1; 0 for the fraction 0 alone. Just before a whole
// second a double's fraction may already be 1.
std::int32_t nanosecondsOf(double fraction) {
  if (fraction == 0) return 0;
  return std::clamp(static_cast<std::int32_t>(fraction * kNanosecondsInSecond), 1,
                    kNanosecondsInSecond - 1);
}

}  // namespace

std::optional<Decimal> decimalFrom(NSDecimalNumber* number) {
  if (number == nil) return std::nullopt;
  const NSDecimal decimal = [number decimalValue];
  // Without a locale the digits are written in ASCII, after a point or with an exponent.
  const std::string digits = textFrom(NSDecimalString(&decimal, nil)).value_or(std::string());
  // The platform's decimals have up to 38 digits and an exponent from -128 to 127, so all can be
  // read; should one have more, it is no number rather than a price that is not there.
  return Decimal::fromString(digits).value_or(Decimal::notANumber());
}

std::optional<Instant> instantFrom(NSDate* date) {
  if (date == nil) return std::nullopt;
  const double time = [date timeIntervalSinceReferenceDate];
  // On the platform such a date equals no other. Purchase dates have no fraction of a second.
  if (std::isnan(time)) return Instant{std::numeric_limits<std::int64_t>::max(), 1};

  // 2^62 seconds are far beyond any calendar, and leave room for the shift to 1970.
  constexpr double kBeyondInstants = 4611686018427387904.0;
  if (time >= kBeyondInstants) return Instant{std::numeric_limits<std::int64_t>::max(), 0};
  if (time <= -kBeyondInstants) return Instant{std::numeric_limits<std::int64_t>::min(), 0};

  // The seconds and the fraction are told apart before anything is added, which would round.
  const double seconds = std::floor(time);
  return Instant{static_cast<std::int64_t>(seconds) + kReferenceDate,
                 nanosecondsOf(time - seconds)};
}

}  // namespace qel::foundation
