// The platform's numbers and dates as the component's.
//
// Threads: pure functions, safe from any thread.

#ifndef QEL_PLATFORM_FOUNDATION_VALUE_CONVERSION_H_
#define QEL_PLATFORM_FOUNDATION_VALUE_CONVERSION_H_

#import <Foundation/Foundation.h>

#include <optional>

#include "qel/decimal.h"
#include "qel/instant.h"

namespace qel::foundation {

// The decimal that `number` holds, digit by digit and whatever the locale; absent for nil.
std::optional<Decimal> decimalFrom(NSDecimalNumber* number);

// The instant of `date`; absent for nil. A date whose time is not a number gives an instant with a
// fraction of a second, which no purchase date equals.
//
// A date on a whole second gives exactly that second, and no other date does: a fraction below or
// just above a nanosecond gives the nearest nanosecond that is not a whole second. Dates beyond
// what an instant can hold give the first or the last of all instants.
std::optional<Instant> instantFrom(NSDate* date);

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_VALUE_CONVERSION_H_
