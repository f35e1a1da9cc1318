// Points in time.

#ifndef QEL_PLATFORM_INSTANT_H_
#define QEL_PLATFORM_INSTANT_H_

#include <chrono>
#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "qel/export.h"

namespace qel {

// A point in time, UTC, to the nanosecond. Whole seconds and the fraction are separate, so that
// every two instants of the years 0001 to 9999 compare exactly.
//
// Example: Instant(1552555613) == Instant(std::chrono::sys_seconds(1552555613s))
class Instant {
 public:
  // 1970-01-01T00:00:00Z.
  constexpr Instant() = default;

  // `seconds` since 1970-01-01T00:00:00Z without leap seconds, negative before, plus `nanoseconds`,
  // any number of them. The sum must fit in 64 bits of seconds.
  constexpr explicit Instant(std::int64_t seconds, std::int64_t nanoseconds = 0)
      : seconds_(seconds + nanoseconds / kNanosecondsPerSecond),
        nanoseconds_(static_cast<std::int32_t>(nanoseconds % kNanosecondsPerSecond)) {
    if (nanoseconds_ < 0) {
      nanoseconds_ += static_cast<std::int32_t>(kNanosecondsPerSecond);
      --seconds_;
    }
  }

  // A time of the system clock; what is finer than a nanosecond is dropped.
  template <typename Duration>
  // NOLINTNEXTLINE(google-explicit-constructor): the same point in time.
  constexpr Instant(std::chrono::sys_time<Duration> time)
      : Instant(std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count(),
                std::chrono::floor<std::chrono::nanoseconds>(
                    time - std::chrono::floor<std::chrono::seconds>(time))
                    .count()) {}

  // Returns the time of the system clock, in the past if `Duration` is too coarse. `Duration` must
  // be able to represent it: nanoseconds in 64 bits reach from 1677 to 2262.
  template <typename Duration>
  [[nodiscard]] constexpr std::chrono::sys_time<Duration> sysTime() const {
    const std::chrono::seconds whole(seconds_);
    const std::chrono::nanoseconds fraction(nanoseconds_);
    return std::chrono::sys_time<Duration>(std::chrono::floor<Duration>(whole) +
                                           std::chrono::floor<Duration>(fraction));
  }

  // Whole seconds since 1970-01-01T00:00:00Z, rounded toward the past.
  [[nodiscard]] constexpr std::int64_t seconds() const { return seconds_; }

  // The rest in nanoseconds, 0 to 999999999.
  [[nodiscard]] constexpr std::int32_t nanoseconds() const { return nanoseconds_; }

  friend constexpr auto operator<=>(const Instant& left, const Instant& right) = default;

 private:
  static constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

  std::int64_t seconds_ = 0;
  std::int32_t nanoseconds_ = 0;
};

// Returns `instant` as an RFC 3339 timestamp in UTC: 2019-03-14T09:26:53Z, or with a fraction of
// nine digits if it has one. An instant outside the years 0000 to 9999 has no timestamp: then
// returns its seconds since 1970, such as "253402300800 s".
[[nodiscard]] QEL_EXPORT std::string toString(const Instant& instant);

template <typename Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                             const Instant& instant) {
  return out << toString(instant);
}

}  // namespace qel

#endif  // QEL_PLATFORM_INSTANT_H_
