#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "qel/app_receipt.h"
#include "qel/rfc3339.h"

namespace qel {
namespace {

constexpr std::string_view kDigits = "0123456789";

// Removes a fraction of a second from the start of `text`: a point and at least one digit.
void takeFraction(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_not_of(kDigits, 1), text.size());
  if (text.starts_with('.') && end > 1) text.remove_prefix(end);
}

// Returns the zone in the form of RFC 3339. Unknown forms are returned unchanged.
std::string zoneOf(std::string_view text) {
  for (const std::string_view name : {" Etc/GMT", " GMT", " UTC"}) {
    if (text == name) return "Z";
  }
  std::string zone(text);
  const bool isOffset = text.starts_with('+') || text.starts_with('-');
  const bool isInDigits = isOffset && text.find_first_not_of(kDigits, 1) == std::string_view::npos;
  if (isInDigits && text.size() == std::string_view("+hh").size()) zone += ":00";
  if (isInDigits && text.size() == std::string_view("+hhmm").size()) zone.insert(3, ":");
  return zone;
}

}  // namespace

std::optional<std::string> rfc3339FromReceiptDate(std::string_view text) noexcept {
  if (parseRfc3339(text).has_value()) return std::string(text);
  constexpr std::size_t kDateSize = std::string_view("0000-00-00").size();
  constexpr std::size_t kSecondsSize = std::string_view("0000-00-00T00:00:00").size();
  if (text.size() < kSecondsSize) return std::nullopt;
  std::string dateAndTime(text.substr(0, kSecondsSize));
  if (dateAndTime[kDateSize] == ' ') dateAndTime[kDateSize] = 'T';
  text.remove_prefix(kSecondsSize);
  takeFraction(text);
  const std::optional<Instant> instant = parseRfc3339(dateAndTime + zoneOf(text));
  return instant.has_value() ? rfc3339FromUnixTime(instant->seconds()) : std::nullopt;
}

std::optional<std::string> rfc3339FromUnixTime(std::int64_t seconds) noexcept {
  constexpr std::int64_t kFirst = -62'135'596'800;  // 0001-01-01T00:00:00Z
  constexpr std::int64_t kLast = 253'402'300'799;   // 9999-12-31T23:59:59Z
  if (seconds < kFirst || seconds > kLast) return std::nullopt;
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  const auto midnight = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(midnight);
  const std::chrono::hh_mm_ss clock(time - midnight);
  std::array<char, 32> text = {};
  const int size = std::snprintf(
      text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()));
  return std::string(text.data(), static_cast<std::size_t>(size));
}

}  // namespace qel
