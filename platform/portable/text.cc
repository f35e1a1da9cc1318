#include "qel/text.h"

#include <utf8/core.h>
#include <utf8/unchecked.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace qel {
namespace {

// First byte of every surrogate, and of the characters from U+D000 to U+D7FF. Never a later byte.
constexpr char kSurrogateLead = '\xED';
constexpr std::size_t kSurrogateSize = 3;

// Nearly all identifiers are ASCII, which needs no encoding. Reads every byte without a branch, so
// that the compiler can vectorize the loop.
bool isAscii(std::string_view text) {
  unsigned bits = 0;
  for (const char byte : text) bits |= static_cast<unsigned char>(byte);
  return bits < 0x80;
}

std::string withJoinedSurrogatePairs(std::string_view text) {
  std::string joined;
  std::size_t done = 0;
  std::size_t position = text.find(kSurrogateLead);
  while (position != std::string_view::npos) {
    const std::size_t next = std::min(position + kSurrogateSize, text.size());
    const std::optional<char32_t> high = surrogateAtStart(text.substr(position));
    const std::optional<char32_t> low = surrogateAtStart(text.substr(next));
    if (high.has_value() && isHighSurrogate(*high) && low.has_value() && isLowSurrogate(*low)) {
      joined += text.substr(done, position - done);
      utf8::unchecked::append(characterOfPair(*high, *low), std::back_inserter(joined));
      done = next + kSurrogateSize;
    }
    position = text.find(kSurrogateLead, next);
  }
  return joined += text.substr(done);
}

}  // namespace

std::optional<std::string> utf8DataWithoutLoss(std::string text) {
  if (isAscii(text)) return text;
  std::string joined = withJoinedSurrogatePairs(text);
  if (!utf8::is_valid(joined.begin(), joined.end())) return std::nullopt;
  return joined;
}

}  // namespace qel
