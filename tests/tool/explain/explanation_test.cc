#include "explain/explanation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "explained.h"

namespace qel::tool {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using testing::Explained;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::monthlyEntry;
using testing::monthlyPurchase;
using ::testing::Not;
using testing::textsOf;

constexpr const char* kMarch = "2019-03-14T09:26:53Z";
constexpr const char* kApril = "2019-04-14T09:26:53Z";

std::string oneOff(const std::string& date, int type, const std::string& id,
                   const std::string& more = "") {
  return R"({"productID":"monthly","purchaseDateIA5String":")" + date + R"(","purchaseType":)" +
         std::to_string(type) + R"(,"transactionID":")" + id + R"(","originalTransactionID":")" +
         id + "\"" + more + "}";
}

// Returns `text` with `to` in place of `from`, which it must have.
std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

// --- Outcomes ---

const std::string kConversion =
    monthlyPurchase("[" + monthlyEntry(kMarch, "1000", R"(,"isFreeTrial":true)") + "," +
                    monthlyEntry(kApril, "2000", R"(,"webOrderLineItemID":77)") + "]");

TEST(ExplanationTest, ConversionNamesTheTrialBeforeIt) {
  const Explained explained(kConversion);
  EXPECT_EQ(explained.sentence(), "Conversion of a free trial: 4.99 EUR");
  ASSERT_EQ(explained->timeline.size(), 2U);
  EXPECT_EQ(explained->timeline[0].role, Role::kDeciding);
  EXPECT_EQ(explained->timeline[1].role, Role::kReported);
  EXPECT_THAT(explained->dedupeTexts, ElementsAre("1000", "77", "monthly"));
  EXPECT_THAT(
      textsOf(explained->decisions.at(0).facts),
      Contains("The entry of the product right before it, 1000, is a free trial, so it is a "
               "conversion."));
  EXPECT_THAT(explained->hints, IsEmpty());
  EXPECT_THAT(explained->surprises, IsEmpty());
}

TEST(ExplanationTest, KeysHaveTheirAmountsAndOrigins) {
  const Explained explained(kConversion);
  std::vector<std::string> lines;
  for (const EventKey& key : explained->keys) {
    lines.push_back(std::string(key.key) + "|" + key.value.text() + "|" + key.readable.text() +
                    "|" + key.origin.text());
  }
  EXPECT_THAT(
      lines,
      ElementsAre("product_id|monthly||the product's identifier",
                  "product_name|Monthly||the product's localized title",
                  "price|4990000|4.99 EUR|the product's price",
                  "quantity|1||the payment's quantity", "value|4990000|4.99 EUR|price x quantity 1",
                  "currency|EUR||the currency of the product's price",
                  "sub_convert|1||entry 1000 before 2000 is a free trial",
                  "_did|1247304248623414521||MD5, last 8 bytes, of 1000 + 77 + monthly: "
                  "original transaction, web order line item, product"));
}

TEST(ExplanationTest, NoEventNamesTheMissingInput) {
  const Explained noCurrency(replaced(kConversion, R"("currencyCode":"EUR")", ""));
  EXPECT_EQ(noCurrency.sentence(),
            "No event: the product has no currency. Otherwise it would be: Conversion");
  EXPECT_THAT(noCurrency->keys, IsEmpty());
  EXPECT_THAT(textsOf(noCurrency->decisions.back().facts),
              ElementsAre("The locale of the product's price has no currency code, so there is no "
                          "currency."));

  const Explained several(
      replaced(replaced(kConversion, R"("price":"4.99",)", ""), R"("currencyCode":"EUR")", ""));
  EXPECT_EQ(several.sentence(),
            "No event: the product has no currency and the product has no price. Otherwise it "
            "would be: Conversion");
  EXPECT_THAT(textsOf(several->decisions.back().facts),
              Contains("The product has no price, so there is no price and no value."));

  const Explained noQuantity(replaced(kConversion, R"("quantity":1)", R"("quantity":0)"));
  EXPECT_EQ(noQuantity.sentence(),
            "No event: the quantity is 0. Otherwise it would be: Conversion");
  EXPECT_THAT(textsOf(noQuantity->decisions.back().facts),
              ElementsAre("The payment's quantity is 0, so there is no value."));
}

TEST(ExplanationTest, NoEventNamesOnlyInputsThatItNeeds) {
  // A free trial needs neither a price nor a quantity.
  const std::string trial =
      monthlyPurchase("[" + monthlyEntry(kApril, "1000", R"(,"isFreeTrial":true)") + "]");
  const std::string ownTrial =
      replaced(trial, R"("originalTransaction":{"transactionIdentifier":"1000"},)", "");
  const Explained explained(replaced(
      replaced(replaced(ownTrial, R"("price":"4.99",)", ""), R"("quantity":1)", R"("quantity":0)"),
      R"("currencyCode":"EUR")", ""));
  EXPECT_EQ(explained.sentence(),
            "No event: the product has no currency. Otherwise it would be: Free trial");
}

TEST(ExplanationTest, RejectedInputsAreNamed) {
  EXPECT_EQ(Explained("{}").sentence(), "No event: the purchase has no product");
  EXPECT_EQ(Explained(R"({"product":{"productIdentifier":""}})").sentence(),
            "No event: the product has no identifier");
  EXPECT_EQ(Explained(R"({"product":{"productIdentifier":"a"}})").sentence(),
            "No event: the purchase has no transaction");
}

TEST(ExplanationTest, EntryOfATypeWithoutAMeaningIsADecisionWithoutACode) {
  const Explained explained(monthlyPurchase("[" + oneOff(kApril, 5, "2000") + "]"));
  EXPECT_EQ(explained.sentence(), "One-off purchase of type 5 (no meaning): 4.99 EUR");
  ASSERT_EQ(explained->decisions.size(), 1U);
  EXPECT_EQ(explained->decisions[0].code, 0);
}

TEST(ExplanationTest, DuplicatesAreMarked) {
  const Explained explained(monthlyPurchase("[" + monthlyEntry(kApril, "2000") + "," +
                                            monthlyEntry(kApril, "2001") + "]"));
  EXPECT_EQ(explained.sentence(),
            "Invalid: the receipt has 2 entries of this product at the transaction's date");
  EXPECT_EQ(explained->timeline[0].role, Role::kDuplicate);
  EXPECT_EQ(explained->timeline[1].role, Role::kDuplicate);
}

TEST(ExplanationTest, EntriesOfOtherProductsAreKeptApart) {
  const Explained explained(monthlyPurchase("[" + monthlyEntry(kApril, "2000") +
                                            R"(,{"productID":"coins"},{"productID":null}])"));
  EXPECT_EQ(explained->timeline.size(), 1U);
  EXPECT_EQ(explained->others.size(), 2U);
}

// --- Hints ---

std::vector<std::string> hintsOf(const std::string& line) {
  return textsOf(Explained(line)->hints);
}

TEST(HintsTest, NearestEntryAWholeNumberOfHoursAwaySuggestsATimeZone) {
  EXPECT_THAT(
      hintsOf(monthlyPurchase("[" + monthlyEntry("2019-04-14T10:26:53Z", "3000") + "]")),
      ElementsAre("The nearest entry, 3000, is 1 h (3600 s) after the transaction's date. A "
                  "difference of whole quarters of an hour suggests a time zone that was lost or "
                  "applied twice."));
  EXPECT_THAT(hintsOf(monthlyPurchase("[" + monthlyEntry("2019-04-14T02:26:53Z", "3000") + "]")),
              Contains(HasSubstr("7 or 8 hours are Pacific time")));
}

TEST(HintsTest, NearestEntryLongBeforeSuggestsAnOldReceipt) {
  EXPECT_THAT(
      hintsOf(monthlyPurchase("[" + monthlyEntry(kMarch, "1000") + "]")),
      ElementsAre("The nearest entry, 1000, is 31 days before the transaction's date. It is "
                  "the latest, so the receipt may be from before this purchase: refresh it "
                  "and report the purchase again."));
}

TEST(HintsTest, NearestEntrySecondsAwaySuggestsATimeOfReport) {
  EXPECT_THAT(hintsOf(monthlyPurchase("[" + monthlyEntry("2019-04-14T09:26:50Z", "3000") + "]")),
              Contains(HasSubstr("is 3 s before the transaction's date. A few seconds suggest")));
}

TEST(HintsTest, FractionOfASecondIsNamed) {
  const std::string line = replaced(monthlyPurchase("[" + monthlyEntry(kApril, "3000") + "]"),
                                    R"("transactionDate":"2019-04-14T09:26:53Z")",
                                    R"("transactionDate":"2019-04-14T09:26:53.250Z")");
  EXPECT_THAT(hintsOf(line),
              ElementsAre("The transaction's date has a fraction of a second, 2019-04-14 "
                          "09:26:53.250. Entries have whole seconds, so none can be equal."));
}

TEST(HintsTest, TransactionAtAnotherDateIsNamed) {
  EXPECT_THAT(hintsOf(monthlyPurchase("[" + monthlyEntry("2019-04-14T10:26:53Z", "2000") + "]")),
              Contains(HasSubstr("The receipt has the transaction 2000, but at 2019-04-14 10:26:53 "
                                 "UTC.")));
  EXPECT_THAT(hintsOf(monthlyPurchase("[" + monthlyEntry("yesterday", "2000") + "]")),
              Contains(HasSubstr("The receipt has the transaction 2000, but its date cannot be "
                                 "read.")));
}

TEST(HintsTest, UnreadableDatesAreCounted) {
  EXPECT_THAT(hintsOf(monthlyPurchase("[" + monthlyEntry("2019-04-14 09:26:53 Etc/GMT", "1") + "," +
                                      monthlyEntry("2019-05-14 09:26:53 Etc/GMT", "2") + "]")),
              ElementsAre("The date of no entry of the product can be read. Dates must be RFC 3339 "
                          "timestamps of whole seconds: 2020-07-14T19:36:40Z. The dates are in the "
                          "form of the store's validation service, which qel-purchase receipt "
                          "rewrites."));
  EXPECT_THAT(hintsOf(monthlyPurchase("[" + monthlyEntry(kApril, "2000") + "," +
                                      monthlyEntry("2019-04-14T09:26:53+0000", "3") + "]")),
              ElementsAre("1 entry has a date that cannot be read. Dates must be RFC 3339 "
                          "timestamps of whole seconds: 2020-07-14T19:36:40Z."));
}

TEST(HintsTest, IdentifierThatDiffersInLetterCaseIsNamed) {
  EXPECT_THAT(
      hintsOf(monthlyPurchase(R"([{"productID":"Monthly"}])")),
      ElementsAre("The receipt has entries of Monthly, which differs from monthly in letter "
                  "case only. Identifiers are compared byte by byte."));
  EXPECT_THAT(hintsOf(monthlyPurchase(R"([{"productID":"monthly2"}])")), IsEmpty());
}

TEST(HintsTest, WebOrderLineItemZeroIsNamed) {
  EXPECT_THAT(hintsOf(monthlyPurchase(
                  "[" + monthlyEntry(kApril, "2000", R"(,"webOrderLineItemID":0)") + "]")),
              ElementsAre(HasSubstr("Entry 2000 has the web order line item 0.")));
}

// An entry of "monthly" with the web order line item 77 and without a type.
std::string entryWithoutType(const std::string& date, const std::string& id) {
  return replaced(monthlyEntry(date, id, R"(,"webOrderLineItemID":77)"), R"("purchaseType":3,)",
                  "");
}

TEST(HintsTest, LostTypeIsNamed) {
  const Explained explained(monthlyPurchase("[" + monthlyEntry(kMarch, "1000") + "," +
                                            entryWithoutType(kApril, "2000") + "]"));
  EXPECT_EQ(explained.sentence(),
            "Invalid: a restore or second purchase of a non-consumable, first bought in "
            "transaction 1000");
  EXPECT_THAT(
      textsOf(explained->hints),
      ElementsAre("Entry 2000 has the web order line item 77, but no purchase type. It is probably "
                  "of an auto-renewable subscription and has lost its type: the JSON of the "
                  "store's validation service has none. Without a type it counts as a "
                  "non-consumable, and a later transaction of the subscription as its restore "
                  "(40005, invalid). Set purchaseType to 3 where the entries are made. The outcome "
                  "here would then be: Renewal."));
}

TEST(HintsTest, LostTypeWithoutAnEffectIsNamedToo) {
  const std::string line =
      replaced(monthlyPurchase("[" + entryWithoutType(kApril, "2000") + "]"),
               R"("originalTransaction":{"transactionIdentifier":"1000"},)", "");
  EXPECT_THAT(hintsOf(line),
              ElementsAre(EndsWith("Set purchaseType to 3 where the entries are made.")));
}

TEST(HintsTest, TypeIsNotLostWithoutAWebOrderLineItem) {
  const std::string purchase = monthlyPurchase("[" + entryWithoutType(kApril, "2000") + "]");
  const auto isNamed = Contains(HasSubstr("no purchase type"));
  EXPECT_THAT(hintsOf(purchase), isNamed);
  EXPECT_THAT(hintsOf(replaced(purchase, R"(,"webOrderLineItemID":77)", "")), Not(isNamed));
  EXPECT_THAT(
      hintsOf(replaced(purchase, R"("webOrderLineItemID":77)", R"("webOrderLineItemID":0)")),
      Not(isNamed));
}

TEST(HintsTest, PriceInTheWrongUnitIsNamed) {
  const std::string line = monthlyPurchase("[" + monthlyEntry(kApril, "2000") + "]");
  const auto withPrice = [&line](const std::string& price) {
    return hintsOf(replaced(line, R"("price":"4.99")", R"("price":")" + price + "\""));
  };
  EXPECT_THAT(withPrice("4990000"),
              ElementsAre("The price is 4990000.00 EUR. In micros that would be 4.99. Prices are "
                          "given in units of the currency."));
  EXPECT_THAT(withPrice("499"),
              ElementsAre("The price is 499.00 EUR. In cents that would be 4.99. Prices are given "
                          "in units of the currency."));
  EXPECT_THAT(withPrice("NaN"), ElementsAre("The product's price is not a number. Its amounts "
                                            "are the least integer of 64 bits, which stands for no "
                                            "amount."));
  EXPECT_THAT(withPrice("1e30"), Contains(HasSubstr("is too large for 64 bits of micros")));
  EXPECT_THAT(withPrice("49.99"), IsEmpty());
  EXPECT_THAT(withPrice("100"), IsEmpty());
}

TEST(HintsTest, WholePricesAreUsualInSomeCurrencies) {
  const std::string line = monthlyPurchase("[" + monthlyEntry(kApril, "2000") + "]");
  EXPECT_THAT(
      hintsOf(replaced(replaced(line, R"("price":"4.99")", R"("price":"499")"), "EUR", "INR")),
      IsEmpty());
}

// --- Surprises ---

std::vector<std::string> surprisesOf(const std::string& line) {
  return textsOf(Explained(line)->surprises);
}

TEST(SurprisesTest, FirstYearAfterAMonthlyPlanIsARenewal) {
  const std::string monthly =
      R"({"productID":"weekly","purchaseDateIA5String":"2019-03-14T09:26:53Z","purchaseType":3,)"
      R"("transactionID":"1000","originalTransactionID":"1000"})";
  const Explained explained(
      monthlyPurchase("[" + monthly + "," + monthlyEntry(kApril, "2000") + "]"));
  EXPECT_EQ(explained.sentence(), "Renewal: 4.99 EUR");
  EXPECT_THAT(textsOf(explained->surprises),
              ElementsAre("This is the first entry of monthly, and still a renewal: it continues "
                          "the subscription of weekly, and only entries of the same product can "
                          "make a conversion."));
}

TEST(SurprisesTest, RenewalWithoutAnEntryBeforeItMayBeAConversion) {
  EXPECT_THAT(surprisesOf(monthlyPurchase("[" + monthlyEntry(kApril, "2000") + "]")),
              ElementsAre(HasSubstr("before it was a free trial, the receipt has lost it")));
}

TEST(SurprisesTest, TrialOfASubscriberIsInvalid) {
  const Explained explained(
      monthlyPurchase("[" + monthlyEntry(kApril, "2000", R"(,"isFreeTrial":true)") + "]"));
  EXPECT_EQ(explained.sentence(),
            "Invalid: a free trial in a transaction that continues transaction 1000");
  EXPECT_THAT(textsOf(explained->surprises),
              ElementsAre(HasSubstr("A free trial is invalid if its transaction continues")));
}

TEST(SurprisesTest, SecondConsumableTakesTheIdentifierOfTheFirst) {
  const Explained explained(monthlyPurchase("[" + oneOff(kMarch, 1, "1000") + "]"));
  EXPECT_EQ(explained.sentence(), "Consumable: 4.99 EUR");
  EXPECT_THAT(textsOf(explained->surprises),
              ElementsAre(HasSubstr("it looks like a duplicate of that one.")));
  EXPECT_THAT(surprisesOf(monthlyPurchase("[" + oneOff(kApril, 1, "2000") + "]")), IsEmpty());
}

TEST(SurprisesTest, TwoConsumablesCountAsASubscription) {
  const Explained atDate(
      monthlyPurchase("[" + oneOff(kMarch, 1, "1000") + "," + oneOff(kApril, 1, "2000") + "]"));
  EXPECT_EQ(atDate.sentence(), "New subscription: 4.99 EUR");
  EXPECT_THAT(textsOf(atDate->surprises),
              ElementsAre(HasSubstr("A product with several entries counts as a subscription")));

  const Explained notAtDate(monthlyPurchase("[" + oneOff(kMarch, 1, "1000") + "," +
                                            oneOff("2019-03-15T09:26:53Z", 1, "1001") + "]"));
  EXPECT_EQ(notAtDate.sentence(), "Renewal without an entry in the receipt: 4.99 EUR");
  EXPECT_THAT(textsOf(notAtDate->surprises),
              ElementsAre(HasSubstr("the deduplication identifier is -1")));
}

TEST(SurprisesTest, UndatedEntryDecides) {
  EXPECT_THAT(surprisesOf(monthlyPurchase("[" + monthlyEntry(kApril, "2000") + "," +
                                          monthlyEntry("yesterday", "1500") + "]")),
              ElementsAre("Entry 1500 has no date that can be read. Such entries count as the "
                          "earliest, so it decides here, although it may be a later purchase."));
}

TEST(SurprisesTest, OfferThatCannotBeReadHasTheFullPrice) {
  const Explained explained(
      monthlyPurchase("[" + monthlyEntry(kApril, "2000", R"(,"isIntroductoryOffer":true)") + "]"));
  EXPECT_EQ(explained.sentence(), "Introductory offer, in a renewal at the full price: 4.99 EUR");
  EXPECT_THAT(textsOf(explained->surprises),
              Contains(HasSubstr("the amounts are the product's full price")));
}

TEST(SurprisesTest, Code40010IsNoRenewal) {
  const std::string line =
      replaced(monthlyPurchase("[" + monthlyEntry(kApril, "1000", R"(,"isFreeTrial":true)") + "]"),
               R"("originalTransaction":{"transactionIdentifier":"1000"},)", "");
  EXPECT_THAT(surprisesOf(line),
              ElementsAre(HasSubstr("Code 40010 says renewal for every valid free trial")));
}

TEST(SurprisesTest, TrialThatIsAnOfferIsALaterPurchase) {
  const std::string line = replaced(
      monthlyPurchase(
          "[" + monthlyEntry(kMarch, "1000") + "," +
          monthlyEntry(kApril, "2000", R"(,"isFreeTrial":true,"isIntroductoryOffer":true)") + "]"),
      R"("originalTransaction":{"transactionIdentifier":"1000"},)", "");
  EXPECT_THAT(surprisesOf(line),
              ElementsAre("The trial is an introductory offer, too. Offers count as conversions or "
                          "renewals, so it has sub_renew, although nothing is paid."));
}

TEST(SurprisesTest, Code40007HasNoFlag) {
  const std::string entry = replaced(oneOff(kApril, 1, "2000"), R"("originalTransactionID":"2000")",
                                     R"("originalTransactionID":"1000")");
  EXPECT_THAT(surprisesOf(monthlyPurchase("[" + entry + "]")),
              ElementsAre(HasSubstr("It has no _did either")));
}

TEST(SurprisesTest, LaterTrialHasNoFlag) {
  const std::string line =
      replaced(monthlyPurchase("[" + monthlyEntry(kApril, "2000", R"(,"isFreeTrial":true)") + "]"),
               R"("originalTransaction":{"transactionIdentifier":"1000"},)", "");
  EXPECT_THAT(surprisesOf(line), Contains(HasSubstr("neither a conversion nor a renewal")));
}

}  // namespace
}  // namespace qel::tool
