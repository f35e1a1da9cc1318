#include "written_date.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace qel {
namespace {

// The shapes of the pieces of a written date. A 0 stands for any ASCII digit and ~ for either sign;
// every other character stands for itself.
constexpr std::string_view kDate = "0000-00-00T";
constexpr std::string_view kTime = "00:00:00";
constexpr std::string_view kUtc = "Z";
constexpr std::string_view kOffset = "~00:00";
constexpr std::string_view kOffsetWithSeconds = "~00:00:00";

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

constexpr bool fits(char character, char shape) {
  if (shape == '0') return isDigit(character);
  if (shape == '~') return character == '+' || character == '-';
  return character == shape;
}

constexpr bool hasShape(std::string_view text, std::string_view shape) {
  if (text.size() != shape.size()) return false;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (!fits(text[i], shape[i])) return false;
  }
  return true;
}

// The number that the two digits at `position` denote.
constexpr int twoDigits(std::string_view text, std::size_t position) {
  return (text[position] - '0') * 10 + (text[position + 1] - '0');
}

// Seconds since midnight of the time hh:mm:ss at the start of `text`, or of hh:mm when it is
// shorter; nothing for a time that no day has.
constexpr std::optional<int> secondsOfTime(std::string_view text) {
  const int hour = twoDigits(text, 0);
  const int minute = twoDigits(text, 3);
  const int second = text.size() > 5 ? twoDigits(text, 6) : 0;
  if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return (hour * 60 + minute) * 60 + second;
}

// Seconds that the zone is ahead of UTC; nothing when `zone` is no zone.
constexpr std::optional<int> offsetOfZone(std::string_view zone) {
  if (zone == kUtc) return 0;
  if (!hasShape(zone, kOffset) && !hasShape(zone, kOffsetWithSeconds)) return std::nullopt;
  const std::optional<int> offset = secondsOfTime(zone.substr(1));
  if (!offset.has_value()) return std::nullopt;
  return zone.front() == '-' ? -*offset : *offset;
}

}  // namespace

std::optional<Instant> instantFromWrittenDate(std::string_view text) {
  if (text.size() < kDate.size() + kTime.size()) return std::nullopt;
  const std::string_view writtenDate = text.substr(0, kDate.size());
  const std::string_view writtenTime = text.substr(kDate.size(), kTime.size());
  const std::string_view zone = text.substr(kDate.size() + kTime.size());
  if (!hasShape(writtenDate, kDate) || !hasShape(writtenTime, kTime)) return std::nullopt;

  const std::chrono::year_month_day date(
      std::chrono::year(twoDigits(writtenDate, 0) * 100 + twoDigits(writtenDate, 2)),
      std::chrono::month(static_cast<unsigned>(twoDigits(writtenDate, 5))),
      std::chrono::day(static_cast<unsigned>(twoDigits(writtenDate, 8))));
  if (!date.ok() || date.year() < std::chrono::year(1)) return std::nullopt;

  const std::optional<int> time = secondsOfTime(writtenTime);
  const std::optional<int> offset = offsetOfZone(zone);
  if (!time.has_value() || !offset.has_value()) return std::nullopt;

  const std::chrono::sys_seconds midnight = std::chrono::sys_days(date);
  return Instant{.seconds = midnight.time_since_epoch().count() + *time - *offset};
}

}  // namespace qel
