#include "excerpt.h"

#include <cstddef>

namespace qel::tool {

std::string excerpt(std::string_view text) {
  constexpr std::size_t kSize = 60;
  if (text.size() <= kSize) return std::string(text);
  std::size_t size = kSize;
  while ((text[size] & 0xC0) == 0x80) --size;
  return std::string(text.substr(0, size)) + "...";
}

}  // namespace qel::tool
