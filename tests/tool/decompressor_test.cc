#include "decompressor.h"

#include <gtest/gtest.h>

namespace qel::tool {
namespace {

using namespace std::string_view_literals;

TEST(CompressionOfTest, RecognisesEachFormatByItsFirstBytes) {
  EXPECT_EQ(compressionOf("\x1F\x8B\x08"sv), Compression::kGzip);
  EXPECT_EQ(compressionOf("\x28\xB5\x2F\xFD\x04"sv), Compression::kZstd);
  EXPECT_EQ(compressionOf("\xFD\x37\x7A\x58\x5A\x00\x00"sv), Compression::kXz);
}

TEST(CompressionOfTest, NeedsMoreBytesOfAFormatThatHasBegun) {
  for (const std::string_view start :
       {""sv, "\x1F"sv, "("sv, "\x28\xB5\x2F"sv, "\xFD"sv, "\xFD\x37\x7A\x58\x5A"sv}) {
    EXPECT_EQ(compressionOf(start), Compression::kUnknown);
  }
}

TEST(CompressionOfTest, TakesEverythingElseAsItIs) {
  for (const std::string_view start : {"{"sv, "\n"sv, "\x1F\x8A"sv, "(\xB5/\xFC"sv, "\xFD\x38"sv}) {
    EXPECT_EQ(compressionOf(start), Compression::kNone);
  }
}

}  // namespace
}  // namespace qel::tool
