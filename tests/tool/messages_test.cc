#include "messages.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace qel::tool {
namespace {

std::string reported(std::string_view message) {
  ::testing::internal::CaptureStderr();
  report(message);
  return ::testing::internal::GetCapturedStderr();
}

TEST(ReportTest, ReplacesControlCharacters) {
  EXPECT_EQ(reported("a\x1B[31m\n\x7F\u009b \u00e9\u00a0\u6708\U0001F600"),
            "qel-purchase: a?[31m??? \u00e9\u00a0\u6708\U0001F600\n");
}

TEST(ReportTest, ReplacesCharactersThatReorderText) {
  EXPECT_EQ(reported("a\u202eb\u202cc\u2066d\u2069e\u200ff\u061cg\u2028"),
            "qel-purchase: a?b?c?d?e?f?g?\n");
}

TEST(ReportTest, ReplacesWhatIsNotUtf8) {
  EXPECT_EQ(reported("a\xFF\xFE z\xC3"), "qel-purchase: a?? z?\n");
}

TEST(CountedTest, WritesOneAndMany) {
  EXPECT_EQ(counted(0, "line"), "0 lines");
  EXPECT_EQ(counted(1, "line"), "1 line");
  EXPECT_EQ(counted(2, "line"), "2 lines");
}

}  // namespace
}  // namespace qel::tool
