// Checks what explanations of random purchases say: each statement is looked up in a table and
// compared with the event, the messages and the exported matching, which the test gets itself.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "explain/explanation.h"
#include "explain/html_report.h"
#include "explain/text_report.h"
#include "qel/receipt_matching.h"
#include "qel/rfc3339.h"
#include "random_purchase.h"
#include "reference/random_source.h"
#include "support/recording_monitor.h"

namespace qel::tool {
namespace {

using qel::testing::RecordingMonitor;
using testing::RandomPurchase;

constexpr int kPurchases = 100000;

// What the component says about a purchase.
struct Truth {
  const Purchase& purchase;
  std::optional<EventParameters> event;
  std::vector<int> codes;
  QELInAppPurchaseItems ofProduct;
  QELInAppPurchaseItems atDate;

  bool hasCode(int code) const { return std::count(codes.begin(), codes.end(), code) > 0; }
  bool has(ParameterKey key) const { return event.has_value() && event->contains(key); }
  // The entry before the one at the date.
  const QELInAppPurchaseItem* previous() const {
    if (atDate.size() != 1) return nullptr;
    for (std::size_t i = 1; i < ofProduct.size(); ++i) {
      if (&ofProduct[i].get() == &atDate.front().get()) return &ofProduct[i - 1].get();
    }
    return nullptr;
  }
};

std::optional<EventParameters> eventOf(const Purchase& purchase) {
  return plainPurchaseEvent(purchase.product.has_value() ? &*purchase.product : nullptr,
                            purchase.transaction.has_value() ? &*purchase.transaction : nullptr,
                            purchase.receipt);
}

Truth truthOf(const Purchase& purchase) {
  Truth truth{.purchase = purchase, .event = {}, .codes = {}, .ofProduct = {}, .atDate = {}};
  const auto monitor = std::make_shared<RecordingMonitor>();
  QELMeasurement::setMonitor(monitor);
  truth.event = eventOf(purchase);
  QELMeasurement::setMonitor(nullptr);
  for (const auto& diagnostic : monitor->diagnostics()) truth.codes.push_back(diagnostic.code);
  if (purchase.product.has_value()) {
    truth.ofProduct = QELMatchingInAppPurchaseItems(
                          purchase.receipt, purchase.product->productIdentifier, std::nullopt)
                          .value_or(QELInAppPurchaseItems());
  }
  if (purchase.transaction.has_value()) {
    truth.atDate = QELMatchingInAppPurchaseItems(truth.ofProduct, std::nullopt,
                                                 purchase.transaction->transactionDate)
                       .value_or(QELInAppPurchaseItems());
  }
  return truth;
}

// --- Statements ---

// A statement that explanations make, and when it is true.
struct Statement {
  std::string_view words;
  std::function<bool(const Truth&)> isTrue;
};

bool sameIds(const QELInAppPurchaseItem& item) {
  return isEqual(item.transactionID, item.originalTransactionID);
}

bool isReadable(const QELInAppPurchaseItem& item) {
  return item.purchaseDateIA5String.has_value() &&
         parseRfc3339(*item.purchaseDateIA5String).has_value();
}

std::size_t unreadable(const Truth& truth) {
  return static_cast<std::size_t>(
      std::count_if(truth.ofProduct.begin(), truth.ofProduct.end(),
                    [](const QELInAppPurchaseItem& item) { return !isReadable(item); }));
}

// Whether the flag is set, if there is an event to have it.
bool isSetIfAny(const Truth& truth, ParameterKey flag) {
  return !truth.event.has_value() || truth.has(flag);
}

const QELInAppPurchaseItem& latest(const Truth& truth) { return truth.ofProduct.back(); }

OptionalText transactionIdentifier(const Truth& truth) {
  return truth.purchase.transaction->transactionIdentifier;
}

OptionalText originalIdentifier(const Truth& truth) {
  const auto& original = truth.purchase.transaction->originalTransaction;
  return original.has_value() ? OptionalText(original->transactionIdentifier) : OptionalText();
}

bool differInIds(const Truth& truth) {
  return !isEmpty(transactionIdentifier(truth)) && !isEmpty(originalIdentifier(truth)) &&
         !isEqual(transactionIdentifier(truth), originalIdentifier(truth));
}

bool offerIsUnknown(const Truth& truth) {
  const PlainProduct& product = *truth.purchase.product;
  return !product.hasDiscountClass || !product.discountsAnswerPrice ||
         !product.discountsAnswerPaymentMode || !product.answersIntroductoryPrice ||
         !product.introductoryPrice.has_value();
}

std::int32_t typeOf(const QELInAppPurchaseItem& item) {
  return static_cast<std::int32_t>(item.purchaseType.value_or(0));
}

const std::vector<Statement>& statements() {
  static const std::vector<Statement> kStatements = {
      // Facts of decisions.
      {"This is only a warning.", [](const Truth& t) { return isEmpty(transactionIdentifier(t)); }},
      {"The only entry of the product, ", [](const Truth& t) { return t.ofProduct.size() == 1; }},
      {"The latest entry of the product, ", [](const Truth& t) { return !t.ofProduct.empty(); }},
      {"so the product counts as a subscription.",
       [](const Truth& t) {
         return latest(t).webOrderLineItemID.has_value() && typeOf(latest(t)) != 3;
       }},
      {"so it counts as a subscription all the same.",
       [](const Truth& t) {
         return t.ofProduct.size() > 1 && !latest(t).webOrderLineItemID.has_value() &&
                typeOf(latest(t)) != 2 && typeOf(latest(t)) != 3;
       }},
      {" has the original transaction ", [](const Truth& t) { return differInIds(t); }},
      {"One entry is at the transaction's date, ",
       [](const Truth& t) { return t.atDate.size() == 1; }},
      {" is at the transaction's date, ",
       [](const Truth& t) { return t.atDate.empty() || t.atDate.size() == 1; }},
      {"It is not at the transaction's date, ",
       [](const Truth& t) { return t.atDate.empty() && t.ofProduct.size() == 1; }},
      {" entries are at the transaction's date, ",
       [](const Truth& t) { return t.atDate.size() > 1; }},
      {" a date that cannot be read", [](const Truth& t) { return unreadable(t) > 0; }},
      {"The date of no entry of the product can be read",
       [](const Truth& t) { return unreadable(t) == t.ofProduct.size(); }},
      {"The transaction has no date, so no entry can match it.",
       [](const Truth& t) { return !t.purchase.transaction->transactionDate.has_value(); }},
      {"It is neither a free trial nor an introductory offer.",
       [](const Truth& t) {
         const QELInAppPurchaseItem& item = t.atDate.at(0);
         return !item.isFreeTrial && !item.isIntroductoryOffer;
       }},
      {"It is a free trial.", [](const Truth& t) { return t.atDate.at(0).get().isFreeTrial; }},
      {"It is an introductory offer.",
       [](const Truth& t) { return t.atDate.at(0).get().isIntroductoryOffer; }},
      {"So there is no entry to report, and the purchase counts as a renewal.",
       [](const Truth& t) { return t.atDate.empty() && isSetIfAny(t, ParameterKey::kSubRenew); }},
      {"Its two transaction identifiers are equal, so it is a first purchase.",
       [](const Truth& t) {
         return sameIds(t.atDate.at(0)) && isSetIfAny(t, ParameterKey::kSubscription);
       }},
      {"Its two transaction identifiers are equal",
       [](const Truth& t) {
         return sameIds(t.atDate.size() == 1 ? t.atDate[0].get() : t.ofProduct.at(0).get());
       }},
      {" are not equal, so it is a later purchase.",
       [](const Truth& t) {
         return !sameIds(t.atDate.at(0)) &&
                (!t.event.has_value() || !t.has(ParameterKey::kSubscription));
       }},
      {" are not equal.",
       [](const Truth& t) { return !sameIds(t.ofProduct.at(0)) && t.ofProduct.size() == 1; }},
      {" is a free trial, so it is a conversion.",
       [](const Truth& t) {
         return t.previous() != nullptr && t.previous()->isFreeTrial &&
                isSetIfAny(t, ParameterKey::kSubConvert);
       }},
      {", is a free trial, so it is a conversion.",
       [](const Truth& t) { return isSetIfAny(t, ParameterKey::kSubConvert); }},
      {", is no free trial, so it is a renewal.",
       [](const Truth& t) {
         return t.previous() != nullptr && !t.previous()->isFreeTrial &&
                isSetIfAny(t, ParameterKey::kSubRenew);
       }},
      {"The receipt has no entry of the product before it, so it is a renewal.",
       [](const Truth& t) {
         return t.previous() == nullptr && isSetIfAny(t, ParameterKey::kSubRenew);
       }},
      {"the offer's price is not known.", offerIsUnknown},
      {"so its price is not known.", offerIsUnknown},
      {"The product's offer has payment mode 2 (free trial), so the price is 0.",
       [](const Truth& t) {
         return !offerIsUnknown(t) &&
                (!t.event.has_value() || t.event->find(ParameterKey::kPrice)->int64Value() == 0);
       }},
      {"The product's offer has no price.",
       [](const Truth& t) {
         return !offerIsUnknown(t) && !t.purchase.product->introductoryPrice->price.has_value();
       }},
      {"The product's offer has payment mode ", [](const Truth& t) { return !offerIsUnknown(t); }},
      {"The last code of every valid free trial and introductory offer.",
       [](const Truth& t) { return t.codes.back() == 40010; }},
      {"The receipt has no entries.", [](const Truth& t) { return t.purchase.receipt.empty(); }},
      {" has the product identifier ",
       [](const Truth& t) { return t.ofProduct.empty() && !t.purchase.receipt.empty(); }},
      {"The purchase has no product. Nothing else is read.",
       [](const Truth& t) { return !t.purchase.product.has_value(); }},
      {"The product's identifier is empty. Nothing else is read.",
       [](const Truth& t) { return t.purchase.product->productIdentifier == ""; }},
      {"The product has no identifier. Nothing else is read.",
       [](const Truth& t) { return !t.purchase.product->productIdentifier.has_value(); }},
      {"The purchase has no transaction. Nothing else is read.",
       [](const Truth& t) { return !t.purchase.transaction.has_value(); }},
      // Hints.
      {" in letter case only.", [](const Truth& t) { return t.ofProduct.empty(); }},
      {"The receipt has the transaction ",
       [](const Truth& t) {
         return t.atDate.empty() &&
                std::any_of(t.ofProduct.begin(), t.ofProduct.end(),
                            [&t](const QELInAppPurchaseItem& item) {
                              return isEqual(item.transactionID, transactionIdentifier(t));
                            });
       }},
      {"The transaction's date has a fraction of a second, ",
       [](const Truth& t) {
         return t.atDate.empty() && t.purchase.transaction->transactionDate->nanoseconds() != 0;
       }},
      {"The nearest entry, ",
       [](const Truth& t) { return t.atDate.empty() && unreadable(t) < t.ofProduct.size(); }},
      {" has the web order line item 0.",
       [](const Truth& t) {
         return std::any_of(
             t.ofProduct.begin(), t.ofProduct.end(),
             [](const QELInAppPurchaseItem& item) { return item.webOrderLineItemID == "0"; });
       }},
      {"The product's price is not a number",
       [](const Truth& t) { return !(t.purchase.product->price->doubleValue() >= 0); }},
      {"In micros that would be ",
       [](const Truth& t) { return t.purchase.product->price->doubleValue() >= 100000; }},
      {"In cents that would be ",
       [](const Truth& t) { return t.purchase.product->price->doubleValue() == 499; }},
      {" is too large for 64 bits of micros",
       [](const Truth& t) {
         constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
         const QELValuePtr price = t.event->find("price");
         const QELValuePtr value = t.event->find("value");
         return price->int64Value() == kLeast || value->int64Value() == kLeast;
       }},
      // Surprises.
      {"A product with several entries counts as a subscription",
       [](const Truth& t) { return t.ofProduct.size() > 1 && typeOf(latest(t)) != 3; }},
      {"there is none to take identifiers from: the deduplication identifier is -1",
       [](const Truth& t) {
         return t.atDate.empty() && (!t.event.has_value() ||
                                     t.event->find(ParameterKey::kDedupeId)->int64Value() == -1);
       }},
      {"it looks like a duplicate of that one.",
       [](const Truth& t) {
         return t.ofProduct.size() == 1 && t.atDate.empty() &&
                isSetIfAny(t, ParameterKey::kDedupeId);
       }},
      {"A free trial is invalid if its transaction continues another one",
       [](const Truth& t) { return t.hasCode(40011) && differInIds(t); }},
      {", and still a renewal: it continues the subscription of ",
       [](const Truth& t) {
         return t.previous() == nullptr && isSetIfAny(t, ParameterKey::kSubRenew);
       }},
      {"A later purchase is a renewal if the receipt has no entry of the product before it.",
       [](const Truth& t) {
         return t.previous() == nullptr && isSetIfAny(t, ParameterKey::kSubRenew);
       }},
      {"Such entries count as the earliest",
       [](const Truth& t) { return t.previous() != nullptr && !isReadable(*t.previous()); }},
      {"the amounts are the product's full price",
       [](const Truth& t) {
         return t.has(ParameterKey::kPriceIsDiscounted) && !t.has(ParameterKey::kOriginalPrice);
       }},
      {"and a free trial is neither a conversion nor a renewal.",
       [](const Truth& t) {
         return isSetIfAny(t, ParameterKey::kFreeTrial) && !t.has(ParameterKey::kSubConvert) &&
                !t.has(ParameterKey::kSubRenew);
       }},
      {"Code 40010 says renewal",
       [](const Truth& t) { return t.hasCode(40010) && !t.has(ParameterKey::kSubRenew); }},
  };
  return kStatements;
}

// Checks a sentence: it makes at least one known statement, and all that it makes are true.
int checkSentence(const Prose& sentence, const Truth& truth) {
  const std::string text = sentence.text();
  int made = 0;
  for (const Statement& statement : statements()) {
    if (text.find(statement.words) == std::string::npos) continue;
    ++made;
    EXPECT_TRUE(statement.isTrue(truth)) << statement.words << "\nin: " << text;
  }
  EXPECT_GT(made, 0) << "no known statement: " << text;
  return made;
}

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

// Returns the micros of an amount such as "-4.99 EUR".
std::optional<std::int64_t> microsOf(const std::string& amount) {
  const std::string number = amount.substr(0, amount.find(' '));
  const std::size_t point = std::min(number.find('.'), number.size());
  std::string digits = number.substr(0, point);
  std::string decimals = point < number.size() ? number.substr(point + 1) : "";
  if (decimals.size() > 6) return std::nullopt;
  decimals.resize(6, '0');
  return std::stoll(digits + decimals);
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
    EXPECT_FALSE(key.origin.empty()) << key.key;
    if (key.key != "_did") continue;
    if (explanation.dedupeTexts.empty()) {
      EXPECT_TRUE(value->int64Value() == -1 || value->int64Value() == 0);
    } else {
      EXPECT_EQ(digestOf(joinedInputs(key.origin)), value->int64Value());
    }
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
  // The amount of the sentence is that of the event.
  if (!isValid) return;
  for (const EventKey& key : explanation.keys) {
    if (key.key != "value") continue;
    EXPECT_NE(explanation.sentence.text().find(key.readable.text()), std::string::npos)
        << explanation.sentence.text();
  }
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
    EXPECT_EQ(entry.note.empty(), entry.role == Role::kNone);
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
  const auto names = [&sentence](std::string_view words) {
    return sentence.find(words) != std::string::npos;
  };
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
