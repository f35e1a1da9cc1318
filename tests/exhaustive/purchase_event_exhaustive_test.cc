// Every combination of the inputs that decide on an event, compared with the oracle.
//
// The stages meet in a few flags only, so the space is taken in blocks, each the full product of
// all choices of what it is about: the store's side for every kind of outcome of the receipt, and
// the receipt's side with one entry, with two, with three, with repeated ones.

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "purchase_trial.h"

namespace qel::testing {
namespace {

constexpr auto kBools = {false, true};

const OracleText kAbsentText = std::nullopt;
const OracleText kEmptyText = "";

// 2019-04-14T09:26:53Z, exactly and with a fraction of a second.
constexpr OracleInstant kDate = {1555234013, 0};
constexpr OracleInstant kDateWithFraction = {1555234013, 250000000};

const OracleText kOurProduct = "monthly";
const std::vector<OracleText> kOtherProducts = {"Monthly", "yearly", "", std::nullopt};

// Prices and quantities that binary floating point gets wrong: 8.29 x 7 and 0.29 x 7.
const std::optional<OracleReading> kPrice = oracleReading("8.29");
const std::optional<OracleReading> kOfferPrice = oracleReading("0.29");
constexpr std::int64_t kQuantity = 7;

// Purchase types; only the low 32 bits of the wide ones count.
constexpr std::int64_t kReads3 = (std::int64_t{1} << 32) + 3;
constexpr std::int64_t kReads2 = 2 - (std::int64_t{1} << 32);

// The date of an entry, relative to the transaction's.
enum class When { kAbsent, kUnreadable, kEarliest, kEarlier, kAtDate, kLater };

// The same instants in different forms for each series, so that a comparison of texts fails.
OracleText dateTextOf(When when, std::size_t series) {
  constexpr std::string_view kTexts[][3] = {
      {"2018-12-31T23:59:59Z", "2019-01-01T05:29:59+05:30", "2018-12-31T15:59:59-08:00"},
      {"2019-04-14T09:26:52Z", "2019-04-14T11:26:52+02:00", "2019-04-14T04:26:52-05:00"},
      {"2019-04-14T09:26:53Z", "2019-04-14T10:26:53+01:00", "2019-04-13T23:56:53-09:30"},
      {"2019-04-14T09:26:54Z", "2019-04-14T09:26:54-00:00", "2019-04-15T00:26:54+15:00"}};
  if (when == When::kAbsent) return std::nullopt;
  if (when == When::kUnreadable) return "2019-04-14 09:26:53Z";
  const auto row = static_cast<std::size_t>(when) - static_cast<std::size_t>(When::kEarliest);
  return std::string(kTexts[row][series]);
}

// The identifiers of an entry. Each series has its own.
std::string ownIdOf(std::size_t series) { return "200" + std::to_string(series); }
std::string otherIdOf(std::size_t series) { return "100" + std::to_string(series); }
std::string webOrderOf(std::size_t series) { return std::to_string(70 + series); }

// The two identifiers of a store transaction.
struct StoreIds {
  OracleText transaction;
  std::optional<OracleOriginal> original;
};

// Without an identifier of its own, a transaction's original cannot have the same one.
std::vector<StoreIds> allStoreIds() {
  std::vector<StoreIds> all;
  for (const OracleText& transaction : {kAbsentText, kEmptyText, OracleText("5")}) {
    all.push_back({transaction, std::nullopt});
    for (const OracleText& original : {kAbsentText, kEmptyText, OracleText("4")})
      all.push_back({transaction, OracleOriginal{original}});
  }
  all.push_back({"5", OracleOriginal{"5"}});
  return all;
}

// The two that every rule tells apart: a transaction on its own, and one that continues another.
const std::vector<StoreIds> kTwoStoreIds = {{"5", OracleOriginal{"5"}}, {"5", OracleOriginal{"4"}}};

void setStoreIds(OraclePurchase& purchase, const StoreIds& ids) {
  if (!purchase.transaction.has_value()) return;
  purchase.transaction->identifier = ids.transaction;
  purchase.transaction->original = ids.original;
}

// The two identifiers of an entry of one series.
struct EntryIds {
  OracleText transaction;
  OracleText original;
};

constexpr std::string_view kOwn = "own";
constexpr std::string_view kOther = "other";

// Resolves kOwn and kOther to the identifiers of a series.
OracleText idOf(const OracleText& id, std::size_t series) {
  if (id == kOwn) return ownIdOf(series);
  return id == kOther ? otherIdOf(series) : id;
}

std::vector<EntryIds> allEntryIds() {
  std::vector<EntryIds> all;
  for (const OracleText& transaction : {kAbsentText, kEmptyText, OracleText(kOwn)}) {
    for (const OracleText& original : {kAbsentText, kEmptyText, OracleText(kOther)})
      all.push_back({transaction, original});
  }
  all.push_back({std::string(kOwn), std::string(kOwn)});
  return all;
}

enum class WebOrder { kAbsent, kZero, kGiven };

// The choices of which entries are made.
struct EntryChoices {
  struct Kind {
    std::optional<std::int64_t> type;
    WebOrder webOrder;
  };

  std::vector<Kind> kinds;
  std::vector<EntryIds> ids;
  std::vector<When> dates;
};

struct EntryMarks {
  bool isFreeTrial = false;
  bool isOffer = false;
};

OracleEntry entryOf(const EntryChoices::Kind& kind, const EntryIds& ids, When when,
                    const EntryMarks& marks = {}, std::size_t series = 0) {
  OracleEntry entry;
  entry.productId = kOurProduct;
  entry.dateText = dateTextOf(when, series);
  entry.type = kind.type;
  if (kind.webOrder == WebOrder::kZero) entry.webOrder = "0";
  if (kind.webOrder == WebOrder::kGiven) entry.webOrder = webOrderOf(series);
  entry.transactionId = idOf(ids.transaction, series);
  entry.originalId = idOf(ids.original, series);
  entry.isFreeTrial = marks.isFreeTrial;
  entry.isOffer = marks.isOffer;
  return entry;
}

const EntryIds kSameIds = {std::string(kOwn), std::string(kOwn)};
const EntryIds kDifferentIds = {std::string(kOwn), std::string(kOther)};

// Every entry of these choices, with and without each of the marks.
std::vector<ReceiptEntry> entriesOf(const EntryChoices& choices, std::size_t series) {
  std::vector<ReceiptEntry> entries;
  for (const EntryChoices::Kind& kind : choices.kinds)
    for (const EntryIds& ids : choices.ids)
      for (const When when : choices.dates)
        for (const bool isFreeTrial : kBools)
          for (const bool isOffer : kBools)
            entries.emplace_back(entryOf(kind, ids, when, {isFreeTrial, isOffer}, series));
  return entries;
}

EntryChoices allChoices() {
  EntryChoices choices;
  for (const std::optional<std::int64_t> type : std::initializer_list<std::optional<std::int64_t>>{
           std::nullopt, 0, 1, 2, 3, 5, kReads3, kReads2})
    for (const WebOrder webOrder : {WebOrder::kAbsent, WebOrder::kZero, WebOrder::kGiven})
      choices.kinds.push_back({type, webOrder});
  choices.ids = allEntryIds();
  choices.dates = {When::kAbsent, When::kUnreadable, When::kEarlier, When::kAtDate, When::kLater};
  return choices;
}

EntryChoices choicesForTwo() {
  EntryChoices choices;
  for (const std::int64_t type : {0, 1, 2, 3, 5})
    for (const WebOrder webOrder : {WebOrder::kAbsent, WebOrder::kGiven})
      choices.kinds.push_back({type, webOrder});
  choices.ids = {kSameIds, kDifferentIds, {std::nullopt, std::nullopt}};
  choices.dates = {When::kAbsent, When::kUnreadable, When::kEarlier, When::kAtDate, When::kLater};
  return choices;
}

EntryChoices choicesForThree() {
  EntryChoices choices;
  choices.kinds = {
      {0, WebOrder::kAbsent}, {1, WebOrder::kGiven}, {2, WebOrder::kAbsent}, {3, WebOrder::kGiven}};
  choices.ids = {kSameIds, kDifferentIds};
  choices.dates = {When::kUnreadable, When::kEarliest, When::kEarlier, When::kAtDate, When::kLater};
  return choices;
}

// An entry of another product that would change the outcome if it were taken for one of ours: a
// trial of an auto-renewable subscription.
ReceiptEntry otherProductsEntry(const OracleText& product, When when) {
  OracleEntry entry = entryOf({3, WebOrder::kGiven}, kSameIds, when, {true, true}, 2);
  entry.productId = product;
  return ReceiptEntry(entry);
}

class PurchaseEventExhaustiveTest : public ::testing::Test {
 protected:
  void TearDown() override {
    RecordProperty("combinations", std::to_string(trial_.combinations()));
    std::cout << "combinations: " << trial_.combinations() << '\n';
    allCombinations += trial_.combinations();
  }

  static void TearDownTestSuite() {
    std::cout << "combinations in all: " << allCombinations << '\n';
  }

  PurchaseEventExhaustiveTest() {
    OracleProduct& product = purchase_.product.emplace();
    product.identifier = kOurProduct;
    product.price = kPrice;
    product.currency = "EUR";
    product.title = "Monthly plan";
    product.answersOffer = true;
    product.offer = {kOfferPrice, 0};
    OracleTransaction& transaction = purchase_.transaction.emplace();
    transaction.identifier = "5";
    transaction.date = kDate;
    transaction.quantity = kQuantity;
  }

  // Tries the purchase with the receipt as it is and every identifier and date of the store's.
  void tryWithStoreIdsAndDates(const std::vector<StoreIds>& allIds) {
    for (const StoreIds& ids : allIds) {
      setStoreIds(purchase_, ids);
      for (const std::optional<OracleInstant>& date :
           std::initializer_list<std::optional<OracleInstant>>{std::nullopt, kDate,
                                                               kDateWithFraction}) {
        purchase_.transaction->date = date;
        trial_.tryOut(purchase_);
      }
    }
  }

  // Tries the product's own data: its price, currency, title, and the quantity bought. The loops
  // are the same without a product or a transaction: then the data has no place to go.
  template <typename Then>
  void forAllPrices(const Then& then) {
    for (const std::optional<OracleReading>& price :
         {std::optional<OracleReading>(), kPrice, std::optional(oracleReading("NaN"))})
      for (const std::optional<std::int64_t> quantity :
           std::initializer_list<std::optional<std::int64_t>>{std::nullopt, 0, kQuantity, -4})
        for (const bool hasCurrency : kBools)
          for (const bool hasTitle : kBools) {
            if (purchase_.transaction.has_value()) purchase_.transaction->quantity = quantity;
            if (OracleProduct* const product = productOf(purchase_)) {
              product->price = price;
              product->currency = hasCurrency ? OracleText("EUR") : std::nullopt;
              product->title = hasTitle ? OracleText("Monthly plan") : std::nullopt;
            }
            then();
          }
  }

  template <typename Then>
  void forAllOffers(const Then& then) {
    OracleProduct& product = *purchase_.product;
    product.offer.reset();
    forAllAnswers(then);
    // The wide mode reads 2 in its low 32 bits and is not 2.
    for (const std::uint64_t mode :
         {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{2}, (std::uint64_t{1} << 32) + 2})
      for (const bool hasPrice : kBools) {
        product.offer = {hasPrice ? kOfferPrice : std::nullopt, mode};
        forAllAnswers(then);
      }
  }

  // The four availability answers.
  template <typename Then>
  void forAllAnswers(const Then& then) {
    for (const bool hasDiscountClass : kBools)
      for (const bool answersPrice : kBools)
        for (const bool answersPaymentMode : kBools)
          for (const bool answersOffer : kBools) {
            purchase_.platform = {hasDiscountClass, answersPrice, answersPaymentMode};
            purchase_.product->answersOffer = answersOffer;
            then();
          }
  }

  static OracleProduct* productOf(OraclePurchase& purchase) {
    return purchase.product.has_value() ? &*purchase.product : nullptr;
  }

  PurchaseTrial trial_;
  OraclePurchase purchase_;

 private:
  static inline std::uint64_t allCombinations = 0;
};

// Receipts that between them lead to every kind of outcome.
std::vector<std::vector<ReceiptEntry>> receiptsOfEveryKind() {
  const auto entry = [](std::int64_t type, WebOrder webOrder, const EntryIds& ids, When when,
                        const EntryMarks& marks = {}, std::size_t series = 0) {
    return ReceiptEntry(entryOf({type, webOrder}, ids, when, marks, series));
  };
  std::vector<std::vector<ReceiptEntry>> receipts = {{}};
  receipts.push_back({otherProductsEntry("yearly", When::kAtDate)});

  for (const std::int64_t type : {0, 1, 5}) {
    for (const EntryIds& ids : {kSameIds, kDifferentIds})
      receipts.push_back({entry(type, WebOrder::kAbsent, ids, When::kEarlier)});
  }
  receipts.push_back({entry(5, WebOrder::kAbsent, kDifferentIds, When::kEarlier),
                      entry(1, WebOrder::kAbsent, kSameIds, When::kLater, {}, 1)});

  const ReceiptEntry subscription = entry(3, WebOrder::kGiven, kSameIds, When::kAtDate);
  receipts.push_back({entry(3, WebOrder::kGiven, kSameIds, When::kEarlier)});
  receipts.push_back({subscription, subscription});
  receipts.push_back({entry(2, WebOrder::kGiven, kSameIds, When::kAtDate)});
  receipts.push_back({entry(0, WebOrder::kGiven, kSameIds, When::kAtDate)});

  // A period of an auto-renewable subscription, after nothing, after a trial, after a paid one.
  for (const bool isFreeTrial : kBools)
    for (const bool isOffer : kBools)
      for (const EntryIds& ids : {kSameIds, kDifferentIds}) {
        const ReceiptEntry period =
            entry(3, WebOrder::kGiven, ids, When::kAtDate, {isFreeTrial, isOffer});
        receipts.push_back({period});
        for (const bool isAfterTrial : kBools)
          receipts.push_back({entry(3, WebOrder::kAbsent, kSameIds, When::kEarlier,
                                    {.isFreeTrial = isAfterTrial}, 1),
                              period});
      }
  return receipts;
}

void setReceipt(PurchaseTrial& trial, OraclePurchase& purchase,
                const std::vector<ReceiptEntry>& receipt) {
  if (receipt.empty()) trial.setReceipt(purchase, {});
  if (receipt.size() == 1) trial.setReceipt(purchase, {receipt.data()});
  if (receipt.size() == 2) trial.setReceipt(purchase, {receipt.data(), receipt.data() + 1});
}

TEST_F(PurchaseEventExhaustiveTest, EveryRejectionWhateverElseIsGiven) {
  const OraclePurchase whole = purchase_;
  for (const std::vector<ReceiptEntry>& receipt : receiptsOfEveryKind()) {
    // Without a product, with a product under each of these identifiers.
    for (const std::optional<OracleText>& identifier :
         std::initializer_list<std::optional<OracleText>>{std::nullopt, kAbsentText, kEmptyText,
                                                          kOurProduct})
      for (const bool hasTransaction : kBools) {
        if (identifier == kOurProduct && hasTransaction) continue;
        purchase_ = whole;
        setReceipt(trial_, purchase_, receipt);
        if (!identifier.has_value()) purchase_.product.reset();
        if (purchase_.product.has_value()) purchase_.product->identifier = *identifier;
        if (!hasTransaction) purchase_.transaction.reset();
        for (const StoreIds& ids : allStoreIds()) {
          setStoreIds(purchase_, ids);
          forAllPrices([this] { trial_.tryOut(purchase_); });
          if (!trial_.goesOn()) return;
        }
      }
  }
}

TEST_F(PurchaseEventExhaustiveTest, EveryStoreRecordForEveryKindOfReceipt) {
  for (const std::vector<ReceiptEntry>& receipt : receiptsOfEveryKind()) {
    setReceipt(trial_, purchase_, receipt);
    for (const StoreIds& ids : allStoreIds()) {
      setStoreIds(purchase_, ids);
      forAllPrices([this] { forAllOffers([this] { trial_.tryOut(purchase_); }); });
      if (!trial_.goesOn()) return;
    }
  }
}

// A kind of outcome: the codes of the messages, and the keys that the receipt decides on. "no _did"
// means an identifier of -1.
using Kind = std::pair<std::vector<int>, std::set<std::string>>;

Kind kindOf(const OracleOutcome& outcome) {
  Kind kind;
  for (const OracleMessage& message : outcome.messages) kind.first.push_back(message.code);
  if (!outcome.event.has_value()) return kind;
  for (const char* const key : {"free_trial", "invalid", "price_is_discounted", "sub_convert",
                                "sub_renew", "subscription"}) {
    if (outcome.event->contains(key)) kind.second.insert(key);
  }
  const auto did = outcome.event->find("_did");
  if (did != outcome.event->end())
    kind.second.insert(did->second == OracleValue(std::int64_t{-1}) ? "no _did" : "_did");
  return kind;
}

const std::set<Kind> kAllKinds = {
    // Rejected: no product, no product identifier, no transaction.
    {{40026}, {}},
    {{40027}, {}},
    {{40028}, {}},
    // Not in the receipt; a non-consumable bought again.
    {{40020}, {"invalid"}},
    {{40005}, {"invalid"}},
    // One consumable, non-consumable, entry of another type; one whose identifiers differ.
    {{40021}, {"_did"}},
    {{40022}, {"_did"}},
    {{}, {"_did"}},
    {{40007}, {}},
    // A subscription without an entry at the date; several ordinary entries, none at the date;
    // several entries at the date; a non-renewing subscription.
    {{40023}, {"invalid", "subscription"}},
    {{40008}, {"no _did", "sub_renew"}},
    {{40024}, {"invalid", "subscription"}},
    {{40025}, {"_did", "subscription"}},
    // A period at full price: first, converted, renewed.
    {{40008}, {"_did", "subscription"}},
    {{40008}, {"_did", "sub_convert"}},
    {{40008}, {"_did", "sub_renew"}},
    // A trial bought again: first, not first.
    {{40011}, {"_did", "free_trial", "invalid", "price_is_discounted", "subscription"}},
    {{40011}, {"_did", "free_trial", "invalid", "price_is_discounted"}},
    // A trial: first, not first.
    {{40009, 40010}, {"_did", "free_trial", "price_is_discounted", "subscription"}},
    {{40009, 40010}, {"_did", "free_trial", "price_is_discounted"}},
    // A trial at an introductory price: first, converted, renewed.
    {{40009, 40018, 40010}, {"_did", "free_trial", "price_is_discounted", "subscription"}},
    {{40009, 40018, 40010}, {"_did", "free_trial", "price_is_discounted", "sub_convert"}},
    {{40009, 40018, 40010}, {"_did", "free_trial", "price_is_discounted", "sub_renew"}},
    // An introductory price: first, converted, renewed.
    {{40018, 40010}, {"_did", "price_is_discounted", "subscription"}},
    {{40018, 40010}, {"_did", "price_is_discounted", "sub_convert"}},
    {{40018, 40010}, {"_did", "price_is_discounted", "sub_renew"}},
};

TEST_F(PurchaseEventExhaustiveTest, ReceiptsOfEveryKindReachEveryKindOfOutcomeAndNoOther) {
  std::set<Kind> reached;
  for (const std::vector<ReceiptEntry>& receipt : receiptsOfEveryKind()) {
    setReceipt(trial_, purchase_, receipt);
    for (const StoreIds& ids : kTwoStoreIds) {
      setStoreIds(purchase_, ids);
      reached.insert(kindOf(trial_.tryOut(purchase_)));
    }
  }
  purchase_.transaction.reset();
  reached.insert(kindOf(trial_.tryOut(purchase_)));
  purchase_.product->identifier = "";
  reached.insert(kindOf(trial_.tryOut(purchase_)));
  purchase_.product.reset();
  reached.insert(kindOf(trial_.tryOut(purchase_)));
  EXPECT_EQ(reached, kAllKinds);
}

TEST_F(PurchaseEventExhaustiveTest, OneEntryAmongEntriesOfOtherProducts) {
  const ReceiptEntry otherCase = otherProductsEntry("Monthly", When::kAtDate);
  const ReceiptEntry other = otherProductsEntry("yearly", When::kLater);
  const ReceiptEntry unnamed = otherProductsEntry(std::nullopt, When::kAtDate);
  const ReceiptEntry empty = otherProductsEntry("", When::kEarlier);
  const auto ids = allStoreIds();
  for (const ReceiptEntry& entry : entriesOf(allChoices(), 0)) {
    trial_.setReceipt(purchase_, {&entry});
    tryWithStoreIdsAndDates(ids);
    trial_.setReceipt(purchase_, {&otherCase, &entry});
    tryWithStoreIdsAndDates(ids);
    trial_.setReceipt(purchase_, {&entry, &other});
    tryWithStoreIdsAndDates(ids);
    trial_.setReceipt(purchase_, {&unnamed, &entry, &empty});
    tryWithStoreIdsAndDates(ids);
    if (!trial_.goesOn()) return;
  }
}

TEST_F(PurchaseEventExhaustiveTest, EntriesOfOtherProductsOnly) {
  std::vector<ReceiptEntry> others;
  for (const OracleText& product : kOtherProducts)
    for (const When when : allChoices().dates) others.push_back(otherProductsEntry(product, when));
  const auto ids = allStoreIds();
  trial_.setReceipt(purchase_, {});
  tryWithStoreIdsAndDates(ids);
  for (const ReceiptEntry& first : others) {
    trial_.setReceipt(purchase_, {&first});
    tryWithStoreIdsAndDates(ids);
    for (const ReceiptEntry& second : others) {
      trial_.setReceipt(purchase_, {&first, &second});
      tryWithStoreIdsAndDates(ids);
    }
    if (!trial_.goesOn()) return;
  }
}

TEST_F(PurchaseEventExhaustiveTest, TwoEntriesWithAndWithoutOneOfAnotherProduct) {
  const ReceiptEntry other = otherProductsEntry("yearly", When::kAtDate);
  const std::vector<ReceiptEntry> seconds = entriesOf(choicesForTwo(), 1);
  for (const ReceiptEntry& first : entriesOf(choicesForTwo(), 0)) {
    for (const ReceiptEntry& second : seconds) {
      trial_.setReceipt(purchase_, {&first, &second});
      tryWithStoreIdsAndDates(kTwoStoreIds);
      trial_.setReceipt(purchase_, {&first, &other, &second});
      tryWithStoreIdsAndDates(kTwoStoreIds);
    }
    if (!trial_.goesOn()) return;
  }
}

TEST_F(PurchaseEventExhaustiveTest, ThreeEntries) {
  const std::vector<ReceiptEntry> seconds = entriesOf(choicesForThree(), 1);
  const std::vector<ReceiptEntry> thirds = entriesOf(choicesForThree(), 2);
  for (const ReceiptEntry& first : entriesOf(choicesForThree(), 0)) {
    for (const ReceiptEntry& second : seconds)
      for (const ReceiptEntry& third : thirds) {
        trial_.setReceipt(purchase_, {&first, &second, &third});
        for (const StoreIds& ids : kTwoStoreIds) {
          setStoreIds(purchase_, ids);
          trial_.tryOut(purchase_);
        }
      }
    if (!trial_.goesOn()) return;
  }
}

TEST_F(PurchaseEventExhaustiveTest, AnEntryThatStandsInTheReceiptTwice) {
  const std::vector<ReceiptEntry> others = entriesOf(choicesForTwo(), 1);
  for (const ReceiptEntry& repeated : entriesOf(choicesForTwo(), 0)) {
    trial_.setReceipt(purchase_, {&repeated, &repeated});
    tryWithStoreIdsAndDates(kTwoStoreIds);
    for (const ReceiptEntry& other : others) {
      trial_.setReceipt(purchase_, {&repeated, &other, &repeated});
      for (const StoreIds& ids : kTwoStoreIds) {
        setStoreIds(purchase_, ids);
        purchase_.transaction->date = kDate;
        trial_.tryOut(purchase_);
      }
    }
    if (!trial_.goesOn()) return;
  }
}

}  // namespace
}  // namespace qel::testing
