#include "text_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace qel::tool {
namespace {

TEST(TextBufferTest, IsEmptyAtFirst) {
  const TextBuffer buffer;
  EXPECT_TRUE(buffer.empty());
  EXPECT_EQ(buffer.text(), "");
}

TEST(TextBufferTest, AppendsTextsAndCharacters) {
  TextBuffer buffer;
  buffer.append("ab");
  buffer.append("");
  buffer.append('c');
  EXPECT_FALSE(buffer.empty());
  EXPECT_EQ(buffer.text(), "abc");
}

TEST(TextBufferTest, AppendsTheGreatestAndTheLeastIntegers) {
  TextBuffer buffer;
  buffer.append(std::numeric_limits<std::int64_t>::min());
  buffer.append(' ');
  buffer.append(std::numeric_limits<std::uint64_t>::max());
  buffer.append(' ');
  buffer.append(0);
  EXPECT_EQ(buffer.text(), "-9223372036854775808 18446744073709551615 0");
}

TEST(TextBufferTest, GrowsWithWhatIsAppended) {
  TextBuffer buffer;
  std::string expected;
  for (int i = 0; i < 1000; ++i) {
    buffer.append(i);
    buffer.append(",");
    expected += std::to_string(i) + ",";
  }
  const std::string longPiece(100000, 'x');
  buffer.append(longPiece);
  EXPECT_EQ(buffer.text(), expected + longPiece);
}

TEST(TextBufferTest, StartsAgainOnceCleared) {
  TextBuffer buffer;
  buffer.append("before");
  buffer.clear();
  EXPECT_TRUE(buffer.empty());
  buffer.append("after");
  EXPECT_EQ(buffer.text(), "after");
}

}  // namespace
}  // namespace qel::tool
