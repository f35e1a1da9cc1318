// Checks what explanations of random purchases say: each statement is looked up in a table and
// compared with the event, the messages and the exported matching, which the test gets itself.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
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

// What a sentence says around the words of a statement.
struct Around {
  std::string_view before;
  std::string_view after;
};

// A statement that explanations make, and when it is true.
struct Statement {
  std::string_view words;
  std::function<bool(const Truth&)> isTrue;
  // Whether what the sentence names around the words is right. Absent if it names nothing.
  std::function<bool(const Truth&, const Around&)> namesWhatItMeans = nullptr;
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

bool offerPriceIsUnknown(const Truth& truth) {
  if (offerIsUnknown(truth)) return true;
  const PlainDiscount& offer = *truth.purchase.product->introductoryPrice;
  return offer.paymentMode != 2 && !offer.price.has_value();
}

std::int32_t typeOf(const QELInAppPurchaseItem& item) {
  return static_cast<std::int32_t>(item.purchaseType.value_or(0));
}

std::string shown(const OptionalText& text) {
  if (!text.has_value()) return "(absent)";
  return text->empty() ? "(empty)" : std::string(*text);
}

// Returns "2019-04-14 09:26:53.250". A fraction of a random date is always a quarter.
std::string dateIn(const Instant& date) {
  const std::chrono::sys_seconds time{std::chrono::seconds(date.seconds())};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day ymd{day};
  const std::chrono::hh_mm_ss clock{time - day};
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d%s",
                static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()),
                static_cast<unsigned>(ymd.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()), date.nanoseconds() == 0 ? "" : ".250");
  return text.data();
}

std::string utc(const Instant& date) { return dateIn(date) + " UTC"; }

// Returns the name of an entry.
std::string nameIn(const QELInAppPurchaseItem& item) {
  if (!isEmpty(item.transactionID)) return std::string(*item.transactionID);
  if (!isReadable(item)) return "without an identifier or a readable date";
  return "without an identifier, of " + dateIn(*parseRfc3339(*item.purchaseDateIA5String));
}

std::string utcOfTransaction(const Truth& truth) {
  return utc(*truth.purchase.transaction->transactionDate);
}

std::string bothIdentifiers(const QELInAppPurchaseItem& item) {
  return "Its transaction identifier " + shown(item.transactionID) + " and its original one " +
         shown(item.originalTransactionID);
}

std::string typeIn(const QELInAppPurchaseItem& item) {
  const std::string counts = std::to_string(typeOf(item));
  if (!item.purchaseType.has_value()) return "no type, which counts as type 0 ";
  if (*item.purchaseType == typeOf(item)) return "type " + counts + " ";
  return "type " + std::to_string(*item.purchaseType) + ", which counts as type " + counts + " ";
}

std::int64_t secondsAfter(const Truth& truth, const QELInAppPurchaseItem& item) {
  return parseRfc3339(*item.purchaseDateIA5String)->seconds() -
         truth.purchase.transaction->transactionDate->seconds();
}

// Returns the nearest entry if it is the one that a sentence names, or null.
const QELInAppPurchaseItem* nearest(const Truth& truth, std::string_view named) {
  const QELInAppPurchaseItem* found = nullptr;
  for (const QELInAppPurchaseItem& item : truth.ofProduct) {
    if (!isReadable(item)) continue;
    const std::int64_t distance = std::abs(secondsAfter(truth, item));
    const std::int64_t least = found == nullptr ? distance : std::abs(secondsAfter(truth, *found));
    const bool isNamed = named.starts_with(nameIn(item));
    if (found == nullptr || distance < least || (distance == least && isNamed)) found = &item;
  }
  return found != nullptr && named.starts_with(nameIn(*found)) ? found : nullptr;
}

// Returns the nearest entry of a sentence that suggests what its distance means.
const QELInAppPurchaseItem* nearestBefore(const Truth& truth, std::string_view before) {
  constexpr std::string_view kStart = "The nearest entry, ";
  return before.starts_with(kStart) ? nearest(truth, before.substr(kStart.size())) : nullptr;
}

bool contains(std::string_view text, std::string_view words) {
  return text.find(words) != std::string_view::npos;
}

bool namesNearest(const Truth& truth, const Around& around) {
  const QELInAppPurchaseItem* const item = nearest(truth, around.after);
  if (item == nullptr) return false;
  const std::int64_t distance = secondsAfter(truth, *item);
  const std::string number = std::to_string(std::abs(distance)) + " s";
  const bool hasNumber =
      contains(around.after, "(" + number + ") ") || contains(around.after, ", is " + number + " ");
  const bool isExact = std::abs(distance) < std::int64_t{100} * 3600;
  return (hasNumber || !isExact) &&
         contains(around.after, distance < 0 ? " before the trans" : " after the trans");
}

bool anyOf(const QELInAppPurchaseItems& items,
           const std::function<bool(const QELInAppPurchaseItem&)>& applies) {
  return std::any_of(items.begin(), items.end(), applies);
}

// Returns the entries of other products in the same subscription, before the one at the date.
QELInAppPurchaseItems earlierPlans(const Truth& truth) {
  QELInAppPurchaseItems plans;
  const QELInAppPurchaseItem& reported = truth.atDate.at(0);
  for (const QELInAppPurchaseItem& item : truth.purchase.receipt) {
    const bool isOther = !isEqual(item.productID, truth.purchase.product->productIdentifier);
    const bool isSame = isEqual(item.originalTransactionID, reported.originalTransactionID);
    if (isOther && isSame && isReadable(item) && secondsAfter(truth, item) < 0) {
      plans.emplace_back(item);
    }
  }
  return plans;
}

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& character : result) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
  return result;
}

// Returns the micros of an amount that a text begins with, such as "-4.99 EUR".
std::optional<std::int64_t> microsOf(std::string_view text) {
  std::string number(text.substr(0, text.find(' ')));
  // The end of a sentence.
  if (number.ends_with('.')) number.pop_back();
  const std::size_t point = std::min(number.find('.'), number.size());
  std::string digits = number.substr(0, point);
  std::string decimals = point < number.size() ? number.substr(point + 1) : "";
  if (decimals.size() > 6) return std::nullopt;
  decimals.resize(6, '0');
  return std::stoll(digits + decimals);
}

// Returns the outcome if all entries of the product without a type had type 3.
std::string_view outcomeWithTypes(const Truth& truth) {
  Purchase purchase = truth.purchase;
  std::vector<QELInAppPurchaseItem> items(purchase.receipt.begin(), purchase.receipt.end());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const bool isOfProduct = isEqual(items[i].productID, purchase.product->productIdentifier);
    if (isOfProduct && !items[i].purchaseType.has_value()) items[i].purchaseType = 3;
    purchase.receipt[i] = items[i];
  }
  return nameOf(explain(purchase).outcome);
}

const std::vector<Statement>& statements() {
  static const std::vector<Statement> kStatements = {
      // Facts of decisions.
      {"This is only a warning.", [](const Truth& t) { return isEmpty(transactionIdentifier(t)); }},
      {"The only entry of the product, ", [](const Truth& t) { return t.ofProduct.size() == 1; }},
      {"The latest entry of the product, ", [](const Truth& t) { return !t.ofProduct.empty(); }},
      {" entry of the product, ", [](const Truth& t) { return !t.ofProduct.empty(); },
       [](const Truth& t, const Around& around) {
         // "The entry of the product right before it" is a statement of its own.
         const bool hasType =
             contains(around.after, ", has type") || contains(around.after, ", has no type");
         return around.after.starts_with(nameIn(latest(t)) + ",") &&
                (!hasType || contains(around.after, ", has " + typeIn(latest(t))));
       }},
      {"so the product counts as a subscription.",
       [](const Truth& t) {
         return latest(t).webOrderLineItemID.has_value() && typeOf(latest(t)) != 3;
       }},
      {"so it counts as a subscription all the same.",
       [](const Truth& t) {
         return t.ofProduct.size() > 1 && !latest(t).webOrderLineItemID.has_value() &&
                typeOf(latest(t)) != 2 && typeOf(latest(t)) != 3;
       },
       [](const Truth& t, const Around& around) {
         return around.before.ends_with(" The product has " + std::to_string(t.ofProduct.size()) +
                                        " entries, ");
       }},
      {" has the original transaction ", [](const Truth& t) { return differInIds(t); },
       [](const Truth& t, const Around& around) {
         return around.before == "Transaction " + shown(transactionIdentifier(t)) &&
                around.after == shown(originalIdentifier(t)) + ".";
       }},
      {"One entry is at the transaction's date, ",
       [](const Truth& t) { return t.atDate.size() == 1; },
       [](const Truth& t, const Around& around) {
         return around.after.starts_with(utcOfTransaction(t) + ": " + nameIn(t.atDate[0]));
       }},
      {" is at the transaction's date, ",
       [](const Truth& t) { return t.atDate.empty() || t.atDate.size() == 1; }},
      {"It is not at the transaction's date, ",
       [](const Truth& t) { return t.atDate.empty() && t.ofProduct.size() == 1; }},
      {"None of the product's ", [](const Truth& t) { return t.atDate.empty(); },
       [](const Truth& t, const Around& around) {
         return around.after.starts_with(std::to_string(t.ofProduct.size()) +
                                         " entries is at the transaction's date, " +
                                         utcOfTransaction(t));
       }},
      {" entries are at the transaction's date, ",
       [](const Truth& t) { return t.atDate.size() > 1; },
       [](const Truth& t, const Around& around) {
         std::string names;
         for (std::size_t i = 0; i < t.atDate.size() && i < 5; ++i) {
           if (i > 0) names += ", ";
           names += nameIn(t.atDate[i]);
         }
         return around.before == std::to_string(t.atDate.size()) &&
                around.after.starts_with(utcOfTransaction(t) + ": " + names);
       }},
      {" a date that cannot be read", [](const Truth& t) { return unreadable(t) > 0; },
       [](const Truth& t, const Around& around) {
         const std::string number = std::to_string(unreadable(t));
         return around.before.ends_with(number + " entry has") ||
                around.before.ends_with(number + " entries have") ||
                (around.before.ends_with("It has") && t.ofProduct.size() == 1);
       }},
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
       },
       [](const Truth& t, const Around& around) {
         return around.before == bothIdentifiers(t.atDate[0]);
       }},
      {" are not equal.",
       [](const Truth& t) { return !sameIds(t.ofProduct.at(0)) && t.ofProduct.size() == 1; },
       [](const Truth& t, const Around& around) {
         return around.before == bothIdentifiers(t.ofProduct[0]);
       }},
      {"The entry of the product right before it, ",
       [](const Truth& t) { return t.previous() != nullptr; },
       [](const Truth& t, const Around& around) {
         return around.after.starts_with(nameIn(*t.previous()) + ",");
       }},
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
      {"The product's offer has payment mode ", [](const Truth& t) { return !offerIsUnknown(t); },
       [](const Truth& t, const Around& around) {
         const PlainDiscount& offer = *t.purchase.product->introductoryPrice;
         const std::string mode = std::to_string(offer.paymentMode);
         return around.after == mode + " (free trial), so the price is 0." ||
                (around.after == mode + " and a price." && offer.price.has_value());
       }},
      {"The last code of every valid free trial and introductory offer.",
       [](const Truth& t) { return t.codes.back() == 40010; }},
      {"The receipt has no entries.", [](const Truth& t) { return t.purchase.receipt.empty(); }},
      {" has the product identifier ",
       [](const Truth& t) { return t.ofProduct.empty() && !t.purchase.receipt.empty(); },
       [](const Truth& t, const Around& around) {
         const std::size_t size = t.purchase.receipt.size();
         return around.before ==
                    "None of the " + std::to_string(size) + (size == 1 ? " entry" : " entries") &&
                around.after == shown(t.purchase.product->productIdentifier) + ".";
       }},
      {"The purchase has no product. Nothing else is read.",
       [](const Truth& t) { return !t.purchase.product.has_value(); }},
      {"The product's identifier is empty. Nothing else is read.",
       [](const Truth& t) { return t.purchase.product->productIdentifier == ""; }},
      {"The product has no identifier. Nothing else is read.",
       [](const Truth& t) { return !t.purchase.product->productIdentifier.has_value(); }},
      {"The purchase has no transaction. Nothing else is read.",
       [](const Truth& t) { return !t.purchase.transaction.has_value(); }},
      // Hints.
      {" in letter case only.", [](const Truth& t) { return t.ofProduct.empty(); },
       [](const Truth& t, const Around& around) {
         const std::string wanted = shown(t.purchase.product->productIdentifier);
         return anyOf(t.purchase.receipt, [&](const QELInAppPurchaseItem& item) {
           const std::string found = shown(item.productID);
           return found != wanted && lower(found) == lower(wanted) &&
                  around.before ==
                      "The receipt has entries of " + found + ", which differs from " + wanted;
         });
       }},
      {"The receipt has the transaction ", [](const Truth& t) { return t.atDate.empty(); },
       [](const Truth& t, const Around& around) {
         return anyOf(t.ofProduct, [&](const QELInAppPurchaseItem& item) {
           const std::string where =
               isReadable(item) ? ", but at " + utc(*parseRfc3339(*item.purchaseDateIA5String))
                                : ", but its date cannot be read";
           return isEqual(item.transactionID, transactionIdentifier(t)) &&
                  around.after.starts_with(shown(item.transactionID) + where);
         });
       }},
      {"The transaction's date has a fraction of a second, ",
       [](const Truth& t) {
         return t.atDate.empty() && t.purchase.transaction->transactionDate->nanoseconds() != 0;
       }},
      {"The nearest entry, ",
       [](const Truth& t) { return t.atDate.empty() && unreadable(t) < t.ofProduct.size(); },
       namesNearest},
      {"A difference of whole quarters of an hour suggests",
       [](const Truth& t) { return t.atDate.empty(); },
       [](const Truth& t, const Around& around) {
         const QELInAppPurchaseItem* const item = nearestBefore(t, around.before);
         return item != nullptr && secondsAfter(t, *item) % 900 == 0 &&
                std::abs(secondsAfter(t, *item)) <= std::int64_t{14} * 3600;
       }},
      {"A few seconds suggest", [](const Truth& t) { return t.atDate.empty(); },
       [](const Truth& t, const Around& around) {
         const QELInAppPurchaseItem* const item = nearestBefore(t, around.before);
         return item != nullptr && std::abs(secondsAfter(t, *item)) < 60;
       }},
      {"It is the latest, so the receipt may be from before this purchase",
       [](const Truth& t) { return isReadable(latest(t)) && secondsAfter(t, latest(t)) < 0; },
       [](const Truth& t, const Around& around) {
         return nearestBefore(t, around.before) != nullptr &&
                around.before.starts_with("The nearest entry, " + nameIn(latest(t)));
       }},
      {", but no purchase type. It is probably of an auto-renewable subscription",
       [](const Truth& t) { return !latest(t).purchaseType.has_value(); },
       [](const Truth& t, const Around& around) {
         const std::string lineItem = shown(latest(t).webOrderLineItemID);
         return lineItem != "0" && !isEmpty(latest(t).webOrderLineItemID) &&
                around.before.starts_with("Entry " + nameIn(latest(t))) &&
                around.before.ends_with(" has the web order line item " + lineItem);
       }},
      {" The outcome here would then be: ",
       [](const Truth& t) { return !latest(t).purchaseType.has_value(); },
       [](const Truth& t, const Around& around) {
         return around.after == std::string(outcomeWithTypes(t)) + ".";
       }},
      {" has the web order line item 0.", [](const Truth& t) { return !t.ofProduct.empty(); },
       [](const Truth& t, const Around& around) {
         return anyOf(t.ofProduct, [&around](const QELInAppPurchaseItem& item) {
           return item.webOrderLineItemID == "0" &&
                  around.before.starts_with("Entry " + nameIn(item));
         });
       }},
      {"The product's price is not a number",
       [](const Truth& t) { return std::isnan(t.purchase.product->price->doubleValue()); }},
      {"In micros that would be ",
       [](const Truth& t) { return t.purchase.product->price->doubleValue() >= 100000; },
       [](const Truth& t, const Around& around) {
         return microsOf(around.after) ==
                static_cast<std::int64_t>(t.purchase.product->price->doubleValue());
       }},
      {"In cents that would be ",
       [](const Truth& t) { return t.purchase.product->price->doubleValue() == 499; },
       [](const Truth& t, const Around& around) {
         return microsOf(around.after) ==
                static_cast<std::int64_t>(t.purchase.product->price->doubleValue() * 10000);
       }},
      {" is too large for 64 bits of micros", [](const Truth& t) { return t.event.has_value(); },
       [](const Truth& t, const Around& around) {
         constexpr std::string_view kStart = "The amount under ";
         return around.before.starts_with(kStart) &&
                t.event->find(around.before.substr(kStart.size()))->int64Value() ==
                    std::numeric_limits<std::int64_t>::min();
       }},
      // Missing inputs. checkMissing() checks that they are needed.
      {" has no currency code, so there is no currency.",
       [](const Truth& t) { return !t.purchase.product->priceLocaleCurrencyCode.has_value(); }},
      {"The product has no price, so there is no price and no value.",
       [](const Truth& t) { return !t.purchase.product->price.has_value(); }},
      {"The payment's quantity is 0, so there is no value.",
       [](const Truth& t) { return t.purchase.transaction->quantity == 0; }},
      {"The transaction has no payment, which counts as quantity 0, so there is no value.",
       [](const Truth& t) { return !t.purchase.transaction->quantity.has_value(); }},
      // Surprises.
      {"A product with several entries counts as a subscription",
       [](const Truth& t) { return t.ofProduct.size() > 1 && typeOf(latest(t)) != 3; }},
      {"there is none to take identifiers from: the deduplication identifier is -1",
       [](const Truth& t) {
         return t.atDate.empty() && (!t.event.has_value() ||
                                     t.event->find(ParameterKey::kDedupeId)->int64Value() == -1);
       }},
      {"; the transaction is of ", [](const Truth& t) { return t.atDate.empty(); },
       [](const Truth& t, const Around& around) {
         const QELInAppPurchaseItem& item = t.ofProduct.at(0);
         return around.after.starts_with(utcOfTransaction(t)) &&
                (isReadable(item)
                     ? around.before.ends_with(", is of " +
                                               utc(*parseRfc3339(*item.purchaseDateIA5String)))
                     : around.before.ends_with(", has no date that can be read"));
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
       },
       [](const Truth& t, const Around& around) {
         return around.before ==
                    "This is the first entry of " + shown(t.purchase.product->productIdentifier) &&
                anyOf(earlierPlans(t), [&around](const QELInAppPurchaseItem& item) {
                  return around.after.starts_with(shown(item.productID) + ",");
                });
       }},
      {"So a trial of the other plan does not count.",
       [](const Truth& t) {
         return anyOf(earlierPlans(t),
                      [](const QELInAppPurchaseItem& item) { return item.isFreeTrial; });
       }},
      {"A later purchase is a renewal if the receipt has no entry of the product before it.",
       [](const Truth& t) {
         return t.previous() == nullptr && isSetIfAny(t, ParameterKey::kSubRenew);
       }},
      {"Such entries count as the earliest",
       [](const Truth& t) { return t.previous() != nullptr && !isReadable(*t.previous()); },
       [](const Truth& t, const Around& around) {
         return around.before.starts_with("Entry " + nameIn(*t.previous()));
       }},
      {"the amounts are the product's full price",
       [](const Truth& t) {
         return t.has(ParameterKey::kPriceIsDiscounted) && !t.has(ParameterKey::kOriginalPrice);
       }},
      {"and a free trial is neither a conversion nor a renewal.",
       [](const Truth& t) {
         return isSetIfAny(t, ParameterKey::kFreeTrial) && !t.has(ParameterKey::kSubConvert) &&
                !t.has(ParameterKey::kSubRenew);
       }},
      {"The trial is an introductory offer, too.",
       [](const Truth& t) {
         const QELInAppPurchaseItem& item = t.atDate.at(0);
         return item.isFreeTrial && item.isIntroductoryOffer;
       },
       [](const Truth& t, const Around& around) {
         const bool isConversion = contains(around.after, " it has sub_convert, ");
         return isSetIfAny(t, isConversion ? ParameterKey::kSubConvert : ParameterKey::kSubRenew);
       }},
      {"It has no _did either",
       [](const Truth& t) { return t.hasCode(40007) && !t.has(ParameterKey::kDedupeId); }},
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
    const std::size_t position = text.find(statement.words);
    if (position == std::string::npos) continue;
    ++made;
    const bool isTrue = statement.isTrue(truth);
    EXPECT_TRUE(isTrue) << statement.words << "\nin: " << text;
    if (!isTrue || statement.namesWhatItMeans == nullptr) continue;
    const Around around{.before = std::string_view(text).substr(0, position),
                        .after = std::string_view(text).substr(position + statement.words.size())};
    EXPECT_TRUE(statement.namesWhatItMeans(truth, around)) << statement.words << "\nin: " << text;
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

// Returns what the remark on an entry must be.
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

// Checks what is said beside the transaction's date: one that is not compared can be any other.
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
