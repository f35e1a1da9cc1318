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
void appendEscapedUnit(unsigned unit, std::string& out) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kDigits[(unit >> shift) & 0xF]);
}

// Not 0 for a byte that a JSON string cannot hold as it is, or that may begin a surrogate and is
// looked at more closely. A number, and no shortcuts, so that the compiler can look at many bytes
// at once.
constexpr unsigned char notPlain(char character) {
  const auto byte = static_cast<unsigned char>(character);
  // NOLINTBEGIN(readability-implicit-bool-conversion): bits to put together.
  return static_cast<unsigned char>((byte < 0x20) | (byte == '"') | (byte == '\\') |
                                    (byte == 0xED));
  // NOLINTEND(readability-implicit-bool-conversion)
}

bool isAllPlain(std::string_view text) {
  unsigned char found = 0;
  for (const char character : text) found |= notPlain(character);
  return found == 0;
}

// Takes the character at the start of `text`, which is not plain, off it and appends it.
void takeNotPlain(std::string_view& text, std::string& out) {
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
      out.push_back(character);
      break;
    case '"':
    case '\\':
      out.push_back('\\');
      out.push_back(character);
      break;
    case '\n':
      out += "\\n";
      break;
    case '\r':
      out += "\\r";
      break;
    case '\t':
      out += "\\t";
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

void appendJsonString(std::string_view text, std::string& out) {
  out.push_back('"');
  if (isAllPlain(text)) {
    out += text;
    text = {};
  }
  while (!text.empty()) {
    const auto plain = std::find_if(text.begin(), text.end(), notPlain) - text.begin();
    out += text.substr(0, static_cast<std::size_t>(plain));
    text.remove_prefix(static_cast<std::size_t>(plain));
    if (!text.empty()) takeNotPlain(text, out);
  }
  out.push_back('"');
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
