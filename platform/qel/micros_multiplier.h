// The unit of the amounts of an event.

#ifndef QEL_PLATFORM_MICROS_MULTIPLIER_H_
#define QEL_PLATFORM_MICROS_MULTIPLIER_H_

#include <cstdint>

namespace qel {

// Number of micros in one unit of a currency: 1.50 is 1500000 micros.
inline constexpr std::int64_t QELDataTypeMicrosMultiplier = 1000000;

}  // namespace qel

#endif  // QEL_PLATFORM_MICROS_MULTIPLIER_H_
