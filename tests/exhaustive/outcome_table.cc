#include "outcome_table.h"

#include <limits>

namespace qel::testing {
namespace {

// --- What is the case -----------------------------------------------------------------------

// A set of statements about a purchase, each true or not.
using Facts = std::uint32_t;

constexpr Facts kNoProduct = 1u << 0;
constexpr Facts kNoIdentifier = 1u << 1;
constexpr Facts kNoTransaction = 1u << 2;
constexpr Facts kRejected = kNoProduct | kNoIdentifier | kNoTransaction;
// The receipt has an entry of the product. The "latest" is the last of these by date.
constexpr Facts kInReceipt = 1u << 3;
// The latest is non-consumable, and the store's transaction continues another one.
constexpr Facts kRestored = 1u << 4;
constexpr Facts kLatestIs0 = 1u << 5;
constexpr Facts kLatestIs1 = 1u << 6;
constexpr Facts kLatestIs2 = 1u << 7;
// The latest is of type 2 or 3, or has a web order line item.
constexpr Facts kSubscriptionLike = 1u << 8;
constexpr Facts kLatestIdsEqual = 1u << 9;
// The receipt's entry is chosen by its date: the latest is subscription-like or not the only one.
constexpr Facts kByDate = 1u << 10;
constexpr Facts kNoneAtDate = 1u << 11;
constexpr Facts kSeveralAtDate = 1u << 12;
constexpr Facts kAtDate = kNoneAtDate | kSeveralAtDate;  // Neither: exactly one at the date.
// Of the one at the date:
constexpr Facts kTrial = 1u << 13;
constexpr Facts kOffer = 1u << 14;
constexpr Facts kFirst = 1u << 15;       // Its two identifiers are equal.
constexpr Facts kAfterTrial = 1u << 16;  // The entry before it is a free trial.
// Both store identifiers are given and differ.
constexpr Facts kStoreIdsDiffer = 1u << 17;

// --- What comes of it -----------------------------------------------------------------------

using Flags = std::uint32_t;
constexpr Flags flag(Key key) { return 1u << key; }

enum class Did : std::uint8_t { kNone, kInsufficient, kOfLatest, kOfChosen, kOfChosenWithWebOrder };

struct Row {
  std::string_view situation;
  Facts all = 0;   // Every one of these holds,
  Facts none = 0;  // and not one of these.
  std::array<int, 3> codes = {};
  Flags flags = 0;
  Did did = Did::kNone;
};

constexpr Facts kOne = kInReceipt | kByDate;  // Together with none of kOneNot: one entry chosen.
constexpr Facts kOneNot = kRejected | kRestored | kLatestIs2 | kAtDate;
constexpr Flags kSub = flag(kSubscription);
constexpr Flags kSubInvalid = flag(kSubscription) | flag(kInvalid);

constexpr Row kRows[] = {
    {.situation = "no product", .all = kNoProduct, .codes = {40026}},
    {.situation = "no product identifier",
     .all = kNoIdentifier,
     .none = kNoProduct,
     .codes = {40027}},
    {.situation = "no transaction",
     .all = kNoTransaction,
     .none = kNoProduct | kNoIdentifier,
     .codes = {40028}},
    {.situation = "not in the receipt",
     .none = kRejected | kInReceipt,
     .codes = {40020},
     .flags = flag(kInvalid)},
    {.situation = "non-consumable bought again",
     .all = kInReceipt | kRestored,
     .none = kRejected,
     .codes = {40005},
     .flags = flag(kInvalid)},

    {.situation = "one consumable",
     .all = kInReceipt | kLatestIs1 | kLatestIdsEqual,
     .none = kRejected | kRestored | kByDate,
     .codes = {40021},
     .did = Did::kOfLatest},
    {.situation = "one non-consumable",
     .all = kInReceipt | kLatestIs0 | kLatestIdsEqual,
     .none = kRejected | kRestored | kByDate,
     .codes = {40022},
     .did = Did::kOfLatest},
    {.situation = "one of a type without meaning",
     .all = kInReceipt | kLatestIdsEqual,
     .none = kRejected | kRestored | kByDate | kLatestIs0 | kLatestIs1,
     .did = Did::kOfLatest},
    {.situation = "one whose identifiers differ",
     .all = kInReceipt,
     .none = kRejected | kRestored | kByDate | kLatestIdsEqual,
     .codes = {40007}},

    {.situation = "subscription without an entry at the date",
     .all = kInReceipt | kByDate | kSubscriptionLike | kNoneAtDate,
     .none = kRejected | kRestored,
     .codes = {40023},
     .flags = kSubInvalid},
    {.situation = "several ordinary entries, none at the date",
     .all = kInReceipt | kByDate | kNoneAtDate,
     .none = kRejected | kRestored | kSubscriptionLike,
     .codes = {40008},
     .flags = flag(kRenew),
     .did = Did::kInsufficient},
    {.situation = "several entries at the date",
     .all = kInReceipt | kByDate | kSeveralAtDate,
     .none = kRejected | kRestored,
     .codes = {40024},
     .flags = kSubInvalid},
    {.situation = "non-renewing subscription",
     .all = kInReceipt | kByDate | kLatestIs2,
     .none = kRejected | kRestored | kAtDate,
     .codes = {40025},
     .flags = kSub,
     .did = Did::kOfChosen},

    {.situation = "plain, first",
     .all = kOne | kFirst,
     .none = kOneNot | kTrial | kOffer,
     .codes = {40008},
     .flags = kSub,
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "plain, converted",
     .all = kOne | kAfterTrial,
     .none = kOneNot | kTrial | kOffer | kFirst,
     .codes = {40008},
     .flags = flag(kConvert),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "plain, renewed",
     .all = kOne,
     .none = kOneNot | kTrial | kOffer | kFirst | kAfterTrial,
     .codes = {40008},
     .flags = flag(kRenew),
     .did = Did::kOfChosenWithWebOrder},

    {.situation = "trial bought again, first",
     .all = kOne | kTrial | kStoreIdsDiffer | kFirst,
     .none = kOneNot,
     .codes = {40011},
     .flags = kSubInvalid | flag(kFreeTrial),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "trial bought again, not first",
     .all = kOne | kTrial | kStoreIdsDiffer,
     .none = kOneNot | kFirst,
     .codes = {40011},
     .flags = flag(kInvalid) | flag(kFreeTrial),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "trial, first",
     .all = kOne | kTrial | kFirst,
     .none = kOneNot | kOffer | kStoreIdsDiffer,
     .codes = {40009, 40010},
     .flags = kSub | flag(kFreeTrial),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "trial, not first",
     .all = kOne | kTrial,
     .none = kOneNot | kOffer | kStoreIdsDiffer | kFirst,
     .codes = {40009, 40010},
     .flags = flag(kFreeTrial),
     .did = Did::kOfChosenWithWebOrder},

    {.situation = "trial at an introductory price, first",
     .all = kOne | kTrial | kOffer | kFirst,
     .none = kOneNot | kStoreIdsDiffer,
     .codes = {40009, 40018, 40010},
     .flags = kSub | flag(kFreeTrial) | flag(kDiscounted),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "trial at an introductory price, converted",
     .all = kOne | kTrial | kOffer | kAfterTrial,
     .none = kOneNot | kStoreIdsDiffer | kFirst,
     .codes = {40009, 40018, 40010},
     .flags = flag(kConvert) | flag(kFreeTrial) | flag(kDiscounted),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "trial at an introductory price, renewed",
     .all = kOne | kTrial | kOffer,
     .none = kOneNot | kStoreIdsDiffer | kFirst | kAfterTrial,
     .codes = {40009, 40018, 40010},
     .flags = flag(kRenew) | flag(kFreeTrial) | flag(kDiscounted),
     .did = Did::kOfChosenWithWebOrder},

    {.situation = "introductory price, first",
     .all = kOne | kOffer | kFirst,
     .none = kOneNot | kTrial,
     .codes = {40018, 40010},
     .flags = kSub | flag(kDiscounted),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "introductory price, converted",
     .all = kOne | kOffer | kAfterTrial,
     .none = kOneNot | kTrial | kFirst,
     .codes = {40018, 40010},
     .flags = flag(kConvert) | flag(kDiscounted),
     .did = Did::kOfChosenWithWebOrder},
    {.situation = "introductory price, renewed",
     .all = kOne | kOffer,
     .none = kOneNot | kTrial | kFirst | kAfterTrial,
     .codes = {40018, 40010},
     .flags = flag(kRenew) | flag(kDiscounted),
     .did = Did::kOfChosenWithWebOrder},
};
constexpr std::size_t kRowCount = sizeof(kRows) / sizeof(kRows[0]);

constexpr ExpectedMessage kMessages[] = {
    {40003, "Transaction ID cannot be nil or empty."},
    {40005, "Restore/repurchase of non-consumable item will be reported as invalid"},
    {40007,
     "Transaction with mismatched transaction ID and original transaction ID will be reported as "
     "consumable"},
    {40008, "Transaction of auto-renewable subscription will be reported"},
    {40009, "Transaction of free-trial auto-renewable subscription will be reported"},
    {40010, "Transaction of auto-renewable subscription renewal will be reported"},
    {40011, "Repurchase of free-trial auto-renewable subscription will be reported as invalid"},
    {40018, "Transaction of introductory offer will be reported"},
    {40020, "Transaction missing in receipt will be reported as invalid", true},
    {40021, "Transaction of consumable item will be reported"},
    {40022, "Transaction of non-consumable item will be reported"},
    {40023, "Subscription transaction missing in receipt will be reported as invalid", true},
    {40024, "Subscription transaction with duplicate transaction date will be reported as invalid",
     true, true},
    {40025, "Transaction of non-renewing subscription will be reported"},
    {40026, "IAP Transaction cannot be created from nil product"},
    {40027, "IAP Transaction cannot be created from empty or nil product ID"},
    {40028, "IAP Transaction cannot be created from nil transaction"},
};

// The digests of the identifier's text, by series, by original transaction (the entry's own
// identifier, or another) and by web order line item (none, 0, or a number). Obtained with
//   for s in 0 1 2; do for o in 200$s 100$s; do for w in "" 0 7$s; do
//     printf %s "$o${w}monthly" | md5sum | cut -c17-32; done; done; done
constexpr std::uint64_t kDigests[3][2][3] = {
    {{0xa5f853c064ba53eb, 0x2c9d6138b148824e, 0xb11bd3ae724c065a},
     {0x92794f831b539753, 0x5276aa407097fc2e, 0x9d534130468cdf33}},
    {{0x9bbdab35cd3e1636, 0x44667dcaaaf94258, 0xcb21016d811ca361},
     {0x4a6204a53f7c024c, 0xf5bad4f1146a070d, 0x31d303e0570c36ef}},
    {{0x5db5ca65f3a8c778, 0xb783e865c019247f, 0xc2cd7055ce917bae},
     {0x4ed710c967b8a9c7, 0x4f8527523f18a403, 0x9374cd357e34ee11}},
};

// --- From a purchase to what is the case ----------------------------------------------------

// What the absent, 0, 1, 2, 3, 5, 2^32 + 3 and 2 - 2^32 read as in 32 bits.
constexpr int kTypeReads[] = {0, 0, 1, 2, 3, 5, 3, 2};

// Undated entries come first, then the dates in their order.
constexpr int kRankOfWhen[] = {0, 0, 1, 2, 3, 4};

int rankOf(const Entry& entry) { return kRankOfWhen[static_cast<std::size_t>(entry.when)]; }

bool idsEqual(const Entry& entry) {
  if (entry.transaction == TextIs::kGiven) return entry.original == EntryOriginalIs::kSame;
  return entry.transaction == TextIs::kEmpty && entry.original == EntryOriginalIs::kEmpty;
}

// The entries of the product that matter; null where there is none.
struct Chosen {
  const Entry* latest = nullptr;
  const Entry* atDate = nullptr;
  const Entry* beforeDate = nullptr;
  std::size_t count = 0;
  std::size_t countAtDate = 0;
};

Chosen chosenOf(const Purchase& purchase) {
  Chosen chosen;
  for (std::size_t i = 0; i < purchase.entryCount; ++i) {
    const Entry& entry = *purchase.entries[i];
    if (entry.product != EntryProductIs::kOurs) continue;
    ++chosen.count;
    // Among equals, the later in the receipt is the later purchase.
    if (chosen.latest == nullptr || rankOf(entry) >= rankOf(*chosen.latest)) chosen.latest = &entry;
    if (entry.when == When::kAtDate) {
      ++chosen.countAtDate;
      chosen.atDate = &entry;
    } else if (entry.when != When::kLater &&
               (chosen.beforeDate == nullptr || rankOf(entry) >= rankOf(*chosen.beforeDate))) {
      chosen.beforeDate = &entry;
    }
  }
  if (purchase.date != DateIs::kWhole) {
    chosen.countAtDate = 0;
    chosen.atDate = nullptr;
  }
  return chosen;
}

constexpr Facts when(bool isSo, Facts fact) { return isSo ? fact : 0; }

Facts factsOf(const Purchase& purchase, const Chosen& chosen) {
  const bool storeIdsDiffer =
      purchase.transaction == TextIs::kGiven && purchase.original == OriginalIs::kOther;
  Facts facts = when(purchase.product == ProductIs::kAbsent, kNoProduct) |
                when(purchase.product == ProductIs::kWithoutIdentifier ||
                         purchase.product == ProductIs::kEmptyIdentifier,
                     kNoIdentifier) |
                when(!purchase.hasTransaction, kNoTransaction) |
                when(storeIdsDiffer, kStoreIdsDiffer) | when(chosen.count > 0, kInReceipt) |
                when(chosen.countAtDate == 0, kNoneAtDate) |
                when(chosen.countAtDate > 1, kSeveralAtDate);
  if (chosen.latest != nullptr) {
    const Entry& latest = *chosen.latest;
    const int type = kTypeReads[static_cast<std::size_t>(latest.type)];
    const bool isSubscriptionLike =
        type == 2 || type == 3 || latest.webOrder != WebOrderIs::kAbsent;
    facts |= when(type == 0, kLatestIs0) | when(type == 1, kLatestIs1) |
             when(type == 2, kLatestIs2) | when(type == 0 && storeIdsDiffer, kRestored) |
             when(isSubscriptionLike, kSubscriptionLike) |
             when(isSubscriptionLike || chosen.count != 1, kByDate) |
             when(idsEqual(latest), kLatestIdsEqual);
  }
  if (chosen.atDate != nullptr) {
    facts |= when(chosen.atDate->isFreeTrial, kTrial) |
             when(chosen.atDate->isIntroductoryOffer, kOffer) |
             when(idsEqual(*chosen.atDate), kFirst) |
             when(chosen.beforeDate != nullptr && chosen.beforeDate->isFreeTrial, kAfterTrial);
  }
  return facts;
}

std::size_t rowOf(Facts facts) {
  std::size_t found = kNoSingleRow;
  for (std::size_t i = 0; i < kRowCount; ++i) {
    if ((facts & kRows[i].all) != kRows[i].all || (facts & kRows[i].none) != 0) continue;
    if (found != kNoSingleRow) return kNoSingleRow;
    found = i;
  }
  return found;
}

// --- From a row to the outcome --------------------------------------------------------------

void expectMessage(ExpectedOutcome& outcome, int code) {
  for (const ExpectedMessage& message : kMessages) {
    if (message.code == code) outcome.messages[outcome.messageCount++] = message;
  }
}

void expectInteger(ExpectedOutcome& outcome, Key key, std::int64_t integer) {
  outcome.values[key] = {ExpectedValue::Kind::kInteger, integer, {}};
}

void expectText(ExpectedOutcome& outcome, Key key, std::string_view text) {
  outcome.values[key] = {ExpectedValue::Kind::kText, 0, text};
}

std::int64_t digestOf(const Entry& entry, bool withWebOrder) {
  if (entry.original == EntryOriginalIs::kAbsent || entry.original == EntryOriginalIs::kEmpty)
    return -1;
  const std::size_t original = entry.original == EntryOriginalIs::kSame ? 0 : 1;
  const std::size_t webOrder = withWebOrder ? static_cast<std::size_t>(entry.webOrder) : 0;
  return static_cast<std::int64_t>(kDigests[entry.series][original][webOrder]);
}

constexpr std::int64_t kUnrepresentable = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMicrosInACent = 10000;

std::int64_t unitsOf(QuantityIs quantity) {
  if (quantity == QuantityIs::kPositive) return kPositiveQuantity;
  return quantity == QuantityIs::kNegative ? kNegativeQuantity : 0;
}

// What the store's records alone put into the event.
void expectBase(ExpectedOutcome& outcome, const Purchase& purchase) {
  expectText(outcome, kProductId, kOurProduct);
  if (purchase.hasCurrency) expectText(outcome, kCurrencyCode, kCurrency);
  if (purchase.hasTitle) expectText(outcome, kProductName, kTitle);
  if (purchase.price == PriceIs::kAbsent) return;
  const bool isNumber = purchase.price == PriceIs::kGiven;
  const std::int64_t units = unitsOf(purchase.quantity);
  const std::int64_t micros = kPriceCents * kMicrosInACent;
  expectInteger(outcome, kPrice, isNumber ? micros : kUnrepresentable);
  if (units == 0) return;
  expectInteger(outcome, kValue, isNumber ? micros * units : kUnrepresentable);
  expectInteger(outcome, kQuantity, units);
}

void expectDid(ExpectedOutcome& outcome, Did did, const Chosen& chosen) {
  if (did == Did::kInsufficient) expectInteger(outcome, kDid, -1);
  if (did == Did::kOfLatest) expectInteger(outcome, kDid, digestOf(*chosen.latest, false));
  if (did == Did::kOfChosen) expectInteger(outcome, kDid, digestOf(*chosen.atDate, false));
  if (did == Did::kOfChosenWithWebOrder)
    expectInteger(outcome, kDid, digestOf(*chosen.atDate, true));
}

// What was charged in place of the product's price.
enum class Charged : std::uint8_t { kTheProductsPrice, kNothing, kTheOffersPrice };

Charged chargedFor(const Purchase& purchase, Flags flags) {
  if ((flags & flag(kFreeTrial)) != 0) return Charged::kNothing;
  const bool offerCanBeRead = purchase.platformHasDiscounts && purchase.discountsHavePrice &&
                              purchase.discountsHaveMode && purchase.productHasOffer &&
                              purchase.offer != OfferIs::kAbsent;
  if ((flags & flag(kDiscounted)) == 0 || !offerCanBeRead) return Charged::kTheProductsPrice;
  if (purchase.offer == OfferIs::kMode2) return Charged::kNothing;
  return purchase.offerHasPrice ? Charged::kTheOffersPrice : Charged::kTheProductsPrice;
}

void expectCharged(ExpectedOutcome& outcome, Charged charged, std::int64_t units) {
  if (charged == Charged::kTheProductsPrice) return;
  outcome.values[kOriginalPrice] = outcome.values[kPrice];
  if (charged == Charged::kNothing) {
    expectInteger(outcome, kDiscounted, 1);
    expectInteger(outcome, kPrice, 0);
    expectInteger(outcome, kValue, 0);
    return;
  }
  expectInteger(outcome, kPrice, kOfferCents * kMicrosInACent);
  if (units != 0) expectInteger(outcome, kValue, kOfferCents * kMicrosInACent * units);
}

bool has(const ExpectedOutcome& outcome, Key key) {
  return outcome.values[key].kind != ExpectedValue::Kind::kNone;
}

}  // namespace

std::size_t rowCount() { return kRowCount; }

std::string_view situationOf(std::size_t row) {
  return row < kRowCount ? kRows[row].situation : "(no row, or more than one)";
}

ExpectedOutcome expectedOutcomeOf(const Purchase& purchase) {
  ExpectedOutcome outcome;
  const Chosen chosen = chosenOf(purchase);
  const Facts facts = factsOf(purchase, chosen);
  outcome.row = rowOf(facts);
  outcome.countAtDate = chosen.countAtDate;
  if (outcome.row == kNoSingleRow) return outcome;
  const Row& row = kRows[outcome.row];

  const bool isRejected = (facts & kRejected) != 0;
  if (!isRejected && purchase.transaction != TextIs::kGiven) expectMessage(outcome, 40003);
  for (const int code : row.codes) expectMessage(outcome, code);
  if (isRejected) return outcome;

  expectBase(outcome, purchase);
  for (std::size_t key = 0; key < kKeyCount; ++key) {
    if ((row.flags & (1u << key)) != 0) expectInteger(outcome, static_cast<Key>(key), 1);
  }
  expectDid(outcome, row.did, chosen);
  expectCharged(outcome, chargedFor(purchase, row.flags), unitsOf(purchase.quantity));
  outcome.hasEvent = has(outcome, kPrice) && has(outcome, kValue) && has(outcome, kCurrencyCode);
  return outcome;
}

}  // namespace qel::testing
