#include "json_fault.h"

#include <utf8/checked.h>

#include <algorithm>
#include <cstddef>

#include "excerpt.h"
#include "json_text.h"
#include "qel/decimal.h"

namespace qel::tool {
namespace {

struct Fault {
  std::size_t offset;
  // What was expected, and what was found.
  std::string message;
};

// Returns whether a character of UTF-8 starts with `byte`.
bool isCharacterStart(char byte) { return (byte & 0xC0) != 0x80; }

// Reads a text from its start, and throws a Fault where it is not JSON. Keeps the open brackets in
// a string instead of calling itself, so that deep nesting cannot exhaust the stack.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  void scan() {
    takeValue();
    while (!open_.empty()) {
      const bool isObject = open_.back() == '{';
      if (take(isObject ? '}' : ']')) {
        open_.pop_back();
        isFirst_ = false;
      } else if (isFirst_) {
        isFirst_ = false;
        if (isObject) takeKey("a key in quotes or }");
        takeValue();
      } else {
        if (!take(',')) fail(isObject ? "a comma or }" : "a comma or ]");
        if (isObject) takeKey("a key in quotes");
        takeValue();
      }
    }
    skipSpace();
    if (position_ < text_.size()) fail("nothing after the object");
  }

 private:
  void skipSpace() {
    position_ = std::min(text_.find_first_not_of(" \t\n\r", position_), text_.size());
  }

  // Takes `character` if it comes next, after white space.
  bool take(char character) {
    skipSpace();
    if (position_ == text_.size() || text_[position_] != character) return false;
    ++position_;
    return true;
  }

  void takeKey(const char* expected) {
    skipSpace();
    if (!text_.substr(position_).starts_with('"')) fail(expected);
    takeString();
    if (!take(':')) fail("a colon");
  }

  void takeValue() {
    skipSpace();
    const char first = position_ < text_.size() ? text_[position_] : '\0';
    if (first == '{' || first == '[') {
      open_.push_back(first);
      isFirst_ = true;
      ++position_;
    } else if (first == '"') {
      takeString();
    } else {
      takeToken(first);
    }
  }

  // Takes a number or a word.
  void takeToken(char first) {
    const std::string_view rest = text_.substr(position_);
    const std::string_view token = rest.substr(0, rest.find_first_of(",:{}[]\" \t\n\r"));
    if (first == '-' || (first >= '0' && first <= '9')) {
      if (!Decimal::isJsonNumber(token)) fail("a number in JSON syntax", token);
    } else if (first == 't' || first == 'f' || first == 'n') {
      if (token != "true" && token != "false" && token != "null") {
        fail("true, false or null", token);
      }
    } else {
      fail("a value");
    }
    position_ += token.size();
  }

  void takeString() {
    const std::optional<std::string_view> raw = rawJsonString(text_.substr(position_ + 1));
    if (!raw.has_value()) throw Fault{position_, "expected a string to end with a quote"};
    for (std::size_t i = 0; i < raw->size(); ++i) {
      const std::size_t offset = position_ + 1 + i;
      if (static_cast<unsigned char>((*raw)[i]) < 0x20) {
        throw Fault{offset, "expected the control characters of a string to be escaped"};
      }
      if ((*raw)[i] == '\\') i += takeEscape(raw->substr(i), offset) - 1;
    }
    position_ += raw->size() + 2;
  }

  // Returns the size of the escape at the start of `raw`, which is at `offset`.
  static std::size_t takeEscape(std::string_view raw, std::size_t offset) {
    const std::size_t size = raw.starts_with("\\u") ? 6 : 2;
    std::string character;
    if (raw.size() < size || !unescapeJsonString(raw.substr(0, size), character)) {
      const auto end =
          std::find_if(raw.begin() + std::min(size, raw.size()), raw.end(), isCharacterStart);
      throw Fault{offset,
                  R"(expected an escape that JSON has: \" \\ \/ \b \f \n \r \t or \uXXXX, found )" +
                      excerpt({raw.begin(), end})};
    }
    return size;
  }

  [[noreturn]] void fail(const char* expected) const {
    const char* const start = text_.data() + position_;
    const char* end = start;
    if (position_ < text_.size()) utf8::next(end, text_.data() + text_.size());
    fail(expected, {start, static_cast<std::size_t>(end - start)});
  }

  [[noreturn]] void fail(const char* expected, std::string_view found) const {
    const std::string text = found.empty() ? "the end of the line" : foundText(found);
    throw Fault{position_, std::string("expected ") + expected + ", found " + text};
  }

  const std::string_view text_;
  std::size_t position_ = 0;
  // The brackets that are open, the outermost first.
  std::string open_;
  // Whether nothing has come after the last of them yet.
  bool isFirst_ = false;
};

// Returns the column of the byte at `offset`: one for each character before it, and one.
std::size_t columnOf(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  return 1 +
         static_cast<std::size_t>(std::count_if(before.begin(), before.end(), isCharacterStart));
}

}  // namespace

std::optional<std::string> describeJsonFault(std::string_view text) {
  try {
    const auto invalid = utf8::find_invalid(text.begin(), text.end());
    if (invalid != text.end()) {
      throw Fault{static_cast<std::size_t>(invalid - text.begin()), "expected UTF-8"};
    }
    Scanner(text).scan();
    return std::nullopt;
  } catch (const Fault& fault) {
    return "broken JSON at column " + std::to_string(columnOf(text, fault.offset)) + ": " +
           fault.message;
  }
}

}  // namespace qel::tool
