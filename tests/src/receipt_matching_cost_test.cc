// How much receipt matching does for receipts that need no sorting.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "qel/receipt_matching.h"
#include "support/counting_date_formatter.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// More entries than a sort puts in order by insertion alone, which would need no more comparisons
// than looking does.
constexpr std::size_t kEntries = 20;
constexpr std::size_t kNeighbours = kEntries - 1;

class ReceiptMatchingCostTest : public DateFormatterCountsTest {
 protected:
  // Adds an entry bought on this day of March.
  void addEntryOfDay(std::size_t day) {
    const std::string twoDigits = (day < 10 ? "0" : "") + std::to_string(day);
    receipt_.push_back(
        entryOf(kConsumable, "coins", "2019-03-" + twoDigits + "T09:26:53Z", "1", "1"));
  }

  QELInAppPurchaseItems match() const {
    return QELMatchingInAppPurchaseItems(listOf(receipt_), "coins", std::nullopt).value();
  }

  // The comparisons that were made: after the filter's parse of each entry, two parses for each.
  static std::size_t comparisons() { return (formatterCounts().parsed.size() - kEntries) / 2; }

  std::vector<QELInAppPurchaseItem> receipt_;
};

TEST_F(ReceiptMatchingCostTest, ReceiptInOrderTakesOneComparisonForEachPairOfNeighbours) {
  for (std::size_t day = 1; day <= kEntries; ++day) addEntryOfDay(day);
  const QELInAppPurchaseItems matching = match();
  EXPECT_EQ(comparisons(), kNeighbours);
  EXPECT_EQ(&matching.front().get(), &receipt_.front());
  EXPECT_EQ(&matching.back().get(), &receipt_.back());
}

TEST_F(ReceiptMatchingCostTest, ReceiptInReverseTakesOneComparisonMore) {
  for (std::size_t day = kEntries; day >= 1; --day) addEntryOfDay(day);
  const QELInAppPurchaseItems matching = match();
  EXPECT_EQ(comparisons(), 1 + kNeighbours);
  EXPECT_EQ(&matching.front().get(), &receipt_.back());
  EXPECT_EQ(&matching.back().get(), &receipt_.front());
}

TEST_F(ReceiptMatchingCostTest, ListHasRoomForTheWholeReceiptFromTheStart) {
  for (std::size_t day = 1; day <= kEntries + 1; ++day) addEntryOfDay(day);
  EXPECT_EQ(match().capacity(), kEntries + 1);
}

}  // namespace
}  // namespace qel::testing
