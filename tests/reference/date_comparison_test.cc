// Compares the parsing of dates with the oracle and with ICU.
//
// ICU is the oracle of valid texts only: in strict mode it still takes texts that the component
// must not, such as a year of one digit.

#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "date_oracle.h"
#include "qel/date_formatter.h"
#include "random_source.h"

namespace qel::testing {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

// As ICU takes whether to be lenient.
constexpr UBool kStrict = 0;

std::optional<std::int64_t> componentSeconds(std::string_view text) {
  const std::optional<Instant> instant = DateFormatter().dateFromString(text);
  if (!instant.has_value()) return std::nullopt;
  EXPECT_EQ(instant->nanoseconds(), 0) << text;
  return instant->seconds();
}

// Expects that the component reads `text` as the oracle does, std::nullopt included.
void expectAsOracle(std::string_view text) {
  const std::optional<std::int64_t> expected = oracleSeconds(text);
  ASSERT_EQ(componentSeconds(text), expected) << ::testing::PrintToString(text);
}

std::string dateText(int year, int month, int day) {
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT00:00:00Z", year, month, day);
  return text.data();
}

// Two digits, 00 to 99.
std::string twoDigits(int number) {
  return {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

// ICU's Gregorian calendar, which otherwise would turn Julian before 1582.
std::unique_ptr<icu::GregorianCalendar> makeProlepticCalendar() {
  UErrorCode error = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(),
                                                           icu::Locale("en", "US", "POSIX"), error);
  calendar->setGregorianChange(-1e18, error);
  calendar->setLenient(kStrict);
  EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
  return calendar;
}

// The same settings as the component's formatter, and strict.
class IcuFormatter {
 public:
  IcuFormatter() {
    UErrorCode error = U_ZERO_ERROR;
    formatter_ = std::make_unique<icu::SimpleDateFormat>(
        icu::UnicodeString(u"yyyy-MM-dd'T'HH:mm:ssZZZZZ"), icu::Locale("en", "US", "POSIX"), error);
    EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    formatter_->adoptCalendar(makeProlepticCalendar().release());
    formatter_->setLenient(kStrict);
  }

  // Returns std::nullopt if ICU does not parse all of `text`.
  std::optional<std::int64_t> seconds(std::string_view text) const {
    icu::ParsePosition position(0);
    const auto wide = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    const UDate milliseconds = formatter_->parse(wide, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != wide.length()) return std::nullopt;
    return static_cast<std::int64_t>(std::floor(milliseconds / 1000));
  }

 private:
  std::unique_ptr<icu::SimpleDateFormat> formatter_;
};

// One of each form, and the days and offsets at the ends of their ranges.
constexpr std::array<std::string_view, 8> kValidTexts = {
    "2019-03-14T09:26:53Z",      "2019-03-14T10:26:53+01:00",    "2019-03-14T10:26:53-01:30:15",
    "2000-02-29T23:59:59+23:59", "0001-01-01T00:00:00Z",         "9999-12-31T23:59:59Z",
    "1900-02-28T00:00:00-00:00", "9999-12-31T23:59:59-23:59:59",
};

TEST(DateComparisonTest, EveryDayIsReadAsIcuCountsIt) {
  const std::unique_ptr<icu::GregorianCalendar> calendar = makeProlepticCalendar();
  UErrorCode error = U_ZERO_ERROR;
  int days = 0;
  for (std::int64_t day = daysSince1970(1, 1, 1); day <= daysSince1970(9999, 12, 31); ++day) {
    calendar->setTime(static_cast<double>(day * kSecondsPerDay * 1000), error);
    const std::string text =
        dateText(calendar->get(UCAL_YEAR, error), calendar->get(UCAL_MONTH, error) + 1,
                 calendar->get(UCAL_DAY_OF_MONTH, error));
    ASSERT_EQ(componentSeconds(text), day * kSecondsPerDay) << text;
    ++days;
  }
  ASSERT_TRUE(U_SUCCESS(error)) << u_errorName(error);
  EXPECT_EQ(days, 3652059);
}

TEST(DateComparisonTest, NoOtherDayOfAnyYearIsRead) {
  for (int year = 0; year <= 9999; ++year) {
    for (int month = 0; month <= 13; ++month) {
      const bool isMonth = year > 0 && month >= 1 && month <= 12;
      for (int day = 0; day <= 32; ++day) {
        const bool exists = isMonth && day >= 1 && day <= daysInMonth(year, month);
        if (exists) continue;
        const std::string text = dateText(year, month, day);
        ASSERT_EQ(componentSeconds(text), std::nullopt) << text;
      }
    }
  }
}

TEST(DateComparisonTest, EveryPairOfDigitsIsReadAsMonthAndDay) {
  for (const char* const year : {"2000", "2019", "0000"}) {
    for (int month = 0; month < 100; ++month) {
      for (int day = 0; day < 100; ++day) {
        expectAsOracle(std::string(year) + "-" + twoDigits(month) + "-" + twoDigits(day) +
                       "T12:00:00Z");
      }
    }
  }
}

TEST(DateComparisonTest, EverySecondOfTheDayIsReadAndNoOther) {
  int seconds = 0;
  for (int hour = 0; hour < 100; ++hour) {
    for (int minute = 0; minute < 100; ++minute) {
      for (int second = 0; second < 100; ++second) {
        const std::string text = "1970-01-01T" + twoDigits(hour) + ":" + twoDigits(minute) + ":" +
                                 twoDigits(second) + "Z";
        const bool exists = hour < 24 && minute < 60 && second < 60;
        const std::optional<std::int64_t> expected =
            exists ? std::optional<std::int64_t>(seconds++) : std::nullopt;
        ASSERT_EQ(componentSeconds(text), expected) << text;
      }
    }
  }
  EXPECT_EQ(seconds, kSecondsPerDay);
}

TEST(DateComparisonTest, EveryOffsetMinuteIsReadAndNoOther) {
  for (const char sign : {'+', '-'}) {
    for (int hour = 0; hour < 100; ++hour) {
      for (int minute = 0; minute < 100; ++minute) {
        expectAsOracle(std::string("2019-03-14T10:26:53") + sign + twoDigits(hour) + ":" +
                       twoDigits(minute));
      }
    }
  }
}

TEST(DateComparisonTest, EveryOffsetSecondOfAnHourIsReadAndNoOther) {
  for (const char sign : {'+', '-'}) {
    for (const int hour : {0, 5, 23, 24}) {
      for (int minute = 0; minute < 100; ++minute) {
        for (int second = 0; second < 100; ++second) {
          expectAsOracle(std::string("2019-03-14T10:26:53") + sign + twoDigits(hour) + ":" +
                         twoDigits(minute) + ":" + twoDigits(second));
        }
      }
    }
  }
}

// Hands every text that differs from `text` in one character to `visit`: each byte in place of each
// character and before it and at the end, and each character left out.
template <typename Visit>
void forEachSingleCharacterChange(std::string_view text, Visit visit) {
  constexpr int kBytes = 256;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    for (int byte = 0; byte < kBytes; ++byte) {
      std::string inserted(text);
      inserted.insert(i, 1, static_cast<char>(byte));
      visit(inserted);
      if (i == text.size()) continue;
      std::string replaced(text);
      replaced[i] = static_cast<char>(byte);
      visit(replaced);
    }
    if (i == text.size()) continue;
    std::string shortened(text);
    shortened.erase(i, 1);
    visit(shortened);
  }
}

TEST(DateComparisonTest, EverySingleCharacterChangeIsReadAlike) {
  for (const std::string_view valid : kValidTexts) {
    ASSERT_TRUE(componentSeconds(valid).has_value()) << valid;
    forEachSingleCharacterChange(valid, expectAsOracle);
  }
}

TEST(DateComparisonTest, EverySingleCharacterChangeThatIsReadIsReadAsByIcu) {
  const IcuFormatter icu;
  int read = 0;
  for (const std::string_view valid : kValidTexts) {
    forEachSingleCharacterChange(valid, [&icu, &read](const std::string& text) {
      const std::optional<std::int64_t> seconds = componentSeconds(text);
      if (!seconds.has_value()) return;
      ++read;
      ASSERT_EQ(icu.seconds(text), seconds) << text;
    });
  }
  EXPECT_GT(read, 500);
}

TEST(DateComparisonTest, EveryChangeOfTwoDigitsIsReadAlike) {
  for (const std::string_view valid : kValidTexts) {
    std::string text(valid);
    for (std::size_t i = 0; i < text.size(); ++i) {
      for (std::size_t j = i + 1; j < text.size(); ++j) {
        for (int digits = 0; digits < 100; ++digits) {
          text[i] = static_cast<char>('0' + digits / 10);
          text[j] = static_cast<char>('0' + digits % 10);
          expectAsOracle(text);
        }
        text[j] = valid[j];
      }
      text[i] = valid[i];
    }
  }
}

TEST(DateComparisonTest, EveryBeginningAndEndOfAValidTextIsReadAlike) {
  for (const std::string_view valid : kValidTexts) {
    for (std::size_t i = 0; i <= valid.size(); ++i) {
      expectAsOracle(valid.substr(0, i));
      expectAsOracle(valid.substr(i));
      expectAsOracle(std::string(valid.substr(0, i)) + std::string(valid));
    }
  }
}

TEST(DateComparisonTest, RandomValidTextsAreReadAsByIcu) {
  std::mt19937_64 random = seededRandom();
  const IcuFormatter icu;
  const auto upTo = [&random](int most) { return randomBetween(random, 0, most); };
  for (int i = 0; i < 20000; ++i) {
    const int year = 1 + upTo(9998);
    const int month = 1 + upTo(11);
    const int day = 1 + upTo(daysInMonth(year, month) - 1);
    std::string text = dateText(year, month, day).substr(0, 11) + twoDigits(upTo(23)) + ":" +
                       twoDigits(upTo(59)) + ":" + twoDigits(upTo(59));
    const int form = upTo(2);
    if (form == 0) {
      text += "Z";
    } else {
      text += (upTo(1) == 0 ? "+" : "-") + twoDigits(upTo(23)) + ":" + twoDigits(upTo(59));
      if (form == 2) text += ":" + twoDigits(upTo(59));
    }
    const std::optional<std::int64_t> seconds = componentSeconds(text);
    ASSERT_TRUE(seconds.has_value()) << text;
    ASSERT_EQ(seconds, icu.seconds(text)) << text;
    ASSERT_EQ(seconds, oracleSeconds(text)) << text;
  }
}

}  // namespace
}  // namespace qel::testing
