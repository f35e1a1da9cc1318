#include "date_oracle.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

namespace qel::testing {
namespace {

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

// Days from 0001-01-01 to the given day.
std::int64_t daysSinceYear1(int year, int month, int day) {
  const int before = year - 1;
  std::int64_t days = std::int64_t{365} * before + before / 4 - before / 100 + before / 400;
  for (int i = 1; i < month; ++i) days += daysInMonth(year, i);
  return days + day - 1;
}

// What the `size` characters at `position` would denote if they were digits.
int numberAt(std::string_view text, std::size_t position, std::size_t size) {
  int number = 0;
  for (const char character : text.substr(position, size)) number = number * 10 + (character - '0');
  return number;
}

bool isBetween(int number, int least, int most) { return least <= number && number <= most; }

struct ClockTime {
  int hour;
  int minute;
  int second;

  bool exists() const {
    return isBetween(hour, 0, 23) && isBetween(minute, 0, 59) && isBetween(second, 0, 59);
  }
  int seconds() const { return hour * 3600 + minute * 60 + second; }
  std::string written(bool withSeconds) const {
    std::array<char, 64> text;
    if (withSeconds) {
      std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", hour, minute, second);
    } else {
      std::snprintf(text.data(), text.size(), "%02d:%02d", hour, minute);
    }
    return text.data();
  }
};

struct CalendarDay {
  int year;
  int month;
  int day;

  bool exists() const {
    return isBetween(year, 1, 9999) && isBetween(month, 1, 12) &&
           isBetween(day, 1, daysInMonth(year, month));
  }
  std::string written() const {
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", year, month, day);
    return text.data();
  }
};

}  // namespace

int daysInMonth(int year, int month) {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const int leapDay = month == 2 && isLeapYear(year) ? 1 : 0;
  return kDays[static_cast<std::size_t>(month - 1)] + leapDay;
}

std::int64_t daysSince1970(int year, int month, int day) {
  return daysSinceYear1(year, month, day) - daysSinceYear1(1970, 1, 1);
}

std::optional<std::int64_t> oracleSeconds(std::string_view text) {
  constexpr std::size_t kUtcSize = 20;
  constexpr std::size_t kOffsetSize = 25;
  constexpr std::size_t kOffsetWithSecondsSize = 28;
  if (text.size() != kUtcSize && text.size() != kOffsetSize &&
      text.size() != kOffsetWithSecondsSize) {
    return std::nullopt;
  }

  const CalendarDay day = {numberAt(text, 0, 4), numberAt(text, 5, 2), numberAt(text, 8, 2)};
  const ClockTime time = {numberAt(text, 11, 2), numberAt(text, 14, 2), numberAt(text, 17, 2)};
  if (!day.exists() || !time.exists()) return std::nullopt;
  std::string written = day.written() + "T" + time.written(true);

  int offset = 0;
  if (text.size() == kUtcSize) {
    written += "Z";
  } else {
    const bool withSeconds = text.size() == kOffsetWithSecondsSize;
    const ClockTime zone = {numberAt(text, 20, 2), numberAt(text, 23, 2),
                            withSeconds ? numberAt(text, 26, 2) : 0};
    if (!zone.exists()) return std::nullopt;
    const bool isWest = text[19] == '-';
    written += (isWest ? "-" : "+") + zone.written(withSeconds);
    offset = isWest ? -zone.seconds() : zone.seconds();
  }
  if (written != text) return std::nullopt;
  return daysSince1970(day.year, day.month, day.day) * 86400 + time.seconds() - offset;
}

}  // namespace qel::testing
