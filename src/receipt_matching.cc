#include "receipt_matching.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "qel/receipt_matching.h"

namespace qel {
namespace {

// Fetches ahead what reading the dates after `position` needs. In the order of their dates the
// entries of a long receipt lie all over the memory, and each would be waited for twice: for the
// entry, then for its text. Inlined, for g++ leaves out calls of a function that has no effect but
// this one.
[[gnu::always_inline]] inline void prefetchDatesAfter(QELInAppPurchaseItemsView items,
                                                      std::size_t position) {
  constexpr std::size_t kEntriesAhead = 12;
  constexpr std::size_t kTextsAhead = 6;
  if (position + kEntriesAhead < items.size()) {
    const QELInAppPurchaseItem& item = items[position + kEntriesAhead];
    __builtin_prefetch(&item);
    // The date may reach into the next cache line, as far as what follows it.
    __builtin_prefetch(&item.purchaseType);
  }
  if (position + kTextsAhead < items.size()) {
    const auto& date = items[position + kTextsAhead].get().purchaseDateIA5String;
    if (date.has_value()) __builtin_prefetch(date->data());
  }
}

// An entry with a copy of its date's text beside it, so that sorting thousands of entries reads one
// block of memory from end to end. What is copied is the text: it is read afresh all the same.
class DatedItem {
 public:
  explicit DatedItem(const QELInAppPurchaseItem& item) : item_(item) {
    const OptionalText date = item.purchaseDateIA5String;
    if (date.has_value() && date->size() <= copy_.size()) {
      size_ = static_cast<std::uint8_t>(date->copy(copy_.data(), copy_.size()));
    }
  }

  QELInAppPurchaseItemRef item() const { return item_; }

  OptionalText date() const {
    if (size_ == kNotCopied) return item_.get().purchaseDateIA5String;
    return std::string_view(copy_.data(), size_);
  }

 private:
  static constexpr std::uint8_t kNotCopied = 0xFF;

  QELInAppPurchaseItemRef item_;
  std::uint8_t size_ = kNotCopied;
  // Room for the 20 characters of 2019-03-14T09:26:53Z, as receipts nearly always write it.
  std::array<char, 23> copy_ = {};
};

// Whether an entry of the date `a` goes before one of the date `b`.
bool goesBefore(const DateFormatter& formatter, const OptionalText& a, const OptionalText& b) {
  return comparePurchaseDates(formatter, b, a) == ComparisonResult::kDescending;
}

void sortByDate(const DateFormatter& formatter, QELInAppPurchaseItems& items) {
  std::vector<DatedItem> dated(items.begin(), items.end());
  std::stable_sort(dated.begin(), dated.end(), [&formatter](const auto& a, const auto& b) {
    return goesBefore(formatter, a.date(), b.date());
  });
  std::transform(dated.begin(), dated.end(), items.begin(),
                 [](const DatedItem& item) { return item.item(); });
}

}  // namespace

bool hasCriterion(const OptionalText& productIdentifier, const std::optional<Instant>& date) {
  return !isEmpty(productIdentifier) || date.has_value();
}

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

std::optional<qel::QELInAppPurchaseItems> QELMatchingInAppPurchaseItems(
    qel::QELInAppPurchaseItemsView items, const qel::OptionalText& productIdentifier,
    const std::optional<qel::Instant>& date) noexcept {
  if (items.empty()) return std::nullopt;
  if (!qel::hasCriterion(productIdentifier, date)) return std::nullopt;

  const bool isIdentifierGiven = !qel::isEmpty(productIdentifier);
  const qel::DateFormatter formatter;
  qel::QELInAppPurchaseItems matching;
  matching.reserve(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    qel::prefetchDatesAfter(items, i);
    const qel::QELInAppPurchaseItem& item = items[i];
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
    return qel::goesBefore(formatter, a.purchaseDateIA5String, b.purchaseDateIA5String);
  };
  // Receipts mostly come in order, or in reverse. Seeing that takes fewer comparisons than sorting.
  const auto isOutOfReverse = [&goesBefore](const auto& a, const auto& b) {
    return !goesBefore(b, a);
  };
  if (std::is_sorted(matching.begin(), matching.end(), goesBefore)) return matching;
  if (std::adjacent_find(matching.begin(), matching.end(), isOutOfReverse) == matching.end()) {
    std::reverse(matching.begin(), matching.end());
  } else {
    qel::sortByDate(formatter, matching);
  }
  return matching;
}
