#include "messages.h"

#include <utf8/checked.h>
#include <utf8/unchecked.h>

#include <cstdio>
#include <iterator>

namespace qel::tool {
namespace {

// Returns whether a character controls a terminal, or changes the order of the text around it.
bool isControl(char32_t character) {
  const auto isFrom = [character](char32_t first, char32_t last) {
    return character >= first && character <= last;
  };
  return isFrom(0, 0x1F) || isFrom(0x7F, 0x9F) || character == 0x061C || isFrom(0x200E, 0x200F) ||
         isFrom(0x2028, 0x202E) || isFrom(0x2066, 0x2069);
}

}  // namespace

void report(std::string_view message) {
  std::string line = "qel-purchase: ";
  std::string valid;
  utf8::replace_invalid(message.begin(), message.end(), std::back_inserter(valid), U'?');
  for (auto position = valid.begin(); position != valid.end();) {
    const char32_t character = utf8::unchecked::next(position);
    utf8::unchecked::append(isControl(character) ? U'?' : character, std::back_inserter(line));
  }
  line.push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string counted(std::uint64_t number, const char* noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace qel::tool
