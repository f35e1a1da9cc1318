// Points in time.

#ifndef QEL_PLATFORM_INSTANT_H_
#define QEL_PLATFORM_INSTANT_H_

#include <compare>
#include <cstdint>

namespace qel {

// A point in time, UTC. Whole seconds and the fraction are kept apart, so that every instant of the
// years 0001 to 9999 compares exactly: nothing is cut to seconds, and nothing overflows.
struct Instant {
  // Seconds since 1970-01-01T00:00:00Z, leap seconds not counted; negative before.
  std::int64_t seconds = 0;

  // The fraction of the second that has passed, in nanoseconds: 0 to 999999999.
  std::int32_t nanoseconds = 0;

  friend constexpr auto operator<=>(const Instant& left, const Instant& right) = default;
};

}  // namespace qel

#endif  // QEL_PLATFORM_INSTANT_H_
