#include "option_values.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "excerpt.h"

namespace qel::tool {
namespace {

// Returns the number that `text` starts with, and removes its digits.
std::optional<std::uint64_t> takeNumber(std::string_view& text) {
  std::uint64_t number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  return number;
}

// Returns the position of the highest bit of a unit, or std::nullopt if there is no such unit.
std::optional<unsigned> shiftOfUnit(std::string_view unit) {
  if (unit.empty()) return 0;
  if (unit == "K") return 10;
  if (unit == "M") return 20;
  if (unit == "G") return 30;
  return std::nullopt;
}

}  // namespace

CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most) {
  const auto check = [least, most](std::string& text) -> std::string {
    std::string_view rest = text;
    const std::optional<std::uint64_t> number = takeNumber(rest);
    if (!number.has_value() || !rest.empty() || *number < least || *number > most) {
      return "expected a number from " + std::to_string(least) + " to " + std::to_string(most) +
             ", found " + foundText(text);
    }
    text = std::to_string(*number);
    return "";
  };
  return CLI::Validator(check, "");
}

CLI::Validator byteSize(std::uint64_t least, std::uint64_t most) {
  const auto check = [least, most](std::string& text) -> std::string {
    std::string_view unit = text;
    const std::optional<std::uint64_t> number = takeNumber(unit);
    const std::optional<unsigned> shift = shiftOfUnit(unit);
    if (!number.has_value() || !shift.has_value() || *number > most >> *shift ||
        *number << *shift < least) {
      return "expected a size from " + std::to_string(least) + " to " + std::to_string(most) +
             " bytes, such as 65536, 64K, 64M or 1G; found " + foundText(text);
    }
    text = std::to_string(*number << *shift);
    return "";
  };
  return CLI::Validator(check, "");
}

CLI::Validator oneOf(std::vector<std::string> words) {
  const auto check = [words = std::move(words)](const std::string& text) -> std::string {
    if (std::find(words.begin(), words.end(), text) != words.end()) return "";
    return "expected " + CLI::detail::join(words, " or ") + ", found " + foundText(text);
  };
  return CLI::Validator(check, "");
}

}  // namespace qel::tool
