// The one written form of a date that the portable platform reads.

#ifndef QEL_PLATFORM_PORTABLE_WRITTEN_DATE_H_
#define QEL_PLATFORM_PORTABLE_WRITTEN_DATE_H_

#include <optional>
#include <string_view>

#include "qel/instant.h"

namespace qel {

// Reads an RFC 3339 timestamp of whole seconds, such as 2019-03-14T09:26:53Z: a year from 0001 to
// 9999, a day that the Gregorian calendar has, T, a time from 00:00:00 to 23:59:59, then the zone:
// Z, or an offset from UTC of at most 23:59 as +hh:mm or -hh:mm, or of at most 23:59:59 as
// +hh:mm:ss or -hh:mm:ss. Digits are ASCII; nothing stands before or after. Gives nothing for any
// other text.
std::optional<Instant> instantFromWrittenDate(std::string_view text);

}  // namespace qel

#endif  // QEL_PLATFORM_PORTABLE_WRITTEN_DATE_H_
