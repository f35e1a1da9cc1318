// The unit of every amount in an event.

#ifndef QEL_PLATFORM_MICROS_MULTIPLIER_H_
#define QEL_PLATFORM_MICROS_MULTIPLIER_H_

#include <cstdint>

namespace qel {

// Micros in one unit of a currency: an amount of 1.50 is 1500000 micros.
inline constexpr std::int64_t QELDataTypeMicrosMultiplier = 1000000;

}  // namespace qel

#endif  // QEL_PLATFORM_MICROS_MULTIPLIER_H_
