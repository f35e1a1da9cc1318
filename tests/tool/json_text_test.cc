#include "json_text.h"

#include <gtest/gtest.h>

#include <string>

namespace qel::tool {
namespace {

std::optional<std::string> unescaped(std::string_view raw) {
  std::string text;
  if (!unescapeJsonString(raw, text)) return std::nullopt;
  return text;
}

std::string written(std::string_view text) {
  TextBuffer out;
  appendJsonString(text, UnpairedSurrogates::kEscape, out);
  return std::string(out.text());
}

// --- Finding the end of a string ---

TEST(RawJsonStringTest, EndsAtTheFirstQuote) {
  EXPECT_EQ(rawJsonString(R"(monthly","price":"1")"), "monthly");
}

TEST(RawJsonStringTest, IsEmptyWhenTheQuoteComesFirst) { EXPECT_EQ(rawJsonString("\","), ""); }

TEST(RawJsonStringTest, GoesOnAfterAnEscapedQuote) {
  EXPECT_EQ(rawJsonString(R"(a\"b" "c)"), R"(a\"b)");
}

TEST(RawJsonStringTest, EndsAtAQuoteAfterAnEscapedBackslash) {
  EXPECT_EQ(rawJsonString(R"(a\\" "c)"), R"(a\\)");
}

TEST(RawJsonStringTest, GoesOnAfterAnEscapedBackslashAndAnEscapedQuote) {
  EXPECT_EQ(rawJsonString(R"(a\\\"b")"), R"(a\\\"b)");
}

TEST(RawJsonStringTest, IsNothingWithoutAQuote) {
  EXPECT_EQ(rawJsonString("monthly"), std::nullopt);
  EXPECT_EQ(rawJsonString(""), std::nullopt);
}

TEST(RawJsonStringTest, IsNothingWhenTheOnlyQuoteIsEscaped) {
  EXPECT_EQ(rawJsonString(R"(a\")"), std::nullopt);
}

TEST(RawJsonStringTest, IsNothingWhenTheTextEndsInABackslash) {
  EXPECT_EQ(rawJsonString("a\\"), std::nullopt);
}

// --- The content of a string ---

TEST(UnescapeJsonStringTest, KeepsTextWithoutEscapes) {
  EXPECT_EQ(unescaped("プレミアム"), "プレミアム");
  EXPECT_EQ(unescaped(""), "");
}

TEST(UnescapeJsonStringTest, ReadsEveryShortEscape) {
  EXPECT_EQ(unescaped(R"(\"\\\/\b\f\n\r\t)"), "\"\\/\b\f\n\r\t");
}

TEST(UnescapeJsonStringTest, ReadsTextAroundEscapes) {
  EXPECT_EQ(unescaped(R"(one\ntwo\tthree)"), "one\ntwo\tthree");
}

TEST(UnescapeJsonStringTest, ReadsUnitsOfOneTwoAndThreeBytes) {
  EXPECT_EQ(unescaped(R"(\u0041\u007f\u0080\u07ff\u0800\uffff)"),
            "A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
}

TEST(UnescapeJsonStringTest, ReadsHexadecimalDigitsOfBothCases) {
  EXPECT_EQ(unescaped(R"(\u20aC\u20Ac)"), "\xE2\x82\xAC\xE2\x82\xAC");
}

TEST(UnescapeJsonStringTest, ReadsTheZeroUnit) {
  EXPECT_EQ(unescaped(R"(a\u0000b)"), std::string("a\0b", 3));
}

TEST(UnescapeJsonStringTest, JoinsAPairToOneCharacter) {
  EXPECT_EQ(unescaped(R"(\ud83d\ude80)"), "\xF0\x9F\x9A\x80");
}

TEST(UnescapeJsonStringTest, JoinsTheFirstAndTheLastPair) {
  EXPECT_EQ(unescaped(R"(\ud800\udc00\udbff\udfff)"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(UnescapeJsonStringTest, CarriesAnUnpairedHalfAsThreeBytes) {
  EXPECT_EQ(unescaped(R"(\ud800)"), "\xED\xA0\x80");
  EXPECT_EQ(unescaped(R"(\udbff)"), "\xED\xAF\xBF");
  EXPECT_EQ(unescaped(R"(\udc00)"), "\xED\xB0\x80");
  EXPECT_EQ(unescaped(R"(\udfff)"), "\xED\xBF\xBF");
}

TEST(UnescapeJsonStringTest, NeighboursOfTheSurrogatesAreCharacters) {
  EXPECT_EQ(unescaped(R"(\ud7ff\ue000)"), "\xED\x9F\xBF\xEE\x80\x80");
}

TEST(UnescapeJsonStringTest, LeavesHalvesInTheWrongOrderUnpaired) {
  EXPECT_EQ(unescaped(R"(\udc00\ud800)"), "\xED\xB0\x80\xED\xA0\x80");
}

TEST(UnescapeJsonStringTest, PairsTheSecondOfTwoHighHalves) {
  EXPECT_EQ(unescaped(R"(\ud800\ud800\udc00)"), "\xED\xA0\x80\xF0\x90\x80\x80");
}

TEST(UnescapeJsonStringTest, KeepsWhatFollowsAnUnpairedHalf) {
  EXPECT_EQ(unescaped(R"(\ud800a\ud800\n\ud800\u0041)"),
            "\xED\xA0\x80"
            "a\xED\xA0\x80\n\xED\xA0\x80"
            "A");
}

TEST(UnescapeJsonStringTest, AppendsToWhatIsThere) {
  std::string text = "before ";
  EXPECT_TRUE(unescapeJsonString(R"(a\tb)", text));
  EXPECT_EQ(text, "before a\tb");
}

TEST(UnescapeJsonStringTest, NeverGivesMoreBytesThanTheRawText) {
  for (const std::string_view raw : {R"(\uffff)", R"(\ud83d\ude80)", R"(\ud800\ud800)", R"(\n)"}) {
    EXPECT_LE(unescaped(raw).value().size(), raw.size()) << raw;
  }
}

class NoEscapeTest : public ::testing::TestWithParam<const char*> {};

TEST_P(NoEscapeTest, IsRejected) { EXPECT_EQ(unescaped(GetParam()), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(UnescapeJsonString, NoEscapeTest,
                         ::testing::Values("\\", R"(\x41)", R"(\a)", R"(\v)", R"(\0)", R"(\N)",
                                           R"(\')", R"(\u)", R"(\u1)", R"(\u12)", R"(\u123)",
                                           R"(\u123g)", R"(\u 123)", R"(\u+123)", R"(\u-123)",
                                           R"(\u0x1)", R"(\U0041)", R"(\ud800\x)", R"(\ud800\u12)",
                                           R"(good\n then bad\q)"));

// --- Writing a string ---

TEST(AppendJsonStringTest, PutsTextBetweenQuotes) {
  EXPECT_EQ(written("monthly"), R"("monthly")");
  EXPECT_EQ(written(""), R"("")");
}

TEST(AppendJsonStringTest, EscapesQuotesAndBackslashes) {
  EXPECT_EQ(written(R"(a"b\c)"), R"("a\"b\\c")");
}

TEST(AppendJsonStringTest, DoesNotEscapeSlashesAndDelete) {
  EXPECT_EQ(written("a/b\x7F"), "\"a/b\x7F\"");
}

TEST(AppendJsonStringTest, EscapesEveryControlCharacter) {
  EXPECT_EQ(written("\n\r\t"), R"("\n\r\t")");
  EXPECT_EQ(written(std::string_view("\0\b\f\x1F", 4)), R"("\u0000\u0008\u000c\u001f")");
}

TEST(AppendJsonStringTest, WritesCharactersOutsideAsciiAsTheyAre) {
  EXPECT_EQ(written("é プ 🚀 \xED\x9F\xBF"), "\"é プ 🚀 \xED\x9F\xBF\"");
}

TEST(AppendJsonStringTest, WritesSurrogatesAsEscapes) {
  EXPECT_EQ(written("\xED\xA0\x80|\xED\xAF\xBF|\xED\xB0\x80|\xED\xBF\xBF"),
            R"("\ud800|\udbff|\udc00|\udfff")");
}

// Texts are looked at eight characters at a time, and the rest one by one.
TEST(AppendJsonStringTest, SeesEveryCharacterInEveryPlace) {
  constexpr std::size_t kSize = 19;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string one(1, static_cast<char>(byte));
    const std::string escaped = written(one).substr(1, written(one).size() - 2);
    for (std::size_t place = 0; place < kSize; ++place) {
      std::string text(kSize, 'a');
      text[place] = one.front();
      std::string expected = text;
      expected.replace(place, 1, escaped);
      ASSERT_EQ(written(text), '"' + expected + '"') << byte << " at " << place;
    }
  }
}

TEST(AppendJsonStringTest, WritesWhatIsReadUnchanged) {
  const std::string_view raw = R"(a\"b\\c\n\r\t\u0000\u001f é 🚀 \ud83d x \ude80)";
  EXPECT_EQ(written(unescaped(raw).value()), '"' + std::string(raw) + '"');
}

}  // namespace
}  // namespace qel::tool
