#include "purchase_date_order.h"

#include <optional>

#include "qel/instant.h"

namespace qel {

ComparisonResult comparePurchaseDates(const DateFormatter& formatter, const OptionalText& first,
                                      const OptionalText& second) {
  const std::optional<Instant> firstDate = formatter.dateFromString(first);
  const std::optional<Instant> secondDate = formatter.dateFromString(second);
  if (!firstDate.has_value()) return ComparisonResult::kSame;
  if (!secondDate.has_value()) return ComparisonResult::kDescending;
  if (*firstDate < *secondDate) return ComparisonResult::kAscending;
  if (*firstDate > *secondDate) return ComparisonResult::kDescending;
  return ComparisonResult::kSame;
}

}  // namespace qel
