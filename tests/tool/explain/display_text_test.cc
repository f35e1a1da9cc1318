#include "explain/display_text.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

// NOLINTBEGIN(misc-misleading-bidirectional): hostile texts are what is tested.

namespace qel::tool {
namespace {

constexpr std::size_t kWide = 1000;

struct Case {
  const char* name;
  std::string text;
  std::string shown;
};

std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.name; }

class DisplayTextTest : public ::testing::TestWithParam<Case> {};

TEST_P(DisplayTextTest, ShowsOnlyWhatIsVisible) {
  EXPECT_EQ(displayText(GetParam().text, kWide), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DisplayTextTest,
    ::testing::Values(
        Case{"Ascii", "Monthly 4.99", "Monthly 4.99"}, Case{"Empty", "", ""},
        Case{"Accents", "caf\u00e9 e\u0301", "caf\u00e9 e\u0301"},
        Case{"Markup", "<b onclick='x'>&amp;", "<b onclick='x'>&amp;"},
        Case{"Backslash", "a\\b", "a\\\\b"}, Case{"Newline", "a\nb\r\tc", "a\\nb\\r\\tc"},
        Case{"TerminalEscape", "\x1b[31mred\x1b]0;title\x07",
             "\\u001b[31mred\\u001b]0;title\\u0007"},
        Case{"EightBitControl", "\u009b31m", "\\u009b31m"},
        Case{"Nul", std::string("a\0b", 3), "a\\u0000b"},
        Case{"BidirectionalOverride", "abc\u202egpj.exe\u2066x", "abc\\u202egpj.exe\\u2066x"},
        Case{"ZeroWidth", "mon\u200bthly\ufeff\u00ad", "mon\\u200bthly\\ufeff\\u00ad"},
        Case{"LineSeparator", "a\u2028b", "a\\u2028b"},
        Case{"NoBreakSpace", "a\u00a0b", "a\\u00a0b"},
        Case{"IdeographicSpace", "\u6708\u3000\u984d", "\u6708\u3000\u984d"},
        Case{"PrivateUse", "\ue000", "\\ue000"}, Case{"Tag", "a\U000e0041", "a\\u{e0041}"},
        Case{"UnpairedSurrogate", "a\xED\xA0\xBDz", "a\\ud83dz"},
        Case{"IllFormed", "a\xFFz\xC3", "a\\xffz\\xc3"},
        Case{"AccentAfterEscape", "\n\u0301", "\\n\\u0301"},
        Case{"AccentAtStart", "\u0301a", "\\u0301a"}, Case{"Emoji", "\U0001F600", "\U0001F600"},
        Case{"JoinedEmoji", "\U0001F468\u200d\U0001F469", "\U0001F468\u200d\U0001F469"},
        Case{"JoinerElsewhere", "a\u200db", "a\\u200db"},
        Case{"Hebrew", "\u05d7\u05d5\u05d3\u05e9", "\u05d7\u05d5\u05d3\u05e9"},
        Case{"ManyAccents", "a\u0301\u0301\u0301\u0301\u0301\u0301",
             "a\u0301\u0301\u0301\u0301\\u0301\\u0301"}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST(DisplayTextTest, ShortensTheMiddle) {
  EXPECT_EQ(displayText("abcdefghijklmnopqrstuvwxyz", 10), "abcdef…xyz");
  EXPECT_EQ(displayText("abcdefghij", 10), "abcdefghij");
}

TEST(DisplayTextTest, TellsTheSizeOfALongText) {
  EXPECT_EQ(displayText(std::string(100000, 'x'), 40), "xxxxxxxxxxxxxxxx…xxxxxxxx (100000 bytes)");
}

TEST(DisplayTextTest, NeverTakesMoreColumnsThanItHas) {
  const std::vector<std::string> pieces = {"a",      "\u6708",       "\u0301", "\U0001F600",
                                           "\x1b",   "\xED\xA0\xBD", "\xFF",   "\u05d7",
                                           "\u202e", "\u200d",       "\u0e33", "\uac00"};
  for (const std::string& one : pieces) {
    for (const std::string& other : pieces) {
      for (const std::size_t count : {3U, 50U, 5000U}) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i) text += one + other;
        for (const std::size_t columns : {12U, 30U, 64U}) {
          const std::string shown = displayText(text, columns);
          EXPECT_LE(columnsOf(shown), columns) << shown;
          // What is shown is shown as it is when it is shown again, but for the backslashes.
          EXPECT_EQ(shown.find('\x1b'), std::string::npos);
          EXPECT_EQ(shown.find("\u202e"), std::string::npos);
          EXPECT_LE(shown.size(), 40 * columns);
        }
      }
    }
  }
}

TEST(DisplayTextTest, CountsColumns) {
  EXPECT_EQ(columnsOf("abc"), 3U);
  EXPECT_EQ(columnsOf("\u6708\u984d"), 4U);
  EXPECT_EQ(columnsOf("e\u0301"), 1U);
  EXPECT_EQ(columnsOf("\u2068\u05d7\u2069"), 1U);
}

TEST(DisplayTextTest, FindsTextFromRightToLeft) {
  EXPECT_TRUE(hasRightToLeft("a \u05d7"));
  EXPECT_TRUE(hasRightToLeft("\u0628"));
  EXPECT_FALSE(hasRightToLeft("abc \u6708 123"));
}

}  // namespace
}  // namespace qel::tool

// NOLINTEND(misc-misleading-bidirectional)
