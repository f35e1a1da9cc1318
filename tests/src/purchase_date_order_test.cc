#include "purchase_date_order.h"

#include <gtest/gtest.h>

#include <optional>

namespace qel::testing {
namespace {

// Every combination of a first and a second date, of which either may be absent or no date.
TEST(ComparePurchaseDatesTest, OrdersEveryPairOfDates) {
  const DateFormatter formatter;
  const auto compared = [&formatter](const OptionalText& first, const OptionalText& second) {
    return static_cast<int>(comparePurchaseDates(formatter, first, second));
  };
  const OptionalText earlier = "2019-03-14T09:26:53Z";
  const OptionalText sameInOtherZone = "2019-03-14T10:26:53+01:00";
  const OptionalText later = "2019-03-14T09:26:54Z";
  const OptionalText noDate = "yesterday";
  const OptionalText absent = std::nullopt;
  EXPECT_EQ(compared(earlier, later), -1);
  EXPECT_EQ(compared(later, earlier), 1);
  EXPECT_EQ(compared(earlier, earlier), 0);
  EXPECT_EQ(compared(earlier, sameInOtherZone), 0);
  for (const OptionalText& undated : {noDate, absent}) {
    EXPECT_EQ(compared(undated, earlier), 0);
    EXPECT_EQ(compared(earlier, undated), 1);
    EXPECT_EQ(compared(undated, noDate), 0);
    EXPECT_EQ(compared(undated, absent), 0);
  }
}

}  // namespace
}  // namespace qel::testing
