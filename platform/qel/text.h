// Text as the component reads it.
//
// Text is UTF-8. The store's own strings are UTF-16 and may hold an unpaired surrogate; it travels
// as the three bytes that its code point would take (ED A0 80 to ED BF BF), so that nothing is
// lost. Two texts are equal when their bytes are: no case folding, no Unicode normalisation, no
// locale.

#ifndef QEL_PLATFORM_TEXT_H_
#define QEL_PLATFORM_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

#include "qel/export.h"

namespace qel {

// A text that may be absent. Absent and empty are different things: where a rule treats them alike,
// it asks isEmpty. The text belongs to whoever hands out the view.
using OptionalText = std::optional<std::string_view>;

// Tells whether `text` has length 0. Absent text has length 0.
constexpr bool isEmpty(const OptionalText& text) { return !text.has_value() || text->empty(); }

// Tells whether both texts are present and have the same bytes. An absent text equals nothing, not
// even another absent text.
constexpr bool isEqual(const OptionalText& left, const OptionalText& right) {
  return left.has_value() && right.has_value() && *left == *right;
}

// Encodes `text` in UTF-8 without loss, and takes it over for that. A high surrogate followed by a
// low one, which is how pieces of UTF-16 meet when they are joined, becomes the one character that
// the pair stands for. Gives nothing when any surrogate is left over or the text is otherwise
// ill-formed.
QEL_EXPORT std::optional<std::string> utf8DataWithoutLoss(std::string text);

}  // namespace qel

#endif  // QEL_PLATFORM_TEXT_H_
