#include "qel/text.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// --- Absent and empty ---

TEST(TextTest, AbsentAndEmptyTextsAreEmpty) {
  EXPECT_TRUE(isEmpty(std::nullopt));
  EXPECT_TRUE(isEmpty(""));
  EXPECT_FALSE(isEmpty("a"));
  EXPECT_FALSE(isEmpty(std::string_view("\0", 1)));
}

TEST(TextTest, AbsentTextEqualsNothing) {
  EXPECT_FALSE(isEqual(std::nullopt, std::nullopt));
  EXPECT_FALSE(isEqual(std::nullopt, ""));
  EXPECT_FALSE(isEqual("", std::nullopt));
  EXPECT_FALSE(isEqual("a", std::nullopt));
}

TEST(TextTest, EqualityIsThatOfTheBytes) {
  EXPECT_TRUE(isEqual("", ""));
  EXPECT_TRUE(isEqual("coins", std::string("coins")));
  EXPECT_FALSE(isEqual("coins", "Coins"));
  EXPECT_FALSE(isEqual("coins", "coin"));
  EXPECT_FALSE(isEqual("caf\xC3\xA9", "cafe\xCC\x81"));
  EXPECT_FALSE(isEqual(std::string_view("a\0b", 3), std::string_view("a\0c", 3)));
}

// --- Views of texts that may be absent ---

TEST(OptionalTextTest, NullPointerIsAbsent) {
  const char* const null = nullptr;
  EXPECT_FALSE(OptionalText(null).has_value());
  EXPECT_FALSE(OptionalText().has_value());
  EXPECT_FALSE(OptionalText(std::nullopt).has_value());
}

TEST(OptionalTextTest, ViewsTextsOfEveryKind) {
  const std::string text = "coins";
  const std::optional<std::string> present = text;
  const OptionalText views[] = {"coins", std::string_view("coins"), text, present,
                                std::optional<std::string_view>("coins")};
  for (const OptionalText& view : views) {
    ASSERT_TRUE(view);
    EXPECT_EQ(*view, "coins");
    EXPECT_EQ(view->size(), 5U);
    EXPECT_EQ(view.value_or("other"), "coins");
  }
  EXPECT_EQ(OptionalText(text)->data(), text.data());
  EXPECT_EQ(OptionalText(present)->data(), present->data());
}

TEST(OptionalTextTest, AbsentTextHasNoValue) {
  const std::optional<std::string> absent;
  EXPECT_FALSE(OptionalText(absent));
  EXPECT_FALSE(OptionalText(std::optional<std::string_view>()));
  EXPECT_EQ(OptionalText(absent).value_or("other"), "other");
}

TEST(OptionalTextTest, AbsentTextsAreEqualToEachOtherOnly) {
  const OptionalText absent;
  EXPECT_EQ(absent, OptionalText());
  EXPECT_EQ(absent, std::nullopt);
  EXPECT_EQ(absent, std::optional<std::string>());
  EXPECT_EQ(std::optional<std::string_view>(), absent);
  EXPECT_NE(absent, "");
  EXPECT_NE(absent, std::optional<std::string>(""));
  EXPECT_EQ(OptionalText("a"), "a");
  EXPECT_EQ(OptionalText("a"), std::optional<std::string>("a"));
  EXPECT_EQ(std::optional<std::string_view>("a"), OptionalText("a"));
  EXPECT_NE(OptionalText("a"), std::optional<std::string_view>("b"));
}

// --- Encoding ---

// Surrogates stand as the three bytes of their code points. The bytes of each text are those that
// python3's 'TEXT'.encode('utf-8', 'surrogatepass') gives.
struct EncodingCase {
  const char* name;
  std::string text;
  std::string encoded;
  friend std::ostream& operator<<(std::ostream& out, const EncodingCase& c) {
    return out << c.name;
  }
};

class EncodableTextTest : public ::testing::TestWithParam<EncodingCase> {};

TEST_P(EncodableTextTest, IsEncoded) {
  EXPECT_EQ(utf8DataWithoutLoss(GetParam().text), GetParam().encoded);
}

INSTANTIATE_TEST_SUITE_P(
    Unchanged, EncodableTextTest,
    ::testing::Values(
        EncodingCase{"Empty", "", ""}, EncodingCase{"Ascii", "monthly", "monthly"},
        EncodingCase{"Nul", std::string("a\0b", 3), std::string("a\0b", 3)},
        EncodingCase{"TwoBytes", "\xC2\x80\xDF\xBF", "\xC2\x80\xDF\xBF"},
        EncodingCase{"ThreeBytes", "\xE0\xA0\x80\xEF\xBF\xBD", "\xE0\xA0\x80\xEF\xBF\xBD"},
        EncodingCase{"LastBeforeTheSurrogates", "\xED\x9F\xBF", "\xED\x9F\xBF"},
        EncodingCase{"FirstAfterTheSurrogates", "\xEE\x80\x80", "\xEE\x80\x80"},
        EncodingCase{"NoCharacters", "\xEF\xBF\xBE\xEF\xBF\xBF", "\xEF\xBF\xBE\xEF\xBF\xBF"},
        EncodingCase{"FirstOfFourBytes", "\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
        EncodingCase{"LastOfFourBytes", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"}),
    nameOfCase<EncodingCase>);

INSTANTIATE_TEST_SUITE_P(
    Pairs, EncodableTextTest,
    ::testing::Values(
        EncodingCase{"First", "\xED\xA0\x80\xED\xB0\x80", "\xF0\x90\x80\x80"},
        EncodingCase{"LastOfTheFirstHighHalf", "\xED\xA0\x80\xED\xBF\xBF", "\xF0\x90\x8F\xBF"},
        EncodingCase{"FirstOfTheSecondHighHalf", "\xED\xA0\x81\xED\xB0\x80", "\xF0\x90\x90\x80"},
        EncodingCase{"FirstOfTheLastHighHalf", "\xED\xAF\xBF\xED\xB0\x80", "\xF4\x8F\xB0\x80"},
        EncodingCase{"Last", "\xED\xAF\xBF\xED\xBF\xBF", "\xF4\x8F\xBF\xBF"},
        EncodingCase{"BetweenOtherText", "a\xED\xA0\xBD\xED\xB8\x80z", "a\xF0\x9F\x98\x80z"},
        EncodingCase{"TwoInARow", "\xED\xA0\xBD\xED\xB8\x80\xED\xA0\x80\xED\xB0\x81",
                     "\xF0\x9F\x98\x80\xF0\x90\x80\x81"},
        EncodingCase{"AfterACharacterOfTheSameLeadByte", "\xED\x9F\xBF\xED\xA0\xBD\xED\xB8\x80",
                     "\xED\x9F\xBF\xF0\x9F\x98\x80"}),
    nameOfCase<EncodingCase>);

struct UnencodableTextCase {
  const char* name;
  std::string text;
  friend std::ostream& operator<<(std::ostream& out, const UnencodableTextCase& c) {
    return out << c.name;
  }
};

class UnencodableTextTest : public ::testing::TestWithParam<UnencodableTextCase> {};

TEST_P(UnencodableTextTest, GivesNothing) {
  EXPECT_EQ(utf8DataWithoutLoss(GetParam().text), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Surrogates, UnencodableTextTest,
    ::testing::Values(
        UnencodableTextCase{"FirstHighHalf", "\xED\xA0\x80"},
        UnencodableTextCase{"LastHighHalf", "\xED\xAF\xBF"},
        UnencodableTextCase{"FirstLowHalf", "\xED\xB0\x80"},
        UnencodableTextCase{"LastLowHalf", "\xED\xBF\xBF"},
        UnencodableTextCase{"HighHalfBeforeText",
                            "\xED\xA0\xBD"
                            "abc"},
        UnencodableTextCase{"HighHalfAfterText", "abc\xED\xA0\xBD"},
        UnencodableTextCase{"LowHalfBeforeHighHalf", "\xED\xB8\x80\xED\xA0\xBD"},
        UnencodableTextCase{"TwoHighHalves", "\xED\xA0\xBD\xED\xA0\xBD"},
        UnencodableTextCase{"TwoLowHalves", "\xED\xB8\x80\xED\xB8\x80"},
        UnencodableTextCase{"HighHalfBeforeAPair", "\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80"},
        UnencodableTextCase{"LowHalfAfterAPair", "\xED\xA0\xBD\xED\xB8\x80\xED\xB8\x80"},
        UnencodableTextCase{"HalvesWithTextBetween", "\xED\xA0\xBD-\xED\xB8\x80"},
        UnencodableTextCase{"PairWithACutLowHalf", "\xED\xA0\xBD\xED\xB8"},
        UnencodableTextCase{"PairWithABrokenLowHalf", "\xED\xA0\xBD\xED\xB8\xC0"},
        UnencodableTextCase{"PairWithABrokenHighHalf", "\xED\xA0\x3D\xED\xB8\x80"}),
    nameOfCase<UnencodableTextCase>);

INSTANTIATE_TEST_SUITE_P(
    IllFormed, UnencodableTextTest,
    ::testing::Values(UnencodableTextCase{"LoneTrailingByte", "\x80"},
                      UnencodableTextCase{"CutTwoBytes", "\xC3"},
                      UnencodableTextCase{"CutThreeBytes", "\xE2\x82"},
                      UnencodableTextCase{"CutFourBytes", "\xF0\x9F\x98"},
                      UnencodableTextCase{"LeadByteBeforeText", "\xC3("},
                      UnencodableTextCase{"OverlongNul", std::string("\xC0\x80")},
                      UnencodableTextCase{"OverlongTwoBytes", "\xC1\xBF"},
                      UnencodableTextCase{"OverlongThreeBytes", "\xE0\x9F\xBF"},
                      UnencodableTextCase{"OverlongFourBytes", "\xF0\x8F\xBF\xBF"},
                      UnencodableTextCase{"PastTheLastCharacter", "\xF4\x90\x80\x80"},
                      UnencodableTextCase{"LeadByteOfFiveBytes", "\xF8\x88\x80\x80\x80"},
                      UnencodableTextCase{"ByteThatNeverOccurs", "\xFF"},
                      UnencodableTextCase{"Latin1", "caf\xE9"}),
    nameOfCase<UnencodableTextCase>);

// --- Surrogates ---

TEST(SurrogateTest, HalvesAreToldApartAtTheirLimits) {
  EXPECT_FALSE(isHighSurrogate(0xD7FF));
  EXPECT_TRUE(isHighSurrogate(0xD800));
  EXPECT_TRUE(isHighSurrogate(0xDBFF));
  EXPECT_FALSE(isHighSurrogate(0xDC00));
  EXPECT_FALSE(isLowSurrogate(0xDBFF));
  EXPECT_TRUE(isLowSurrogate(0xDC00));
  EXPECT_TRUE(isLowSurrogate(0xDFFF));
  EXPECT_FALSE(isLowSurrogate(0xE000));
}

TEST(SurrogateTest, PairIsOneCharacter) {
  EXPECT_EQ(characterOfPair(0xD800, 0xDC00), U'\U00010000');
  EXPECT_EQ(characterOfPair(0xD83D, 0xDE00), U'\U0001F600');
  EXPECT_EQ(characterOfPair(0xDBFF, 0xDFFF), U'\U0010FFFF');
}

TEST(SurrogateTest, IsReadFromTheStartOfAText) {
  EXPECT_EQ(surrogateAtStart("\xED\xA0\x80x"), char32_t{0xD800});
  EXPECT_EQ(surrogateAtStart("\xED\xBF\xBF"), char32_t{0xDFFF});
  EXPECT_EQ(surrogateAtStart("\xED\x9F\xBF"), std::nullopt);
  EXPECT_EQ(surrogateAtStart("\xED\xA0"), std::nullopt);
  EXPECT_EQ(surrogateAtStart("\xED\xA0x"), std::nullopt);
  EXPECT_EQ(surrogateAtStart("a\xED\xA0\x80"), std::nullopt);
  EXPECT_EQ(surrogateAtStart(""), std::nullopt);
}

}  // namespace
}  // namespace qel::testing
