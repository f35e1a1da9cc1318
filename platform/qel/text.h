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
#include "qel/lifetime.h"

namespace qel {

// A text that may be absent, which is not the same as empty. A view: the text belongs to whoever
// returned it, and must outlive the view. Used like std::optional<std::string_view>.
//
// Example: OptionalText title() const override { return title_; }  // std::optional<std::string>
class OptionalText {
 public:
  // Absent.
  constexpr OptionalText() = default;
  // NOLINTBEGIN(google-explicit-constructor): texts of any kind convert to a view of them.
  constexpr OptionalText(std::nullopt_t) {}

  constexpr OptionalText(std::string_view text) : text_(text) {}
  constexpr OptionalText(std::optional<std::string_view> text) : text_(text) {}
  constexpr OptionalText(const std::string& text QEL_LIFETIME_BOUND) : text_(text) {}
  constexpr OptionalText(const std::optional<std::string>& text QEL_LIFETIME_BOUND) : text_(text) {}

  // A null pointer is an absent text.
  constexpr OptionalText(const char* text) {
    if (text != nullptr) text_ = text;
  }

  constexpr operator const std::optional<std::string_view>&() const QEL_LIFETIME_BOUND {
    return text_;
  }
  // NOLINTEND(google-explicit-constructor)

  [[nodiscard]] constexpr bool has_value() const { return text_.has_value(); }
  constexpr explicit operator bool() const { return text_.has_value(); }

  // The text, which must be present.
  constexpr std::string_view operator*() const { return *text_; }
  constexpr const std::string_view* operator->() const QEL_LIFETIME_BOUND { return &*text_; }

  // Returns the text, or `otherwise` if it is absent.
  [[nodiscard]] constexpr std::string_view value_or(std::string_view otherwise) const {
    return text_.value_or(otherwise);
  }

  // Absent texts are equal here. See isEqual for the other comparison.
  friend constexpr bool operator==(const OptionalText& left, const OptionalText& right) {
    return left.has_value() == right.has_value() && left.value_or({}) == right.value_or({});
  }
  // Otherwise the comparison of std::optional with a value would be chosen, for which an absent
  // text equals nothing.
  template <typename Text>
  friend constexpr bool operator==(const OptionalText& left, const std::optional<Text>& right) {
    return left == OptionalText(right);
  }
  template <typename Text>
  friend constexpr bool operator==(const std::optional<Text>& left, const OptionalText& right) {
    return right == OptionalText(left);
  }

 private:
  std::optional<std::string_view> text_;
};

// Returns whether `text` is absent or has length 0.
[[nodiscard]] constexpr bool isEmpty(const OptionalText& text) {
  return !text.has_value() || text->empty();
}

// Returns whether both texts are present and have the same bytes. An absent text equals nothing,
// not even another absent text.
[[nodiscard]] constexpr bool isEqual(const OptionalText& left, const OptionalText& right) {
  return left.has_value() && right.has_value() && *left == *right;
}

// Surrogates are the halves of a UTF-16 pair: a high one, then a low one.
[[nodiscard]] constexpr bool isHighSurrogate(char32_t codePoint) {
  return codePoint >= 0xD800 && codePoint <= 0xDBFF;
}
[[nodiscard]] constexpr bool isLowSurrogate(char32_t codePoint) {
  return codePoint >= 0xDC00 && codePoint <= 0xDFFF;
}

// Returns the character of a pair.
[[nodiscard]] constexpr char32_t characterOfPair(char32_t high, char32_t low) {
  return 0x10000 + ((high & 0x3FF) << 10 | (low & 0x3FF));
}

// Returns the surrogate at the start of `text`, which takes three bytes. Returns std::nullopt if
// there is none.
[[nodiscard]] constexpr std::optional<char32_t> surrogateAtStart(std::string_view text) {
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
[[nodiscard]] QEL_EXPORT std::optional<std::string> utf8DataWithoutLoss(std::string text);

}  // namespace qel

#endif  // QEL_PLATFORM_TEXT_H_
