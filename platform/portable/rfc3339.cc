#include "qel/rfc3339.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace qel {
namespace {

// The shapes of the pieces of a timestamp. A 0 stands for any ASCII digit, every other character
// for itself.
constexpr std::string_view kDateAndTime = "0000-00-00T00:00:00";
constexpr std::string_view kUtc = "Z";
constexpr std::string_view kOffset = "00:00";
constexpr std::string_view kOffsetWithSeconds = "00:00:00";

// Reads every character without a branch, so that the compiler can vectorize the loop.
template <const std::string_view& kShape>
constexpr bool hasShape(std::string_view text) {
  if (text.size() != kShape.size()) return false;
  unsigned char misfits = 0;
  for (std::size_t i = 0; i < kShape.size(); ++i) {
    // A digit leaves 0 to 9 here. Adding 6 carries anything larger into the high bits.
    const auto difference = static_cast<unsigned char>(text[i] ^ kShape[i]);
    const unsigned char mask = kShape[i] == '0' ? 0xF0 : 0xFF;
    const unsigned char carry = kShape[i] == '0' ? 0x06 : 0x00;
    misfits |= (difference | static_cast<unsigned char>(difference + carry)) & mask;
  }
  return misfits == 0;
}

// Returns the number of the two digits at `position`.
constexpr int twoDigits(std::string_view text, std::size_t position) {
  return (text[position] - '0') * 10 + (text[position + 1] - '0');
}

// Returns the seconds since midnight of the time hh:mm:ss at the start of `text`, or hh:mm if it is
// shorter. Returns std::nullopt if it is out of range.
constexpr std::optional<int> secondsOfTime(std::string_view text) {
  const int hour = twoDigits(text, 0);
  const int minute = twoDigits(text, 3);
  const int second = text.size() > 5 ? twoDigits(text, 6) : 0;
  if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return (hour * 60 + minute) * 60 + second;
}

// Returns the seconds that the zone is ahead of UTC. Returns std::nullopt if `zone` is not a zone.
constexpr std::optional<int> offsetOfZone(std::string_view zone) {
  if (zone == kUtc) return 0;
  if (!zone.starts_with('+') && !zone.starts_with('-')) return std::nullopt;
  const std::string_view written = zone.substr(1);
  if (!hasShape<kOffset>(written) && !hasShape<kOffsetWithSeconds>(written)) return std::nullopt;
  const std::optional<int> offset = secondsOfTime(written);
  if (!offset.has_value()) return std::nullopt;
  return zone.front() == '-' ? -*offset : *offset;
}

}  // namespace

std::optional<Instant> parseRfc3339(std::string_view text) {
  constexpr std::size_t kTime = std::string_view("0000-00-00T").size();
  if (!hasShape<kDateAndTime>(text.substr(0, kDateAndTime.size()))) return std::nullopt;

  const std::chrono::year_month_day date(
      std::chrono::year(twoDigits(text, 0) * 100 + twoDigits(text, 2)),
      std::chrono::month(static_cast<unsigned>(twoDigits(text, 5))),
      std::chrono::day(static_cast<unsigned>(twoDigits(text, 8))));
  if (!date.ok() || date.year() < std::chrono::year(1)) return std::nullopt;

  const std::optional<int> time = secondsOfTime(text.substr(kTime));
  const std::optional<int> offset = offsetOfZone(text.substr(kDateAndTime.size()));
  if (!time.has_value() || !offset.has_value()) return std::nullopt;

  const std::chrono::sys_seconds midnight = std::chrono::sys_days(date);
  return Instant(midnight.time_since_epoch().count() + *time - *offset);
}

}  // namespace qel
