#include "excerpt.h"

#include <cstddef>

#include "byte_order_mark.h"

namespace qel::tool {

std::string excerpt(std::string_view text) {
  constexpr std::size_t kSize = 60;
  if (text.size() <= kSize) return std::string(text);
  std::size_t size = kSize;
  while ((text[size] & 0xC0) == 0x80) --size;
  return std::string(text.substr(0, size)) + "...";
}

std::string foundText(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\r\n";
  if (text.starts_with(kByteOrderMark)) return "U+FEFF, a byte order mark";
  const bool isPlain = !text.empty() && kWhiteSpace.find(text.front()) == std::string_view::npos &&
                       kWhiteSpace.find(text.back()) == std::string_view::npos;
  return isPlain ? excerpt(text) : "\"" + excerpt(text) + "\"";
}

}  // namespace qel::tool
