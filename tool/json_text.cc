#include "json_text.h"

#include <utf8/unchecked.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace qel::tool {
namespace {

constexpr char32_t kFirstHighSurrogate = 0xD800;
constexpr char32_t kFirstLowSurrogate = 0xDC00;
constexpr char32_t kSurrogatesOfEachHalf = 0x400;
constexpr char32_t kFirstSupplementary = 0x10000;

constexpr bool isHighSurrogate(char32_t unit) {
  return unit >= kFirstHighSurrogate && unit < kFirstHighSurrogate + kSurrogatesOfEachHalf;
}
constexpr bool isLowSurrogate(char32_t unit) {
  return unit >= kFirstLowSurrogate && unit < kFirstLowSurrogate + kSurrogatesOfEachHalf;
}

// The UTF-16 code unit that the escape \uXXXX at the start of `text` stands for, if there is one.
std::optional<char32_t> escapedUnit(std::string_view text) {
  constexpr std::size_t kSize = 6;
  if (text.size() < kSize || !text.starts_with("\\u")) return std::nullopt;
  unsigned unit = 0;
  const char* const end = text.data() + kSize;
  const auto [stop, error] = std::from_chars(text.data() + 2, end, unit, 16);
  if (error != std::errc() || stop != end) return std::nullopt;
  return unit;
}

// The character that a backslash and `letter` stand for, if they do.
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

// Takes the escape at the start of `raw` off it and appends what it stands for.
bool takeEscape(std::string_view& raw, std::string& out) {
  if (const std::optional<char32_t> unit = escapedUnit(raw)) {
    raw.remove_prefix(6);
    char32_t character = *unit;
    const std::optional<char32_t> next = isHighSurrogate(*unit) ? escapedUnit(raw) : std::nullopt;
    if (next.has_value() && isLowSurrogate(*next)) {
      raw.remove_prefix(6);
      character = kFirstSupplementary + ((*unit - kFirstHighSurrogate) << 10) +
                  (*next - kFirstLowSurrogate);
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

// Whether the three bytes at the start of `text` are a surrogate.
bool startsWithSurrogate(std::string_view text) {
  return text.size() >= 3 && text[0] == '\xED' && static_cast<unsigned char>(text[1]) >= 0xA0;
}

// Appends the escape of a code unit: \uXXXX.
void appendEscapedUnit(unsigned unit, TextBuffer& out) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out.append("\\u");
  for (int shift = 12; shift >= 0; shift -= 4) out.append(kDigits[(unit >> shift) & 0xF]);
}

// Whether a JSON string can hold the character as it is. What may begin a surrogate is not plain
// either: it is looked at more closely.
constexpr bool isPlain(char character) {
  return static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\' &&
         character != '\xED';
}

// Whether all eight characters of `word` are plain, looked at together: a byte that becomes zero,
// or that is less than 0x20, is found by the borrow into its highest bit.
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

// Takes the character at the start of `text`, which is not plain, off it and appends it.
void takeNotPlain(std::string_view& text, TextBuffer& out) {
  if (startsWithSurrogate(text)) {
    const auto payload = [&text](std::size_t i) {
      return static_cast<unsigned char>(text[i]) & 0x3FU;
    };
    appendEscapedUnit(0xD000U | payload(1) << 6 | payload(2), out);
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

// Takes the digits at the start of `text` off it, and tells whether there were any.
bool takeDigits(std::string_view& text) {
  const std::size_t size = std::min(text.find_first_not_of("0123456789"), text.size());
  text.remove_prefix(size);
  return size > 0;
}

// Takes one of `characters` off the start of `text` if it stands there, and tells whether it did.
bool takeOneOf(std::string_view characters, std::string_view& text) {
  if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

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

void appendJsonString(std::string_view text, TextBuffer& out) {
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
    if (!text.empty()) takeNotPlain(text, out);
  }
  out.append('"');
}

bool isJsonNumber(std::string_view text) {
  takeOneOf("-", text);
  if (!takeOneOf("0", text) && !takeDigits(text)) return false;
  if (takeOneOf(".", text) && !takeDigits(text)) return false;
  if (takeOneOf("eE", text)) {
    takeOneOf("+-", text);
    if (!takeDigits(text)) return false;
  }
  return text.empty();
}

}  // namespace qel::tool
