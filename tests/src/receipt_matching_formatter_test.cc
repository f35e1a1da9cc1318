// How many date formatters receipt matching makes, and what they parse, in order.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "qel/receipt_matching.h"
#include "qel/rfc3339.h"
#include "support/counting_date_formatter.h"
#include "support/purchase_fixtures.h"

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
    static_cast<void>(QELMatchingInAppPurchaseItems(listOf(receipt), productIdentifier, date));
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

// --- All calls, in order ---

// Returns what a match by `productID` does with its formatter, by a plain run of the same
// algorithm. Each entry is parsed once. Then the matching entries are checked for order, next for
// reverse order, and otherwise sorted. Each comparison parses the date of its first entry, then
// that of its second.
Asked referenceCalls(const std::vector<QELInAppPurchaseItem>& receipt, const char* productID) {
  Asked calls;
  const auto parse = [&calls](const QELInAppPurchaseItem& item) {
    calls.push_back(formatterParse(1, item.purchaseDateIA5String));
    return parseRfc3339(item.purchaseDateIA5String.value_or(""));
  };
  const auto isDescending = [&parse](const QELInAppPurchaseItem& first,
                                     const QELInAppPurchaseItem& second) {
    const std::optional<Instant> firstDate = parse(first);
    const std::optional<Instant> secondDate = parse(second);
    // Absent is less than every date.
    return firstDate > secondDate;
  };
  const auto goesBefore = [&isDescending](const auto& a, const auto& b) {
    return isDescending(b, a);
  };
  const auto isOutOfReverse = [&goesBefore](const auto& a, const auto& b) {
    return !goesBefore(b, a);
  };

  calls.push_back(formatterInit(1));
  QELInAppPurchaseItems matching;
  for (const QELInAppPurchaseItem& item : receipt) {
    parse(item);
    if (item.productID == productID) matching.emplace_back(item);
  }
  const bool isInOrder = std::is_sorted(matching.begin(), matching.end(), goesBefore);
  const bool isInReverse = !isInOrder && std::adjacent_find(matching.begin(), matching.end(),
                                                            isOutOfReverse) == matching.end();
  if (!isInOrder && !isInReverse) std::stable_sort(matching.begin(), matching.end(), goesBefore);
  calls.push_back(formatterEnd(1));
  return calls;
}

// Returns `count` dates in no order. They fall on 17 days, so many are equal. One in nine is
// absent.
Parsed datesInNoOrder(std::size_t count) {
  Parsed dates;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string day = std::to_string(10 + i * 11 % 17);
    dates.push_back(i % 9 == 5 ? std::nullopt : std::optional("2019-03-" + day + "T09:26:53Z"));
  }
  return dates;
}

struct ReceiptCase {
  const char* name;
  Parsed dates;
  friend std::ostream& operator<<(std::ostream& out, const ReceiptCase& c) { return out << c.name; }
};

class ReceiptMatchingCallsTest : public ReceiptMatchingFormatterTest,
                                 public ::testing::WithParamInterface<ReceiptCase> {};

TEST_P(ReceiptMatchingCallsTest, AreThoseOfAPlainRunByOneFormatter) {
  addEntry("gold", kJanuary);
  for (const std::optional<std::string>& date : GetParam().dates) addEntry("coins", date);
  addEntry("gold", std::nullopt);
  Asked calls;
  formatterCounts().asked = &calls;
  match("coins", std::nullopt);
  EXPECT_EQ(calls, referenceCalls(receipt, "coins"));
}

INSTANTIATE_TEST_SUITE_P(
    Receipts, ReceiptMatchingCallsTest,
    ::testing::Values(ReceiptCase{"NoEntryOfTheProduct", {}}, ReceiptCase{"OneEntry", {kMarch}},
                      ReceiptCase{"InOrder", {kJanuary, kMarch, kMarch, kApril}},
                      ReceiptCase{"InReverse", {kApril, kMarch, kFebruary, kJanuary}},
                      ReceiptCase{"InReverseButForEqualDates", {kApril, kMarch, kMarch, kJanuary}},
                      ReceiptCase{"InNoOrder", {kMarch, kJanuary, kApril, kFebruary}},
                      ReceiptCase{"WithUndatedEntries",
                                  {kMarch, std::nullopt, "soon", kJanuary, "", kFebruary}},
                      // Long enough for insertions and several merges.
                      ReceiptCase{"LongInNoOrder", datesInNoOrder(100)}),
    nameOfCase<ReceiptCase>);

}  // namespace
}  // namespace qel::testing
