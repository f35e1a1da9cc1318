// RFC 3339 timestamps, the form of the purchase dates of a receipt.

#ifndef QEL_PLATFORM_RFC3339_H_
#define QEL_PLATFORM_RFC3339_H_

#include <optional>
#include <string_view>

#include "qel/export.h"
#include "qel/instant.h"

namespace qel {

// Parses a timestamp of whole seconds in the form of RFC 3339 that is described below, such as
// 2019-03-14T09:26:53Z. Returns std::nullopt for any other text.
//
// Accepts years 0001 to 9999, days of the Gregorian calendar, and times from 00:00:00 to 23:59:59.
// The zone is Z, or an offset from UTC as +hh:mm or -hh:mm, up to 23:59. It may have seconds, which
// UTS #35 allows and RFC 3339 does not: +hh:mm:ss, up to 23:59:59. Digits are ASCII. Leap seconds,
// fractions of a second, lower-case letters, and text before or after are not accepted.
//
// Threads: safe from any thread.
[[nodiscard]] QEL_EXPORT std::optional<Instant> parseRfc3339(std::string_view text);

}  // namespace qel

#endif  // QEL_PLATFORM_RFC3339_H_
