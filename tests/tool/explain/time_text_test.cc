#include "explain/time_text.h"

#include <gtest/gtest.h>

#include "qel/rfc3339.h"

namespace qel::tool {
namespace {

TEST(TimeTextTest, DateIsInUtc) {
  EXPECT_EQ(dateText(*parseRfc3339("2019-03-14T10:26:53+01:00")), "2019-03-14 09:26:53");
  EXPECT_EQ(dateText(*parseRfc3339("0001-01-01T00:00:00Z")), "0001-01-01 00:00:00");
  EXPECT_EQ(dateText(*parseRfc3339("9999-12-31T23:59:59Z")), "9999-12-31 23:59:59");
  EXPECT_EQ(dateText(*parseRfc3339("1969-12-31T23:59:59Z")), "1969-12-31 23:59:59");
}

TEST(TimeTextTest, DateBeyondTheYearsOfTheReceiptIsShown) {
  EXPECT_EQ(dateText(*parseRfc3339("0001-01-01T00:00:00+01:00")), "0000-12-31 23:00:00");
  EXPECT_EQ(dateText(*parseRfc3339("9999-12-31T23:59:59-01:00")), "10000-01-01 00:59:59");
}

TEST(TimeTextTest, FractionHasAtLeastMilliseconds) {
  EXPECT_EQ(dateText(Instant(0, 250000000)), "1970-01-01 00:00:00.250");
  EXPECT_EQ(dateText(Instant(0, 1)), "1970-01-01 00:00:00.000000001");
}

TEST(TimeTextTest, DurationHasItsTwoLargestUnits) {
  EXPECT_EQ(durationText(0), "0 s");
  EXPECT_EQ(durationText(45), "45 s");
  EXPECT_EQ(durationText(90), "1 min 30 s");
  EXPECT_EQ(durationText(3600), "1 h");
  EXPECT_EQ(durationText(3601), "1 h");
  EXPECT_EQ(durationText(86400), "1 day");
  EXPECT_EQ(durationText(31 * 86400 + 7200), "31 days 2 h");
}

}  // namespace
}  // namespace qel::tool
