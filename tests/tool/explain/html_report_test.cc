#include "explain/html_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "explain/html_text.h"
#include "explained.h"

namespace qel::tool {
namespace {

using testing::Explained;
using ::testing::HasSubstr;
using testing::monthlyEntry;
using testing::monthlyPurchase;
using ::testing::Not;

const std::string kPurchase =
    monthlyPurchase("[" + monthlyEntry("2019-04-14T09:26:53Z", "2000") + "]");

TEST(HtmlReportTest, TextsAreEscaped) {
  EXPECT_EQ(escapedHtml(R"(<a href="x" id='y'>&)"),
            "&lt;a href=&quot;x&quot; id=&#39;y&#39;&gt;&amp;");
  EXPECT_EQ(htmlOf(OptionalText("<b>")), "<bdi>&lt;b&gt;</bdi>");
  EXPECT_EQ(htmlOf(OptionalText()), "<i>absent</i>");
  EXPECT_EQ(htmlOf(Prose("a < ", InputText{"b<"})), "a &lt; <bdi>b&lt;</bdi>");
}

TEST(HtmlReportTest, PageOfOnePurchaseHasNoList) {
  HtmlReport report;
  report.add(*Explained(kPurchase), 1);
  const std::string page = report.page();
  EXPECT_THAT(page, HasSubstr("<h1>Purchase of line 1</h1>"));
  EXPECT_THAT(page, Not(HasSubstr("<details")));
}

TEST(HtmlReportTest, PageOfSeveralPurchasesHasARowForEach) {
  HtmlReport report;
  report.add(*Explained(kPurchase), 1);
  report.add(*Explained("{}"), 2);
  report.add(JsonError{"/a", "<expected>"}, "id<", 3);
  const std::string page = report.page();
  EXPECT_THAT(page, HasSubstr("<h1>3 purchases</h1>"));
  EXPECT_THAT(page, HasSubstr("Renewal 1</label>"));
  EXPECT_THAT(page, HasSubstr("No event 1</label>"));
  EXPECT_THAT(page, HasSubstr("Unreadable 1</label>"));
  EXPECT_THAT(page, HasSubstr("<bdi>id&lt;</bdi>"));
}

TEST(HtmlReportTest, TimelineSaysWhatItLeavesOut) {
  std::string receipt = "[" + monthlyEntry("2019-04-14T09:26:53Z", "2000");
  for (int product = 0; product < 9; ++product) {
    receipt += R"(,{"productID":"other)" + std::to_string(product) + "\"}";
  }
  HtmlReport report;
  report.add(*Explained(monthlyPurchase(receipt + "]")), 1);
  EXPECT_THAT(report.page(),
              HasSubstr(">The timeline shows 7 of 10 entries, and 7 of 10 products.</p>"));

  HtmlReport complete;
  complete.add(*Explained(kPurchase), 1);
  EXPECT_THAT(complete.page(), Not(HasSubstr("The timeline shows")));
}

TEST(HtmlReportTest, LargeReportListsTheLastPurchasesWithoutDetails) {
  HtmlReport report;
  const Explained explained(kPurchase);
  for (std::uint64_t line = 1; line <= 6000; ++line) report.add(*explained, line);
  EXPECT_EQ(report.size(), 6000U);
  EXPECT_GT(report.withoutDetails(), 0U);
  const std::string page = report.page();
  EXPECT_LT(page.size(), 20U << 20U);
  EXPECT_THAT(page, HasSubstr("to explain it: --line 6000"));
}

}  // namespace
}  // namespace qel::tool
