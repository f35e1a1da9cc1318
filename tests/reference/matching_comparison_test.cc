// Compares the matching of receipt entries with a reference implementation, for random receipts.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "date_oracle.h"
#include "qel/receipt_matching.h"

namespace qel::testing {

// The arguments of one match. `list` has positions in `entries`, so that an entry can be in the
// receipt twice.
struct Question {
  std::vector<QELInAppPurchaseItem> entries;
  std::vector<std::size_t> list;
  std::optional<std::string> productIdentifier;
  std::optional<Instant> date;

  QELInAppPurchaseItems items() const {
    QELInAppPurchaseItems result;
    for (const std::size_t place : list) result.emplace_back(entries[place]);
    return result;
  }
  bool hasIdentifier() const { return !productIdentifier.value_or("").empty(); }
  bool hasCriterion() const { return hasIdentifier() || date.has_value(); }
};

// What RapidCheck prints when a property fails.
void showValue(const Question& question, std::ostream& out) {
  out << "identifier " << question.productIdentifier.value_or("(absent)") << ", date ";
  if (question.date.has_value()) {
    out << question.date->seconds() << "s " << question.date->nanoseconds() << "ns";
  } else {
    out << "(absent)";
  }
  out << ", receipt:\n";
  for (const std::size_t place : question.list) {
    const QELInAppPurchaseItem& entry = question.entries[place];
    out << "  entry " << place << ": " << entry.productID.value_or("(absent)") << " at "
        << entry.purchaseDateIA5String.value_or("(absent)") << "\n";
  }
}

namespace {

using ::rc::gen::elementOf;

// 2019-03-14T09:26:53Z, and the second after it.
constexpr std::int64_t kMoment = 1552555613;

// Few identifiers and few moments, so that entries often agree; and of the moments several
// spellings, so that equal dates are not equal texts.
rc::Gen<std::optional<std::string>> arbitraryIdentifier() {
  return elementOf(std::vector<std::optional<std::string>>{std::nullopt, "", "monthly", "Monthly",
                                                           "month", "yearly"});
}

rc::Gen<std::optional<std::string>> arbitraryDateText() {
  return elementOf(std::vector<std::optional<std::string>>{
      std::nullopt, "", "2019-03-14", "2019-02-30T09:26:53Z", "2019-03-14T09:26:53Z",
      "2019-03-14T10:26:53+01:00", "2019-03-13T23:26:53-10:00", "2019-03-14T09:26:54Z",
      "2019-03-14T09:26:54+00:00:00", "0001-01-01T00:00:00Z", "9999-12-31T23:59:59Z"});
}

rc::Gen<std::optional<Instant>> arbitraryDate() {
  return elementOf(std::vector<std::optional<Instant>>{
      std::nullopt, Instant{kMoment}, Instant{kMoment, 250000000}, Instant{kMoment + 1},
      Instant{daysSince1970(1, 1, 1) * 86400}, Instant{0}});
}

rc::Gen<QELInAppPurchaseItem> arbitraryEntry() {
  return rc::gen::build<QELInAppPurchaseItem>(
      rc::gen::set(&QELInAppPurchaseItem::productID, arbitraryIdentifier()),
      rc::gen::set(&QELInAppPurchaseItem::purchaseDateIA5String, arbitraryDateText()));
}

// Any receipt, the empty one too, and any question, also one without a criterion.
rc::Gen<Question> arbitraryQuestion() {
  return rc::gen::exec([] {
    Question question;
    question.entries =
        *rc::gen::nonEmpty(rc::gen::container<std::vector<QELInAppPurchaseItem>>(arbitraryEntry()));
    question.list = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, question.entries.size()));
    question.productIdentifier = *arbitraryIdentifier();
    question.date = *arbitraryDate();
    return question;
  });
}

// A question that is answered by a list, be it an empty one.
rc::Gen<Question> answeredQuestion() {
  return rc::gen::suchThat(arbitraryQuestion(), [](const Question& question) {
    return !question.list.empty() && question.hasCriterion();
  });
}

std::optional<QELInAppPurchaseItems> answerTo(const Question& question) {
  return QELMatchingInAppPurchaseItems(question.items(), question.productIdentifier, question.date);
}

// The answer's entries by their addresses, which tell entries with equal fields apart.
using Addresses = std::vector<const QELInAppPurchaseItem*>;

Addresses addressesOf(const QELInAppPurchaseItems& items) {
  Addresses addresses;
  for (const QELInAppPurchaseItem& item : items) addresses.push_back(&item);
  return addresses;
}

std::optional<std::int64_t> secondsOf(const QELInAppPurchaseItem& entry) {
  if (!entry.purchaseDateIA5String.has_value()) return std::nullopt;
  return oracleSeconds(*entry.purchaseDateIA5String);
}

bool isOfProduct(const QELInAppPurchaseItem& entry, const Question& question) {
  return entry.productID.has_value() && entry.productID == question.productIdentifier;
}

bool isAtDate(const QELInAppPurchaseItem& entry, const Question& question) {
  const std::optional<std::int64_t> seconds = secondsOf(entry);
  return seconds.has_value() && question.date.has_value() && question.date->seconds() == *seconds &&
         question.date->nanoseconds() == 0;
}

bool isTaken(const QELInAppPurchaseItem& entry, const Question& question) {
  if (question.hasIdentifier() && question.date.has_value()) {
    return isOfProduct(entry, question) && isAtDate(entry, question);
  }
  return question.hasIdentifier() ? isOfProduct(entry, question) : isAtDate(entry, question);
}

RC_GTEST_PROP(MatchingComparisonTest, NothingExactlyWhenThereIsNoReceiptOrNoCriterion, ()) {
  const Question question = *arbitraryQuestion();
  const bool isAnswered = !question.list.empty() && question.hasCriterion();
  RC_ASSERT(answerTo(question).has_value() == isAnswered);
}

RC_GTEST_PROP(MatchingComparisonTest, TheAnswerIsTheStableOrderOfTheEntriesThatMatch, ()) {
  const Question question = *answeredQuestion();
  // One row for each date, filled in the receipt's order, is a stable order without sorting.
  std::map<std::optional<std::int64_t>, Addresses> rows;
  for (const QELInAppPurchaseItem& entry : question.items()) {
    if (isTaken(entry, question)) rows[secondsOf(entry)].push_back(&entry);
  }
  Addresses expected;
  for (const auto& [date, row] : rows) expected.insert(expected.end(), row.begin(), row.end());
  RC_ASSERT(addressesOf(*answerTo(question)) == expected);
}

RC_GTEST_PROP(MatchingComparisonTest, TheReceiptIsLeftAsItWas, ()) {
  const Question question = *answeredQuestion();
  const std::vector<QELInAppPurchaseItem> entries = question.entries;
  const QELInAppPurchaseItems items = question.items();
  const Addresses before = addressesOf(items);
  static_cast<void>(
      QELMatchingInAppPurchaseItems(items, question.productIdentifier, question.date));
  RC_ASSERT(question.entries == entries);
  RC_ASSERT(addressesOf(items) == before);
}

}  // namespace
}  // namespace qel::testing
