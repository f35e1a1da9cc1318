// The tables of written dates in docs/foundation.md: what stands there is what the readers do.

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

#include "qel/date_formatter.h"
#include "qel/rfc3339.h"
#import "stand_ins.h"
#include "value_conversion.h"

namespace qel::testing {
namespace {

// One row: the written date, and what the document says that each reader makes of it.
struct Row {
  std::string written;
  std::string portable;
  std::string strict;
  std::string lenient;
};

// The cells of a row of a table in Markdown, without the spaces around them.
std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  std::size_t start = line.find('|');
  for (std::size_t end; (end = line.find('|', start + 1)) != std::string::npos; start = end) {
    std::string cell = line.substr(start + 1, end - start - 1);
    cell.erase(0, cell.find_first_not_of(' '));
    cell.erase(cell.find_last_not_of(' ') + 1);
    cells.push_back(cell);
  }
  return cells;
}

// The rows of all tables whose first column is called "written". Their dates stand in backquotes.
std::vector<Row> documentedRows() {
  std::ifstream document(QEL_SOURCE_DIR "/docs/foundation.md");
  std::vector<Row> rows;
  bool isInTable = false;
  for (std::string line; std::getline(document, line);) {
    const std::vector<std::string> cells = cellsOf(line);
    if (cells.empty()) {
      isInTable = false;
    } else if (cells[0] == "written") {
      isInTable = true;
    } else if (isInTable && cells[0].starts_with('`')) {
      EXPECT_EQ(cells.size(), 4u) << line;
      if (cells.size() != 4) continue;
      rows.push_back({cells[0].substr(1, cells[0].size() - 2), cells[1], cells[2], cells[3]});
    }
  }
  return rows;
}

// An instant as the document writes it; a dash for nothing.
std::string documented(const std::optional<Instant>& instant) {
  if (!instant.has_value()) return "\u2014";
  const std::chrono::sys_seconds time{std::chrono::seconds(instant->seconds)};
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
  if (instant->nanoseconds != 0) result += " + " + std::to_string(instant->nanoseconds) + " ns";
  return result;
}

// A formatter that is set up as ours, and then told to be strict.
NSDateFormatter* strictFormatter() {
  NSDateFormatter* const formatter = [[[NSDateFormatter alloc] init] autorelease];
  [formatter setLocale:[[[NSLocale alloc] initWithLocaleIdentifier:@"en_US_POSIX"] autorelease]];
  [formatter setDateFormat:@"yyyy-MM-dd'T'HH:mm:ssZZZZZ"];
  [formatter setTimeZone:[NSTimeZone timeZoneForSecondsFromGMT:0]];
  [formatter setLenient:NO];
  return formatter;
}

TEST(WrittenDatesTableTest, SaysWhatEachReaderMakesOfEachDate) {
  @autoreleasepool {
    const std::vector<Row> rows = documentedRows();
    // Short of this, the tables were not found.
    ASSERT_GE(rows.size(), 90u);
    const DateFormatter lenient;
    NSDateFormatter* const strict = strictFormatter();
    for (const Row& row : rows) {
      SCOPED_TRACE(row.written);
      EXPECT_EQ(documented(parseRfc3339(row.written)), row.portable);
      EXPECT_EQ(
          documented(foundation::instantFrom([strict dateFromString:liveString(row.written)])),
          row.strict);
      EXPECT_EQ(documented(lenient.dateFromString(row.written)), row.lenient);
    }
  }
}

// What the document says of the tables as a whole.
TEST(WrittenDatesTableTest, HasNoDateThatOnlyThePortableReaderReads) {
  for (const Row& row : documentedRows()) {
    if (row.strict == "\u2014") {
      EXPECT_EQ(row.portable, "\u2014") << row.written;
    }
    if (row.lenient == "\u2014") {
      EXPECT_EQ(row.strict, "\u2014") << row.written;
    }
    if (row.strict != "\u2014") {
      EXPECT_EQ(row.lenient, row.strict) << row.written;
    }
  }
}

// A date at random, of those that the portable reader reads and the Gregorian calendar has.
std::string randomDate(std::mt19937_64& random) {
  constexpr std::chrono::sys_days kFirst = std::chrono::year(1582) / 10 / 16;
  constexpr std::chrono::sys_days kLast = std::chrono::year(9999) / 12 / 30;
  const auto below = [&random](auto count) { return random() % static_cast<std::uint64_t>(count); };
  const std::chrono::days days(below((kLast - kFirst).count()));
  std::string date = documented(
      Instant{.seconds = std::chrono::sys_seconds(kFirst + days).time_since_epoch().count() +
                         static_cast<std::int64_t>(below(86400))});
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

TEST(WrittenDatesTableTest, AllReadTheDatesThatThePortableReaderReads) {
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
