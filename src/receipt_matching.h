// Comparing receipt entries by purchase date. Matching itself is exported.

#ifndef QEL_SRC_RECEIPT_MATCHING_H_
#define QEL_SRC_RECEIPT_MATCHING_H_

#include "qel/date_formatter.h"
#include "qel/text.h"

namespace qel {

// How the first of two things stands to the second, with the platform's values.
enum class ComparisonResult : signed char { kAscending = -1, kSame = 0, kDescending = 1 };

// Compares two entries by their purchase dates, whose texts are read afresh: ascending when the
// first is earlier. An entry without a date compares as same with any second one, and a dated entry
// goes after one without: so entries are ordered consistently when it is only asked whether a
// comparison gives descending.
ComparisonResult comparePurchaseDates(const DateFormatter& formatter, const OptionalText& first,
                                      const OptionalText& second);

}  // namespace qel

#endif  // QEL_SRC_RECEIPT_MATCHING_H_
