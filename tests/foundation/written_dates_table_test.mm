// Compares the date readers with written_dates.tsv.

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#import "live_doubles.h"
#include "qel/date_formatter.h"
#include "qel/rfc3339.h"
#include "value_conversion.h"

namespace qel::testing {
namespace {

constexpr const char* kNoDate = "-";

// One row of the table: a text, and the date that each reader returns for it.
struct Row {
  std::string text;
  std::string portable;
  std::string strict;
  std::string lenient;
};

// Returns the parts of `line` between tabs.
std::vector<std::string> columnsOf(const std::string& line) {
  std::vector<std::string> columns;
  std::size_t start = 0;
  for (std::size_t end; (end = line.find('\t', start)) != std::string::npos; start = end + 1) {
    columns.push_back(line.substr(start, end - start));
  }
  columns.push_back(line.substr(start));
  return columns;
}

// Returns the rows of written_dates.tsv. Lines that are empty or begin with # are not rows.
std::vector<Row> tableRows() {
  std::ifstream table(QEL_SOURCE_DIR "/tests/foundation/written_dates.tsv");
  std::vector<Row> rows;
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line.starts_with('#')) continue;
    const std::vector<std::string> columns = columnsOf(line);
    EXPECT_EQ(columns.size(), 4u) << line;
    if (columns.size() != 4) continue;
    rows.push_back({columns[0], columns[1], columns[2], columns[3]});
  }
  return rows;
}

// Returns `instant` as the table has it.
std::string tableText(const std::optional<Instant>& instant) {
  if (!instant.has_value()) return kNoDate;
  const std::chrono::sys_seconds time{std::chrono::seconds(instant->seconds())};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  const int year = static_cast<int>(date.year());
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%s%04d-%02u-%02uT%02d:%02d:%02dZ", year < 0 ? "-" : "",
                std::abs(year), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  std::string result = text.data();
  if (instant->nanoseconds() != 0) result += " + " + std::to_string(instant->nanoseconds()) + " ns";
  return result;
}

// Returns a formatter with the settings of DateFormatter, in strict mode.
NSDateFormatter* strictFormatter() {
  NSDateFormatter* const formatter = [[[NSDateFormatter alloc] init] autorelease];
  [formatter setLocale:[[[NSLocale alloc] initWithLocaleIdentifier:@"en_US_POSIX"] autorelease]];
  [formatter setDateFormat:@"yyyy-MM-dd'T'HH:mm:ssZZZZZ"];
  [formatter setTimeZone:[NSTimeZone timeZoneForSecondsFromGMT:0]];
  [formatter setLenient:NO];
  return formatter;
}

TEST(WrittenDatesTableTest, EachReaderReturnsTheDateInTheTable) {
  @autoreleasepool {
    const std::vector<Row> rows = tableRows();
    // Fewer rows mean that the file was not found.
    ASSERT_GE(rows.size(), 90u);
    const DateFormatter lenient;
    NSDateFormatter* const strict = strictFormatter();
    for (const Row& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(tableText(parseRfc3339(row.text)), row.portable);
      EXPECT_EQ(tableText(foundation::instantFrom([strict dateFromString:liveString(row.text)])),
                row.strict);
      EXPECT_EQ(tableText(lenient.dateFromString(row.text)), row.lenient);
    }
  }
}

// docs/foundation.md states these properties of the table.
TEST(WrittenDatesTableTest, NSDateFormatterReadsEveryDateThatThePortableReaderReads) {
  for (const Row& row : tableRows()) {
    if (row.strict == kNoDate) {
      EXPECT_EQ(row.portable, kNoDate) << row.text;
    }
    if (row.lenient == kNoDate) {
      EXPECT_EQ(row.strict, kNoDate) << row.text;
    }
    if (row.strict != kNoDate) {
      EXPECT_EQ(row.lenient, row.strict) << row.text;
    }
  }
}

// Returns a random date from 1582-10-16 on, in one of the forms that the portable reader accepts.
std::string randomDate(std::mt19937_64& random) {
  constexpr std::chrono::sys_days kFirst = std::chrono::year(1582) / 10 / 16;
  constexpr std::chrono::sys_days kLast = std::chrono::year(9999) / 12 / 30;
  const auto below = [&random](auto count) { return random() % static_cast<std::uint64_t>(count); };
  const std::chrono::days days(below((kLast - kFirst).count()));
  std::string date = tableText(
      Instant(std::chrono::sys_seconds(kFirst + days) + std::chrono::seconds(below(86400))));
  const std::uint64_t form = below(3);
  if (form == 0) return date;
  std::array<char, 16> zone;
  std::snprintf(zone.data(), zone.size(), "%c%02d:%02d", below(2) == 0 ? '+' : '-',
                static_cast<int>(below(24)), static_cast<int>(below(60)));
  date.replace(date.size() - 1, 1, zone.data());
  if (form == 2) {
    std::snprintf(zone.data(), zone.size(), ":%02d", static_cast<int>(below(60)));
    date += zone.data();
  }
  return date;
}

TEST(WrittenDatesTableTest, AllReadersAgreeOnValidDates) {
  @autoreleasepool {
    constexpr int kDates = 20000;
    const std::uint64_t seed = std::random_device()();
    std::cout << kDates << " dates, seed " << seed << std::endl;
    std::mt19937_64 random(seed);
    const DateFormatter lenient;
    NSDateFormatter* const strict = strictFormatter();
    for (int i = 0; i < kDates; ++i) {
      @autoreleasepool {
        const std::string date = randomDate(random);
        const std::optional<Instant> expected = parseRfc3339(date);
        ASSERT_TRUE(expected.has_value()) << date;
        ASSERT_EQ(lenient.dateFromString(date), expected) << date;
        ASSERT_EQ(foundation::instantFrom([strict dateFromString:liveString(date)]), expected)
            << date;
      }
    }
  }
}

}  // namespace
}  // namespace qel::testing
