#include "diagnostics_collector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <thread>

namespace qel::tool {
namespace {

class DiagnosticsCollectorTest : public ::testing::Test {
 protected:
  DiagnosticsCollector collector_;
  TextBuffer out_;
};

TEST_F(DiagnosticsCollectorTest, CollectionStartsEmpty) {
  out_.append("earlier");
  const DiagnosticsCollector::Collection collection(out_, UnpairedSurrogates::kEscape);
  EXPECT_EQ(out_.text(), "");
}

TEST_F(DiagnosticsCollectorTest, WritesAnEmptyListWithoutContext) {
  const DiagnosticsCollector::Collection collection(out_, UnpairedSurrogates::kEscape);
  collector_.logWithLevel(8, 40021, "text");
  EXPECT_EQ(out_.text(), R"({"level":8,"code":40021,"message":"text","context":[]})");
}

TEST_F(DiagnosticsCollectorTest, WritesTextAndNumberContexts) {
  const DiagnosticsCollector::Collection collection(out_, UnpairedSurrogates::kEscape);
  collector_.logWithLevel(8, 40020, "text", std::string_view("month\"ly"));
  collector_.logWithLevel(-1, 40024, "te\\xt", std::string_view("monthly"),
                          std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(out_.text(), R"({"level":8,"code":40020,"message":"text","context":["month\"ly"]},)"
                         R"({"level":-1,"code":40024,"message":"te\\xt",)"
                         R"("context":["monthly",18446744073709551615]})");
}

TEST_F(DiagnosticsCollectorTest, WritesUnpairedSurrogatesAsAsked) {
  {
    const DiagnosticsCollector::Collection collection(out_, UnpairedSurrogates::kReplace);
    collector_.logWithLevel(8, 40020, "text", std::string_view("a\xED\xA0\x80"));
  }
  EXPECT_EQ(out_.text(),
            "{\"level\":8,\"code\":40020,\"message\":\"text\",\"context\":[\"a\uFFFD\"]}");
}

TEST_F(DiagnosticsCollectorTest, MessageAfterTheCollectionIsDropped) {
  { const DiagnosticsCollector::Collection collection(out_, UnpairedSurrogates::kEscape); }
  collector_.logWithLevel(8, 40021, "text");
  EXPECT_EQ(out_.text(), "");
}

TEST_F(DiagnosticsCollectorTest, EachThreadCollectsItsOwnMessages) {
  const DiagnosticsCollector::Collection collection(out_, UnpairedSurrogates::kEscape);
  TextBuffer other;
  std::thread([this, &other] {
    const DiagnosticsCollector::Collection inner(other, UnpairedSurrogates::kEscape);
    collector_.logWithLevel(8, 40021, "theirs");
  }).join();
  EXPECT_EQ(out_.text(), "");
  EXPECT_EQ(other.text(), R"({"level":8,"code":40021,"message":"theirs","context":[]})");
}

}  // namespace
}  // namespace qel::tool
