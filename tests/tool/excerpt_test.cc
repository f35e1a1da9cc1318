#include "excerpt.h"

#include <gtest/gtest.h>

namespace qel::tool {
namespace {

TEST(ExcerptTest, LongTextsAreCutAtACharacter) {
  const std::string text(59, 'a');
  EXPECT_EQ(excerpt(text + "b"), text + "b");
  EXPECT_EQ(excerpt(text + "bc"), text + "b...");
  EXPECT_EQ(excerpt(text + "\u00e9"), text + "...");
}

TEST(FoundTextTest, EveryTextIsVisible) {
  EXPECT_EQ(foundText("a b"), "a b");
  EXPECT_EQ(foundText(""), "\"\"");
  EXPECT_EQ(foundText(" "), "\" \"");
  EXPECT_EQ(foundText("a\n"), "\"a\n\"");
  EXPECT_EQ(foundText("\ta"), "\"\ta\"");
  EXPECT_EQ(foundText("\uFEFF{}"), "U+FEFF, a byte order mark");
  EXPECT_EQ(foundText(std::string(61, 'a')), std::string(60, 'a') + "...");
}

}  // namespace
}  // namespace qel::tool
