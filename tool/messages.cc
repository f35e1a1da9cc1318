#include "messages.h"

#include <cstddef>
#include <cstdio>

namespace qel::tool {
namespace {

// Returns the size of the control character at the start of `text`, 0 if there is another
// character. C1 controls, U+0080 to U+009F, have two bytes.
std::size_t controlSize(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x20 || first == 0x7F) return 1;
  return first == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0 ? 2 : 0;
}

}  // namespace

void report(std::string_view message) {
  std::string line = "qel-purchase: ";
  while (!message.empty()) {
    const std::size_t size = controlSize(message);
    line.push_back(size > 0 ? '?' : message[0]);
    message.remove_prefix(size > 0 ? size : 1);
  }
  line.push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string counted(std::uint64_t number, const char* noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace qel::tool
