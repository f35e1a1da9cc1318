#include "messages.h"

#include <gtest/gtest.h>

namespace qel::tool {
namespace {

TEST(ReportTest, ReplacesControlCharacters) {
  ::testing::internal::CaptureStderr();
  report("a\x1B[31m\n\x7F\xC2\x9B é\xC2\xA0\xC2");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "qel-purchase: a?[31m??? é\xC2\xA0\xC2\n");
}

TEST(CountedTest, WritesOneAndMany) {
  EXPECT_EQ(counted(0, "line"), "0 lines");
  EXPECT_EQ(counted(1, "line"), "1 line");
  EXPECT_EQ(counted(2, "line"), "2 lines");
}

}  // namespace
}  // namespace qel::tool
