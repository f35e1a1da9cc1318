// Every combination of what decides on an event, held against the table of outcomes.
//
// The stages meet in a few flags only, so the space is taken in blocks, each the full product of
// all choices of what it is about: the store's side for every kind of outcome of the receipt, and
// the receipt's side with one entry, with two, with three, with repeated ones.

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <iostream>
#include <string>
#include <vector>

#include "purchase_trial.h"

namespace qel::testing {
namespace {

constexpr auto kBools = {false, true};

// The two identifiers of a store transaction.
struct StoreIds {
  TextIs transaction;
  OriginalIs original;
};

// Without an identifier of its own, a transaction's original cannot have the same one.
std::vector<StoreIds> allStoreIds() {
  std::vector<StoreIds> all;
  for (const TextIs transaction : {TextIs::kAbsent, TextIs::kEmpty, TextIs::kGiven}) {
    for (const OriginalIs original :
         {OriginalIs::kNoTransaction, OriginalIs::kAbsent, OriginalIs::kEmpty, OriginalIs::kOther})
      all.push_back({transaction, original});
  }
  all.push_back({TextIs::kGiven, OriginalIs::kSame});
  return all;
}

// The two that every rule tells apart: a transaction on its own, and one that continues another.
constexpr std::initializer_list<StoreIds> kTwoStoreIds = {{TextIs::kGiven, OriginalIs::kSame},
                                                          {TextIs::kGiven, OriginalIs::kOther}};

void setStoreIds(Purchase& purchase, const StoreIds& ids) {
  purchase.transaction = ids.transaction;
  purchase.original = ids.original;
}

// The two identifiers of an entry.
struct EntryIds {
  TextIs transaction;
  EntryOriginalIs original;
};

std::vector<EntryIds> allEntryIds() {
  std::vector<EntryIds> all;
  for (const TextIs transaction : {TextIs::kAbsent, TextIs::kEmpty, TextIs::kGiven}) {
    for (const EntryOriginalIs original :
         {EntryOriginalIs::kAbsent, EntryOriginalIs::kEmpty, EntryOriginalIs::kOther})
      all.push_back({transaction, original});
  }
  all.push_back({TextIs::kGiven, EntryOriginalIs::kSame});
  return all;
}

// The choices of which entries are made.
struct EntryChoices {
  struct Kind {
    TypeIs type;
    WebOrderIs webOrder;
  };

  std::vector<Kind> kinds;
  std::vector<EntryIds> ids;
  std::vector<When> dates;
};

// Every entry of these choices, with and without each of the marks.
std::vector<ReceiptEntry> entriesOf(const EntryChoices& choices, std::uint8_t series) {
  std::vector<ReceiptEntry> entries;
  for (const EntryChoices::Kind& kind : choices.kinds)
    for (const EntryIds& ids : choices.ids)
      for (const When when : choices.dates)
        for (const bool isFreeTrial : kBools)
          for (const bool isIntroductoryOffer : kBools)
            entries.emplace_back(Entry{.type = kind.type,
                                       .webOrder = kind.webOrder,
                                       .transaction = ids.transaction,
                                       .original = ids.original,
                                       .when = when,
                                       .isFreeTrial = isFreeTrial,
                                       .isIntroductoryOffer = isIntroductoryOffer,
                                       .series = series});
  return entries;
}

EntryChoices allChoices() {
  EntryChoices choices;
  for (const TypeIs type : {TypeIs::kAbsent, TypeIs::k0, TypeIs::k1, TypeIs::k2, TypeIs::k3,
                            TypeIs::k5, TypeIs::kReads3, TypeIs::kReads2})
    for (const WebOrderIs webOrder : {WebOrderIs::kAbsent, WebOrderIs::kZero, WebOrderIs::kGiven})
      choices.kinds.push_back({type, webOrder});
  choices.ids = allEntryIds();
  choices.dates = {When::kAbsent, When::kUnreadable, When::kEarlier, When::kAtDate, When::kLater};
  return choices;
}

EntryChoices choicesForTwo() {
  EntryChoices choices;
  for (const TypeIs type : {TypeIs::k0, TypeIs::k1, TypeIs::k2, TypeIs::k3, TypeIs::k5})
    for (const WebOrderIs webOrder : {WebOrderIs::kAbsent, WebOrderIs::kGiven})
      choices.kinds.push_back({type, webOrder});
  choices.ids = {{TextIs::kGiven, EntryOriginalIs::kSame},
                 {TextIs::kGiven, EntryOriginalIs::kOther},
                 {TextIs::kAbsent, EntryOriginalIs::kAbsent}};
  choices.dates = {When::kAbsent, When::kUnreadable, When::kEarlier, When::kAtDate, When::kLater};
  return choices;
}

EntryChoices choicesForThree() {
  EntryChoices choices;
  choices.kinds = {{TypeIs::k0, WebOrderIs::kAbsent},
                   {TypeIs::k1, WebOrderIs::kGiven},
                   {TypeIs::k2, WebOrderIs::kAbsent},
                   {TypeIs::k3, WebOrderIs::kGiven}};
  choices.ids = {{TextIs::kGiven, EntryOriginalIs::kSame},
                 {TextIs::kGiven, EntryOriginalIs::kOther}};
  choices.dates = {When::kUnreadable, When::kEarliest, When::kEarlier, When::kAtDate, When::kLater};
  return choices;
}

// An entry that is not the product's, but would change the outcome if it were taken for one: a
// trial at the very date, of an auto-renewable subscription.
ReceiptEntry strangerOf(EntryProductIs product, When when) {
  return ReceiptEntry(Entry{.product = product,
                            .type = TypeIs::k3,
                            .webOrder = WebOrderIs::kGiven,
                            .when = when,
                            .isFreeTrial = true,
                            .isIntroductoryOffer = true,
                            .series = 2});
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

  // Tries the purchase with the receipt as it is and every identifier and date of the store's.
  template <typename AllStoreIds>
  void tryWithStoreIdsAndDates(const AllStoreIds& allIds) {
    for (const StoreIds& ids : allIds) {
      setStoreIds(purchase_, ids);
      for (const DateIs date : {DateIs::kAbsent, DateIs::kWhole, DateIs::kWithFraction}) {
        purchase_.date = date;
        trial_.tryOut(purchase_);
      }
    }
  }

  // Tries the product's own data: its price, currency, title, and the quantity bought.
  template <typename Then>
  void forAllPrices(const Then& then) {
    for (const PriceIs price : {PriceIs::kAbsent, PriceIs::kGiven, PriceIs::kNotANumber})
      for (const QuantityIs quantity : {QuantityIs::kNoPayment, QuantityIs::kZero,
                                        QuantityIs::kPositive, QuantityIs::kNegative})
        for (const bool hasCurrency : kBools)
          for (const bool hasTitle : kBools) {
            purchase_.price = price;
            purchase_.quantity = quantity;
            purchase_.hasCurrency = hasCurrency;
            purchase_.hasTitle = hasTitle;
            then();
          }
  }

  template <typename Then>
  void forAllOffers(const Then& then) {
    for (const OfferIs offer :
         {OfferIs::kAbsent, OfferIs::kMode0, OfferIs::kMode1, OfferIs::kMode2, OfferIs::kWideMode})
      for (const bool hasPrice : kBools) {
        if (offer == OfferIs::kAbsent && hasPrice) continue;
        purchase_.offer = offer;
        purchase_.offerHasPrice = hasPrice;
        forAllAnswers(then);
      }
  }

  // The four availability answers.
  template <typename Then>
  void forAllAnswers(const Then& then) {
    for (const bool platformHasDiscounts : kBools)
      for (const bool discountsHavePrice : kBools)
        for (const bool discountsHaveMode : kBools)
          for (const bool productHasOffer : kBools) {
            purchase_.platformHasDiscounts = platformHasDiscounts;
            purchase_.discountsHavePrice = discountsHavePrice;
            purchase_.discountsHaveMode = discountsHaveMode;
            purchase_.productHasOffer = productHasOffer;
            then();
          }
  }

  PurchaseTrial trial_;
  Purchase purchase_;

 private:
  static inline std::uint64_t allCombinations = 0;
};

// Receipts that between them lead to every row of the table.
std::vector<std::vector<ReceiptEntry>> receiptsOfEveryKind() {
  std::vector<std::vector<ReceiptEntry>> receipts = {{}};
  receipts.push_back({strangerOf(EntryProductIs::kOther, When::kAtDate)});

  Entry ordinary{.when = When::kEarlier};
  for (const TypeIs type : {TypeIs::k0, TypeIs::k1, TypeIs::k5}) {
    for (const EntryOriginalIs original : {EntryOriginalIs::kSame, EntryOriginalIs::kOther}) {
      ordinary.type = type;
      ordinary.original = original;
      receipts.push_back({ReceiptEntry(ordinary)});
    }
  }
  Entry anotherOrdinary{.when = When::kLater, .series = 1};
  receipts.push_back({ReceiptEntry(ordinary), ReceiptEntry(anotherOrdinary)});

  Entry subscription{.type = TypeIs::k3, .webOrder = WebOrderIs::kGiven};
  Entry missing = subscription;
  missing.when = When::kEarlier;
  receipts.push_back({ReceiptEntry(missing)});
  receipts.push_back({ReceiptEntry(subscription), ReceiptEntry(subscription)});
  Entry nonRenewing = subscription;
  nonRenewing.type = TypeIs::k2;
  receipts.push_back({ReceiptEntry(nonRenewing)});
  Entry nonConsumable = subscription;
  nonConsumable.type = TypeIs::k0;
  receipts.push_back({ReceiptEntry(nonConsumable)});

  // A period of an auto-renewable subscription, after nothing, after a trial, after a paid one.
  for (const bool isFreeTrial : kBools)
    for (const bool isIntroductoryOffer : kBools)
      for (const EntryOriginalIs original : {EntryOriginalIs::kSame, EntryOriginalIs::kOther}) {
        Entry period = subscription;
        period.original = original;
        period.isFreeTrial = isFreeTrial;
        period.isIntroductoryOffer = isIntroductoryOffer;
        receipts.push_back({ReceiptEntry(period)});
        for (const bool isAfterTrial : kBools) {
          Entry before{
              .type = TypeIs::k3, .when = When::kEarlier, .isFreeTrial = isAfterTrial, .series = 1};
          receipts.push_back({ReceiptEntry(before), ReceiptEntry(period)});
        }
      }
  return receipts;
}

void setReceipt(PurchaseTrial& trial, Purchase& purchase,
                const std::vector<ReceiptEntry>& receipt) {
  if (receipt.empty()) trial.setReceipt(purchase, {});
  if (receipt.size() == 1) trial.setReceipt(purchase, {receipt.data()});
  if (receipt.size() == 2) trial.setReceipt(purchase, {receipt.data(), receipt.data() + 1});
}

TEST_F(PurchaseEventExhaustiveTest, EveryRejectionWhateverElseIsGiven) {
  for (const std::vector<ReceiptEntry>& receipt : receiptsOfEveryKind()) {
    setReceipt(trial_, purchase_, receipt);
    for (const ProductIs product : {ProductIs::kAbsent, ProductIs::kWithoutIdentifier,
                                    ProductIs::kEmptyIdentifier, ProductIs::kGiven})
      for (const bool hasTransaction : kBools) {
        if (product == ProductIs::kGiven && hasTransaction) continue;
        purchase_.product = product;
        purchase_.hasTransaction = hasTransaction;
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

TEST_F(PurchaseEventExhaustiveTest, ReceiptsOfEveryKindReachEveryRowOfTheTable) {
  for (const std::vector<ReceiptEntry>& receipt : receiptsOfEveryKind()) {
    setReceipt(trial_, purchase_, receipt);
    for (const StoreIds& ids : kTwoStoreIds) {
      setStoreIds(purchase_, ids);
      trial_.tryOut(purchase_);
    }
  }
  purchase_.hasTransaction = false;
  trial_.tryOut(purchase_);
  purchase_.product = ProductIs::kEmptyIdentifier;
  trial_.tryOut(purchase_);
  purchase_.product = ProductIs::kAbsent;
  trial_.tryOut(purchase_);
  for (std::size_t row = 0; row < rowCount(); ++row)
    EXPECT_GT(trial_.rowCounts()[row], 0u) << situationOf(row);
}

TEST_F(PurchaseEventExhaustiveTest, OneEntryAmongStrangers) {
  const ReceiptEntry otherCase = strangerOf(EntryProductIs::kOtherCase, When::kAtDate);
  const ReceiptEntry other = strangerOf(EntryProductIs::kOther, When::kLater);
  const ReceiptEntry unnamed = strangerOf(EntryProductIs::kAbsent, When::kAtDate);
  const ReceiptEntry empty = strangerOf(EntryProductIs::kEmpty, When::kEarlier);
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

TEST_F(PurchaseEventExhaustiveTest, StrangersOnly) {
  std::vector<ReceiptEntry> strangers;
  for (const EntryProductIs product : {EntryProductIs::kOtherCase, EntryProductIs::kOther,
                                       EntryProductIs::kEmpty, EntryProductIs::kAbsent})
    for (const When when : allChoices().dates) strangers.push_back(strangerOf(product, when));
  const auto ids = allStoreIds();
  trial_.setReceipt(purchase_, {});
  tryWithStoreIdsAndDates(ids);
  for (const ReceiptEntry& first : strangers) {
    trial_.setReceipt(purchase_, {&first});
    tryWithStoreIdsAndDates(ids);
    for (const ReceiptEntry& second : strangers) {
      trial_.setReceipt(purchase_, {&first, &second});
      tryWithStoreIdsAndDates(ids);
    }
    if (!trial_.goesOn()) return;
  }
}

TEST_F(PurchaseEventExhaustiveTest, TwoEntriesWithAndWithoutAStranger) {
  const ReceiptEntry stranger = strangerOf(EntryProductIs::kOther, When::kAtDate);
  const std::vector<ReceiptEntry> seconds = entriesOf(choicesForTwo(), 1);
  for (const ReceiptEntry& first : entriesOf(choicesForTwo(), 0)) {
    for (const ReceiptEntry& second : seconds) {
      trial_.setReceipt(purchase_, {&first, &second});
      tryWithStoreIdsAndDates(kTwoStoreIds);
      trial_.setReceipt(purchase_, {&first, &stranger, &second});
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
        purchase_.date = DateIs::kWhole;
        trial_.tryOut(purchase_);
      }
    }
    if (!trial_.goesOn()) return;
  }
}

}  // namespace
}  // namespace qel::testing
