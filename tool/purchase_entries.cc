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

std::vector<std::size_t> PurchaseEntries::of(std::size_t index) const {
  if (choice_.isAll) return allOf(index);
  const std::optional<std::string>& product = receipt_.entries[index].item.productID;
  // A purchase without a product has no event.
  if (!product.has_value()) return {index};

  const Sequence& entries = products_.at(*product);
  const auto isEarlier = [this](std::size_t left, std::size_t right) {
    return dates_[left] < dates_[right];
  };
  const auto [firstAtDate, afterDate] =
      std::equal_range(entries.begin(), entries.end(), index, isEarlier);
  const auto end = choice_.isAsOfPurchase && dates_[index].has_value() ? afterDate : entries.end();

  std::vector<std::size_t> indices = {index};
  if (dates_[index].has_value()) {
    indices.insert(indices.end(), firstAtDate, afterDate);
    if (firstAtDate != entries.begin()) indices.push_back(*std::prev(firstAtDate));
    indices.push_back(*std::prev(end));
  } else {
    indices.insert(indices.end(), end - std::min<std::ptrdiff_t>(2, end - entries.begin()), end);
  }
  std::sort(indices.begin(), indices.end());
  indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  return indices;
}

}  // namespace qel::tool
