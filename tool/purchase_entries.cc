#include "purchase_entries.h"

#include <algorithm>

#include "qel/rfc3339.h"

namespace qel::tool {

PurchaseEntries::PurchaseEntries(const AppReceipt& receipt, const EntryChoice& choice)
    : receipt_(receipt), choice_(choice) {
  dates_.reserve(receipt.entries.size());
  for (std::size_t i = 0; i < receipt.entries.size(); ++i) {
    const QELInAppPurchaseItem& item = receipt.entries[i].item;
    dates_.push_back(item.purchaseDateIA5String.has_value()
                         ? parseRfc3339(*item.purchaseDateIA5String)
                         : std::nullopt);
    if (item.productID.has_value()) products_[*item.productID].push_back(i);
  }
  for (auto& [product, entries] : products_) {
    std::stable_sort(entries.begin(), entries.end(), [this](std::size_t left, std::size_t right) {
      return dates_[left] < dates_[right];
    });
  }
}

bool PurchaseEntries::wasThere(std::size_t candidate, std::size_t index) const {
  // Absent is less than any date.
  return !choice_.isAsOfPurchase || !dates_[index].has_value() ||
         dates_[candidate] <= dates_[index];
}

std::vector<std::size_t> PurchaseEntries::allOf(std::size_t index) const {
  std::vector<std::size_t> indices;
  for (std::size_t i = 0; i < receipt_.entries.size(); ++i) {
    if (wasThere(i, index)) indices.push_back(i);
  }
  return indices;
}

PurchaseEntries::Range PurchaseEntries::rangeFor(std::size_t index) const {
  const Sequence& entries = products_.at(*receipt_.entries[index].item.productID);
  const auto isEarlier = [this](std::size_t left, std::size_t right) {
    return dates_[left] < dates_[right];
  };
  const auto [firstAtDate, afterDate] =
      std::equal_range(entries.begin(), entries.end(), index, isEarlier);
  const bool isCut = choice_.isAsOfPurchase && dates_[index].has_value();
  return {entries.begin(), firstAtDate, afterDate, isCut ? afterDate : entries.end()};
}

std::size_t PurchaseEntries::latestFor(std::size_t index) const {
  if (!receipt_.entries[index].item.productID.has_value()) return index;
  return *std::prev(rangeFor(index).end);
}

std::vector<std::size_t> PurchaseEntries::of(std::size_t index) const {
  if (choice_.isAll) return allOf(index);
  // A purchase without a product has no event.
  if (!receipt_.entries[index].item.productID.has_value()) return {index};

  const Range entries = rangeFor(index);
  std::vector<std::size_t> indices = {index};
  if (dates_[index].has_value()) {
    indices.insert(indices.end(), entries.firstAtDate, entries.afterDate);
    if (entries.firstAtDate != entries.begin) indices.push_back(*std::prev(entries.firstAtDate));
    indices.push_back(*std::prev(entries.end));
  } else {
    const auto lastTwo = std::min<std::ptrdiff_t>(2, entries.end - entries.begin);
    indices.insert(indices.end(), entries.end - lastTwo, entries.end);
  }
  std::sort(indices.begin(), indices.end());
  indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  return indices;
}

}  // namespace qel::tool
