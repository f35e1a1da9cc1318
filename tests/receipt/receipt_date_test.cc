#include <gtest/gtest.h>

#include <string_view>

#include "qel/app_receipt.h"

namespace qel {
namespace {

using std::nullopt;

TEST(ReceiptDateTest, DatesOfTheComponentAreUnchanged) {
  for (const std::string_view text :
       {"2019-03-14T09:26:53Z", "2019-03-14T10:26:53+01:00", "2019-03-14T10:26:53+00:19:32"}) {
    EXPECT_EQ(rfc3339FromReceiptDate(text), text);
  }
}

TEST(ReceiptDateTest, OffsetsWithoutColonBecomeUtc) {
  EXPECT_EQ(rfc3339FromReceiptDate("2022-04-15T18:52:22+0100"), "2022-04-15T17:52:22Z");
  EXPECT_EQ(rfc3339FromReceiptDate("2022-04-15T18:52:22-0930"), "2022-04-16T04:22:22Z");
  EXPECT_EQ(rfc3339FromReceiptDate("2022-04-15T18:52:22+01"), "2022-04-15T17:52:22Z");
  EXPECT_EQ(rfc3339FromReceiptDate("2022-01-01T00:30:00+0100"), "2021-12-31T23:30:00Z");
  EXPECT_EQ(rfc3339FromReceiptDate("1969-12-31T23:59:59+0000"), "1969-12-31T23:59:59Z");
}

TEST(ReceiptDateTest, FractionsAreDropped) {
  EXPECT_EQ(rfc3339FromReceiptDate("2022-04-15T17:52:22.686Z"), "2022-04-15T17:52:22Z");
  EXPECT_EQ(rfc3339FromReceiptDate("2022-04-15T17:52:22.9+02:00"), "2022-04-15T15:52:22Z");
  EXPECT_EQ(rfc3339FromReceiptDate("1969-12-31T23:59:59.999Z"), "1969-12-31T23:59:59Z");
}

TEST(ReceiptDateTest, TheServicesFormBecomesUtc) {
  EXPECT_EQ(rfc3339FromReceiptDate("2020-07-14 19:36:40 Etc/GMT"), "2020-07-14T19:36:40Z");
  EXPECT_EQ(rfc3339FromReceiptDate("2020-07-14 19:36:40 GMT"), "2020-07-14T19:36:40Z");
  EXPECT_EQ(rfc3339FromReceiptDate("2020-07-14T19:36:40 UTC"), "2020-07-14T19:36:40Z");
  EXPECT_EQ(rfc3339FromReceiptDate("2020-07-14 19:36:40Z"), "2020-07-14T19:36:40Z");
}

TEST(ReceiptDateTest, DatesWithoutACertainMeaningAreNotRead) {
  for (const std::string_view text : {"",
                                      "2022-04-15",
                                      "2022-04-15T18:52:22",
                                      "2022-04-15T18:52:22.5",
                                      "2022-04-15T18:52:22.Z",
                                      "2022-04-15T18:52:22+1",
                                      "2022-04-15T18:52:22+010",
                                      "2022-04-15T18:52:22+01000",
                                      "2022-04-15T18:52:22+2400",
                                      "2022-04-15T18:52:22+0160",
                                      "2022-04-15T18:52:60Z",
                                      "2022-02-30T18:52:22+0100",
                                      "2022-04-15t18:52:22z",
                                      "2022-04-15_18:52:22+0100",
                                      "2020-07-14 12:36:40 America/Los_Angeles",
                                      "2020-07-14 19:36:40  GMT",
                                      "2020-07-14 19:36:40 Etc/GMT+1",
                                      "1594755400000",
                                      "2022-04-15T18:52:22+0100 ",
                                      "0001-01-01T00:00:00+0100",
                                      "9999-12-31T23:59:59-0100"}) {
    EXPECT_EQ(rfc3339FromReceiptDate(text), nullopt) << text;
  }
}

TEST(ReceiptDateTest, SecondsBecomeTimestampsOfFourDigitYears) {
  EXPECT_EQ(rfc3339FromUnixTime(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(rfc3339FromUnixTime(-1), "1969-12-31T23:59:59Z");
  EXPECT_EQ(rfc3339FromUnixTime(1'594'755'400), "2020-07-14T19:36:40Z");
  EXPECT_EQ(rfc3339FromUnixTime(-62'135'596'800), "0001-01-01T00:00:00Z");
  EXPECT_EQ(rfc3339FromUnixTime(-62'135'596'801), nullopt);
  EXPECT_EQ(rfc3339FromUnixTime(253'402'300'799), "9999-12-31T23:59:59Z");
  EXPECT_EQ(rfc3339FromUnixTime(253'402'300'800), nullopt);
  EXPECT_EQ(rfc3339FromUnixTime(INT64_MIN), nullopt);
  EXPECT_EQ(rfc3339FromUnixTime(INT64_MAX), nullopt);
}

}  // namespace
}  // namespace qel
