#include "text_conversion.h"

#include <utf8/unchecked.h>

#include <cstddef>
#include <iterator>

namespace qel::foundation {
namespace {

constexpr bool isHighSurrogate(char32_t character) {
  return character >= 0xD800 && character <= 0xDBFF;
}
constexpr bool isLowSurrogate(char32_t character) {
  return character >= 0xDC00 && character <= 0xDFFF;
}

std::u16string utf16Of(NSString* string) {
  static_assert(sizeof(unichar) == sizeof(char16_t));
  std::u16string utf16([string length], u'\0');
  [string getCharacters:reinterpret_cast<unichar*>(utf16.data())
                  range:NSMakeRange(0, utf16.size())];
  return utf16;
}

// Removes the code point at the start of `text` and returns it. A surrogate counts as a code point.
// If there is none, removes one byte and returns U+FFFD.
char32_t takeCodePoint(std::string_view& text) {
  constexpr char32_t kReplacement = 0xFFFD;
  // The smallest code point that needs a sequence of 1, 2, 3 or 4 bytes.
  constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};

  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (lead < 0x80) return lead;
  if (lead < 0xC0 || lead > 0xF7) return kReplacement;
  const std::size_t following = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  if (text.size() < following) return kReplacement;

  char32_t codePoint = lead & (0x3Fu >> following);
  for (const char next : text.substr(0, following)) {
    const auto byte = static_cast<unsigned char>(next);
    if ((byte & 0xC0) != 0x80) return kReplacement;
    codePoint = codePoint << 6 | (byte & 0x3F);
  }
  if (codePoint < kLeast[following] || codePoint > 0x10FFFF) return kReplacement;
  text.remove_prefix(following);
  return codePoint;
}

std::u16string utf16Of(std::string_view text) {
  std::u16string utf16;
  utf16.reserve(text.size());
  while (!text.empty()) {
    const char32_t codePoint = takeCodePoint(text);
    if (codePoint < 0x10000) {
      utf16.push_back(static_cast<char16_t>(codePoint));
    } else {
      utf16.push_back(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)));
      utf16.push_back(static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF)));
    }
  }
  return utf16;
}

// Returns a string of `utf16`, nil if the platform rejects it.
Strong<NSString*> stringOf(const std::u16string& utf16) {
  return Strong<NSString*>::adopt([[NSString alloc]
      initWithCharacters:reinterpret_cast<const unichar*>(utf16.data())
                  length:utf16.size()]);
}

// Returns a string of any UTF-16, built unit by unit.
Strong<NSString*> stringOfUnits(const std::u16string& utf16) {
  @autoreleasepool {
    const auto string = Strong<NSMutableString*>::adopt([[NSMutableString alloc] init]);
    for (const char16_t unit : utf16) {
      [string.get() appendFormat:@"%C", static_cast<unichar>(unit)];
    }
    return Strong<NSString*>::adopt([string.get() copy]);
  }
}

// Returns whether `utf16` begins with U+FEFF, in either byte order.
bool startsWithByteOrderMark(const std::u16string& utf16) {
  return utf16.starts_with(u'\uFEFF') || utf16.starts_with(u'\uFFFE');
}

}  // namespace

std::optional<std::string> textFrom(NSString* string) {
  if (string == nil) return std::nullopt;
  const std::u16string utf16 = utf16Of(string);
  std::string text;
  text.reserve(utf16.size());
  for (std::size_t i = 0; i < utf16.size(); ++i) {
    char32_t codePoint = utf16[i];
    if (isHighSurrogate(codePoint) && i + 1 < utf16.size() && isLowSurrogate(utf16[i + 1])) {
      ++i;
      codePoint = 0x10000 + ((codePoint & 0x3FF) << 10 | (utf16[i] & 0x3FFu));
    }
    utf8::unchecked::append(codePoint, std::back_inserter(text));
  }
  return text;
}

Strong<NSString*> stringFrom(std::string_view text) {
  const std::u16string utf16 = utf16Of(text);
  // GNUstep rejects unpaired surrogates, and drops a byte-order mark at the start.
  if (startsWithByteOrderMark(utf16)) return stringOfUnits(utf16);
  Strong<NSString*> string = stringOf(utf16);
  return string.get() != nil ? string : stringOfUnits(utf16);
}

}  // namespace qel::foundation
