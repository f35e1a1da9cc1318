// Where the input of a purchase looks wrong.

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <deque>
#include <memory>
#include <utility>

#include "explain/entry_text.h"
#include "explain/explanation.h"
#include "explain/money.h"
#include "explain/time_text.h"

namespace qel::tool {
namespace {

constexpr std::int64_t kHour = 3600;

// Returns `text` without differences of letter case (Unicode case folding).
std::string folded(std::string_view text) {
  utf8proc_uint8_t* result = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &result, UTF8PROC_CASEFOLD);
  // Ill-formed text, such as an unpaired surrogate, has no letter case.
  if (size < 0) return std::string(text);
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(result, &std::free);
  return {reinterpret_cast<const char*>(result), static_cast<std::size_t>(size)};
}

void hintOnLetterCase(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  const OptionalText identifier = facts.productIdentifier();
  if (isEmpty(identifier) || !facts.ofProduct.empty()) return;
  const std::string wanted = folded(*identifier);
  for (const QELInAppPurchaseItem& item : facts.purchase.receipt) {
    if (isEmpty(item.productID) || folded(*item.productID) != wanted) continue;
    hints.emplace_back("The receipt has entries of ", InputText{item.productID},
                       ", which differs from ", InputText{identifier},
                       " in letter case only. Identifiers are compared byte by byte.");
    return;
  }
}

// The entry whose date is nearest to the transaction's, and how many seconds later it is.
struct Nearest {
  const QELInAppPurchaseItem* item = nullptr;
  std::int64_t difference = 0;
};

Nearest nearestEntry(const PurchaseFacts& facts, const Instant& date) {
  Nearest nearest;
  for (const QELInAppPurchaseItem& item : facts.ofProduct) {
    const std::optional<Instant> itemDate = dateOf(item);
    if (!itemDate.has_value()) continue;
    const std::int64_t difference = itemDate->seconds() - date.seconds();
    if (nearest.item == nullptr || std::abs(difference) < std::abs(nearest.difference)) {
      nearest = {&item, difference};
    }
  }
  return nearest;
}

Prose nearestText(const Nearest& nearest) {
  const auto seconds = static_cast<std::uint64_t>(std::abs(nearest.difference));
  Prose text("The nearest entry, ", nameOf(*nearest.item), ", is ", durationText(seconds));
  if (seconds >= 60 && std::abs(nearest.difference) < 100 * kHour)
    text.append(Prose(" (", seconds, " s)"));
  text.append(nearest.difference < 0 ? " before" : " after");
  text.append(" the transaction's date. ");
  return text;
}

bool isTimeZone(std::int64_t difference) {
  constexpr std::int64_t kFarthest = 14 * kHour;
  constexpr std::int64_t kQuarter = kHour / 4;
  return difference != 0 && std::abs(difference) <= kFarthest && difference % kQuarter == 0;
}

// Hints if no entry is at the transaction's date, which nearly every purchase of a subscription
// must have.
void hintOnDate(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  const std::optional<Instant> date = facts.transactionDate();
  const bool isDateCompared = facts.hasCode(DiagnosticCode::kSubscriptionMissingInReceipt) ||
                              facts.hasCode(DiagnosticCode::kAutoRenewable);
  if (!isDateCompared || !facts.atDate.empty() || !date.has_value()) return;

  if (date->nanoseconds() != 0) {
    hints.emplace_back("The transaction's date has a fraction of a second, ", dateText(*date),
                       ". Entries have whole seconds, so none can be equal.");
  }
  const Nearest nearest = nearestEntry(facts, *date);
  if (nearest.item == nullptr) return;
  Prose text = nearestText(nearest);
  if (nearest.difference == 0) return;
  if (isTimeZone(nearest.difference)) {
    text.append(
        "A difference of whole quarters of an hour suggests a time zone that was lost or "
        "applied twice.");
    if (std::abs(nearest.difference) == 7 * kHour || std::abs(nearest.difference) == 8 * kHour) {
      text.append(
          " 7 or 8 hours are Pacific time, which the store's validation service writes "
          "beside UTC.");
    }
  } else if (std::abs(nearest.difference) < 60) {
    text.append(
        "A few seconds suggest that one of the dates is the time of the report, not of the "
        "purchase.");
  } else if (nearest.difference < 0 && nearest.item == &facts.ofProduct.back().get()) {
    text.append(
        "It is the latest, so the receipt may be from before this purchase: refresh it and "
        "report the purchase again.");
  }
  hints.push_back(std::move(text));
}

void hintOnUnreadableDates(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  std::size_t unreadable = 0;
  std::size_t inServiceForm = 0;
  for (const QELInAppPurchaseItem& item : facts.ofProduct) {
    if (dateOf(item).has_value()) continue;
    ++unreadable;
    inServiceForm += dateProblem(item.purchaseDateIA5String) == DateProblem::kServiceForm ? 1U : 0U;
  }
  if (unreadable == 0) return;
  const bool areAll = unreadable == facts.ofProduct.size();
  Prose text(areAll
                 ? "The date of no entry of the product can be read"
                 : counted(unreadable, "entry has", "entries have") + " a date that cannot be read",
             ". Dates must be RFC 3339 timestamps of whole seconds: 2020-07-14T19:36:40Z.");
  if (inServiceForm > 0) {
    text.append(" The dates are in the form of the store's validation service, which ");
    text.append("qel-purchase receipt rewrites.");
  }
  hints.push_back(std::move(text));
}

void hintOnWebOrderLineItem(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  for (const QELInAppPurchaseItem& item : facts.ofProduct) {
    if (!isEqual(item.webOrderLineItemID, "0")) continue;
    hints.emplace_back("Entry ", nameOf(item),
                       " has the web order line item 0. The store has no such number: leave it out "
                       "where there is none. Even as 0 it makes the product a subscription, and "
                       "enters the deduplication identifier.");
    return;
  }
}

// Returns the outcome of the purchase if the entries of its product that have no type had type 3.
Outcome outcomeWithTypes(const PurchaseFacts& facts) {
  constexpr std::int64_t kAutoRenewable = 3;
  Purchase purchase = facts.purchase;
  std::deque<QELInAppPurchaseItem> items;
  for (QELInAppPurchaseItems::reference entry : purchase.receipt) {
    const QELInAppPurchaseItem& item = entry;
    if (item.purchaseType.has_value() || !isEqual(item.productID, facts.productIdentifier())) {
      continue;
    }
    items.push_back(item);
    items.back().purchaseType = kAutoRenewable;
    entry = items.back();
  }
  return outcomeOf(factsOf(purchase));
}

// The type of the latest entry decides, so its loss matters most.
void hintOnLostType(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  if (facts.ofProduct.empty()) return;
  const QELInAppPurchaseItem& latest = facts.ofProduct.back();
  const bool hasLostType = !latest.purchaseType.has_value() &&
                           !isEmpty(latest.webOrderLineItemID) &&
                           !isEqual(latest.webOrderLineItemID, "0");
  if (!hasLostType) return;
  Prose text(
      "Entry ", nameOf(latest), " has the web order line item ",
      InputText{latest.webOrderLineItemID},
      ", but no purchase type. It is probably of an auto-renewable subscription and has lost "
      "its type: the JSON of the store's validation service has none. Without a type it "
      "counts as a non-consumable, and a later transaction of the subscription as its restore "
      "(40005, invalid). Set purchaseType to 3 where the entries are made.");
  const Outcome outcome = outcomeWithTypes(facts);
  if (outcome != outcomeOf(facts)) {
    text.append(Prose(" The outcome here would then be: ", nameOf(outcome), "."));
  }
  hints.push_back(std::move(text));
}

// The transaction's own identifier at another date is the surest sign of a wrong date.
void hintOnIdentifier(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  const OptionalText identifier = facts.transactionIdentifier();
  if (isEmpty(identifier) || !facts.atDate.empty()) return;
  const bool isMissing = facts.hasCode(DiagnosticCode::kSubscriptionMissingInReceipt) ||
                         facts.hasCode(DiagnosticCode::kAutoRenewable);
  if (!isMissing) return;
  for (const QELInAppPurchaseItem& item : facts.ofProduct) {
    if (!isEqual(item.transactionID, identifier)) continue;
    const std::optional<Instant> date = dateOf(item);
    hints.emplace_back("The receipt has the transaction ", InputText{identifier},
                       date.has_value() ? ", but at " + dateText(*date) + " UTC"
                                        : std::string(", but its date cannot be read"),
                       ". Entries are found by their date, not by their identifier.");
    return;
  }
}

// Currencies whose unit buys about what a euro does: a price of 499 in them is unusual.
constexpr std::array<std::string_view, 8> kLargeUnits = {"AUD", "CAD", "CHF", "EUR",
                                                         "GBP", "NZD", "SGD", "USD"};

void hintOnPrice(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  constexpr double kLeastInMicros = 100000;
  constexpr double kMicrosOfACent = 10000;
  const OptionalText currency = facts.currency();
  if (!facts.purchase.product.has_value() || !facts.purchase.product->price.has_value()) return;
  const double price = facts.purchase.product->price->doubleValue();
  if (std::isnan(price)) {
    hints.emplace_back(
        "The product's price is not a number. Its amounts are the least integer of 64 bits, which "
        "stands for no amount.");
    return;
  }
  if (isEmpty(currency)) return;
  const std::string written = priceText(*facts.purchase.product->price, *currency);
  const bool isLargeUnit =
      std::find(kLargeUnits.begin(), kLargeUnits.end(), *currency) != kLargeUnits.end();
  const bool isWhole = std::isfinite(price) && price == std::floor(price);
  const bool endsInNinetyNine = isWhole && price >= 99 && std::fmod(price, 100) >= 89;
  if (isWhole && price >= kLeastInMicros && std::fmod(price, kMicrosOfACent) == 0 && isLargeUnit) {
    hints.emplace_back("The price is ", written, " ", InputText{currency},
                       ". In micros that would be ",
                       amountText(static_cast<std::int64_t>(std::min(price, 1e18)), *currency),
                       ". Prices are given in units of the currency.");
  } else if (endsInNinetyNine && price < kLeastInMicros && isLargeUnit) {
    hints.emplace_back("The price is ", written, " ", InputText{currency},
                       ". In cents that would be ",
                       amountText(static_cast<std::int64_t>(price * kMicrosOfACent), *currency),
                       ". Prices are given in units of the currency.");
  }
}

void hintOnAmounts(const PurchaseFacts& facts, std::vector<Prose>& hints) {
  if (!facts.event.has_value()) return;
  // Has a hint of its own.
  if (std::isnan(facts.purchase.product->price.value_or(Decimal()).doubleValue())) return;
  for (const ParameterKey key : {ParameterKey::kPrice, ParameterKey::kValue}) {
    const QELValuePtr& value = facts.event->find(key);
    if (value == nullptr || isAmount(value->int64Value())) continue;
    hints.emplace_back(
        "The amount under ", textOf(key),
        " is too large for 64 bits of micros, or not a number. It is the least integer, "
        "which stands for no amount.");
    return;
  }
}

}  // namespace

std::vector<Prose> hintsOf(const PurchaseFacts& facts) {
  std::vector<Prose> hints;
  hintOnLetterCase(facts, hints);
  hintOnIdentifier(facts, hints);
  hintOnDate(facts, hints);
  hintOnUnreadableDates(facts, hints);
  hintOnWebOrderLineItem(facts, hints);
  hintOnLostType(facts, hints);
  hintOnPrice(facts, hints);
  hintOnAmounts(facts, hints);
  return hints;
}

}  // namespace qel::tool
