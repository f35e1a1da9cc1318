#include "qel/rfc3339.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>

#include "qel/date_formatter.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// --- Dates that are read ---

// The seconds are those of `date -u -d TEXT +%s`, with the offset taken off by hand where date
// refuses it.
struct DateCase {
  const char* name;
  const char* text;
  std::int64_t seconds;
  friend std::ostream& operator<<(std::ostream& out, const DateCase& c) { return out << c.text; }
};

class ReadableDateTest : public ::testing::TestWithParam<DateCase> {};

TEST_P(ReadableDateTest, IsTheInstant) {
  EXPECT_EQ(parseRfc3339(GetParam().text), (Instant{GetParam().seconds, 0}));
}

TEST_P(ReadableDateTest, IsTheInstantToTheDateFormatterToo) {
  const DateFormatter formatter;
  EXPECT_EQ(formatter.dateFromString(GetParam().text), (Instant{GetParam().seconds, 0}));
}

INSTANTIATE_TEST_SUITE_P(
    Moments, ReadableDateTest,
    ::testing::Values(DateCase{"Epoch", "1970-01-01T00:00:00Z", 0},
                      DateCase{"BeforeTheEpoch", "1969-12-31T23:59:59Z", -1},
                      DateCase{"Ordinary", "2019-03-14T09:26:53Z", 1552555613},
                      DateCase{"Earliest", "0001-01-01T00:00:00Z", -62135596800},
                      DateCase{"Latest", "9999-12-31T23:59:59Z", 253402300799}),
    nameOfCase<DateCase>);

INSTANTIATE_TEST_SUITE_P(
    GreatestFields, ReadableDateTest,
    ::testing::Values(DateCase{"Month", "2019-12-01T00:00:00Z", 1575158400},
                      DateCase{"DayOfALongMonth", "2019-01-31T00:00:00Z", 1548892800},
                      DateCase{"DayOfAShortMonth", "2019-11-30T00:00:00Z", 1575072000},
                      DateCase{"Hour", "1970-01-01T23:00:00Z", 82800},
                      DateCase{"Minute", "1970-01-01T00:59:00Z", 3540},
                      DateCase{"Second", "1970-01-01T00:00:59Z", 59}),
    nameOfCase<DateCase>);

INSTANTIATE_TEST_SUITE_P(
    LeapDays, ReadableDateTest,
    ::testing::Values(DateCase{"OfAFourthYear", "2016-02-29T12:00:00Z", 1456747200},
                      DateCase{"OfAFourHundredthYear", "2000-02-29T00:00:00Z", 951782400},
                      DateCase{"OfAnotherFourHundredthYear", "2400-02-29T00:00:00Z", 13574563200},
                      DateCase{"OfAnEarlyYear", "0004-02-29T00:00:00Z", -62035891200},
                      DateCase{"MissingInAHundredthYear", "1900-03-01T00:00:00Z", -2203891200}),
    nameOfCase<DateCase>);

INSTANTIATE_TEST_SUITE_P(
    Offsets, ReadableDateTest,
    ::testing::Values(DateCase{"East", "2019-03-14T10:26:53+01:00", 1552555613},
                      DateCase{"West", "2019-03-14T08:26:53-01:00", 1552555613},
                      DateCase{"Zero", "1970-01-01T00:00:00+00:00", 0},
                      DateCase{"NegativeZero", "1970-01-01T00:00:00-00:00", 0},
                      DateCase{"OfMinutes", "1970-01-01T05:45:00+05:45", 0},
                      DateCase{"GreatestEast", "1970-01-01T23:59:00+23:59", 0},
                      DateCase{"GreatestWest", "1970-01-01T00:00:00-23:59", 86340},
                      DateCase{"EastWithSeconds", "1970-01-01T00:19:32+00:19:32", 0},
                      DateCase{"WestWithSeconds", "1970-01-01T00:00:00-00:44:30", 2670},
                      DateCase{"GreatestEastWithSeconds", "1970-01-01T23:59:59+23:59:59", 0},
                      DateCase{"GreatestWestWithSeconds", "1970-01-01T00:00:00-23:59:59", 86399},
                      DateCase{"BeyondTheEarliest", "0001-01-01T00:00:00+23:59:59", -62135683199},
                      DateCase{"BeyondTheLatest", "9999-12-31T23:59:59-23:59:59", 253402387198}),
    nameOfCase<DateCase>);

// --- Texts that are no dates ---

struct DateTextCase {
  const char* name;
  std::string text;
  friend std::ostream& operator<<(std::ostream& out, const DateTextCase& c) {
    return out << c.text;
  }
};

class UnreadableDateTest : public ::testing::TestWithParam<DateTextCase> {};

TEST_P(UnreadableDateTest, GivesNothing) { EXPECT_EQ(parseRfc3339(GetParam().text), std::nullopt); }

TEST_P(UnreadableDateTest, GivesNothingToTheDateFormatterEither) {
  const DateFormatter formatter;
  EXPECT_EQ(formatter.dateFromString(GetParam().text), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, UnreadableDateTest,
    ::testing::Values(DateTextCase{"YearZero", "0000-01-01T00:00:00Z"},
                      DateTextCase{"YearOfFiveDigits", "10000-01-01T00:00:00Z"},
                      DateTextCase{"YearOfThreeDigits", "999-01-01T00:00:00Z"},
                      DateTextCase{"NegativeYear", "-001-01-01T00:00:00Z"},
                      DateTextCase{"MonthZero", "2019-00-01T00:00:00Z"},
                      DateTextCase{"MonthThirteen", "2019-13-01T00:00:00Z"},
                      DateTextCase{"DayZero", "2019-01-00T00:00:00Z"},
                      DateTextCase{"DayThirtyTwo", "2019-01-32T00:00:00Z"},
                      DateTextCase{"DayThirtyOneOfAShortMonth", "2019-11-31T00:00:00Z"},
                      DateTextCase{"FebruaryThirtieth", "2016-02-30T00:00:00Z"},
                      DateTextCase{"HourTwentyFour", "2019-01-01T24:00:00Z"},
                      DateTextCase{"MinuteSixty", "2019-01-01T00:60:00Z"},
                      DateTextCase{"LeapSecond", "2016-12-31T23:59:60Z"},
                      DateTextCase{"OneDigitMonth", "2019-1-01T00:00:00Z"},
                      DateTextCase{"OneDigitHour", "2019-01-01T0:00:00Z"}),
    nameOfCase<DateTextCase>);

INSTANTIATE_TEST_SUITE_P(LeapDays, UnreadableDateTest,
                         ::testing::Values(DateTextCase{"OfAnOrdinaryYear", "2019-02-29T00:00:00Z"},
                                           DateTextCase{"OfAHundredthYear", "1900-02-29T00:00:00Z"},
                                           DateTextCase{"OfALaterHundredthYear",
                                                        "2100-02-29T00:00:00Z"}),
                         nameOfCase<DateTextCase>);

INSTANTIATE_TEST_SUITE_P(
    Zones, UnreadableDateTest,
    ::testing::Values(DateTextCase{"None", "2019-01-01T00:00:00"},
                      DateTextCase{"LowerCase", "2019-01-01T00:00:00z"},
                      DateTextCase{"Name", "2019-01-01T00:00:00GMT"},
                      DateTextCase{"SignOnly", "2019-01-01T00:00:00+"},
                      DateTextCase{"HoursOnly", "2019-01-01T00:00:00+01"},
                      DateTextCase{"WithoutAColon", "2019-01-01T00:00:00+0100"},
                      DateTextCase{"WithoutASign", "2019-01-01T00:00:0001:00"},
                      DateTextCase{"OneDigitHour", "2019-01-01T00:00:00+1:00"},
                      DateTextCase{"HourTwentyFour", "2019-01-01T00:00:00+24:00"},
                      DateTextCase{"HourTwentyFourWest", "2019-01-01T00:00:00-24:00"},
                      DateTextCase{"MinuteSixty", "2019-01-01T00:00:00+00:60"},
                      DateTextCase{"SecondSixty", "2019-01-01T00:00:00+00:00:60"},
                      DateTextCase{"SecondSixtyWest", "2019-01-01T00:00:00-00:00:60"},
                      DateTextCase{"WithoutASecondColon", "2019-01-01T00:00:00+01:0000"},
                      DateTextCase{"CutShort", "2019-01-01T00:00:00+01:"},
                      DateTextCase{"CutShortInItsSeconds", "2019-01-01T00:00:00+01:00:0"},
                      DateTextCase{"TypographicMinus",
                                   "2019-01-01T00:00:00\xE2\x88\x92"
                                   "01:00"},
                      DateTextCase{"Two", "2019-01-01T00:00:00Z+01:00"}),
    nameOfCase<DateTextCase>);

INSTANTIATE_TEST_SUITE_P(
    Forms, UnreadableDateTest,
    ::testing::Values(DateTextCase{"Empty", ""}, DateTextCase{"DateOnly", "2019-03-14"},
                      DateTextCase{"ZoneOnly", "Z"},
                      DateTextCase{"LowerCaseT", "2019-03-14t09:26:53Z"},
                      DateTextCase{"SpaceForT", "2019-03-14 09:26:53Z"},
                      DateTextCase{"Fraction", "2019-03-14T09:26:53.250Z"},
                      DateTextCase{"FractionWithAComma", "2019-03-14T09:26:53,250Z"},
                      DateTextCase{"FractionOfZero", "2019-03-14T09:26:53.0Z"},
                      DateTextCase{"WithoutSeconds", "2019-03-14T09:26Z"},
                      DateTextCase{"Compact", "20190314T092653Z"},
                      DateTextCase{"Slashes", "2019/03/14T09:26:53Z"},
                      DateTextCase{"OtherStoreForm", "2019-03-14 09:26:53 Etc/GMT"},
                      DateTextCase{"SpaceBefore", " 2019-03-14T09:26:53Z"},
                      DateTextCase{"SpaceAfter", "2019-03-14T09:26:53Z "},
                      DateTextCase{"LineEndAfter", "2019-03-14T09:26:53Z\n"},
                      DateTextCase{"NulAfter", std::string("2019-03-14T09:26:53Z\0", 21)},
                      DateTextCase{"LetterAfterAnOffset", "2019-03-14T09:26:53+01:00Z"},
                      DateTextCase{"DigitAfterAnOffset", "2019-03-14T09:26:53+01:00:000"},
                      DateTextCase{"ArabicDigits",
                                   "\xD9\xA2\xD9\xA0\xD9\xA1\xD9\xA9-03-14T09:26:53Z"},
                      DateTextCase{"FullWidthDigit", "201\xEF\xBC\x99-03-14T09:26:53Z"},
                      DateTextCase{"CharacterBeforeZero", "2019-03-14T09:26:5/Z"},
                      DateTextCase{"CharacterAfterNine", "2019-03-14T09:26:5:Z"}),
    nameOfCase<DateTextCase>);

constexpr std::string_view kValidDate = "2019-03-14T10:26:53+01:00:07";

TEST(WrittenDateTest, IsUnreadableWhenCutAnywhereButBeforeTheOffsetsSeconds) {
  for (std::size_t length = 0; length < kValidDate.size(); ++length) {
    const bool isWhole = length == std::string_view("2019-03-14T10:26:53+01:00").size();
    EXPECT_EQ(parseRfc3339(kValidDate.substr(0, length)).has_value(), isWhole) << length;
  }
  EXPECT_TRUE(parseRfc3339(kValidDate).has_value());
}

TEST(WrittenDateTest, IsUnreadableWithALetterInAnyPlace) {
  for (std::size_t place = 0; place < kValidDate.size(); ++place) {
    std::string text(kValidDate);
    text[place] = 'x';
    EXPECT_EQ(parseRfc3339(text), std::nullopt) << text;
  }
}

// --- The portable date formatter ---

TEST(DateFormatterTest, ReadsWrittenDates) {
  const DateFormatter formatter;
  EXPECT_EQ(formatter.dateFromString(kMarch), kMarchInstant);
  EXPECT_EQ(formatter.dateFromString("2019-03-14"), std::nullopt);
  EXPECT_EQ(formatter.dateFromString(""), std::nullopt);
}

TEST(DateFormatterTest, ReadsNothingInAnAbsentText) {
  const DateFormatter formatter;
  EXPECT_EQ(formatter.dateFromString(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace qel::testing
