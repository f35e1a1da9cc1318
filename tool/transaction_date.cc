#include "transaction_date.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "qel/rfc3339.h"

namespace qel::tool {
namespace {

// Position of the decimal point: after the whole seconds.
constexpr std::size_t kPoint = std::string_view("2019-03-14T09:26:53").size();

// Returns the nanoseconds of the digits after the point.
std::int32_t nanosecondsOf(std::string_view digits) {
  constexpr std::size_t kPlaces = 9;
  std::int32_t nanoseconds = 0;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    nanoseconds = nanoseconds * 10 + (place < digits.size() ? digits[place] - '0' : 0);
  }
  const std::string_view finer = digits.substr(std::min(kPlaces, digits.size()));
  const bool isOnNanosecond = finer.find_first_not_of('0') == std::string_view::npos;
  // The dates of a receipt are whole seconds, so what matters is only that the fraction is not 0.
  return isOnNanosecond ? nanoseconds : std::max(nanoseconds, 1);
}

}  // namespace

std::optional<Instant> parseTransactionDate(std::string_view text) {
  if (text.size() <= kPoint || text[kPoint] != '.') return parseRfc3339(text);

  const std::size_t end = std::min(text.find_first_not_of("0123456789", kPoint + 1), text.size());
  const std::string_view digits = text.substr(kPoint + 1, end - kPoint - 1);
  if (digits.empty()) return std::nullopt;
  const std::string withoutFraction =
      std::string(text.substr(0, kPoint)) + std::string(text.substr(end));
  const std::optional<Instant> second = parseRfc3339(withoutFraction);
  if (!second.has_value()) return std::nullopt;
  return Instant(second->seconds(), nanosecondsOf(digits));
}

}  // namespace qel::tool
