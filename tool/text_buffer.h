// A text buffer for appending many short pieces.

#ifndef QEL_TOOL_TEXT_BUFFER_H_
#define QEL_TOOL_TEXT_BUFFER_H_

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <limits>
#include <string_view>
#include <vector>

namespace qel::tool {

// Like std::string, but append is inlined: a piece of constant size becomes a store or two. A
// result line has about forty pieces.
class TextBuffer {
 public:
  // Valid until the buffer is changed.
  std::string_view text() const { return {memory_.data(), size_}; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  // Removes the text and keeps its memory.
  void clear() { size_ = 0; }

  // Removes all but the first `size` characters, of which there are as many.
  void truncate(std::size_t size) { size_ = size; }

  void append(std::string_view piece) {
    std::copy(piece.begin(), piece.end(), room(piece.size()));
    size_ += piece.size();
  }

  void append(char character) {
    *room(1) = character;
    ++size_;
  }

  // Appends the decimal digits of `integer`, after a minus sign if it is negative.
  void append(std::integral auto integer) {
    constexpr std::size_t kLongest = std::numeric_limits<decltype(integer)>::digits10 + 2;
    char* const digits = room(kLongest);
    size_ +=
        static_cast<std::size_t>(std::to_chars(digits, digits + kLongest, integer).ptr - digits);
  }

 private:
  // Returns memory for `size` more characters.
  char* room(std::size_t size) {
    if (memory_.size() - size_ < size) grow(size);
    return memory_.data() + size_;
  }

  // At least doubles the memory, so that the text is not copied for every piece.
  void grow(std::size_t size) { memory_.resize(std::max(2 * memory_.size(), size_ + size)); }

  std::vector<char> memory_;
  std::size_t size_ = 0;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_TEXT_BUFFER_H_
