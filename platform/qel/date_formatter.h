// Parses the purchase dates of a receipt.
//
// The library links exactly one implementation: platform/portable/date_formatter.cc, or that of
// the platform. Tests link one that logs what it parses.

#ifndef QEL_PLATFORM_DATE_FORMATTER_H_
#define QEL_PLATFORM_DATE_FORMATTER_H_

#include <optional>

#include "qel/export.h"
#include "qel/instant.h"
#include "qel/text.h"

namespace qel {

// Parses dates of the pattern yyyy-MM-dd'T'HH:mm:ssZZZZZ (UTS #35) in the locale en_US_POSIX and
// the time zone at 0 seconds from GMT: 2019-03-14T09:26:53Z or 2019-03-14T10:26:53+01:00.
//
// Threads: a formatter must be used on the thread that made it.
class QEL_EXPORT DateFormatter {
 public:
  // Sets the locale, the pattern and the time zone, in this order, if the implementation has them.
  DateFormatter();
  ~DateFormatter();

  DateFormatter(const DateFormatter&) = delete;
  DateFormatter& operator=(const DateFormatter&) = delete;

  // Returns the instant that `text` denotes, a whole second. Returns std::nullopt if `text` is
  // absent or does not fit the pattern.
  [[nodiscard]] std::optional<Instant> dateFromString(const OptionalText& text) const;

 private:
  // State of the implementation, null if it has none.
  struct State;
  [[maybe_unused]] State* const state_ = nullptr;
};

}  // namespace qel

#endif  // QEL_PLATFORM_DATE_FORMATTER_H_
