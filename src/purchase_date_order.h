// The order of receipt entries by purchase date.

#ifndef QEL_SRC_PURCHASE_DATE_ORDER_H_
#define QEL_SRC_PURCHASE_DATE_ORDER_H_

#include "qel/date_formatter.h"
#include "qel/text.h"

namespace qel {

// Result of a three-way comparison, with the values of NSComparisonResult.
enum class ComparisonResult : signed char { kAscending = -1, kSame = 0, kDescending = 1 };

// Compares two purchase dates: ascending if the first is earlier. Parses the first text, then the
// second, at every call.
//
// An unreadable first date compares as same with any second one. A readable first date compares as
// descending with an unreadable second one, so that sorting by "descending" puts entries without a
// readable date first, and is consistent.
ComparisonResult comparePurchaseDates(const DateFormatter& formatter, const OptionalText& first,
                                      const OptionalText& second);

}  // namespace qel

#endif  // QEL_SRC_PURCHASE_DATE_ORDER_H_
