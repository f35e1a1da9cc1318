#import "qel/foundation.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "match_criterion.h"
#include "qel/receipt_matching.h"
#include "strong.h"
#include "text_conversion.h"
#include "value_conversion.h"

namespace qel::foundation {
namespace {

// Returns a record with the two fields that matching uses. Reads the date first.
QELInAppPurchaseItem matchedFieldsOf(id<QELInAppPurchaseItem> entry) {
  QELInAppPurchaseItem result;
  result.purchaseDateIA5String = textFrom([entry purchaseDateIA5String]);
  result.productID = textFrom([entry productID]);
  return result;
}

// Returns the entries that match, or nil if there is nothing to match.
Strong<NSArray*> matchingEntries(NSArray<id<QELInAppPurchaseItem>>* entries,
                                 NSString* productIdentifier, NSDate* date) {
  const std::optional<std::string> identifier = textFrom(productIdentifier);
  const std::optional<Instant> instant = instantFrom(date);
  if (!hasCriterion(identifier, instant)) return Strong<NSArray*>();

  // Retains each entry before calling it, because the call may make the list release it.
  std::vector<Strong<id>> retained;
  std::vector<QELInAppPurchaseItem> items;
  for (id<QELInAppPurchaseItem> entry in entries) {
    retained.emplace_back(entry);
    items.push_back(matchedFieldsOf(entry));
  }
  const QELInAppPurchaseItems references(items.begin(), items.end());
  const std::optional<QELInAppPurchaseItems> matching =
      QELMatchingInAppPurchaseItems(references, identifier, instant);
  if (!matching.has_value()) return Strong<NSArray*>();

  const auto result =
      Strong<NSMutableArray*>::adopt([[NSMutableArray alloc] initWithCapacity:matching->size()]);
  for (const QELInAppPurchaseItem& item : *matching) {
    const auto position = static_cast<std::size_t>(&item - items.data());
    [result.get() addObject:retained[position].get()];
  }
  return Strong<NSArray*>(result.get());
}

}  // namespace
}  // namespace qel::foundation

NSArray<id<QELInAppPurchaseItem>>* QELMatchingInAppPurchaseItems(
    NSArray<id<QELInAppPurchaseItem>>* items, NSString* productIdentifier, NSDate* date) {
  qel::foundation::Strong<NSArray*> result;
  // Frees temporary objects of the entries here. If an exception propagates, the caller's pool
  // frees them.
  @autoreleasepool {
    result = qel::foundation::matchingEntries(items, productIdentifier, date);
  }
  return std::move(result).toPool();
}
