// A fast reader for JSON in one form: keys in the order of their table, no escapes, and no white
// space except one space after a colon or a comma. It reports no errors. If it does not reach the
// end, the text has another form or is wrong, and the caller reads it with simdjson.

#ifndef QEL_TOOL_COMPACT_JSON_H_
#define QEL_TOOL_COMPACT_JSON_H_

#include <simdjson.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "qel/text.h"

namespace qel::tool {

// Once stopped, takes nothing more. Inline, because reading a line takes about a hundred steps of a
// few instructions each.
class CompactJson {
 public:
  explicit CompactJson(std::string_view text)
      : position_(text.data()), end_(text.data() + text.size()) {
    if (text.ends_with('\r')) --end_;
    if (!hasPlainStrings({position_, end_})) stop();
  }

  // Returns whether the whole text was taken. A stopped reader is never at the end.
  bool isAtEnd() const { return position_ == end_ && position_ != nullptr; }

  void stop() { position_ = end_ = nullptr; }

  // Takes the next character if it is `character`, and returns whether it was.
  bool take(char character) {
    if (position_ == end_ || *position_ != character) return false;
    ++position_;
    return true;
  }

  // Takes the next member up to its value if its key is `key`. Returns whether it was. May return
  // false for a member that is close to the end of the text.
  bool takeKey(std::string_view key, bool isFirstMember) {
    const char* start = position_;
    // Room for a comma, a space, two quotation marks, a colon, a space and a value, so that all of
    // them can be read without another check.
    if (end_ - start < static_cast<std::ptrdiff_t>(key.size() + 7)) return false;
    if (!isFirstMember && *start++ != ',') return false;
    if (!isFirstMember && *start == ' ') ++start;
    if (*start++ != '"' || std::memcmp(start, key.data(), key.size()) != 0) return false;
    start += key.size();
    if (*start++ != '"' || *start++ != ':') return false;
    position_ = start + (*start == ' ' ? 1 : 0);
    return true;
  }

  // Takes the string that comes next, if there is one.
  OptionalText takeText() {
    if (!take('"')) return std::nullopt;
    const std::string_view rest(position_, end_);
    const std::size_t size = rest.find('"');
    if (size == std::string_view::npos) {
      stop();
      return std::nullopt;
    }
    position_ += size + 1;
    return rest.substr(0, size);
  }

  // Takes what comes before the next comma or bracket: a number, true, false or null.
  std::string_view takeToken() {
    const char* const start = position_;
    const auto isEnd = [](char c) { return c == ',' || c == '}' || c == ']'; };
    position_ = std::find_if(start, end_, isEnd);
    return {start, position_};
  }

 private:
  // Returns whether every string in the text is valid and ends at the next quotation mark. Reads
  // each byte without a branch, so that the compiler can vectorize the loop.
  static bool hasPlainStrings(std::string_view text) {
    unsigned char others = 0;
    for (const char character : text) {
      const auto byte = static_cast<unsigned char>(character);
      const int isOther = static_cast<int>(byte < 0x20) | static_cast<int>(byte == '\\');
      others |= static_cast<unsigned char>(isOther);
    }
    return others == 0 && simdjson::validate_utf8(text);
  }

  const char* position_;
  const char* end_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_COMPACT_JSON_H_
