#include "compact_json.h"

#include <gtest/gtest.h>

#include <string_view>

namespace qel::tool {
namespace {

TEST(CompactJsonTest, TakesAnObjectMemberByMember) {
  CompactJson json(R"({"a":"x","b":12,"c": true, "d":[]})");
  EXPECT_TRUE(json.take('{'));
  EXPECT_TRUE(json.takeKey("a", true));
  EXPECT_EQ(json.takeText(), OptionalText("x"));
  EXPECT_TRUE(json.takeKey("b", false));
  EXPECT_EQ(json.takeToken(), "12");
  EXPECT_TRUE(json.takeKey("c", false));
  EXPECT_EQ(json.takeToken(), "true");
  EXPECT_FALSE(json.isAtEnd());
  EXPECT_TRUE(json.takeKey("d", false));
  EXPECT_TRUE(json.take('['));
  EXPECT_TRUE(json.take(']'));
  EXPECT_TRUE(json.take('}'));
  EXPECT_TRUE(json.isAtEnd());
}

TEST(CompactJsonTest, TakesNothingButWhatComesNext) {
  CompactJson json(R"({"key":"x"})");
  EXPECT_FALSE(json.take('['));
  EXPECT_FALSE(json.takeText().has_value());
  EXPECT_FALSE(json.takeKey("key", true));
  EXPECT_TRUE(json.take('{'));
  EXPECT_FALSE(json.takeKey("ke", true));
  EXPECT_FALSE(json.takeKey("kez", true));
  EXPECT_FALSE(json.takeKey("key", false)) << "there is no comma";
  EXPECT_TRUE(json.takeKey("key", true));
  EXPECT_EQ(json.takeText(), OptionalText("x"));
}

TEST(CompactJsonTest, TakesAKeyOnlyWithQuotationMarksAndAColon) {
  for (const std::string_view text : {R"(key":"value")", R"("key:"value")", R"("key"-"value")",
                                      R"("key" :"value")", R"("key":)"}) {
    EXPECT_FALSE(CompactJson(text).takeKey("key", true)) << text;
  }
}

TEST(CompactJsonTest, TakesNothingAfterTheEnd) {
  constexpr std::string_view kText = R"("a","key":"value")";
  CompactJson json(kText.substr(0, 10));
  EXPECT_EQ(json.takeText(), OptionalText("a"));
  EXPECT_FALSE(json.takeKey("key", false));
  EXPECT_TRUE(json.take(','));
  EXPECT_EQ(json.takeToken(), "\"key\":");
  EXPECT_TRUE(json.isAtEnd());
  EXPECT_FALSE(json.take('"'));
  EXPECT_EQ(json.takeToken(), "");
}

TEST(CompactJsonTest, StopsAtAStringWithoutAnEnd) {
  CompactJson json(R"("null})");
  EXPECT_FALSE(json.takeText().has_value());
  EXPECT_EQ(json.takeToken(), "");
  EXPECT_FALSE(json.isAtEnd());
}

TEST(CompactJsonTest, TakesNothingOnceItStopped) {
  CompactJson json("[]");
  json.stop();
  EXPECT_FALSE(json.isAtEnd());
  EXPECT_FALSE(json.take('['));
  EXPECT_EQ(json.takeToken(), "");
  EXPECT_FALSE(json.takeText().has_value());
  EXPECT_FALSE(json.takeKey("", true));
}

TEST(CompactJsonTest, StopsAtOnceInATextWithEscapesControlCharactersOrIllFormedUtf8) {
  for (const std::string_view text :
       {R"(["a\u0062"])", "[\"a\tb\"]", "[\n]", "[\"\xC3\"]", "[\"\x1F\"]"})
    EXPECT_FALSE(CompactJson(text).take('[')) << text;
  for (const std::string_view text : {"[\"a b\"]", "[\"\u00e9\u6708\"]", "[]\r", "[\"\x7F\"]"})
    EXPECT_TRUE(CompactJson(text).take('[')) << text;
}

}  // namespace
}  // namespace qel::tool
