// A stable sort for sequences that are mostly in order, or in reverse, as receipts are.

#ifndef QEL_SRC_PRESORTED_SORT_H_
#define QEL_SRC_PRESORTED_SORT_H_

#include <algorithm>
#include <vector>

namespace qel {

// Sorts `items` like std::stable_sort. Takes n - 1 comparisons if they are in order, and n if they
// are in strictly reverse order.
template <typename Item, typename GoesBefore>
void presortedStableSort(std::vector<Item>& items, const GoesBefore& goesBefore) {
  if (std::is_sorted(items.begin(), items.end(), goesBefore)) return;
  const auto isOutOfReverse = [&goesBefore](const Item& left, const Item& right) {
    return !goesBefore(right, left);
  };
  if (std::adjacent_find(items.begin(), items.end(), isOutOfReverse) == items.end()) {
    std::reverse(items.begin(), items.end());
  } else {
    std::stable_sort(items.begin(), items.end(), goesBefore);
  }
}

}  // namespace qel

#endif  // QEL_SRC_PRESORTED_SORT_H_
