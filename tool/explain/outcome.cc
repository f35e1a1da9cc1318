#include "explain/entry_text.h"
#include "explain/explanation.h"
#include "explain/money.h"

namespace qel::tool {
namespace {

std::int64_t integerOf(const EventParameters& event, ParameterKey key) {
  const QELValuePtr& value = event.find(key);
  return value == nullptr ? 0 : value->int64Value();
}

// Returns an amount of the event with its currency: "4.99 EUR".
Prose amountOf(const PurchaseFacts& facts, ParameterKey key) {
  const OptionalText currency = facts.currency();
  const std::int64_t micros = integerOf(*facts.event, key);
  Prose text(amountText(micros, currency.value_or("")));
  if (!isEmpty(currency) && isAmount(micros)) text.append(Prose(" ", InputText{currency}));
  return text;
}

// Returns ": 4.99 EUR", or ": 3 x 0.99 EUR = 2.97 EUR". The price of one is left out if it is
// truncated, so that three of it are not the value.
Prose valueText(const PurchaseFacts& facts) {
  const std::int64_t quantity = integerOf(*facts.event, ParameterKey::kQuantity);
  const Prose value = amountOf(facts, ParameterKey::kValue);
  const std::int64_t total = integerOf(*facts.event, ParameterKey::kValue);
  const bool isSum = quantity != 0 && quantity != 1 && total != 0 && total % quantity == 0 &&
                     total / quantity == integerOf(*facts.event, ParameterKey::kPrice);
  if (!isSum) return Prose(": ", value);
  return Prose(": ", quantity, " x ", amountOf(facts, ParameterKey::kPrice), " = ", value);
}

Prose insteadText(const PurchaseFacts& facts) {
  if (facts.event->find(ParameterKey::kOriginalPrice) == nullptr) return Prose();
  return Prose(" instead of ", amountOf(facts, ParameterKey::kOriginalPrice));
}

Prose invalidSentence(const PurchaseFacts& facts) {
  if (facts.hasCode(DiagnosticCode::kRestoredNonConsumable)) {
    return Prose(": a restore or second purchase of a non-consumable, first bought in transaction ",
                 InputText{facts.originalTransactionIdentifier()});
  }
  if (facts.hasCode(DiagnosticCode::kRepurchasedFreeTrial)) {
    return Prose(": a free trial in a transaction that continues transaction ",
                 InputText{facts.originalTransactionIdentifier()});
  }
  if (facts.hasCode(DiagnosticCode::kMissingInReceipt)) {
    return Prose(facts.purchase.receipt.empty() ? ": the receipt has no entries"
                                                : ": the receipt has no entry of this product");
  }
  if (facts.hasCode(DiagnosticCode::kDuplicateTransactionDate)) {
    return Prose(": the receipt has ", facts.atDate.size(),
                 " entries of this product at the transaction's date");
  }
  if (!facts.transactionDate().has_value()) {
    return Prose(": the transaction has no date, so it matches no entry of the receipt");
  }
  return Prose(": the receipt has no entry of this product at the transaction's date");
}

std::string_view describe(MissingInput input, const PurchaseFacts& facts) {
  switch (input) {
    case MissingInput::kCurrency:
      return "the product has no currency";
    case MissingInput::kPrice:
      return "the product has no price";
    case MissingInput::kQuantity:
      break;
  }
  return facts.purchase.transaction->quantity.has_value() ? "the quantity is 0"
                                                          : "the transaction has no payment";
}

Prose noEventSentence(const PurchaseFacts& facts) {
  if (facts.hasCode(DiagnosticCode::kNilProduct)) return Prose(": the purchase has no product");
  if (facts.hasCode(DiagnosticCode::kEmptyProductId)) {
    return Prose(": the product has no identifier");
  }
  if (facts.hasCode(DiagnosticCode::kNilTransaction)) {
    return Prose(": the purchase has no transaction");
  }
  Prose text;
  for (std::size_t i = 0; i < facts.missing.size(); ++i) {
    const bool isLast = i + 1 == facts.missing.size();
    text.append(i == 0 ? ": " : isLast ? " and " : ", ");
    text.append(describe(facts.missing[i], facts));
  }
  return text;
}

// Returns the rest of a sentence about a later purchase at an introductory price.
std::string_view laterPurchase(const PurchaseFacts& facts) {
  if (facts.isMarked(ParameterKey::kSubConvert)) return ", right after a free trial";
  if (facts.isMarked(ParameterKey::kSubRenew)) return ", in a renewal";
  return "";
}

// Returns the outcome of an event that is there, or of the one that would be.
Outcome classify(const PurchaseFacts& facts) {
  if (facts.isMarked(ParameterKey::kInvalid)) return Outcome::kInvalid;
  if (facts.isMarked(ParameterKey::kFreeTrial)) return Outcome::kFreeTrial;
  if (facts.isMarked(ParameterKey::kPriceIsDiscounted)) return Outcome::kIntroductoryOffer;
  if (facts.isMarked(ParameterKey::kSubConvert)) return Outcome::kConversion;
  if (facts.isMarked(ParameterKey::kSubRenew)) return Outcome::kRenewal;
  if (facts.hasCode(DiagnosticCode::kNonRenewingSubscription)) return Outcome::kNonRenewing;
  if (facts.isMarked(ParameterKey::kSubscription)) return Outcome::kNewSubscription;
  if (facts.hasCode(DiagnosticCode::kConsumable)) return Outcome::kConsumable;
  if (facts.hasCode(DiagnosticCode::kNonConsumable)) return Outcome::kNonConsumable;
  return Outcome::kOneOff;
}

Prose oneOffSentence(const PurchaseFacts& facts) {
  if (facts.hasCode(DiagnosticCode::kMismatchedTransactionIds)) {
    return Prose(" without a deduplication identifier", valueText(facts));
  }
  return Prose(" of ", typeText(*facts.reported), valueText(facts));
}

}  // namespace

Outcome outcomeOf(const PurchaseFacts& facts) {
  return facts.event.has_value() ? classify(facts) : Outcome::kNoEvent;
}

Prose sentenceOf(Outcome outcome, const PurchaseFacts& facts) {
  switch (outcome) {
    case Outcome::kNoEvent: {
      Prose text = noEventSentence(facts);
      if (facts.classified.has_value()) {
        text.append(Prose(". Otherwise it would be: ",
                          kOutcomeNames[static_cast<std::size_t>(classify(facts))]));
      }
      return text;
    }
    case Outcome::kInvalid:
      return invalidSentence(facts);
    case Outcome::kFreeTrial:
      return Prose(laterPurchase(facts), valueText(facts), insteadText(facts));
    case Outcome::kIntroductoryOffer:
      return Prose(laterPurchase(facts), isAtFullPrice(facts) ? " at the full price" : "",
                   valueText(facts), insteadText(facts));
    case Outcome::kConversion:
      return Prose(" of a free trial", valueText(facts));
    case Outcome::kRenewal:
      return Prose(facts.reported == nullptr ? " without an entry in the receipt" : "",
                   valueText(facts));
    case Outcome::kOneOff:
      return oneOffSentence(facts);
    default:
      return valueText(facts);
  }
}

}  // namespace qel::tool
