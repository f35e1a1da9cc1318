#include "qel/receipt_matching.h"

#include "match_criterion.h"
#include "presorted_sort.h"
#include "purchase_date_order.h"
#include "qel/date_formatter.h"

namespace qel {
namespace {

// Sorts the entries by purchase date, earliest first.
void sortByPurchaseDate(QELInAppPurchaseItems& items, const DateFormatter& formatter) {
  presortedStableSort(
      items, [&formatter](const QELInAppPurchaseItem& a, const QELInAppPurchaseItem& b) {
        return comparePurchaseDates(formatter, b.purchaseDateIA5String, a.purchaseDateIA5String) ==
               ComparisonResult::kDescending;
      });
}

}  // namespace
}  // namespace qel

std::optional<qel::QELInAppPurchaseItems> QELMatchingInAppPurchaseItems(
    qel::QELInAppPurchaseItemsView items, const qel::OptionalText& productIdentifier,
    const std::optional<qel::Instant>& date) noexcept {
  if (items.empty()) return std::nullopt;
  if (!qel::hasCriterion(productIdentifier, date)) return std::nullopt;

  const bool isIdentifierGiven = !qel::isEmpty(productIdentifier);
  const bool isDateGiven = date.has_value();
  const qel::DateFormatter formatter;
  qel::QELInAppPurchaseItems matching;
  matching.reserve(items.size());
  for (const qel::QELInAppPurchaseItem& item : items) {
    // Every entry is parsed once, so that the number of parses does not depend on the criteria.
    const std::optional<qel::Instant> itemDate =
        formatter.dateFromString(item.purchaseDateIA5String);
    const bool isAtDate = itemDate.has_value() && itemDate == date;
    const bool isOfProduct = qel::isEqual(item.productID, productIdentifier);
    if ((isOfProduct || !isIdentifierGiven) && (isAtDate || !isDateGiven)) {
      matching.emplace_back(item);
    }
  }
  qel::sortByPurchaseDate(matching, formatter);
  return matching;
}
