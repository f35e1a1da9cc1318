// Conversion of the platform's numbers and dates into the library's.
//
// Threads: pure functions, safe from any thread.

#ifndef QEL_PLATFORM_FOUNDATION_VALUE_CONVERSION_H_
#define QEL_PLATFORM_FOUNDATION_VALUE_CONVERSION_H_

#import <Foundation/Foundation.h>

#include <optional>

#include "qel/decimal.h"
#include "qel/instant.h"

namespace qel::foundation {

// Returns the value of `number`, exactly and in any locale. Returns std::nullopt for nil.
std::optional<Decimal> decimalFrom(NSDecimalNumber* number);

// Returns the instant of `date`. Returns std::nullopt for nil. If the time of `date` is NaN,
// returns an instant with a fraction of a second, which equals no purchase date.
//
// The result is a whole second exactly if `date` is. The fraction is cut to nanoseconds, and is at
// least 1 and at most 999999999 if it is not 0. A date out of range becomes the first or the last
// second that an instant can hold.
std::optional<Instant> instantFrom(NSDate* date);

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_VALUE_CONVERSION_H_
