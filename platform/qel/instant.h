// Points in time.

#ifndef QEL_PLATFORM_INSTANT_H_
#define QEL_PLATFORM_INSTANT_H_

#include <compare>
#include <cstdint>

namespace qel {

// A point in time, UTC. Whole seconds and the fraction are separate, so that every two instants of
// the years 0001 to 9999 compare exactly.
struct Instant {
  // Seconds since 1970-01-01T00:00:00Z without leap seconds; negative before.
  std::int64_t seconds = 0;

  // Fraction of the second in nanoseconds, 0 to 999999999.
  std::int32_t nanoseconds = 0;

  friend constexpr auto operator<=>(const Instant& left, const Instant& right) = default;
};

}  // namespace qel

#endif  // QEL_PLATFORM_INSTANT_H_
