#include "explain/time_text.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>

namespace qel::tool {

std::string dateText(const Instant& instant) {
  const auto seconds = instant.sysTime<std::chrono::seconds>();
  const auto day = std::chrono::floor<std::chrono::days>(seconds);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss<std::chrono::seconds> time(seconds - day);
  std::array<char, 64> buffer;
  const int size = std::snprintf(
      buffer.data(), buffer.size(), "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()));
  std::string text(buffer.data(), static_cast<std::size_t>(size));
  if (instant.nanoseconds() == 0) return text;
  std::string fraction = std::to_string(1000000000 + instant.nanoseconds()).substr(1);
  fraction.erase(fraction.find_last_not_of('0') + 1);
  if (fraction.size() < 3) fraction.append(3 - fraction.size(), '0');
  return text + "." + fraction;
}

std::string durationText(std::uint64_t seconds) {
  struct Unit {
    std::uint64_t seconds;
    const char* one;
    const char* many;
  };
  constexpr std::array<Unit, 4> kUnits = {
      {{86400, " day", " days"}, {3600, " h", " h"}, {60, " min", " min"}, {1, " s", " s"}}};
  std::string text;
  for (std::size_t i = 0; i < kUnits.size(); ++i) {
    const std::uint64_t number = seconds / kUnits[i].seconds;
    if (number == 0) continue;
    text = std::to_string(number) + (number == 1 ? kUnits[i].one : kUnits[i].many);
    if (i + 1 == kUnits.size()) return text;
    const Unit& next = kUnits[i + 1];
    const std::uint64_t rest = seconds % kUnits[i].seconds / next.seconds;
    if (rest > 0) text += " " + std::to_string(rest) + (rest == 1 ? next.one : next.many);
    return text;
  }
  return "0 s";
}

}  // namespace qel::tool
