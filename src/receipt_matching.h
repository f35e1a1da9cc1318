// Comparing receipt entries by purchase date. Matching itself is exported.

#ifndef QEL_SRC_RECEIPT_MATCHING_H_
#define QEL_SRC_RECEIPT_MATCHING_H_

#include <optional>

#include "qel/date_formatter.h"
#include "qel/instant.h"
#include "qel/text.h"

namespace qel {

// Returns whether there is anything to match by: an identifier that is not empty, or a date.
bool hasCriterion(const OptionalText& productIdentifier, const std::optional<Instant>& date);

// Result of a three-way comparison, with the platform's values.
enum class ComparisonResult : signed char { kAscending = -1, kSame = 0, kDescending = 1 };

// Compares two entries by their purchase dates, whose texts are read afresh: ascending when the
// first is earlier. An entry without a date compares as same with any second one, and a dated entry
// goes after one without: so entries are ordered consistently when it is only asked whether a
// comparison gives descending.
ComparisonResult comparePurchaseDates(const DateFormatter& formatter, const OptionalText& first,
                                      const OptionalText& second);

}  // namespace qel

#endif  // QEL_SRC_RECEIPT_MATCHING_H_
