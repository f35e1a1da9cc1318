#include "qel/text.h"

#include <utf8/core.h>
#include <utf8/unchecked.h>

#include <cstddef>
#include <iterator>

namespace qel {
namespace {

// First byte of every surrogate, which takes three bytes. It is the first byte of no other
// character above U+D7FF, and never a later byte.
constexpr char kSurrogateLead = '\xED';
constexpr std::size_t kSurrogateSize = 3;

// The high bits of a surrogate's second byte say which half of a pair it is.
enum class Half : unsigned char { kHigh = 0xA0, kLow = 0xB0 };

// Nearly all identifiers are ASCII, which needs no encoding. Reads every byte without a branch, so
// that the compiler can vectorize the loop.
bool isAscii(std::string_view text) {
  unsigned bits = 0;
  for (const char byte : text) bits |= static_cast<unsigned char>(byte);
  return bits < 0x80;
}

constexpr unsigned byteAt(std::string_view text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

bool isSurrogate(std::string_view text, std::size_t position, Half half) {
  return text.size() >= position + kSurrogateSize && text[position] == kSurrogateLead &&
         (byteAt(text, position + 1) & 0xF0) == static_cast<unsigned>(half) &&
         (byteAt(text, position + 2) & 0xC0) == 0x80;
}

// Returns the ten bits of the pair that the surrogate at `position` has.
char32_t payload(std::string_view text, std::size_t position) {
  return (byteAt(text, position + 1) & 0x0F) << 6 | (byteAt(text, position + 2) & 0x3F);
}

std::string withJoinedSurrogatePairs(std::string_view text) {
  std::string joined;
  std::size_t done = 0;
  std::size_t high = text.find(kSurrogateLead);
  while (high != std::string_view::npos) {
    const std::size_t low = high + kSurrogateSize;
    if (isSurrogate(text, high, Half::kHigh) && isSurrogate(text, low, Half::kLow)) {
      joined += text.substr(done, high - done);
      utf8::unchecked::append(0x10000 + (payload(text, high) << 10 | payload(text, low)),
                              std::back_inserter(joined));
      done = low + kSurrogateSize;
    }
    high = text.find(kSurrogateLead, low);
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
