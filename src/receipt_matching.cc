#include "receipt_matching.h"

#include <algorithm>

#include "qel/receipt_matching.h"

namespace qel {

ComparisonResult comparePurchaseDates(const DateFormatter& formatter,
                                      const QELInAppPurchaseItem& first,
                                      const QELInAppPurchaseItem& second) {
  const std::optional<Instant> firstDate = formatter.dateFromString(first.purchaseDateIA5String);
  const std::optional<Instant> secondDate = formatter.dateFromString(second.purchaseDateIA5String);
  if (!firstDate.has_value()) return ComparisonResult::kSame;
  if (!secondDate.has_value()) return ComparisonResult::kDescending;
  if (*firstDate < *secondDate) return ComparisonResult::kAscending;
  if (*firstDate > *secondDate) return ComparisonResult::kDescending;
  return ComparisonResult::kSame;
}

}  // namespace qel

std::optional<qel::QELInAppPurchaseItems> QELMatchingInAppPurchaseItems(
    qel::QELInAppPurchaseItemsView items, const qel::OptionalText& productIdentifier,
    const std::optional<qel::Instant>& date) noexcept {
  if (items.empty()) return std::nullopt;
  const bool isIdentifierGiven = !qel::isEmpty(productIdentifier);
  if (!isIdentifierGiven && !date.has_value()) return std::nullopt;

  const qel::DateFormatter formatter;
  qel::QELInAppPurchaseItems matching;
  matching.reserve(items.size());
  for (const qel::QELInAppPurchaseItem& item : items) {
    const std::optional<qel::Instant> itemDate =
        formatter.dateFromString(item.purchaseDateIA5String);
    // An absent date is never equal to a given one. Without a given one, this decides nothing.
    const bool isAtDate = itemDate == date;
    const bool isOfProduct = qel::isEqual(item.productID, productIdentifier);
    if ((!isIdentifierGiven || isOfProduct) && (!date.has_value() || isAtDate)) {
      matching.emplace_back(item);
    }
  }

  const auto goesBefore = [&formatter](const qel::QELInAppPurchaseItem& a,
                                       const qel::QELInAppPurchaseItem& b) {
    return qel::comparePurchaseDates(formatter, b, a) == qel::ComparisonResult::kDescending;
  };
  // Receipts mostly come in order, or in reverse. Seeing that takes fewer comparisons than sorting.
  const auto isOutOfReverse = [&goesBefore](const auto& a, const auto& b) {
    return !goesBefore(b, a);
  };
  if (std::is_sorted(matching.begin(), matching.end(), goesBefore)) return matching;
  if (std::adjacent_find(matching.begin(), matching.end(), isOutOfReverse) == matching.end()) {
    std::reverse(matching.begin(), matching.end());
  } else {
    std::stable_sort(matching.begin(), matching.end(), goesBefore);
  }
  return matching;
}
