// How often receipt matching makes a date formatter, and what it lets it parse.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ostream>

#include "counting_date_formatter.h"
#include "purchase_fixtures.h"
#include "qel/receipt_matching.h"

namespace qel::testing {
namespace {

using Parsed = std::vector<std::optional<std::string>>;

class ReceiptMatchingFormatterTest : public DateFormatterCountsTest {
 protected:
  void addEntry(const char* productID, const std::optional<std::string>& date) {
    receipt.push_back(entryOf(kConsumable, productID, "", "1", "1"));
    receipt.back().purchaseDateIA5String = date;
  }

  void match(const OptionalText& productIdentifier, const std::optional<Instant>& date) const {
    QELMatchingInAppPurchaseItems(listOf(receipt), productIdentifier, date);
  }

  std::vector<QELInAppPurchaseItem> receipt;
};

// --- Formatters ---

TEST_F(ReceiptMatchingFormatterTest, EmptyListMakesNoFormatter) {
  match("coins", kMarchInstant);
  EXPECT_EQ(formatterCounts().created, 0);
}

TEST_F(ReceiptMatchingFormatterTest, QuestionWithoutACriterionMakesNoFormatter) {
  addEntry("coins", kMarch);
  match(std::nullopt, std::nullopt);
  match("", std::nullopt);
  EXPECT_EQ(formatterCounts().created, 0);
  EXPECT_EQ(formatterCounts().parsed, Parsed());
}

TEST_F(ReceiptMatchingFormatterTest, OneCallMakesOneFormatterForFilterAndSort) {
  for (const char* date : {kApril, kMarch, kFebruary, kJanuary}) addEntry("coins", date);
  match("coins", std::nullopt);
  EXPECT_EQ(formatterCounts().created, 1);
}

TEST_F(ReceiptMatchingFormatterTest, TwoCallsMakeTwoFormatters) {
  addEntry("coins", kMarch);
  match("coins", std::nullopt);
  match("coins", std::nullopt);
  EXPECT_EQ(formatterCounts().created, 2);
}

// --- Parsing ---

TEST_F(ReceiptMatchingFormatterTest, FilterParsesEveryEntryOnceInOrderWhateverItsProduct) {
  addEntry("gold", kMarch);
  addEntry("coins", kFebruary);
  addEntry("gold", std::nullopt);
  addEntry("gold", "soon");
  match("coins", std::nullopt);
  EXPECT_EQ(formatterCounts().parsed, Parsed({kMarch, kFebruary, std::nullopt, "soon"}));
}

TEST_F(ReceiptMatchingFormatterTest, FilterParsesEveryEntryOnceWhenADateIsGiven) {
  addEntry("gold", kMarch);
  addEntry("coins", kMarch);
  addEntry("coins", kApril);
  match("coins", kMarchInstant);
  EXPECT_EQ(formatterCounts().parsed, Parsed({kMarch, kMarch, kApril}));
}

// What was parsed after the filter had parsed every entry once.
Parsed parsedBySort(std::size_t entryCount) {
  const Parsed& parsed = formatterCounts().parsed;
  return {parsed.begin() + static_cast<std::ptrdiff_t>(std::min(entryCount, parsed.size())),
          parsed.end()};
}

// Of two entries a sort only ever asks whether the second goes before the first. For that the first
// is compared with the second, and the dates are parsed in this order.
struct PairCase {
  const char* name;
  std::optional<std::string> first;
  std::optional<std::string> second;
  friend std::ostream& operator<<(std::ostream& out, const PairCase& c) { return out << c.name; }
};

class ReceiptComparisonTest : public ReceiptMatchingFormatterTest,
                              public ::testing::WithParamInterface<PairCase> {};

TEST_P(ReceiptComparisonTest, ParsesTheDateOfTheFirstThenThatOfTheSecond) {
  addEntry("coins", GetParam().first);
  addEntry("coins", GetParam().second);
  match("coins", std::nullopt);

  const Parsed parsed = parsedBySort(2);
  ASSERT_FALSE(parsed.empty());
  ASSERT_EQ(parsed.size() % 2, 0U);
  for (std::size_t i = 0; i < parsed.size(); i += 2) {
    EXPECT_EQ(parsed[i], GetParam().first);
    EXPECT_EQ(parsed[i + 1], GetParam().second);
  }
}

INSTANTIATE_TEST_SUITE_P(Pairs, ReceiptComparisonTest,
                         ::testing::Values(PairCase{"InOrder", kJanuary, kMarch},
                                           PairCase{"OutOfOrder", kMarch, kJanuary},
                                           PairCase{"FirstWithoutADate", std::nullopt, kMarch},
                                           PairCase{"SecondWithoutADate", kMarch, std::nullopt},
                                           PairCase{"FirstUnreadable", "soon", kMarch},
                                           PairCase{"SecondUnreadable", kMarch, "soon"}),
                         nameOfCase<PairCase>);

// No sort of four entries in this order can do with fewer than three comparisons, and each takes
// two different entries.
TEST_F(ReceiptMatchingFormatterTest, EveryComparisonParsesTwoDatesAfresh) {
  for (const char* date : {kMarch, kJanuary, kApril, kFebruary}) addEntry("coins", date);
  match("coins", std::nullopt);

  const Parsed parsed = parsedBySort(4);
  EXPECT_GE(parsed.size(), 6U);
  ASSERT_EQ(parsed.size() % 2, 0U);
  for (std::size_t i = 0; i < parsed.size(); i += 2) EXPECT_NE(parsed[i], parsed[i + 1]);
}

TEST_F(ReceiptMatchingFormatterTest, OneMatchingEntryIsNotCompared) {
  addEntry("coins", kMarch);
  addEntry("gold", kJanuary);
  match("coins", std::nullopt);
  EXPECT_EQ(parsedBySort(2), Parsed());
}

}  // namespace
}  // namespace qel::testing
