// Checks what explanations of random purchases say. Sentences are checked by their statements, and
// the rest is compared with the event, the messages and the exported matching.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iostream>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "explain/explanation.h"
#include "explain/html_report.h"
#include "explain/text_report.h"
#include "qel/rfc3339.h"
#include "random_purchase.h"
#include "reference/random_source.h"
#include "statements.h"

namespace qel::tool {
namespace {

using testing::contains;
using testing::eventOf;
using testing::isReadable;
using testing::latest;
using testing::microsOf;
using testing::nameIn;
using testing::offerPriceIsUnknown;
using testing::originalIdentifier;
using testing::RandomPurchase;
using testing::sameIds;
using testing::shown;
using testing::Truth;
using testing::truthOf;
using testing::typeIn;

constexpr int kPurchases = 100000;

// --- Values ---

// Returns the last eight bytes of the MD5 digest as a signed number, by libcrypto.
std::int64_t digestOf(const std::string& bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
  unsigned size = 0;
  EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_md5(), nullptr);
  std::uint64_t number = 0;
  for (std::size_t i = 8; i < 16; ++i) number = number << 8 | digest[i];
  return static_cast<std::int64_t>(number);
}

// Joins the texts of the input in the sentence, as a reader of it would. Two halves of a character
// that meet become one character.
std::string joinedInputs(const Prose& sentence) {
  std::string joined;
  for (const Span& span : sentence.spans()) {
    if (span.isInput) joined += span.text;
  }
  const std::string halves = "\xED\xA0\xBD\xED\xB8\x80";
  const std::size_t position = joined.find(halves);
  return position == std::string::npos ? joined
                                       : joined.replace(position, halves.size(), "\U0001F600");
}

// Returns the entry that the purchase is reported as, by the codes.
const QELInAppPurchaseItem* reportedEntry(const Truth& truth) {
  for (const int code : {40005, 40020, 40023, 40024, 40026, 40027, 40028}) {
    if (truth.hasCode(code)) return nullptr;
  }
  for (const int code : {40008, 40009, 40011, 40018, 40025}) {
    if (truth.hasCode(code)) return truth.atDate.empty() ? nullptr : &truth.atDate[0].get();
  }
  return &truth.ofProduct.at(0).get();
}

// Returns the price in micros without an offer: that of an event without a receipt.
std::optional<std::int64_t> fullPrice(const Purchase& original) {
  Purchase purchase = original;
  purchase.receipt.clear();
  const std::optional<EventParameters> event = eventOf(purchase);
  if (!event.has_value()) return std::nullopt;
  return event->find(ParameterKey::kPrice)->int64Value();
}

// Returns the price in micros of the product's offer.
std::optional<std::int64_t> offerPrice(const Truth& truth) {
  if (offerPriceIsUnknown(truth)) return std::nullopt;
  Purchase purchase = truth.purchase;
  purchase.product->price = purchase.product->introductoryPrice->price;
  // An event without a receipt has no price without a quantity.
  if (purchase.transaction->quantity.value_or(0) == 0) purchase.transaction->quantity = 1;
  return fullPrice(purchase);
}

// Returns whether an amount comes from where the explanation says.
bool isOriginOfAmount(const EventKey& key, const Truth& truth) {
  const std::string origin = key.origin.text();
  const std::int64_t amount = truth.event->find(key.key)->int64Value();
  const bool isOffer = truth.has(ParameterKey::kPriceIsDiscounted) &&
                       !truth.has(ParameterKey::kFreeTrial) && !offerPriceIsUnknown(truth);
  Purchase withQuantity = truth.purchase;
  withQuantity.transaction->quantity = 1;
  if (origin.starts_with("price x quantity ")) {
    return key.key == "value" &&
           origin == "price x quantity " + std::to_string(*truth.purchase.transaction->quantity);
  }
  if (origin == "the product's price") return fullPrice(withQuantity) == amount;
  if (origin == "the product's price: the offer's cannot be read") {
    return fullPrice(withQuantity) == amount && truth.has(ParameterKey::kPriceIsDiscounted) &&
           offerPriceIsUnknown(truth);
  }
  if (origin == "a free trial costs nothing") {
    return amount == 0 && truth.has(ParameterKey::kFreeTrial);
  }
  if (origin == "the introductory offer is a free trial (payment mode 2)") {
    return amount == 0 && isOffer && truth.purchase.product->introductoryPrice->paymentMode == 2;
  }
  return origin == "the price of the product's introductory offer" && isOffer &&
         offerPrice(truth) == amount;
}

// Returns whether a flag comes from where the explanation says: from a code, or from the entry at
// the date and the one before it.
bool isOriginOfFlag(const EventKey& key, const Truth& truth) {
  const std::string origin = key.origin.text();
  if (origin.starts_with("code ")) return truth.hasCode(std::stoi(origin.substr(5)));
  if (origin == "every purchase of a non-renewing subscription") return truth.hasCode(40025);
  if (origin == "there is no entry to report") return truth.atDate.empty();
  const QELInAppPurchaseItem& item = truth.atDate.at(0);
  const std::string name = nameIn(item);
  if (key.key == "subscription") {
    return origin.starts_with("first purchase: entry " + name) && sameIds(item);
  }
  if (key.key == "free_trial" || key.key == "price_is_discounted") {
    return origin.starts_with("entry " + name) &&
           ((origin.ends_with(" is a free trial") && item.isFreeTrial) ||
            (origin.ends_with(" is an introductory offer") && item.isIntroductoryOffer));
  }
  const QELInAppPurchaseItem* const previous = truth.previous();
  if (previous == nullptr) {
    return origin.starts_with("the receipt has no entry of the product before " + name);
  }
  return origin.starts_with("entry " + nameIn(*previous)) && contains(origin, " before " + name) &&
         origin.ends_with(previous->isFreeTrial ? " is a free trial" : " is no free trial") &&
         previous->isFreeTrial == (key.key == "sub_convert");
}

bool isOriginOfDedupeId(const EventKey& key, const Truth& truth) {
  const std::string origin = key.origin.text();
  // checkKeys() computes the digest.
  if (origin.starts_with("MD5, last 8 bytes, of ")) return true;
  const std::int64_t value = truth.event->find(key.key)->int64Value();
  const QELInAppPurchaseItem* const item = reportedEntry(truth);
  if (item == nullptr) return origin == "there is no entry to make it from" && value == -1;
  if (origin.starts_with("the identifiers have half a character")) return value == 0;
  return origin.starts_with("entry " + nameIn(*item)) && value == -1 &&
         origin.ends_with(" has no original transaction identifier") &&
         isEmpty(item->originalTransactionID);
}

// Returns whether a value comes from where the explanation says.
bool isOrigin(const EventKey& key, const Truth& truth) {
  const std::string origin = key.origin.text();
  const PlainProduct& product = *truth.purchase.product;
  const QELValuePtr value = truth.event->find(key.key);
  const auto isText = [&](std::string_view words, const OptionalText& text) {
    return origin == words && isEqual(value->stringValue(), text);
  };
  if (key.key == "product_id") return isText("the product's identifier", product.productIdentifier);
  if (key.key == "product_name") {
    return isText("the product's localized title", product.localizedTitle);
  }
  if (key.key == "currency") {
    return isText("the currency of the product's price", product.priceLocaleCurrencyCode);
  }
  if (key.key == "quantity") {
    return origin == "the payment's quantity" &&
           value->int64Value() == truth.purchase.transaction->quantity;
  }
  if (key.key == "_did") return isOriginOfDedupeId(key, truth);
  return key.readable.empty() ? isOriginOfFlag(key, truth) : isOriginOfAmount(key, truth);
}

void checkKeys(const Explanation& explanation, const Truth& truth) {
  constexpr std::int64_t kNoAmount = std::numeric_limits<std::int64_t>::min();
  ASSERT_EQ(explanation.keys.size(), truth.event.has_value() ? truth.event->size() : 0);
  for (const EventKey& key : explanation.keys) {
    const QELValuePtr value = truth.event->find(key.key);
    ASSERT_NE(value, nullptr) << key.key;
    if (const OptionalText text = value->stringValue()) {
      EXPECT_EQ(key.value.text(), text->empty() ? "(empty)" : std::string(*text));
    } else {
      EXPECT_EQ(key.value.text(), std::to_string(value->int64Value()));
    }
    if (!key.readable.empty()) {
      const std::string amount = key.readable.text();
      if (value->int64Value() == kNoAmount) {
        EXPECT_EQ(amount, "no amount");
      } else {
        EXPECT_EQ(microsOf(amount), value->int64Value()) << amount;
      }
    }
    EXPECT_TRUE(isOrigin(key, truth)) << key.key << ": " << key.origin.text();
    if (key.key != "_did") continue;
    if (explanation.dedupeTexts.empty()) {
      EXPECT_TRUE(value->int64Value() == -1 || value->int64Value() == 0);
    } else {
      EXPECT_EQ(digestOf(joinedInputs(key.origin)), value->int64Value());
    }
  }
}

std::string invalidSentence(const Truth& truth) {
  const std::string original = shown(originalIdentifier(truth));
  if (truth.hasCode(40005)) {
    return ": a restore or second purchase of a non-consumable, first bought in transaction " +
           original;
  }
  if (truth.hasCode(40011)) {
    return ": a free trial in a transaction that continues transaction " + original;
  }
  if (truth.purchase.receipt.empty()) return ": the receipt has no entries";
  if (truth.ofProduct.empty()) return ": the receipt has no entry of this product";
  if (!truth.purchase.transaction->transactionDate.has_value()) {
    return ": the transaction has no date, so it matches no entry of the receipt";
  }
  if (truth.atDate.empty()) {
    return ": the receipt has no entry of this product at the transaction's date";
  }
  return ": the receipt has " + std::to_string(truth.atDate.size()) +
         " entries of this product at the transaction's date";
}

// Returns the amounts at the end of a sentence about a valid purchase.
std::string amountsOf(const Explanation& explanation, const Truth& truth) {
  std::map<std::string_view, std::string> amounts;
  for (const EventKey& key : explanation.keys) amounts[key.key] = key.readable.text();
  const auto number = [&truth](std::string_view key) {
    const QELValuePtr value = truth.event->find(key);
    return value == nullptr ? 0 : value->int64Value();
  };
  const std::int64_t quantity = number("quantity");
  std::string end = ": ";
  const bool isSum = quantity != 0 && quantity != 1 && number("value") != 0 &&
                     number("value") % quantity == 0 &&
                     number("value") / quantity == number("price");
  if (isSum) end += std::to_string(quantity) + " x " + amounts["price"] + " = ";
  end += amounts["value"];
  if (amounts.contains("original_price")) end += " instead of " + amounts["original_price"];
  return end;
}

// Checks a sentence of a valid purchase: it ends with amounts of the event, and begins with words
// that are true.
void checkValidSentence(const Explanation& explanation, const Truth& truth) {
  const std::string end = amountsOf(explanation, truth);
  const std::string sentence = explanation.sentence.text();
  ASSERT_TRUE(sentence.ends_with(end)) << sentence << "\nexpected at its end: " << end;

  const std::string start = sentence.substr(0, sentence.size() - end.size());
  const Outcome outcome = explanation.outcome;
  const bool hasOffer = outcome == Outcome::kFreeTrial || outcome == Outcome::kIntroductoryOffer;
  EXPECT_EQ(contains(start, ", right after a free trial"),
            hasOffer && truth.has(ParameterKey::kSubConvert));
  EXPECT_EQ(contains(start, ", in a renewal"), hasOffer && truth.has(ParameterKey::kSubRenew));
  EXPECT_EQ(start == " of a free trial", outcome == Outcome::kConversion);
  EXPECT_EQ(contains(start, " at the full price"), outcome == Outcome::kIntroductoryOffer &&
                                                       offerPriceIsUnknown(truth) &&
                                                       truth.purchase.product->price.has_value());
  EXPECT_EQ(start == " without an entry in the receipt",
            outcome == Outcome::kRenewal && truth.atDate.empty());
  EXPECT_EQ(start == " without a deduplication identifier", truth.hasCode(40007));
  if (outcome == Outcome::kOneOff && !truth.hasCode(40007)) {
    EXPECT_TRUE(start.starts_with(" of " + typeIn(truth.ofProduct.at(0)))) << start;
  }
}

void checkSentenceOfOutcome(const Explanation& explanation, const Truth& truth) {
  // The flags that an outcome means, those that it excludes, and the code that it needs.
  const auto has = [&truth](ParameterKey key) { return truth.has(key); };
  const bool isDiscounted = has(ParameterKey::kFreeTrial) || has(ParameterKey::kPriceIsDiscounted);
  const bool isValid = truth.event.has_value() && !has(ParameterKey::kInvalid);
  const std::map<Outcome, bool> isTrue = {
      {Outcome::kNoEvent, !truth.event.has_value()},
      {Outcome::kInvalid, has(ParameterKey::kInvalid)},
      {Outcome::kFreeTrial, isValid && has(ParameterKey::kFreeTrial)},
      {Outcome::kIntroductoryOffer,
       isValid && has(ParameterKey::kPriceIsDiscounted) && !has(ParameterKey::kFreeTrial)},
      {Outcome::kConversion, isValid && has(ParameterKey::kSubConvert) && !isDiscounted},
      {Outcome::kRenewal, isValid && has(ParameterKey::kSubRenew) && !isDiscounted},
      {Outcome::kNonRenewing, isValid && truth.hasCode(40025)},
      {Outcome::kNewSubscription,
       isValid && has(ParameterKey::kSubscription) && !isDiscounted && !truth.hasCode(40025)},
      {Outcome::kConsumable, isValid && truth.hasCode(40021)},
      {Outcome::kNonConsumable, isValid && truth.hasCode(40022)},
      {Outcome::kOneOff, isValid && !has(ParameterKey::kSubscription) &&
                             (truth.hasCode(40007) || truth.codes.empty() ||
                              (truth.codes.size() == 1 && truth.hasCode(40003)))},
  };
  for (const auto& [outcome, applies] : isTrue) {
    EXPECT_EQ(explanation.outcome == outcome, applies) << nameOf(outcome);
  }
  if (isValid) checkValidSentence(explanation, truth);
  if (has(ParameterKey::kInvalid)) {
    EXPECT_EQ(explanation.sentence.text(), invalidSentence(truth));
  }
}

// Returns the note that an entry of this role must have.
std::string noteOf(const TimelineEntry& entry, const Truth& truth) {
  switch (entry.role) {
    case Role::kNone:
      break;
    case Role::kReported: {
      const bool isFoundByDate = std::any_of(truth.codes.begin(), truth.codes.end(), [](int code) {
        return code == 40008 || code == 40009 || code == 40011 || code == 40018 || code == 40025;
      });
      return isFoundByDate ? "reported: it is at the transaction's date"
                           : "reported: the only entry of the product";
    }
    case Role::kDeciding:
      return entry.item.isFreeTrial ? "right before it, a free trial: so a conversion"
                                    : "right before it, no free trial: so a renewal";
    case Role::kDuplicate: {
      const std::size_t others = truth.atDate.size() - 1;
      return "at the transaction's date, like " + std::to_string(others) +
             (others == 1 ? " other entry" : " other entries");
    }
    case Role::kLatest:
      EXPECT_TRUE(truth.hasCode(40005));
      EXPECT_EQ(&entry.item, &latest(truth));
      return "the latest entry: it makes the product a non-consumable";
  }
  return "";
}

// Checks the text beside the transaction's date. If it says that the date is not compared, the date
// of any entry must give the same codes.
void checkTransactionDate(const Explanation& explanation, const Truth& truth) {
  const bool hasDate = truth.purchase.transaction.has_value() &&
                       truth.purchase.transaction->transactionDate.has_value();
  if (!hasDate || !truth.atDate.empty()) return;
  const std::string_view text = transactionDateText(explanation.facts);
  if (text == "the transaction's date; no entry has it") return;
  EXPECT_EQ(text, "the transaction's date; it is not compared");
  Purchase purchase = truth.purchase;
  for (const QELInAppPurchaseItem& item : truth.ofProduct) {
    if (!isReadable(item)) continue;
    purchase.transaction->transactionDate = parseRfc3339(*item.purchaseDateIA5String);
    EXPECT_EQ(truthOf(purchase).codes, truth.codes);
  }
}

void checkTimeline(const Explanation& explanation, const Truth& truth) {
  ASSERT_EQ(explanation.timeline.size(), truth.ofProduct.size());
  const QELInAppPurchaseItem* reported = nullptr;
  const QELInAppPurchaseItem* deciding = nullptr;
  std::size_t duplicates = 0;
  for (std::size_t i = 0; i < explanation.timeline.size(); ++i) {
    const TimelineEntry& entry = explanation.timeline[i];
    EXPECT_EQ(&entry.item, &truth.ofProduct[i].get());
    EXPECT_EQ(entry.date.has_value(), isReadable(entry.item));
    if (entry.role == Role::kReported) reported = &entry.item;
    if (entry.role == Role::kDeciding) deciding = &entry.item;
    if (entry.role == Role::kDuplicate) ++duplicates;
    EXPECT_EQ(entry.note.text(), noteOf(entry, truth));
  }
  EXPECT_EQ(reported, reportedEntry(truth));
  EXPECT_EQ(duplicates, truth.hasCode(40024) ? truth.atDate.size() : 0);
  const bool isLater = truth.has(ParameterKey::kSubConvert) || truth.has(ParameterKey::kSubRenew);
  if (truth.event.has_value()) {
    EXPECT_EQ(deciding, isLater ? truth.previous() : nullptr);
  }
  if (deciding != nullptr && truth.event.has_value()) {
    EXPECT_EQ(deciding->isFreeTrial, truth.has(ParameterKey::kSubConvert));
  }
  EXPECT_EQ(explanation.others.size(), truth.purchase.receipt.size() - truth.ofProduct.size());
}

// Checks that the reasons of "no event" are inputs that are missing and needed.
void checkMissing(const Explanation& explanation, const Truth& truth) {
  const std::vector<MissingInput>& missing = explanation.facts.missing;
  const bool isRejected = truth.hasCode(40026) || truth.hasCode(40027) || truth.hasCode(40028);
  EXPECT_EQ(missing.empty(), truth.event.has_value() || isRejected);
  if (missing.empty()) return;

  const auto eventWithAllBut = [&](std::size_t left) {
    Purchase purchase = truth.purchase;
    for (std::size_t i = 0; i < missing.size(); ++i) {
      if (i == left) continue;
      if (missing[i] == MissingInput::kCurrency) purchase.product->priceLocaleCurrencyCode = "GBP";
      if (missing[i] == MissingInput::kPrice) purchase.product->price = Decimal::fromString("2.5");
      if (missing[i] == MissingInput::kQuantity) purchase.transaction->quantity = 7;
    }
    return eventOf(purchase);
  };
  EXPECT_TRUE(eventWithAllBut(missing.size()).has_value());
  for (std::size_t i = 0; i < missing.size(); ++i) EXPECT_FALSE(eventWithAllBut(i).has_value());

  const std::string sentence = explanation.sentence.text();
  const auto names = [&sentence](std::string_view words) { return contains(sentence, words); };
  EXPECT_TRUE(!names("no currency") ||
              !truth.purchase.product->priceLocaleCurrencyCode.has_value());
  EXPECT_TRUE(!names("no price") || !truth.purchase.product->price.has_value());
  EXPECT_TRUE(!names("quantity is 0") || truth.purchase.transaction->quantity == 0);
  EXPECT_TRUE(!names("no payment") || !truth.purchase.transaction->quantity.has_value());
}

int checkDecisions(const Explanation& explanation, const Truth& truth) {
  std::vector<int> codes;
  int made = 0;
  for (const Decision& decision : explanation.decisions) {
    if (decision.code != 0) codes.push_back(decision.code);
    for (const Prose& fact : decision.facts) made += checkSentence(fact, truth);
  }
  EXPECT_EQ(codes, truth.codes);
  return made;
}

// Checks that a text for a terminal has no character that controls it.
void checkText(const Explanation& explanation) {
  const std::string text = textReport(explanation, 1, TextColor::kNone);
  const bool hasControl = std::any_of(text.begin(), text.end(), [](unsigned char character) {
    return character != '\n' && (character < 0x20 || character == 0x7F);
  });
  EXPECT_FALSE(hasControl) << text;
}

TEST(ExplanationComparisonTest, EachStatementAgreesWithTheComponent) {
  std::mt19937_64 random = qel::testing::seededRandom();
  std::map<std::string_view, int> outcomes;
  int made = 0;
  int sentences = 0;
  for (int i = 0; i < kPurchases && !HasFailure(); ++i) {
    const RandomPurchase purchase(random);
    const Truth truth = truthOf(*purchase);
    const Explanation explanation = explain(*purchase);
    ++outcomes[nameOf(explanation.outcome)];
    checkKeys(explanation, truth);
    checkSentenceOfOutcome(explanation, truth);
    checkTimeline(explanation, truth);
    checkTransactionDate(explanation, truth);
    checkMissing(explanation, truth);
    made += checkDecisions(explanation, truth);
    for (const std::vector<Prose>* const texts : {&explanation.hints, &explanation.surprises}) {
      for (const Prose& text : *texts) made += checkSentence(text, truth);
      sentences += static_cast<int>(texts->size());
    }
    if (i % 20 == 0) checkText(explanation);
    if (HasFailure()) ADD_FAILURE() << textReport(explanation, 1, TextColor::kNone);
  }
  std::cout << made << " statements checked, " << sentences << " of them hints and surprises\n";
  for (const auto& [name, count] : outcomes) std::cout << count << " " << name << '\n';
  // All outcomes occur.
  EXPECT_EQ(outcomes.size(), kOutcomeNames.size());
}

}  // namespace
}  // namespace qel::tool
