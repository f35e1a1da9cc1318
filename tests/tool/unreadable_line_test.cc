#include "unreadable_line.h"

#include <gtest/gtest.h>

#include <string>

namespace qel::tool {
namespace {

TEST(UnreadableLineTest, FindsTheIdOfAWholeLine) {
  EXPECT_EQ(idOfUnreadableLine(R"({"id":"a","produkt":1})"), "a");
  EXPECT_EQ(idOfUnreadableLine("{\t\"id\" : \"a\" }"), "a");
}

TEST(UnreadableLineTest, FindsAnEmptyId) { EXPECT_EQ(idOfUnreadableLine(R"({"id":""})"), ""); }

TEST(UnreadableLineTest, FindsTheIdAfterOtherKeys) {
  EXPECT_EQ(idOfUnreadableLine(R"({"a":"b","product":{"price":1},"receipt":[{}],"id":"a"})"), "a");
}

TEST(UnreadableLineTest, FindsTheIdOfALineThatIsCutAfterIt) {
  EXPECT_EQ(idOfUnreadableLine(R"({"id":"a")"), "a");
  EXPECT_EQ(idOfUnreadableLine(R"({"id":"a","product":{"pri)"), "a");
}

TEST(UnreadableLineTest, FindsNoIdInALineThatIsCutWithinIt) {
  const std::string line = R"({"id":"a\"b")";
  for (std::size_t size = 0; size < line.size(); ++size) {
    EXPECT_EQ(idOfUnreadableLine(std::string_view(line).substr(0, size)), std::nullopt) << size;
  }
  EXPECT_EQ(idOfUnreadableLine(line), "a\"b");
}

TEST(UnreadableLineTest, FindsTheIdOfALineThatIsBrokenAroundIt) {
  EXPECT_EQ(idOfUnreadableLine(R"({nonsense,"id":"a" \ } ] nonsense)"), "a");
}

TEST(UnreadableLineTest, TakesTheFirstOfTwoIds) {
  EXPECT_EQ(idOfUnreadableLine(R"({"id":"a","id":"b"})"), "a");
}

TEST(UnreadableLineTest, IgnoresIdsOfInnerObjects) {
  EXPECT_EQ(idOfUnreadableLine(R"({"product":{"id":"inner"}})"), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine(R"({"receipt":[{"id":"inner"}],"id":"outer"})"), "outer");
  EXPECT_EQ(idOfUnreadableLine(R"([{"id":"inner"}])"), std::nullopt);
}

TEST(UnreadableLineTest, IgnoresBracketsAndIdsWithinStrings) {
  EXPECT_EQ(idOfUnreadableLine(R"({"title":"}]{[\"id\":\"x\"","id":"a"})"), "a");
  EXPECT_EQ(idOfUnreadableLine(R"({"title":"\\","id":"a"})"), "a");
}

TEST(UnreadableLineTest, IgnoresAnIdThatIsAValue) {
  EXPECT_EQ(idOfUnreadableLine(R"({"a":"id","b":"x"})"), std::nullopt);
}

TEST(UnreadableLineTest, IgnoresOtherKeys) {
  EXPECT_EQ(idOfUnreadableLine(R"({"ID":"a","idd":"b","i":"c","":"d"})"), std::nullopt);
}

TEST(UnreadableLineTest, IgnoresAnIdThatIsNoString) {
  EXPECT_EQ(idOfUnreadableLine(R"({"id":7,"produkt":"x"})"), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine(R"({"id":null})"), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine(R"({"id":["x"]})"), std::nullopt);
}

TEST(UnreadableLineTest, ReadsEscapesInTheKeyAndInTheId) {
  EXPECT_EQ(idOfUnreadableLine(R"({"\u0069d":"\ud83d\ude80\n\ud800"})"),
            "\xF0\x9F\x9A\x80\n\xED\xA0\x80");
}

TEST(UnreadableLineTest, FindsNoIdThatIsItselfBroken) {
  EXPECT_EQ(idOfUnreadableLine(R"({"id":"a\q"})"), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine("{\"id\":\"a\xFF\"}"), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine("{\"id\":\"\xED\xA0\x80\"}"), std::nullopt);
}

TEST(UnreadableLineTest, FindsTheIdBesideBytesThatAreNoUtf8) {
  EXPECT_EQ(idOfUnreadableLine("{\"\xFF\":\"\xFE\",\"id\":\"a\"}"), "a");
}

TEST(UnreadableLineTest, FindsNoIdInWhatIsNoObject) {
  EXPECT_EQ(idOfUnreadableLine(""), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine("id"), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine(R"("id":"a")"), std::nullopt);
  EXPECT_EQ(idOfUnreadableLine("]]}}{{[["), std::nullopt);
}

}  // namespace
}  // namespace qel::tool
