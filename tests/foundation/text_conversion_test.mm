#include "text_conversion.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace qel::foundation {
namespace {

using namespace std::string_literals;

struct Case {
  const char* name;
  std::u16string utf16;
  std::string utf8;
  friend std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.name; }
};

// The bytes were worked out by hand from table 3-6 of the Unicode standard.
const std::vector<Case> kCases = {
    {"Empty", u"", ""},
    {"Ascii", u"com.example.monthly", "com.example.monthly"},
    {"Nul", u"a\0b"s, "a\0b"s},
    {"LastOfOneByte", u"\u007F", "\x7F"},
    {"FirstOfTwoBytes", u"\u0080", "\xC2\x80"},
    {"Accent", u"caf\u00E9", "caf\xC3\xA9"},
    {"CombiningAccentStaysApart", u"cafe\u0301", "cafe\xCC\x81"},
    {"LastOfTwoBytes", u"\u07FF", "\xDF\xBF"},
    {"FirstOfThreeBytes", u"\u0800", "\xE0\xA0\x80"},
    {"BeforeTheSurrogates", u"\uD7FF", "\xED\x9F\xBF"},
    {"AfterTheSurrogates", u"\uE000", "\xEE\x80\x80"},
    {"ByteOrderMark", u"\uFEFFa",
     "\xEF\xBB\xBF"
     "a"},
    {"ByteOrderMarkOfTheOtherOrder", u"\uFFFEa",
     "\xEF\xBF\xBE"
     "a"},
    {"LastOfThreeBytes", u"\uFFFF", "\xEF\xBF\xBF"},
    {"FirstOfFourBytes", u"\U00010000", "\xF0\x90\x80\x80"},
    {"Emoji", u"Stickers \U0001F600!", "Stickers \xF0\x9F\x98\x80!"},
    {"LastOfAll", u"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
    {"HighSurrogateAlone", {0xD800}, "\xED\xA0\x80"},
    {"LowSurrogateAlone", {0xDFFF}, "\xED\xBF\xBF"},
    {"HighSurrogateInside",
     {u'a', 0xDBFF, u'b'},
     "a\xED\xAF\xBF"
     "b"},
    {"LowBeforeHigh", {0xDC00, 0xD800}, "\xED\xB0\x80\xED\xA0\x80"},
    {"TwoHighAndLow", {0xD83D, 0xD83D, 0xDE00}, "\xED\xA0\xBD\xF0\x9F\x98\x80"},
    {"NulBesideASurrogate", {0, 0xD83D, 0}, "\0\xED\xA0\xBD\0"s},
};

// Made unit by unit, which is the one way that GNUstep takes unpaired surrogates.
NSString* stringOf(std::u16string_view utf16) {
  NSMutableString* const string = [NSMutableString string];
  for (const char16_t unit : utf16) [string appendFormat:@"%C", static_cast<unichar>(unit)];
  return string;
}

std::u16string unitsOf(NSString* string) {
  std::u16string units;
  for (NSUInteger i = 0; i < [string length]; ++i) units += [string characterAtIndex:i];
  return units;
}

class TextConversionTest : public ::testing::TestWithParam<Case> {};

TEST_P(TextConversionTest, ReadsTheString) {
  @autoreleasepool {
    EXPECT_EQ(textFrom(stringOf(GetParam().utf16)), GetParam().utf8);
  }
}

TEST_P(TextConversionTest, MakesTheString) {
  @autoreleasepool {
    EXPECT_EQ(unitsOf(stringFrom(GetParam().utf8).get()), GetParam().utf16);
  }
}

INSTANTIATE_TEST_SUITE_P(All, TextConversionTest, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TextFromTest, IsAbsentForNil) { EXPECT_FALSE(textFrom(nil).has_value()); }

TEST(TextFromTest, ReadsLiteralsAndMutableStringsAndPartsOfStrings) {
  @autoreleasepool {
    EXPECT_EQ(textFrom(@"caf\u00E9 \U0001F600"), "caf\xC3\xA9 \xF0\x9F\x98\x80");
    NSMutableString* const string = [NSMutableString stringWithString:@"one \U0001F600"];
    EXPECT_EQ(textFrom(string), "one \xF0\x9F\x98\x80");
    [string deleteCharactersInRange:NSMakeRange(5, 1)];
    EXPECT_EQ(textFrom(string), "one \xED\xA0\xBD");
    EXPECT_EQ(textFrom([string substringFromIndex:4]), "\xED\xA0\xBD");
  }
}

TEST(TextFromTest, ReadsEveryCodeUnitBackAsItWas) {
  @autoreleasepool {
    for (unsigned number = 0; number <= 0xFFFF; ++number) {
      const auto unit = static_cast<char16_t>(number);
      for (const std::u16string& units : {std::u16string{unit, u'x'}, std::u16string{u'x', unit}}) {
        @autoreleasepool {
          const std::optional<std::string> text = textFrom(stringOf(units));
          ASSERT_TRUE(text.has_value());
          ASSERT_EQ(unitsOf(stringFrom(*text).get()), units) << number;
        }
      }
    }
  }
}

TEST(StringFromTest, PutsTheReplacementCharacterForBytesOfNoCharacter) {
  @autoreleasepool {
    const std::vector<std::pair<std::string, std::u16string>> cases = {
        {"a\x80z", u"a\uFFFDz"},                            // A following byte alone.
        {"\xC3z", u"\uFFFDz"},                              // A following byte is missing.
        {"z\xE2\x82", u"z\uFFFD\uFFFD"},                    // The end comes too early.
        {"\xC0\x80", u"\uFFFD\uFFFD"},                      // Two bytes where one is enough.
        {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},            // Three bytes where two are enough.
        {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // Four where three are enough.
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // Past the last code point.
        {"\xF8z\xFFz", u"\uFFFDz\uFFFDz"},                  // Bytes that never occur.
    };
    for (const auto& [text, units] : cases) {
      EXPECT_EQ(unitsOf(stringFrom(text).get()), units) << ::testing::PrintToString(text);
    }
  }
}

}  // namespace
}  // namespace qel::foundation
