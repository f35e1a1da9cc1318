#include "explain/explanation.h"

#include <cstddef>

#include "explain/entry_text.h"
#include "explain/money.h"
#include "qel/rfc3339.h"

namespace qel::tool {
namespace {

TimelineEntry timelineEntry(const QELInAppPurchaseItem& item) {
  TimelineEntry entry{.item = item, .date = dateOf(item)};
  if (!entry.date.has_value()) entry.problem = dateProblem(item.purchaseDateIA5String);
  return entry;
}

// Sets the role of an entry of the product.
void setRole(const PurchaseFacts& facts, TimelineEntry& entry) {
  const bool isLater =
      facts.isMarked(ParameterKey::kSubConvert) || facts.isMarked(ParameterKey::kSubRenew);
  if (&entry.item == facts.reported) {
    entry.role = Role::kReported;
    entry.note = Prose(facts.isFoundByDate ? "reported: it is at the transaction's date"
                                           : "reported: the only entry of the product");
  } else if (facts.hasCode(DiagnosticCode::kDuplicateTransactionDate) && entry.date.has_value() &&
             entry.date == facts.transactionDate()) {
    entry.role = Role::kDuplicate;
    entry.note = Prose("at the transaction's date, like ",
                       counted(facts.atDate.size() - 1, "other entry", "other entries"));
  } else if (&entry.item == facts.previous && isLater) {
    entry.role = Role::kDeciding;
    entry.note = facts.isMarked(ParameterKey::kSubConvert)
                     ? Prose("right before it, a free trial: so a conversion")
                     : Prose("right before it, no free trial: so a renewal");
  } else if (facts.hasCode(DiagnosticCode::kRestoredNonConsumable) &&
             &entry.item == &facts.ofProduct.back().get()) {
    entry.role = Role::kLatest;
    entry.note = Prose("the latest entry: it makes the product a non-consumable");
  }
}

}  // namespace

std::optional<Instant> dateOf(const QELInAppPurchaseItem& item) {
  if (!item.purchaseDateIA5String.has_value()) return std::nullopt;
  return parseRfc3339(*item.purchaseDateIA5String);
}

bool isAtFullPrice(const PurchaseFacts& facts) {
  if (!facts.event.has_value()) return false;
  const EventParameters& event = *facts.event;
  return event.find(ParameterKey::kPriceIsDiscounted) != nullptr &&
         event.find(ParameterKey::kFreeTrial) == nullptr &&
         event.find(ParameterKey::kOriginalPrice) == nullptr &&
         facts.purchase.product->price.has_value();
}

Prose priceAndQuantityText(const PurchaseFacts& facts) {
  const Purchase& purchase = facts.purchase;
  const std::optional<std::int64_t> quantity =
      purchase.transaction.has_value() ? purchase.transaction->quantity : std::nullopt;
  if (!purchase.product.has_value() || !purchase.product->price.has_value()) {
    return quantity.has_value() ? Prose("no price, quantity ", *quantity) : Prose("no price");
  }
  Prose text;
  if (quantity.has_value()) text.append(Prose(*quantity, " x "));
  const OptionalText currency = facts.currency();
  text.append(std::string_view(priceText(*purchase.product->price, currency.value_or(""))));
  if (!isEmpty(currency)) text.append(Prose(" ", InputText{currency}));
  return text;
}

std::string receiptSizeText(const PurchaseFacts& facts) {
  std::string size = counted(facts.purchase.receipt.size(), "entry", "entries");
  if (isEmpty(facts.productIdentifier())) return size;
  return size + ", " + std::to_string(facts.ofProduct.size()) + " of this product";
}

std::string_view transactionDateText(const PurchaseFacts& facts) {
  return facts.isDateCompared() || facts.hasCode(DiagnosticCode::kMissingInReceipt)
             ? "the transaction's date; no entry has it"
             : "the transaction's date; it is not compared";
}

Explanation explain(const Purchase& purchase) {
  Explanation explanation{.facts = factsOf(purchase), .sentence = Prose()};
  const PurchaseFacts& facts = explanation.facts;
  explanation.outcome = outcomeOf(facts);
  explanation.sentence = sentenceOf(explanation.outcome, facts);
  for (const QELInAppPurchaseItem& item : facts.ofProduct) {
    explanation.timeline.push_back(timelineEntry(item));
    setRole(facts, explanation.timeline.back());
  }
  for (const QELInAppPurchaseItem& item : purchase.receipt) {
    const bool isOther = facts.ofProduct.empty() ||
                         !isEqual(item.productID, facts.ofProduct.front().get().productID);
    if (isOther) explanation.others.push_back(timelineEntry(item));
  }
  explanation.decisions = decisionsOf(facts);
  explanation.dedupeTexts = dedupeTextsOf(facts);
  explanation.keys = eventKeysOf(facts, explanation.dedupeTexts);
  explanation.hints = hintsOf(facts);
  explanation.surprises = surprisesOf(facts);
  return explanation;
}

}  // namespace qel::tool
