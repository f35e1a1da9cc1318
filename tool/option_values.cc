#include "option_values.h"

#include <charconv>
#include <string>
#include <system_error>

namespace qel::tool {

CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most) {
  const auto check = [least, most](std::string& text) -> std::string {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most) {
      return "expected a number from " + std::to_string(least) + " to " + std::to_string(most) +
             ", found " + text;
    }
    text = std::to_string(number);
    return "";
  };
  return CLI::Validator(check, "");
}

}  // namespace qel::tool
