#include "option_values.h"

#include <gtest/gtest.h>

#include <string>

namespace qel::tool {
namespace {

// The value that becomes of `text`, or the error.
std::string result(const CLI::Validator& validator, std::string text) {
  const std::string error = validator(text);
  return error.empty() ? text : error;
}

TEST(WholeNumberTest, AcceptsDecimalDigitsWithinTheRange) {
  const CLI::Validator number = wholeNumber(1, 1024);
  EXPECT_EQ(result(number, "1"), "1");
  EXPECT_EQ(result(number, "010"), "10");
  EXPECT_EQ(result(number, "1024"), "1024");
  for (const char* const text :
       {"0", "1025", "x", "-1", "+5", "0x10", "1e3", "1K", "18446744073709551617"}) {
    EXPECT_EQ(result(number, text), std::string("expected a number from 1 to 1024, found ") + text);
  }
  for (const char* const text : {"", " ", "1 ", " 1"}) {
    EXPECT_EQ(result(number, text),
              std::string("expected a number from 1 to 1024, found \"") + text + "\"");
  }
}

TEST(ByteSizeTest, AcceptsUnits) {
  const CLI::Validator size = byteSize(1, std::uint64_t{4} << 30);
  EXPECT_EQ(result(size, "1"), "1");
  EXPECT_EQ(result(size, "64K"), "65536");
  EXPECT_EQ(result(size, "64M"), "67108864");
  EXPECT_EQ(result(size, "4G"), "4294967296");
}

TEST(ByteSizeTest, RejectsEverythingElse) {
  const CLI::Validator size = byteSize(100, std::uint64_t{4} << 30);
  for (const char* const text : {"0", "99", "0K", "5G", "4294967297", "4194305K", "K", "1k", "1KB",
                                 "1T", "-1", "1.5M", "18014398509481985K"}) {
    EXPECT_EQ(result(size, text),
              std::string("expected a size from 100 to 4294967296 bytes, such as 65536, 64K, 64M "
                          "or 1G; found ") +
                  text);
  }
  EXPECT_TRUE(result(size, "").ends_with("; found \"\""));
}

TEST(OneOfTest, AcceptsTheWordsOnly) {
  const CLI::Validator word = oneOf({"escape", "replace"});
  EXPECT_EQ(result(word, "escape"), "escape");
  EXPECT_EQ(result(word, "replace"), "replace");
  EXPECT_EQ(result(word, "x"), "expected escape or replace, found x");
  EXPECT_EQ(result(word, ""), "expected escape or replace, found \"\"");
}

}  // namespace
}  // namespace qel::tool
