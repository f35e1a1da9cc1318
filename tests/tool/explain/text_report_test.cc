#include "explain/text_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "explain/display_text.h"
#include "explain/timeline_rows.h"
#include "explained.h"

// NOLINTBEGIN(misc-misleading-bidirectional): hostile texts are what is tested.

namespace qel::tool {
namespace {

using testing::Explained;
using ::testing::HasSubstr;
using testing::monthlyEntry;
using testing::monthlyPurchase;
using ::testing::Not;

constexpr const char* kApril = "2019-04-14T09:26:53Z";

std::string withTitle(const std::string& title) {
  std::string line = monthlyPurchase("[" + monthlyEntry(kApril, "2000") + "]");
  return line.replace(line.find("Monthly"), 7, title);
}

TEST(TextReportTest, ConversionReadsFromTheOutcomeToTheEvent) {
  const Explained explained(monthlyPurchase(
      "[" + monthlyEntry("2019-03-14T10:26:53+01:00", "1000", R"(,"isFreeTrial":true)") + "," +
      monthlyEntry(kApril, "2000") + R"(,{"productID":"coins"}])"));
  EXPECT_THAT(textReport(*explained, 3, TextColor::kNone),
              ::testing::StartsWith(
                  "Purchase (line 3)\n"
                  "Monthly, product monthly, 1 x 4.99 EUR\n"
                  "Transaction 2000 of 1000, 2019-04-14 09:26:53 UTC\n"
                  "\n"
                  "  Conversion of a free trial: 4.99 EUR\n"
                  "\n"
                  "Receipt: 3 entries, 2 of this product\n"
                  "     date (UTC)           what                transaction, of its original\n"
                  "     2019-03-14 09:26:53  free trial          1000\n"
                  "                          written as 2019-03-14T10:26:53+01:00\n"
                  "                          right before it, a free trial: so a conversion\n"
                  "  >  2019-04-14 09:26:53  paid period         2000 of 1000\n"
                  "                          reported: it is at the transaction's date\n"
                  "     Others: 1 of coins\n"
                  "\n"
                  "Decisions\n"
                  "  40008  Transaction of auto-renewable subscription will be reported\n"));
}

TEST(TextReportTest, LongIdentifiersAreShortenedToTheirColumn) {
  const auto purchase = [](const std::string& id) {
    return monthlyPurchase(
        "[" + monthlyEntry("2019-03-14T09:26:53Z", id + "1", R"(,"isFreeTrial":true)") + "," +
        monthlyEntry(kApril, id + "2") + "]");
  };
  std::istringstream lines(
      textReport(*Explained(purchase(std::string(300, 'x'))), 1, TextColor::kNone));
  for (std::string line; std::getline(lines, line);) EXPECT_LE(columnsOf(line), 80U) << line;

  // An identifier of usual length is shown as a whole, even if its line has more columns then.
  const std::string usual(60, 'x');
  EXPECT_THAT(textReport(*Explained(purchase(usual)), 1, TextColor::kNone),
              HasSubstr("\n" + std::string(45, ' ') + usual + "1\n"));
}

TEST(TextReportTest, DateThatIsNotComparedIsMarked) {
  const std::string consumable =
      R"({"productID":"monthly","purchaseDateIA5String":"2019-04-13T09:26:53Z",)"
      R"("purchaseType":1,"transactionID":"2000","originalTransactionID":"2000"})";
  EXPECT_THAT(textReport(*Explained(monthlyPurchase("[" + consumable + "]")), 1, TextColor::kNone),
              HasSubstr("  -  2019-04-14 09:26:53  the transaction's date; it is not compared\n"));
}

TEST(TextReportTest, LinesHave80ColumnsWhateverTheTitle) {
  for (const std::string& title :
       {std::string(100000, 'x'), std::string(R"(\u001b[31m\u202e\u0007)"),
        std::string("\u6708\u984d\u30d7\u30e9\u30f3 \u30d7\u30ec\u30df\u30a2\u30e0"),
        std::string("\u05de\u05e0\u05d5\u05d9 \u05d7\u05d5\u05d3\u05e9\u05d9")}) {
    const std::string text = textReport(*Explained(withTitle(title)), 1, TextColor::kNone);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(columnsOf(line), 80U) << line;
    EXPECT_THAT(text, Not(HasSubstr("\x1b")));
    EXPECT_THAT(text, Not(HasSubstr("\u202e")));
  }
}

TEST(TextReportTest, TextFromRightToLeftIsIsolated) {
  const std::string text = textReport(*Explained(withTitle("\u05d7\u05d5")), 1, TextColor::kNone);
  EXPECT_THAT(text, HasSubstr("\"\u2068\u05d7\u05d5\u2069\", product monthly"));
}

TEST(TextReportTest, ColourChangesNothingElse) {
  const Explained explained(withTitle("Monthly"));
  std::string colored = textReport(*explained, 1, TextColor::kAnsi);
  EXPECT_THAT(colored, HasSubstr("\x1b[1;32mRenewal\x1b[0m"));
  for (std::size_t start = colored.find('\x1b'); start != std::string::npos;
       start = colored.find('\x1b')) {
    colored.erase(start, colored.find('m', start) - start + 1);
  }
  EXPECT_EQ(colored, textReport(*explained, 1, TextColor::kNone));
}

TEST(TextReportTest, RowHasIdAndOutcome) {
  std::string line = withTitle("Monthly");
  line.insert(1, R"("id":"r-1",)");
  EXPECT_EQ(textRow(*Explained(line), 12, TextColor::kNone),
            "    12  r-1\n        Renewal: 4.99 EUR\n");
  EXPECT_EQ(textRow(JsonError{"/product", "expected x"}, std::nullopt, 7, TextColor::kNone),
            "     7  (no id)\n        Unreadable: at \"/product\": expected x\n");
}

// A receipt of `count` months of "monthly" before April 2019.
std::string longReceipt(int count) {
  std::string receipt = "[";
  for (int i = 0; i < count; ++i) {
    receipt +=
        monthlyEntry(std::to_string(1000 + i) + "-03-14T09:26:53Z", "t" + std::to_string(i)) + ",";
  }
  return monthlyPurchase(receipt + monthlyEntry(kApril, "2000") + "]");
}

TEST(TimelineRowsTest, ShortReceiptIsShownAsAWhole) {
  EXPECT_EQ(timelineRows(*Explained(longReceipt(23))).size(), 24U);
}

TEST(TimelineRowsTest, LongReceiptLeavesOutWhatIsFarFromTheTransaction) {
  const Explained explained(longReceipt(500));
  std::size_t entries = 0;
  std::size_t leftOut = 0;
  bool isReportedShown = false;
  for (const TimelineRow& row : timelineRows(*explained)) {
    leftOut += row.leftOut;
    entries += row.entry != nullptr ? 1U : 0U;
    isReportedShown |= row.entry != nullptr && row.entry->role == Role::kReported;
  }
  EXPECT_LT(entries, 24U);
  EXPECT_EQ(entries + leftOut, 501U);
  EXPECT_TRUE(isReportedShown);
}

TEST(TimelineRowsTest, TransactionHasARowIfNoEntryHasItsDate) {
  const Explained explained(monthlyPurchase("[" + monthlyEntry("2019-03-14T09:26:53Z", "1") + "," +
                                            monthlyEntry("2019-05-14T09:26:53Z", "2") + "]"));
  const std::vector<TimelineRow> rows = timelineRows(*explained);
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_TRUE(rows[1].isTransaction);
}

}  // namespace
}  // namespace qel::tool

// NOLINTEND(misc-misleading-bidirectional)
