#include "closest_word.h"

#include <gtest/gtest.h>

namespace qel::tool {
namespace {

const std::vector<std::string> kWords = {"events", "explain", "--jobs", "--quiet"};

TEST(ClosestWordTest, FindsAWordOneEditAwayForThreeCharacters) {
  for (const char* word : {"events", "event", "eventss", "evants", "evnets"}) {
    EXPECT_EQ(closestWord(word, kWords), "events") << word;
  }
  EXPECT_EQ(closestWord("evt", kWords), std::nullopt);
  EXPECT_EQ(closestWord("evnt", kWords), std::nullopt);
}

TEST(ClosestWordTest, AllowsOneEditForEachThreeCharacters) {
  EXPECT_EQ(closestWord("--jop", kWords), std::nullopt);
  EXPECT_EQ(closestWord("--jops", kWords), "--jobs");
  EXPECT_EQ(closestWord("--jxxs", kWords), "--jobs");
  EXPECT_EQ(closestWord("--xxxs", kWords), std::nullopt);
}

TEST(ClosestWordTest, PrefersTheClosestWordAndThenTheFirst) {
  EXPECT_EQ(closestWord("abcdef", {"abcxyf", "abcdxf", "abcdeg"}), "abcdxf");
}

TEST(ClosestWordTest, FindsNothingAmongNoWordsAndForNoWord) {
  EXPECT_EQ(closestWord("events", {}), std::nullopt);
  EXPECT_EQ(closestWord("", kWords), std::nullopt);
  EXPECT_EQ(closestWord(std::string(1'000'000, 'e'), kWords), std::nullopt);
}

}  // namespace
}  // namespace qel::tool
