#include "json_text.h"

#include <utf8/unchecked.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "qel/text.h"

namespace qel::tool {
namespace {

// U+FFFD.
constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

// Returns the UTF-16 code unit of the escape \uXXXX at the start of `text`, if there is one.
std::optional<char32_t> escapedUnit(std::string_view text) {
  constexpr std::size_t kSize = 6;
  if (text.size() < kSize || !text.starts_with("\\u")) return std::nullopt;
  unsigned unit = 0;
  const char* const end = text.data() + kSize;
  const auto [stop, error] = std::from_chars(text.data() + 2, end, unit, 16);
  if (error != std::errc() || stop != end) return std::nullopt;
  return unit;
}

// Returns the character of the escape that is a backslash and `letter`, if there is one.
std::optional<char> escapedCharacter(char letter) {
  switch (letter) {
    case '"':
    case '\\':
    case '/':
      return letter;
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return std::nullopt;
  }
}

// Removes the escape at the start of `raw` and appends its character. Returns false if it is not an
// escape that JSON has.
bool takeEscape(std::string_view& raw, std::string& out) {
  if (const std::optional<char32_t> unit = escapedUnit(raw)) {
    raw.remove_prefix(6);
    char32_t character = *unit;
    const std::optional<char32_t> next = isHighSurrogate(*unit) ? escapedUnit(raw) : std::nullopt;
    if (next.has_value() && isLowSurrogate(*next)) {
      raw.remove_prefix(6);
      character = characterOfPair(*unit, *next);
    }
    utf8::unchecked::append(character, std::back_inserter(out));
    return true;
  }
  const std::optional<char> character = raw.size() > 1 ? escapedCharacter(raw[1]) : std::nullopt;
  if (!character.has_value()) return false;
  raw.remove_prefix(2);
  out.push_back(*character);
  return true;
}

// Appends the escape of a code unit: \uXXXX.
void appendEscapedUnit(unsigned unit, TextBuffer& out) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out.append("\\u");
  for (int shift = 12; shift >= 0; shift -= 4) out.append(kDigits[(unit >> shift) & 0xF]);
}

// Returns whether the byte can be in a JSON string without an escape. The first byte of a surrogate
// is not plain; takeNotPlain decides.
constexpr bool isPlain(char character) {
  return static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\' &&
         character != '\xED';
}

// Returns whether all eight bytes of `word` are plain. Subtracting sets the highest bit of a byte
// that is less than 0x20, or that the XOR has made zero, by a borrow.
constexpr bool areAllPlain(std::uint64_t word) {
  constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
  constexpr std::uint64_t kHighBits = 0x80 * kOnes;
  const auto lessThan = [](std::uint64_t bytes, unsigned char limit) {
    return (bytes - limit * kOnes) & ~bytes & kHighBits;
  };
  const auto equalTo = [&lessThan](std::uint64_t bytes, unsigned char byte) {
    return lessThan(bytes ^ (byte * kOnes), 1);
  };
  return (lessThan(word, 0x20) | equalTo(word, '"') | equalTo(word, '\\') | equalTo(word, 0xED)) ==
         0;
}

bool isAllPlain(std::string_view text) {
  std::uint64_t word = 0;
  while (text.size() >= sizeof(word)) {
    std::memcpy(&word, text.data(), sizeof(word));
    if (!areAllPlain(word)) return false;
    text.remove_prefix(sizeof(word));
  }
  return std::all_of(text.begin(), text.end(), isPlain);
}

// Removes the character at the start of `text`, which is not plain, and appends it.
void takeNotPlain(std::string_view& text, UnpairedSurrogates surrogates, TextBuffer& out) {
  if (const std::optional<char32_t> surrogate = surrogateAtStart(text)) {
    if (surrogates == UnpairedSurrogates::kEscape) {
      appendEscapedUnit(*surrogate, out);
    } else {
      out.append(kReplacementCharacter);
    }
    text.remove_prefix(3);
    return;
  }
  const char character = text.front();
  text.remove_prefix(1);
  switch (character) {
    case '\xED':
      out.append(character);
      break;
    case '"':
    case '\\':
      out.append('\\');
      out.append(character);
      break;
    case '\n':
      out.append("\\n");
      break;
    case '\r':
      out.append("\\r");
      break;
    case '\t':
      out.append("\\t");
      break;
    default:
      appendEscapedUnit(static_cast<unsigned char>(character), out);
  }
}

}  // namespace

bool isJsonInteger(std::string_view token) {
  if (token.starts_with('-')) token.remove_prefix(1);
  if (token.empty() || (token.front() == '0' && token.size() > 1)) return false;
  return std::all_of(token.begin(), token.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<std::string_view> rawJsonString(std::string_view text) {
  std::size_t end = text.find_first_of("\"\\");
  while (end != std::string_view::npos && text[end] == '\\') {
    // The character after a backslash ends nothing.
    end = text.find_first_of("\"\\", end + 2);
  }
  if (end == std::string_view::npos) return std::nullopt;
  return text.substr(0, end);
}

bool unescapeJsonString(std::string_view raw, std::string& out) {
  while (!raw.empty()) {
    const std::size_t plain = std::min(raw.find('\\'), raw.size());
    out += raw.substr(0, plain);
    raw.remove_prefix(plain);
    if (!raw.empty() && !takeEscape(raw, out)) return false;
  }
  return true;
}

void appendJsonString(std::string_view text, UnpairedSurrogates surrogates, TextBuffer& out) {
  out.append('"');
  if (isAllPlain(text)) {
    out.append(text);
    text = {};
  }
  while (!text.empty()) {
    const auto plain = static_cast<std::size_t>(
        std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
    out.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (!text.empty()) takeNotPlain(text, surrogates, out);
  }
  out.append('"');
}

}  // namespace qel::tool
