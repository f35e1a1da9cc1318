#include "qel/receipt_matching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <random>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

QELInAppPurchaseItem purchaseOf(const char* productID, const char* date) {
  return entryOf(kConsumable, productID, date, "1", "1");
}

QELInAppPurchaseItem purchaseWithoutDate(const char* productID) {
  QELInAppPurchaseItem item = purchaseOf(productID, "");
  item.purchaseDateIA5String = std::nullopt;
  return item;
}

// Entries of a receipt, which matches name by their place in it, from 0.
class ReceiptMatchingTest : public ::testing::Test {
 protected:
  // Returns the positions in `receipt` of the matching entries, found by their addresses. Returns
  // std::nullopt if the match does.
  std::optional<std::vector<std::ptrdiff_t>> match(const OptionalText& productIdentifier,
                                                   const std::optional<Instant>& date) const {
    return placesOf(QELMatchingInAppPurchaseItems(listOf(receipt), productIdentifier, date));
  }

  std::optional<std::vector<std::ptrdiff_t>> placesOf(
      const std::optional<QELInAppPurchaseItems>& items) const {
    if (!items.has_value()) return std::nullopt;
    std::vector<std::ptrdiff_t> places;
    for (const QELInAppPurchaseItem& item : *items) places.push_back(&item - receipt.data());
    return places;
  }

  std::vector<QELInAppPurchaseItem> receipt;
};

using Places = std::vector<std::ptrdiff_t>;

// --- Nothing and empty ---

struct QuestionCase {
  const char* name;
  OptionalText productIdentifier;
  std::optional<Instant> date;
  friend std::ostream& operator<<(std::ostream& out, const QuestionCase& c) {
    return out << c.name;
  }
};

class AnyQuestionTest : public ReceiptMatchingTest,
                        public ::testing::WithParamInterface<QuestionCase> {};

TEST_P(AnyQuestionTest, OfAnEmptyListGivesNothing) {
  EXPECT_EQ(match(GetParam().productIdentifier, GetParam().date), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Questions, AnyQuestionTest,
                         ::testing::Values(QuestionCase{"Both", "coins", kMarchInstant},
                                           QuestionCase{"IdentifierOnly", "coins", std::nullopt},
                                           QuestionCase{"DateOnly", std::nullopt, kMarchInstant},
                                           QuestionCase{"EmptyIdentifier", "", kMarchInstant},
                                           QuestionCase{"Neither", std::nullopt, std::nullopt}),
                         nameOfCase<QuestionCase>);

TEST_F(ReceiptMatchingTest, AbsentListGivesNothing) {
  EXPECT_EQ(placesOf(QELMatchingInAppPurchaseItems({}, "coins", kMarchInstant)), std::nullopt);
}

TEST_F(ReceiptMatchingTest, EmptyIdentifierWithoutADateGivesNothing) {
  receipt = {purchaseOf("coins", kMarch), purchaseOf("", kMarch)};
  EXPECT_EQ(match("", std::nullopt), std::nullopt);
}

TEST_F(ReceiptMatchingTest, AbsentIdentifierWithoutADateGivesNothing) {
  receipt = {purchaseOf("coins", kMarch)};
  EXPECT_EQ(match(std::nullopt, std::nullopt), std::nullopt);
}

TEST_F(ReceiptMatchingTest, IdentifierWithADateThatNoEntryOfItCarriesGivesAnEmptyList) {
  receipt = {purchaseOf("coins", kMarch), purchaseOf("gold", kFebruary)};
  EXPECT_EQ(match("coins", kFebruaryInstant), Places());
}

TEST_F(ReceiptMatchingTest, UnknownIdentifierGivesAnEmptyList) {
  receipt = {purchaseOf("coins", kMarch)};
  EXPECT_EQ(match("gold", std::nullopt), Places());
}

TEST_F(ReceiptMatchingTest, UnknownDateGivesAnEmptyList) {
  receipt = {purchaseOf("coins", kMarch)};
  EXPECT_EQ(match(std::nullopt, kFebruaryInstant), Places());
}

// --- Which entries are taken ---

TEST_F(ReceiptMatchingTest, IdentifierAndDateMustBothMatch) {
  receipt = {purchaseOf("coins", kFebruary), purchaseOf("gold", kMarch),
             purchaseOf("coins", kMarch), purchaseOf("coins", kApril)};
  EXPECT_EQ(match("coins", kMarchInstant), Places({2}));
}

TEST_F(ReceiptMatchingTest, IdentifierAloneTakesTheProductsEntriesOfAllDates) {
  receipt = {purchaseOf("coins", kFebruary), purchaseOf("gold", kMarch),
             purchaseOf("coins", kMarch)};
  EXPECT_EQ(match("coins", std::nullopt), Places({0, 2}));
}

TEST_F(ReceiptMatchingTest, DateAloneTakesTheEntriesOfAllProducts) {
  receipt = {purchaseOf("coins", kFebruary), purchaseOf("gold", kMarch),
             purchaseOf("coins", kMarch)};
  EXPECT_EQ(match(std::nullopt, kMarchInstant), Places({1, 2}));
}

TEST_F(ReceiptMatchingTest, EmptyIdentifierWithADateTakesTheEntriesOfAllProducts) {
  receipt = {purchaseOf("coins", kMarch), purchaseOf("gold", kFebruary), purchaseOf("", kMarch),
             purchaseOf("gold", kMarch)};
  EXPECT_EQ(match("", kMarchInstant), Places({0, 2, 3}));
}

TEST_F(ReceiptMatchingTest, EmptyIdentifierDoesNotSelectEntriesWithAnEmptyOne) {
  receipt = {purchaseOf("", kFebruary), purchaseOf("", kMarch)};
  EXPECT_EQ(match("", kMarchInstant), Places({1}));
}

TEST_F(ReceiptMatchingTest, EntryWithoutAnIdentifierIsTakenByDateOnly) {
  receipt = {purchaseOf("coins", kMarch)};
  receipt[0].productID = std::nullopt;
  EXPECT_EQ(match("coins", std::nullopt), Places());
  EXPECT_EQ(match("coins", kMarchInstant), Places());
  EXPECT_EQ(match(std::nullopt, kMarchInstant), Places({0}));
}

TEST_F(ReceiptMatchingTest, IdentifiersDifferingInLetterCaseDoNotMatch) {
  receipt = {purchaseOf("Coins", kMarch), purchaseOf("coins", kMarch)};
  EXPECT_EQ(match("coins", std::nullopt), Places({1}));
}

// An e with an acute accent, as one character and as two.
TEST_F(ReceiptMatchingTest, IdentifiersAreNotNormalised) {
  receipt = {purchaseOf("caf\xC3\xA9", kMarch), purchaseOf("cafe\xCC\x81", kMarch)};
  EXPECT_EQ(match("caf\xC3\xA9", std::nullopt), Places({0}));
}

TEST_F(ReceiptMatchingTest, IdentifierThatBeginsLikeAnotherDoesNotMatch) {
  receipt = {purchaseOf("coins.big", kMarch), purchaseOf("coin", kMarch)};
  EXPECT_EQ(match("coins", std::nullopt), Places());
}

TEST_F(ReceiptMatchingTest, DatesOfDifferentZonesAreTheSameInstant) {
  receipt = {purchaseOf("coins", "2019-03-14T10:26:53+01:00"),
             purchaseOf("coins", "2019-03-14T09:26:53Z"),
             purchaseOf("coins", "2019-03-14T09:26:53+01:00")};
  EXPECT_EQ(match("coins", kMarchInstant), Places({0, 1}));
  // The third was bought an hour earlier; the first two compare as the same.
  EXPECT_EQ(match("coins", std::nullopt), Places({2, 0, 1}));
}

TEST_F(ReceiptMatchingTest, DateWithAFractionOfASecondMatchesNoEntry) {
  receipt = {purchaseOf("coins", kMarch), purchaseOf("coins", "2019-03-14T09:26:54Z")};
  EXPECT_EQ(match("coins", Instant{kMarchInstant.seconds(), 250000000}), Places());
  EXPECT_EQ(match("coins", Instant{kMarchInstant.seconds(), 1}), Places());
  EXPECT_EQ(match("coins", Instant{kMarchInstant.seconds(), 999999999}), Places());
}

TEST_F(ReceiptMatchingTest, DateASecondAwayDoesNotMatch) {
  receipt = {purchaseOf("coins", "2019-03-14T09:26:52Z"),
             purchaseOf("coins", "2019-03-14T09:26:54Z")};
  EXPECT_EQ(match("coins", kMarchInstant), Places());
}

TEST_F(ReceiptMatchingTest, EntryWithoutAReadableDateIsNotTakenByDate) {
  receipt = {purchaseOf("coins", "2019-03-14"), purchaseWithoutDate("coins"),
             purchaseOf("coins", ""), purchaseOf("coins", "2019-03-14T09:26:53Z.")};
  EXPECT_EQ(match("coins", kMarchInstant), Places());
  EXPECT_EQ(match(std::nullopt, kMarchInstant), Places());
}

TEST_F(ReceiptMatchingTest, BareDateIsNotMidnight) {
  constexpr Instant kMidnight(1552521600);  // date -u -d 2019-03-14T00:00:00Z +%s
  receipt = {purchaseOf("coins", "2019-03-14"), purchaseOf("coins", "2019-03-14T00:00:00Z")};
  EXPECT_EQ(match("coins", kMidnight), Places({1}));
  EXPECT_EQ(match(std::nullopt, kMidnight), Places({1}));
}

TEST_F(ReceiptMatchingTest, EntryWithoutAReadableDateIsTakenByIdentifier) {
  receipt = {purchaseOf("coins", "2019-03-14"), purchaseOf("gold", "2019-03-14"),
             purchaseWithoutDate("coins")};
  EXPECT_EQ(match("coins", std::nullopt), Places({0, 2}));
}

TEST_F(ReceiptMatchingTest, EntryThatStandsTwiceIsTakenTwice) {
  receipt = {purchaseOf("coins", kMarch), purchaseOf("coins", kFebruary)};
  const QELInAppPurchaseItems items = {receipt[0], receipt[1], receipt[0]};
  EXPECT_EQ(placesOf(QELMatchingInAppPurchaseItems(items, "coins", std::nullopt)),
            Places({1, 0, 0}));
}

// --- Order ---

TEST_F(ReceiptMatchingTest, ResultIsSortedByPurchaseDateLatestLast) {
  receipt = {purchaseOf("coins", kMarch), purchaseOf("coins", kJanuary),
             purchaseOf("coins", kApril), purchaseOf("coins", kFebruary)};
  EXPECT_EQ(match("coins", std::nullopt), Places({1, 3, 0, 2}));
}

TEST_F(ReceiptMatchingTest, SortedReceiptStaysAsItIs) {
  receipt = {purchaseOf("coins", kJanuary), purchaseOf("coins", kMarch),
             purchaseOf("coins", kMarch), purchaseOf("coins", kApril)};
  EXPECT_EQ(match("coins", std::nullopt), Places({0, 1, 2, 3}));
}

TEST_F(ReceiptMatchingTest, ReversedReceiptIsTurnedRound) {
  receipt = {purchaseOf("coins", kApril), purchaseOf("coins", kMarch),
             purchaseOf("coins", kJanuary), purchaseWithoutDate("coins")};
  EXPECT_EQ(match("coins", std::nullopt), Places({3, 2, 1, 0}));
}

TEST_F(ReceiptMatchingTest, ReversedReceiptKeepsTheOrderOfEqualDates) {
  receipt = {purchaseOf("coins", kApril),  purchaseOf("coins", kMarch),
             purchaseOf("coins", kMarch),  purchaseOf("coins", kJanuary),
             purchaseWithoutDate("coins"), purchaseOf("coins", "soon")};
  EXPECT_EQ(match("coins", std::nullopt), Places({4, 5, 3, 1, 2, 0}));
}

// As texts, the dates are in the opposite order.
TEST_F(ReceiptMatchingTest, ResultIsSortedByInstantNotByText) {
  receipt = {purchaseOf("coins", "2019-03-14T01:00:00Z"),
             purchaseOf("coins", "2019-03-14T02:00:00+02:00")};
  EXPECT_EQ(match("coins", std::nullopt), Places({1, 0}));
}

TEST_F(ReceiptMatchingTest, EqualDatesKeepTheReceiptsOrder) {
  receipt = {purchaseOf("coins", kMarch), purchaseOf("coins", kFebruary),
             purchaseOf("coins", kMarch), purchaseOf("coins", kFebruary),
             purchaseOf("coins", kMarch)};
  EXPECT_EQ(match("coins", std::nullopt), Places({1, 3, 0, 2, 4}));
  EXPECT_EQ(match("coins", kMarchInstant), Places({0, 2, 4}));
}

TEST_F(ReceiptMatchingTest, EntriesWithoutADateComeFirstInTheReceiptsOrder) {
  receipt = {purchaseOf("coins", kMarch),
             purchaseOf("coins", "soon"),
             purchaseOf("coins", "0001-01-01T00:00:00Z"),
             purchaseWithoutDate("coins"),
             purchaseOf("coins", ""),
             purchaseOf("coins", "2019-04-14")};
  EXPECT_EQ(match("coins", std::nullopt), Places({1, 3, 4, 5, 2, 0}));
}

TEST_F(ReceiptMatchingTest, DatesWrittenAtAnyLengthAreSorted) {
  const std::string longText(300, '2');
  receipt = {purchaseOf("coins", "2019-03-14T10:26:55+01:00:00"),
             purchaseOf("coins", "2019-03-14T09:26:53Z"),
             purchaseOf("coins", "2019-03-14T10:26:54+01:00"),
             purchaseOf("coins", longText.c_str()),
             purchaseOf("coins", longText.substr(0, 23).c_str()),
             purchaseOf("coins", longText.substr(0, 24).c_str()),
             purchaseOf("coins", ""),
             purchaseWithoutDate("coins")};
  EXPECT_EQ(match("coins", std::nullopt), Places({3, 4, 5, 6, 7, 1, 2, 0}));
}

// A receipt long enough for every strategy of a sort: dates of ten days in random order, and one
// entry in eleven without a date. The seed is fixed.
TEST_F(ReceiptMatchingTest, LongReceiptIsSortedStablyWithoutLosingAnEntry) {
  std::mt19937 random(20190314);
  std::vector<unsigned> days;
  for (int i = 0; i < 1000; ++i) {
    days.push_back(static_cast<unsigned>(random() % 11));
    receipt.push_back(
        days.back() == 0
            ? purchaseWithoutDate("coins")
            : purchaseOf("coins",
                         ("2019-03-" + std::to_string(10 + days.back()) + "T00:00:00Z").c_str()));
  }
  Places expected;
  for (unsigned day = 0; day <= 10; ++day) {
    for (std::size_t i = 0; i < days.size(); ++i) {
      if (days[i] == day) expected.push_back(static_cast<std::ptrdiff_t>(i));
    }
  }
  EXPECT_EQ(match("coins", std::nullopt), expected);
}

}  // namespace
}  // namespace qel::testing
