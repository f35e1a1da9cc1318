// Sentences about a purchase, in which texts of the input are kept apart from our own words: a
// renderer escapes and shortens the former, and breaks lines in the latter only.

#ifndef QEL_TOOL_EXPLAIN_PROSE_H_
#define QEL_TOOL_EXPLAIN_PROSE_H_

#include <concepts>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qel/text.h"

namespace qel::tool {

// A piece of a sentence.
struct Span {
  // If `isInput`, a text of the input as it is. Else our own words, in ASCII.
  std::string text;
  bool isInput = false;

  friend bool operator==(const Span&, const Span&) = default;
};

// A text of the input, to append to a sentence. An absent one reads "(absent)".
struct InputText {
  OptionalText text;
};

class Prose {
 public:
  Prose() = default;

  // Takes pieces: our own words, integers, InputText, and other sentences.
  template <typename... Piece>
  explicit Prose(const Piece&... pieces) {
    (append(pieces), ...);
  }

  void append(std::string_view words) {
    if (words.empty()) return;
    if (spans_.empty() || spans_.back().isInput) spans_.emplace_back();
    spans_.back().text += words;
  }
  void append(const InputText& input) {
    if (input.text.has_value() && !input.text->empty()) {
      spans_.push_back({std::string(*input.text), true});
    } else {
      append(input.text.has_value() ? "(empty)" : "(absent)");
    }
  }
  void append(std::integral auto number) { append(std::string_view(std::to_string(number))); }
  void append(const Prose& other) {
    for (const Span& span : other.spans_) {
      if (span.isInput) {
        spans_.push_back(span);
      } else {
        append(std::string_view(span.text));
      }
    }
  }

  bool empty() const { return spans_.empty(); }
  const std::vector<Span>& spans() const { return spans_; }

  // Returns the sentence with the texts of the input as they are. For tests and for comparing.
  std::string text() const {
    std::string text;
    for (const Span& span : spans_) text += span.text;
    return text;
  }

 private:
  std::vector<Span> spans_;
};

// Returns "1 entry", "2 entries".
inline std::string counted(std::size_t number, std::string_view one, std::string_view many) {
  return std::to_string(number) + " " + std::string(number == 1 ? one : many);
}

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_PROSE_H_
