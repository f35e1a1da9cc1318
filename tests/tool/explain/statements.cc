#include "statements.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>

#include "explain/explanation.h"
#include "qel/receipt_matching.h"
#include "qel/rfc3339.h"
#include "support/recording_monitor.h"

namespace qel::tool::testing {

using qel::testing::RecordingMonitor;

namespace {

// The parts of a sentence before and after the words of a statement.
struct Around {
  std::string_view before;
  std::string_view after;
};

// A statement that explanations make, and when it is true.
struct Statement {
  std::string_view words;
  std::function<bool(const Truth&)> isTrue;
  // Returns whether the sentence names the right entry, date or number around the words. Null if it
  // names none.
  std::function<bool(const Truth&, const Around&)> namesWhatItMeans = nullptr;
};

std::size_t unreadable(const Truth& truth) {
  return static_cast<std::size_t>(
      std::count_if(truth.ofProduct.begin(), truth.ofProduct.end(),
                    [](const QELInAppPurchaseItem& item) { return !isReadable(item); }));
}

// Returns whether the flag is set, or there is no event.
bool isSetIfAny(const Truth& truth, ParameterKey flag) {
  return !truth.event.has_value() || truth.has(flag);
}

OptionalText transactionIdentifier(const Truth& truth) {
  return truth.purchase.transaction->transactionIdentifier;
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

std::string utcOfTransaction(const Truth& truth) {
  return utc(*truth.purchase.transaction->transactionDate);
}

std::string bothIdentifiers(const QELInAppPurchaseItem& item) {
  return "Its transaction identifier " + shown(item.transactionID) + " and its original one " +
         shown(item.originalTransactionID);
}

std::int64_t secondsAfter(const Truth& truth, const QELInAppPurchaseItem& item) {
  return parseRfc3339(*item.purchaseDateIA5String)->seconds() -
         truth.purchase.transaction->transactionDate->seconds();
}

// Returns the entry whose date is nearest to the transaction's if `named` starts with its name,
// otherwise null.
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

// Returns the nearest entry if `before` names it: "The nearest entry, 2000 ...". Otherwise null.
const QELInAppPurchaseItem* nearestBefore(const Truth& truth, std::string_view before) {
  constexpr std::string_view kStart = "The nearest entry, ";
  return before.starts_with(kStart) ? nearest(truth, before.substr(kStart.size())) : nullptr;
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

}  // namespace

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

bool sameIds(const QELInAppPurchaseItem& item) {
  return isEqual(item.transactionID, item.originalTransactionID);
}

bool isReadable(const QELInAppPurchaseItem& item) {
  return item.purchaseDateIA5String.has_value() &&
         parseRfc3339(*item.purchaseDateIA5String).has_value();
}

const QELInAppPurchaseItem& latest(const Truth& truth) { return truth.ofProduct.back(); }

OptionalText originalIdentifier(const Truth& truth) {
  const auto& original = truth.purchase.transaction->originalTransaction;
  return original.has_value() ? OptionalText(original->transactionIdentifier) : OptionalText();
}

bool offerPriceIsUnknown(const Truth& truth) {
  if (offerIsUnknown(truth)) return true;
  const PlainDiscount& offer = *truth.purchase.product->introductoryPrice;
  return offer.paymentMode != 2 && !offer.price.has_value();
}

std::string shown(const OptionalText& text) {
  if (!text.has_value()) return "(absent)";
  return text->empty() ? "(empty)" : std::string(*text);
}

std::string nameIn(const QELInAppPurchaseItem& item) {
  if (!isEmpty(item.transactionID)) return std::string(*item.transactionID);
  if (!isReadable(item)) return "without an identifier or a readable date";
  return "without an identifier, of " + dateIn(*parseRfc3339(*item.purchaseDateIA5String));
}

std::string typeIn(const QELInAppPurchaseItem& item) {
  const std::string counts = std::to_string(typeOf(item));
  if (!item.purchaseType.has_value()) return "no type, which counts as type 0 ";
  if (*item.purchaseType == typeOf(item)) return "type " + counts + " ";
  return "type " + std::to_string(*item.purchaseType) + ", which counts as type " + counts + " ";
}

bool contains(std::string_view text, std::string_view words) {
  return text.find(words) != std::string_view::npos;
}

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

}  // namespace qel::tool::testing
