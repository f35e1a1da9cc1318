// Texts.
//
// Text is UTF-8. The store's own strings are UTF-16 and may have an unpaired surrogate; it is kept
// as the three bytes of its code point (ED A0 80 to ED BF BF), so that nothing is lost. Two texts
// are equal if their bytes are: no case folding, no Unicode normalisation, no locale.

#ifndef QEL_PLATFORM_TEXT_H_
#define QEL_PLATFORM_TEXT_H_

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

// Returns `text` in well-formed UTF-8. A high surrogate followed by a low one, as joining two texts
// can produce, becomes the one character of the pair. Returns std::nullopt if any other surrogate
// is left, or if the text is ill-formed otherwise.
QEL_EXPORT std::optional<std::string> utf8DataWithoutLoss(std::string text);

}  // namespace qel

#endif  // QEL_PLATFORM_TEXT_H_
