// Texts.
//
// Text is UTF-8. The store's own strings are UTF-16 and may have an unpaired surrogate; it is kept
// as the three bytes of its code point (ED A0 80 to ED BF BF), so that nothing is lost. Two texts
// are equal if their bytes are: no case folding, no Unicode normalisation, no locale.

#ifndef QEL_PLATFORM_TEXT_H_
#define QEL_PLATFORM_TEXT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "qel/export.h"

namespace qel {

// A text that may be absent, which is not the same as empty. A view: the text belongs to whoever
// returned it.
using OptionalText = std::optional<std::string_view>;

// Returns whether `text` is absent or has length 0.
constexpr bool isEmpty(const OptionalText& text) { return !text.has_value() || text->empty(); }

// Returns whether both texts are present and have the same bytes. An absent text equals nothing,
// not even another absent text.
constexpr bool isEqual(const OptionalText& left, const OptionalText& right) {
  return left.has_value() && right.has_value() && *left == *right;
}

// Surrogates are the halves of a UTF-16 pair: a high one, then a low one.
constexpr bool isHighSurrogate(char32_t codePoint) {
  return codePoint >= 0xD800 && codePoint <= 0xDBFF;
}
constexpr bool isLowSurrogate(char32_t codePoint) {
  return codePoint >= 0xDC00 && codePoint <= 0xDFFF;
}

// Returns the character of a pair.
constexpr char32_t characterOfPair(char32_t high, char32_t low) {
  return 0x10000 + ((high & 0x3FF) << 10 | (low & 0x3FF));
}

// Returns the surrogate at the start of `text`, which takes three bytes. Returns std::nullopt if
// there is none.
constexpr std::optional<char32_t> surrogateAtStart(std::string_view text) {
  const auto byte = [text](std::size_t i) {
    return static_cast<char32_t>(static_cast<unsigned char>(text[i]));
  };
  const bool isSurrogate =
      text.size() >= 3 && byte(0) == 0xED && (byte(1) & 0xE0) == 0xA0 && (byte(2) & 0xC0) == 0x80;
  if (!isSurrogate) return std::nullopt;
  return 0xD000 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
}

// Returns `text` in well-formed UTF-8. A high surrogate followed by a low one, as joining two texts
// can produce, becomes the one character of the pair. Returns std::nullopt if any other surrogate
// is left, or if the text is ill-formed otherwise.
QEL_EXPORT std::optional<std::string> utf8DataWithoutLoss(std::string text);

}  // namespace qel

#endif  // QEL_PLATFORM_TEXT_H_
