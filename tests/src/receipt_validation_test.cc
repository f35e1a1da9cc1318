#include "receipt_validation.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// A purchase of "monthly" in March by transaction 1000, which has no original transaction. The
// receipt is left to each test.
class ReceiptValidationTest : public ::testing::Test {
 protected:
  ReceiptValidationTest() {
    base.set(ParameterKey::kProductId, QELValue::initWithString("monthly"));
    base.set(ParameterKey::kPrice, QELValue::initWithInt64(4990000));
  }

  std::optional<EventParameters> validated() const {
    return QELValidatedInAppPurchaseParameters(listOf(receipt), productIdentifier, transaction,
                                               originalTransaction, date, EventParameters(base));
  }

  // The base parameters with `added`.
  static Event baseWith(Event added) {
    added.insert({{"product_id", "monthly"}, {"price", 4990000}});
    return added;
  }

  // Checks the whole result and the whole list of messages.
  void expectOutcome(const Event& event, const std::vector<Diagnostic>& diagnostics) const {
    EXPECT_TRUE(isEvent(validated(), event));
    EXPECT_TRUE(hasLogged(monitor->diagnostics(), diagnostics));
  }

  std::vector<QELInAppPurchaseItem> receipt;
  OptionalText productIdentifier = "monthly";
  OptionalText transaction = "1000";
  OptionalText originalTransaction;
  std::optional<Instant> date = kMarchInstant;
  EventParameters base;
  ScopedRecordingMonitor monitor;
};

// `printf %s TEXT | md5sum | cut -c17-32`, read as a signed 64-bit number, for these texts.
constexpr std::int64_t kDedupeIdOf1000monthly = -7892189447472310445;  // 92794f831b539753
constexpr std::int64_t kDedupeIdOf10000monthly = 5942123952105585710;  // 5276aa407097fc2e
constexpr std::int64_t kInsufficientIdentifiers = -1;

// One-off purchases and subscriptions of "monthly", in March unless a date is given.
QELInAppPurchaseItem oneOff(std::int64_t type, const char* date = kMarch) {
  return entryOf(type, "monthly", date, "1000", "1000");
}
QELInAppPurchaseItem trialInFebruary() {
  return freeTrial(
      withWebOrder(entryOf(kAutoRenewable, "monthly", kFebruary, "1000", "1000"), "76"));
}
QELInAppPurchaseItem renewalInMarch() {
  return withWebOrder(entryOf(kAutoRenewable, "monthly", kMarch, "2000", "1000"), "77");
}

// --- Guards ---

TEST_F(ReceiptValidationTest, EmptyBaseParametersGiveNothingInSilence) {
  receipt = {firstMonth()};
  base = EventParameters();
  transaction = std::nullopt;
  EXPECT_TRUE(isNothing(validated()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {}));
}

TEST_F(ReceiptValidationTest, EmptyProductIdentifierGivesNothingInSilence) {
  receipt = {firstMonth()};
  productIdentifier = "";
  transaction = std::nullopt;
  EXPECT_TRUE(isNothing(validated()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {}));
}

TEST_F(ReceiptValidationTest, AbsentProductIdentifierGivesNothingInSilence) {
  receipt = {firstMonth()};
  productIdentifier = std::nullopt;
  EXPECT_TRUE(isNothing(validated()));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {}));
}

TEST_F(ReceiptValidationTest, EmptyTransactionIdentifierIsWarnedOfAndGoesOn) {
  receipt = {firstMonth()};
  transaction = "";
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40003), logged(40008)});
}

TEST_F(ReceiptValidationTest, AbsentTransactionIdentifierIsWarnedOfAndGoesOn) {
  receipt = {firstMonth()};
  transaction = std::nullopt;
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40003), logged(40008)});
}

// --- No entry of the product ---

TEST_F(ReceiptValidationTest, EmptyReceiptIsInvalid) {
  expectOutcome(baseWith({{"invalid", 1}}), {logged(40020, {"monthly"})});
}

TEST_F(ReceiptValidationTest, ReceiptWithOtherProductsOnlyIsInvalid) {
  receipt = {entryOf(kConsumable, "coins", kMarch, "1", "1"),
             entryOf(kAutoRenewable, "Monthly", kMarch, "1000", "1000")};
  expectOutcome(baseWith({{"invalid", 1}}), {logged(40020, {"monthly"})});
}

TEST_F(ReceiptValidationTest, MissingEntryIsLoggedAfterTheWarningOfAnEmptyTransaction) {
  transaction = "";
  expectOutcome(baseWith({{"invalid", 1}}), {logged(40003), logged(40020, {"monthly"})});
}

// --- Restored non-consumables ---

TEST_F(ReceiptValidationTest, RestoredNonConsumableIsInvalid) {
  receipt = {oneOff(kNonConsumable)};
  transaction = "2";
  originalTransaction = "1";
  expectOutcome(baseWith({{"invalid", 1}}), {logged(40005)});
}

TEST_F(ReceiptValidationTest, RestoredNonConsumableIsInvalidAmongSeveralEntriesToo) {
  receipt = {oneOff(kConsumable, kFebruary), oneOff(kNonConsumable)};
  transaction = "2";
  originalTransaction = "1";
  expectOutcome(baseWith({{"invalid", 1}}), {logged(40005)});
}

TEST_F(ReceiptValidationTest, RestoredNonConsumableWithAWebOrderIsInvalidToo) {
  receipt = {withWebOrder(oneOff(kNonConsumable), "77")};
  transaction = "2";
  originalTransaction = "1";
  expectOutcome(baseWith({{"invalid", 1}}), {logged(40005)});
}

TEST_F(ReceiptValidationTest, EntryWithoutAPurchaseTypeIsANonConsumable) {
  receipt = {oneOff(kNonConsumable)};
  receipt[0].purchaseType = std::nullopt;
  transaction = "2";
  originalTransaction = "1";
  expectOutcome(baseWith({{"invalid", 1}}), {logged(40005)});
}

// Store identifiers that do not tell a restore: the purchase is reported.
struct NoRestoreCase {
  const char* name;
  OptionalText transaction;
  OptionalText original;
  bool isWarnedOf;
  friend std::ostream& operator<<(std::ostream& out, const NoRestoreCase& c) {
    return out << c.name;
  }
};

class NoRestoreTest : public ReceiptValidationTest,
                      public ::testing::WithParamInterface<NoRestoreCase> {
 protected:
  NoRestoreTest() {
    transaction = GetParam().transaction;
    originalTransaction = GetParam().original;
    if (GetParam().isWarnedOf) warning_ = {logged(40003)};
  }

  std::vector<Diagnostic> afterWarning(const std::vector<Diagnostic>& diagnostics) const {
    std::vector<Diagnostic> all = warning_;
    all.insert(all.end(), diagnostics.begin(), diagnostics.end());
    return all;
  }

 private:
  std::vector<Diagnostic> warning_;
};

TEST_P(NoRestoreTest, ReportsANonConsumable) {
  receipt = {oneOff(kNonConsumable)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), afterWarning({logged(40022)}));
}

TEST_P(NoRestoreTest, ReportsAFreeTrial) {
  receipt = {freeTrial(firstMonth())};
  expectOutcome(
      baseWith({{"_did", kDedupeIdOf100077monthly}, {"free_trial", 1}, {"subscription", 1}}),
      afterWarning({logged(40009), logged(40010)}));
}

INSTANTIATE_TEST_SUITE_P(
    Identifiers, NoRestoreTest,
    ::testing::Values(NoRestoreCase{"BothAbsent", std::nullopt, std::nullopt, true},
                      NoRestoreCase{"BothEmpty", "", "", true},
                      NoRestoreCase{"TransactionAbsent", std::nullopt, "1", true},
                      NoRestoreCase{"TransactionEmpty", "", "1", true},
                      NoRestoreCase{"OriginalAbsent", "2", std::nullopt, false},
                      NoRestoreCase{"OriginalEmpty", "2", "", false},
                      NoRestoreCase{"BothEqual", "2", "2", false}),
    nameOfCase<NoRestoreCase>);

TEST_F(ReceiptValidationTest, OnlyNonConsumablesAndFreeTrialsCanBeRestored) {
  receipt = {oneOff(kConsumable)};
  transaction = "2";
  originalTransaction = "1";
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40021)});
}

// --- One entry, no subscription ---

TEST_F(ReceiptValidationTest, ConsumableIsReported) {
  receipt = {oneOff(kConsumable)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40021)});
}

TEST_F(ReceiptValidationTest, NonConsumableIsReported) {
  receipt = {oneOff(kNonConsumable)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40022)});
}

TEST_F(ReceiptValidationTest, SingleEntryNeedNotBeAtTheTransactionsDate) {
  receipt = {oneOff(kConsumable, kJanuary)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40021)});
}

TEST_F(ReceiptValidationTest, SingleEntryMarksAreIgnored) {
  receipt = {freeTrial(introductoryOffer(oneOff(kConsumable)))};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40021)});
}

TEST_F(ReceiptValidationTest, EntriesOfOtherProductsDoNotCount) {
  receipt = {entryOf(kAutoRenewable, "yearly", kMarch, "5", "5"), oneOff(kConsumable),
             entryOf(kConsumable, "coins", kApril, "6", "6")};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40021)});
}

// The identifiers of the entry decide, not those of the store's transaction.
struct MismatchCase {
  const char* name;
  std::optional<std::string> transactionID;
  std::optional<std::string> originalTransactionID;
  friend std::ostream& operator<<(std::ostream& out, const MismatchCase& c) {
    return out << c.name;
  }
};

class MismatchedEntryTest : public ReceiptValidationTest,
                            public ::testing::WithParamInterface<MismatchCase> {};

TEST_P(MismatchedEntryTest, LeavesTheBaseParametersAsTheyAre) {
  receipt = {oneOff(kConsumable)};
  receipt[0].transactionID = GetParam().transactionID;
  receipt[0].originalTransactionID = GetParam().originalTransactionID;
  expectOutcome(baseWith({}), {logged(40007)});
}

INSTANTIATE_TEST_SUITE_P(Identifiers, MismatchedEntryTest,
                         ::testing::Values(MismatchCase{"Differ", "2000", "1000"},
                                           MismatchCase{"TransactionAbsent", std::nullopt, "1000"},
                                           MismatchCase{"OriginalAbsent", "1000", std::nullopt},
                                           MismatchCase{"BothAbsent", std::nullopt, std::nullopt},
                                           MismatchCase{"TransactionEmpty", "", "1000"}),
                         nameOfCase<MismatchCase>);

TEST_F(ReceiptValidationTest, MismatchedEntryGivesTheVeryValuesOfTheBase) {
  receipt = {entryOf(kConsumable, "monthly", kMarch, "2000", "1000")};
  const std::optional<EventParameters> result = validated();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->find(ParameterKey::kPrice), base.find(ParameterKey::kPrice));
  EXPECT_EQ(result->find(ParameterKey::kProductId), base.find(ParameterKey::kProductId));
}

TEST_F(ReceiptValidationTest, MismatchedNonConsumableIsToldOfAlike) {
  receipt = {entryOf(kNonConsumable, "monthly", kMarch, "2000", "1000")};
  expectOutcome(baseWith({}), {logged(40007)});
}

TEST_F(ReceiptValidationTest, EqualEmptyIdentifiersGiveTheMarkOfInsufficientOnes) {
  receipt = {entryOf(kConsumable, "monthly", kMarch, "", "")};
  expectOutcome(baseWith({{"_did", kInsufficientIdentifiers}}), {logged(40021)});
}

// Types without a meaning of their own; only the low 32 bits count.
struct TypeCase {
  const char* name;
  std::int64_t purchaseType;
  friend std::ostream& operator<<(std::ostream& out, const TypeCase& c) { return out << c.name; }
};

class MeaninglessTypeTest : public ReceiptValidationTest,
                            public ::testing::WithParamInterface<TypeCase> {};

TEST_P(MeaninglessTypeTest, IsReportedInSilence) {
  receipt = {oneOff(GetParam().purchaseType)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {});
}

TEST_P(MeaninglessTypeTest, IsAnAutoRenewableSubscriptionWithAWebOrder) {
  receipt = {withWebOrder(oneOff(GetParam().purchaseType), "77")};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40008)});
}

INSTANTIATE_TEST_SUITE_P(Types, MeaninglessTypeTest,
                         ::testing::Values(TypeCase{"Four", 4}, TypeCase{"Five", 5},
                                           TypeCase{"MinusOne", -1},
                                           TypeCase{"BitThirtyOne", 2147483651},
                                           TypeCase{"LeastOf32Bits", -2147483648}),
                         nameOfCase<TypeCase>);

// --- Purchase types of more than 32 bits ---

TEST_F(ReceiptValidationTest, PurchaseTypeReadsThreeInItsLow32Bits) {
  receipt = {withWebOrder(oneOff(4294967299), "77")};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, PurchaseTypeReadsThreeInItsLow32BitsWithoutAWebOrder) {
  receipt = {oneOff(4294967299, kFebruary)};
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}), {logged(40023, {"monthly"})});
}

TEST_F(ReceiptValidationTest, PurchaseTypeReadsTwoInItsLow32Bits) {
  receipt = {oneOff(-4294967294)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}}), {logged(40025)});
}

TEST_F(ReceiptValidationTest, PurchaseTypeReadsOneInItsLow32Bits) {
  receipt = {oneOff(4294967297)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40021)});
}

TEST_F(ReceiptValidationTest, PurchaseTypeReadsZeroInItsLow32Bits) {
  receipt = {oneOff(4294967296)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}}), {logged(40022)});
}

// --- The entry at the transaction's date ---

TEST_F(ReceiptValidationTest, AutoRenewableWithoutAnEntryAtTheDateIsInvalid) {
  receipt = {firstMonth()};
  date = kFebruaryInstant;
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}), {logged(40023, {"monthly"})});
}

TEST_F(ReceiptValidationTest, NonRenewingWithoutAnEntryAtTheDateIsInvalid) {
  receipt = {oneOff(kNonRenewing)};
  date = kFebruaryInstant;
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}), {logged(40023, {"monthly"})});
}

TEST_F(ReceiptValidationTest, AbsentTransactionDateFindsNoEntryOfASubscription) {
  receipt = {firstMonth()};
  date = std::nullopt;
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}), {logged(40023, {"monthly"})});
}

TEST_F(ReceiptValidationTest, TransactionDateWithAFractionFindsNoEntryOfASubscription) {
  receipt = {firstMonth()};
  date = Instant(date->seconds(), 250000000);
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}), {logged(40023, {"monthly"})});
}

TEST_F(ReceiptValidationTest, EntryAtTheDateOfAnotherProductDoesNotCount) {
  receipt = {entryOf(kAutoRenewable, "yearly", kMarch, "5", "5"), trialInFebruary()};
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}), {logged(40023, {"monthly"})});
}

TEST_F(ReceiptValidationTest, NonConsumableWithAWebOrderIsMatchedByDate) {
  receipt = {withWebOrder(oneOff(kNonConsumable, kFebruary), "77")};
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}), {logged(40023, {"monthly"})});
}

TEST_F(ReceiptValidationTest, NonConsumableWithAWebOrderAtTheDateIsAnAutoRenewable) {
  receipt = {withWebOrder(oneOff(kNonConsumable), "77")};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, WebOrderOfZeroIsPresentAndPartOfTheIdentifier) {
  receipt = {withWebOrder(oneOff(kConsumable), "0")};
  expectOutcome(baseWith({{"_did", kDedupeIdOf10000monthly}, {"subscription", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, TwoEntriesAtTheDateAreInvalid) {
  receipt = {renewalInMarch(), firstMonth()};
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}),
                {logged(40024, {"monthly", std::uint64_t{2}})});
}

TEST_F(ReceiptValidationTest, ThreeEntriesAtTheDateAreInvalidAndCounted) {
  receipt = {firstMonth(), trialInFebruary(), firstMonth(), renewalInMarch()};
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}),
                {logged(40024, {"monthly", std::uint64_t{3}})});
}

TEST_F(ReceiptValidationTest, TwoConsumablesAtTheDateAreAnInvalidSubscriptionToo) {
  receipt = {oneOff(kConsumable), oneOff(kConsumable)};
  expectOutcome(baseWith({{"invalid", 1}, {"subscription", 1}}),
                {logged(40024, {"monthly", std::uint64_t{2}})});
}

TEST_F(ReceiptValidationTest, TwoConsumablesOneAtTheDateAreReportedAsASubscription) {
  receipt = {oneOff(kConsumable, kFebruary), oneOff(kConsumable)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}}), {logged(40008)});
}

TEST_F(ReceiptValidationTest, TwoConsumablesNoneAtTheDateAreReportedAsARenewalOfNothing) {
  receipt = {oneOff(kConsumable, kJanuary), oneOff(kConsumable, kFebruary)};
  expectOutcome(baseWith({{"_did", kInsufficientIdentifiers}, {"sub_renew", 1}}), {logged(40008)});
}

TEST_F(ReceiptValidationTest, TwoConsumablesWithoutATransactionDateAreARenewalOfNothing) {
  receipt = {freeTrial(oneOff(kConsumable, kJanuary)), freeTrial(oneOff(kConsumable, kFebruary))};
  date = std::nullopt;
  expectOutcome(baseWith({{"_did", kInsufficientIdentifiers}, {"sub_renew", 1}}), {logged(40008)});
}

// --- The latest entry decides the type, the entry at the date the rest ---

TEST_F(ReceiptValidationTest, LatestEntryDecidesTheTypeWhateverTheReceiptsOrder) {
  receipt = {oneOff(kNonRenewing, kApril), firstMonth()};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}}), {logged(40025)});
}

TEST_F(ReceiptValidationTest, EarlierEntriesDoNotDecideTheType) {
  receipt = {oneOff(kNonRenewing, kFebruary), firstMonth()};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, LatestEntryDecidesWhetherThePurchaseIsLikeASubscription) {
  receipt = {withWebOrder(oneOff(kConsumable, kJanuary), "77"), oneOff(kConsumable, kFebruary)};
  expectOutcome(baseWith({{"_did", kInsufficientIdentifiers}, {"sub_renew", 1}}), {logged(40008)});
}

TEST_F(ReceiptValidationTest, EntryWithoutADateIsNeverTheLatest) {
  receipt = {firstMonth(), oneOff(kNonRenewing, "2019-04-14")};
  receipt.push_back(oneOff(kNonConsumable));
  receipt[2].purchaseDateIA5String = std::nullopt;
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40008)});
}

// An entry in March, the transaction's date, and another one that the receipt has before it, in
// February, and after it, in April. `added` and `codes` are the outcome.
struct EntryAtTheDateCase {
  const char* name;
  QELInAppPurchaseItem entry;
  QELInAppPurchaseItem other;
  Event added;
  std::vector<int> codes;
  friend std::ostream& operator<<(std::ostream& out, const EntryAtTheDateCase& c) {
    return out << c.name;
  }
};

class EntryAtTheDateTest : public ReceiptValidationTest,
                           public ::testing::WithParamInterface<EntryAtTheDateCase> {};

TEST_P(EntryAtTheDateTest, IsReportedByItsOwnFields) {
  receipt = {GetParam().other, GetParam().entry, GetParam().other};
  receipt[0].purchaseDateIA5String = kFebruary;
  receipt[2].purchaseDateIA5String = kApril;
  std::vector<Diagnostic> diagnostics;
  for (const int code : GetParam().codes) diagnostics.push_back(logged(code));
  expectOutcome(baseWith(GetParam().added), diagnostics);
}

INSTANTIATE_TEST_SUITE_P(
    Identifiers, EntryAtTheDateTest,
    ::testing::Values(EntryAtTheDateCase{"OriginalTransactionOfANonRenewing",
                                         oneOff(kNonRenewing),
                                         entryOf(kNonRenewing, "monthly", kMarch, "5000", "5000"),
                                         {{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}},
                                         {40025}},
                      EntryAtTheDateCase{"OriginalTransactionOfAnAutoRenewable",
                                         oneOff(kAutoRenewable),
                                         entryOf(kAutoRenewable, "monthly", kMarch, "5000", "5000"),
                                         {{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}},
                                         {40008}},
                      EntryAtTheDateCase{"WebOrder",
                                         firstMonth(),
                                         withWebOrder(firstMonth(), "78"),
                                         {{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}},
                                         {40008}},
                      EntryAtTheDateCase{"WebOrderThatOthersLack",
                                         firstMonth(),
                                         oneOff(kAutoRenewable),
                                         {{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}},
                                         {40008}},
                      EntryAtTheDateCase{"AbsentWebOrder",
                                         oneOff(kAutoRenewable),
                                         firstMonth(),
                                         {{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}},
                                         {40008}}),
    nameOfCase<EntryAtTheDateCase>);

INSTANTIATE_TEST_SUITE_P(
    Kinds, EntryAtTheDateTest,
    ::testing::Values(
        EntryAtTheDateCase{"FirstPurchaseAmongRenewals",
                           firstMonth(),
                           renewalInMarch(),
                           {{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}},
                           {40008}},
        EntryAtTheDateCase{"RenewalAmongFirstPurchases",
                           renewalInMarch(),
                           firstMonth(),
                           {{"_did", kDedupeIdOf100077monthly}, {"sub_renew", 1}},
                           {40008}},
        EntryAtTheDateCase{
            "FreeTrialAmongPaidPeriods",
            freeTrial(firstMonth()),
            firstMonth(),
            {{"_did", kDedupeIdOf100077monthly}, {"free_trial", 1}, {"subscription", 1}},
            {40009, 40010}},
        EntryAtTheDateCase{"PaidPeriodAmongFreeTrials",
                           firstMonth(),
                           freeTrial(firstMonth()),
                           {{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}},
                           {40008}},
        EntryAtTheDateCase{
            "OfferAmongPaidPeriods",
            introductoryOffer(firstMonth()),
            firstMonth(),
            {{"_did", kDedupeIdOf100077monthly}, {"price_is_discounted", 1}, {"subscription", 1}},
            {40018, 40010}},
        EntryAtTheDateCase{"PaidPeriodAmongOffers",
                           firstMonth(),
                           introductoryOffer(firstMonth()),
                           {{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}},
                           {40008}},
        EntryAtTheDateCase{
            "FreeTrialAmongOffers",
            freeTrial(firstMonth()),
            introductoryOffer(firstMonth()),
            {{"_did", kDedupeIdOf100077monthly}, {"free_trial", 1}, {"subscription", 1}},
            {40009, 40010}},
        EntryAtTheDateCase{
            "OfferAmongFreeTrials",
            introductoryOffer(firstMonth()),
            freeTrial(firstMonth()),
            {{"_did", kDedupeIdOf100077monthly}, {"price_is_discounted", 1}, {"subscription", 1}},
            {40018, 40010}}),
    nameOfCase<EntryAtTheDateCase>);

// --- Non-renewing subscriptions ---

TEST_F(ReceiptValidationTest, NonRenewingSubscriptionIsReported) {
  receipt = {oneOff(kNonRenewing)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}}), {logged(40025)});
}

TEST_F(ReceiptValidationTest, NonRenewingSubscriptionLeavesTheWebOrderOutOfItsIdentifier) {
  receipt = {withWebOrder(oneOff(kNonRenewing), "77")};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}}), {logged(40025)});
}

TEST_F(ReceiptValidationTest, NonRenewingSubscriptionIgnoresMarksAndMismatchedIdentifiers) {
  receipt = {freeTrial(oneOff(kNonRenewing, kFebruary)),
             freeTrial(introductoryOffer(entryOf(kNonRenewing, "monthly", kMarch, "2", "1000")))};
  transaction = "2";
  originalTransaction = "1000";
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}}), {logged(40025)});
}

// --- Auto-renewable subscriptions ---

TEST_F(ReceiptValidationTest, FirstPurchaseOfAnAutoRenewableIsASubscription) {
  receipt = {firstMonth()};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, AutoRenewableWithoutAWebOrderLeavesItOutOfItsIdentifier) {
  receipt = {oneOff(kAutoRenewable)};
  expectOutcome(baseWith({{"_did", kDedupeIdOf1000monthly}, {"subscription", 1}}), {logged(40008)});
}

TEST_F(ReceiptValidationTest, RenewalAfterAFreeTrialIsAConversionAndNoSubscription) {
  receipt = {trialInFebruary(), renewalInMarch()};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"sub_convert", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, UnsortedReceiptGivesTheSameConversion) {
  receipt = {renewalInMarch(), entryOf(kConsumable, "coins", kFebruary, "1", "1"),
             trialInFebruary()};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"sub_convert", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, RenewalAfterAPaidPeriodIsARenewal) {
  receipt = {oneOff(kAutoRenewable, kFebruary), renewalInMarch()};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"sub_renew", 1}}), {logged(40008)});
}

TEST_F(ReceiptValidationTest, RenewalThatStandsAloneInTheReceiptIsARenewal) {
  receipt = {renewalInMarch()};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"sub_renew", 1}}), {logged(40008)});
}

TEST_F(ReceiptValidationTest, EarlierRenewalDependsOnTheEntryBeforeIt) {
  receipt = {trialInFebruary(), renewalInMarch(),
             entryOf(kAutoRenewable, "monthly", kApril, "3000", "1000")};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"sub_convert", 1}}),
                {logged(40008)});
}

TEST_F(ReceiptValidationTest, StoreIdentifiersThatDifferDoNotMatterToAPaidPeriod) {
  receipt = {firstMonth()};
  transaction = "5";
  originalTransaction = "4";
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}}),
                {logged(40008)});
}

// --- Free trials ---

TEST_F(ReceiptValidationTest, FreeTrialIsReported) {
  receipt = {freeTrial(firstMonth())};
  expectOutcome(
      baseWith({{"_did", kDedupeIdOf100077monthly}, {"free_trial", 1}, {"subscription", 1}}),
      {logged(40009), logged(40010)});
}

TEST_F(ReceiptValidationTest, FreeTrialThatContinuesASubscriptionGetsNoFurtherFlag) {
  receipt = {trialInFebruary(), freeTrial(renewalInMarch())};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"free_trial", 1}}),
                {logged(40009), logged(40010)});
}

TEST_F(ReceiptValidationTest, RepurchasedFreeTrialIsInvalid) {
  receipt = {freeTrial(firstMonth())};
  transaction = "5";
  originalTransaction = "4";
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly},
                          {"free_trial", 1},
                          {"invalid", 1},
                          {"subscription", 1}}),
                {logged(40011)});
}

TEST_F(ReceiptValidationTest, RepurchasedFreeTrialOfALaterPeriodIsNoSubscription) {
  receipt = {trialInFebruary(), freeTrial(renewalInMarch())};
  transaction = "5";
  originalTransaction = "4";
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"free_trial", 1}, {"invalid", 1}}),
                {logged(40011)});
}

TEST_F(ReceiptValidationTest, RepurchasedFreeTrialIsNotAskedForAnIntroductoryOffer) {
  receipt = {trialInFebruary(), introductoryOffer(freeTrial(renewalInMarch()))};
  transaction = "5";
  originalTransaction = "4";
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly}, {"free_trial", 1}, {"invalid", 1}}),
                {logged(40011)});
}

// --- Introductory offers ---

TEST_F(ReceiptValidationTest, IntroductoryOfferOfAFirstPurchaseIsReported) {
  receipt = {introductoryOffer(firstMonth())};
  expectOutcome(
      baseWith(
          {{"_did", kDedupeIdOf100077monthly}, {"price_is_discounted", 1}, {"subscription", 1}}),
      {logged(40018), logged(40010)});
}

TEST_F(ReceiptValidationTest, IntroductoryOfferAfterAFreeTrialIsAConversion) {
  receipt = {trialInFebruary(), introductoryOffer(renewalInMarch())};
  expectOutcome(
      baseWith(
          {{"_did", kDedupeIdOf100077monthly}, {"price_is_discounted", 1}, {"sub_convert", 1}}),
      {logged(40018), logged(40010)});
}

TEST_F(ReceiptValidationTest, IntroductoryOfferAfterAPaidPeriodIsARenewal) {
  receipt = {oneOff(kAutoRenewable, kFebruary), introductoryOffer(renewalInMarch())};
  expectOutcome(
      baseWith({{"_did", kDedupeIdOf100077monthly}, {"price_is_discounted", 1}, {"sub_renew", 1}}),
      {logged(40018), logged(40010)});
}

TEST_F(ReceiptValidationTest, StoreIdentifiersThatDifferDoNotMatterToAnIntroductoryOffer) {
  receipt = {introductoryOffer(firstMonth())};
  transaction = "5";
  originalTransaction = "4";
  expectOutcome(
      baseWith(
          {{"_did", kDedupeIdOf100077monthly}, {"price_is_discounted", 1}, {"subscription", 1}}),
      {logged(40018), logged(40010)});
}

TEST_F(ReceiptValidationTest, FreeTrialThatIsAlsoAnOfferIsBothForAFirstPurchase) {
  receipt = {freeTrial(introductoryOffer(firstMonth()))};
  originalTransaction = "1000";
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly},
                          {"free_trial", 1},
                          {"price_is_discounted", 1},
                          {"subscription", 1}}),
                {logged(40009), logged(40018), logged(40010)});
}

TEST_F(ReceiptValidationTest, FreeTrialThatIsAlsoAnOfferConvertsATrialBeforeIt) {
  receipt = {trialInFebruary(), freeTrial(introductoryOffer(renewalInMarch()))};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly},
                          {"free_trial", 1},
                          {"price_is_discounted", 1},
                          {"sub_convert", 1}}),
                {logged(40009), logged(40018), logged(40010)});
}

TEST_F(ReceiptValidationTest, FreeTrialThatIsAlsoAnOfferRenewsAPaidPeriodBeforeIt) {
  receipt = {oneOff(kAutoRenewable, kFebruary), freeTrial(introductoryOffer(renewalInMarch()))};
  expectOutcome(baseWith({{"_did", kDedupeIdOf100077monthly},
                          {"free_trial", 1},
                          {"price_is_discounted", 1},
                          {"sub_renew", 1}}),
                {logged(40009), logged(40018), logged(40010)});
}

}  // namespace
}  // namespace qel::testing
