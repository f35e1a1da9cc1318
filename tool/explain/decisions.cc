#include <algorithm>
#include <cstddef>
#include <utility>

#include "explain/entry_text.h"
#include "explain/explanation.h"
#include "explain/time_text.h"

namespace qel::tool {
namespace {

constexpr std::size_t kMostNames = 5;

bool isSubscriptionType(const QELInAppPurchaseItem& item) {
  const auto type = static_cast<std::int32_t>(item.purchaseType.value_or(0));
  return type == 2 || type == 3;
}

// The facts about the entry that decides what kind of product this is. Must have entries.
Prose kindFact(const PurchaseFacts& facts) {
  const QELInAppPurchaseItem& latest = facts.ofProduct.back();
  Prose text(facts.ofProduct.size() == 1 ? "The only entry of the product, "
                                         : "The latest entry of the product, ",
             nameOf(latest), ", has ", typeText(latest));
  const bool isSubscription = isSubscriptionType(latest);
  if (!isSubscription && latest.webOrderLineItemID.has_value()) {
    text.append(Prose(" and the web order line item ", InputText{latest.webOrderLineItemID},
                      ", so the product counts as a subscription."));
  } else if (!isSubscription && facts.ofProduct.size() > 1) {
    text.append(Prose(". The product has ", facts.ofProduct.size(),
                      " entries, so it counts as a subscription all the same."));
  } else {
    text.append(".");
  }
  return text;
}

std::size_t unreadableDates(const PurchaseFacts& facts) {
  const auto count =
      std::count_if(facts.ofProduct.begin(), facts.ofProduct.end(),
                    [](const QELInAppPurchaseItem& item) { return !dateOf(item).has_value(); });
  return static_cast<std::size_t>(count);
}

// The facts about the entries at the transaction's date.
Prose dateFact(const PurchaseFacts& facts) {
  const std::optional<Instant> date = facts.transactionDate();
  if (!date.has_value()) return Prose("The transaction has no date, so no entry can match it.");
  const std::string when = dateText(*date) + " UTC";
  if (facts.atDate.size() == 1) {
    return Prose("One entry is at the transaction's date, ", when, ": ",
                 nameOf(facts.atDate.front()), ".");
  }
  if (facts.atDate.empty()) {
    const std::size_t unreadable = unreadableDates(facts);
    Prose text(
        facts.ofProduct.size() == 1
            ? "It is not"
            : "None of the product's " + std::to_string(facts.ofProduct.size()) + " entries is",
        " at the transaction's date, ", when, ".");
    if (unreadable > 0) {
      text.append(Prose(
          " ",
          facts.ofProduct.size() == 1 ? "It has" : counted(unreadable, "entry has", "entries have"),
          " a date that cannot be read."));
    }
    return text;
  }
  Prose text(facts.atDate.size(), " entries are at the transaction's date, ", when, ": ");
  for (std::size_t i = 0; i < facts.atDate.size() && i < kMostNames; ++i) {
    if (i > 0) text.append(", ");
    text.append(nameOf(facts.atDate[i]));
  }
  text.append(facts.atDate.size() > kMostNames ? ", and others." : ".");
  return text;
}

// The facts that decide between first purchase, conversion and renewal. Empty if nothing does.
std::vector<Prose> flagFacts(const PurchaseFacts& facts) {
  std::vector<Prose> texts;
  const bool isConversion = facts.isMarked(ParameterKey::kSubConvert);
  if (facts.reported == nullptr) {
    texts.emplace_back("So there is no entry to report, and the purchase counts as a renewal.");
    return texts;
  }
  const QELInAppPurchaseItem& item = *facts.reported;
  if (facts.isMarked(ParameterKey::kSubscription)) {
    texts.emplace_back("Its two transaction identifiers are equal, so it is a first purchase.");
    return texts;
  }
  texts.emplace_back("Its transaction identifier ", InputText{item.transactionID},
                     " and its original one ", InputText{item.originalTransactionID},
                     " are not equal, so it is a later purchase.");
  if (!isConversion && !facts.isMarked(ParameterKey::kSubRenew)) return texts;
  if (facts.previous == nullptr) {
    texts.emplace_back("The receipt has no entry of the product before it, so it is a renewal.");
  } else {
    texts.emplace_back("The entry of the product right before it, ", nameOf(*facts.previous),
                       isConversion ? ", is a free trial, so it is a conversion."
                                    : ", is no free trial, so it is a renewal.");
  }
  return texts;
}

Prose transactionFact(const PurchaseFacts& facts) {
  return Prose("Transaction ", InputText{facts.transactionIdentifier()},
               " has the original transaction ", InputText{facts.originalTransactionIdentifier()},
               ".");
}

void append(std::vector<Prose>& facts, std::vector<Prose> more) {
  for (Prose& fact : more) facts.push_back(std::move(fact));
}

// The facts behind a free trial or an introductory offer, whichever code comes first.
std::vector<Prose> entryFacts(const PurchaseFacts& facts) {
  return {kindFact(facts), dateFact(facts)};
}

Prose offerPriceFact(const PurchaseFacts& facts) {
  const PlainProduct& product = *facts.purchase.product;
  if (!product.hasDiscountClass) {
    return Prose("The system has no introductory offers, so the offer's price is not known.");
  }
  if (!product.discountsAnswerPrice || !product.discountsAnswerPaymentMode) {
    return Prose("Offers of this system have no ",
                 product.discountsAnswerPrice ? "payment mode" : "price",
                 ", so the offer's price is not known.");
  }
  if (!product.answersIntroductoryPrice || !product.introductoryPrice.has_value()) {
    return Prose("The product has no introductory offer (any more), so its price is not known.");
  }
  if (product.introductoryPrice->paymentMode == 2) {
    return Prose("The product's offer has payment mode 2 (free trial), so the price is 0.");
  }
  if (!product.introductoryPrice->price.has_value()) {
    return Prose("The product's offer has no price.");
  }
  return Prose("The product's offer has payment mode ", product.introductoryPrice->paymentMode,
               " and a price.");
}

Prose missingFact(MissingInput input, const PurchaseFacts& facts) {
  switch (input) {
    case MissingInput::kCurrency:
      return Prose(
          "The locale of the product's price has no currency code, so there is no currency.");
    case MissingInput::kPrice:
      return Prose("The product has no price, so there is no price and no value.");
    case MissingInput::kQuantity:
      break;
  }
  return Prose(
      facts.purchase.transaction->quantity.has_value()
          ? "The payment's quantity is 0, so there is no value."
          : "The transaction has no payment, which counts as quantity 0, so there is no value.");
}

std::vector<Prose> restoredFacts(const PurchaseFacts& facts) {
  const QELInAppPurchaseItem& latest = facts.ofProduct.back();
  if (facts.ofProduct.size() == 1 && !latest.webOrderLineItemID.has_value()) {
    return {kindFact(facts), transactionFact(facts)};
  }
  // The type alone decides here, before anything that would make it a subscription.
  return {
      Prose("The latest entry of the product, ", nameOf(latest), ", has ", typeText(latest), "."),
      transactionFact(facts)};
}

std::vector<Prose> autoRenewableFacts(const PurchaseFacts& facts) {
  std::vector<Prose> texts = entryFacts(facts);
  if (facts.reported != nullptr) {
    texts.emplace_back("It is neither a free trial nor an introductory offer.");
  }
  append(texts, flagFacts(facts));
  return texts;
}

std::vector<Prose> freeTrialFacts(const PurchaseFacts& facts) {
  std::vector<Prose> texts = entryFacts(facts);
  texts.emplace_back("It is a free trial.");
  if (!facts.hasCode(DiagnosticCode::kIntroductoryOffer)) append(texts, flagFacts(facts));
  return texts;
}

std::vector<Prose> repurchasedFreeTrialFacts(const PurchaseFacts& facts) {
  std::vector<Prose> texts = entryFacts(facts);
  texts.emplace_back("It is a free trial.");
  texts.push_back(transactionFact(facts));
  return texts;
}

std::vector<Prose> introductoryOfferFacts(const PurchaseFacts& facts) {
  std::vector<Prose> texts;
  if (!facts.hasCode(DiagnosticCode::kFreeTrial)) texts = entryFacts(facts);
  texts.emplace_back("It is an introductory offer.");
  append(texts, flagFacts(facts));
  if (!facts.isMarked(ParameterKey::kFreeTrial)) texts.push_back(offerPriceFact(facts));
  return texts;
}

Prose missingInReceiptFact(const PurchaseFacts& facts) {
  const std::size_t size = facts.purchase.receipt.size();
  if (size == 0) return Prose("The receipt has no entries.");
  return Prose("None of the ", size, size == 1 ? " entry" : " entries",
               " has the product identifier ", InputText{facts.productIdentifier()}, ".");
}

std::vector<Prose> factsOfCode(DiagnosticCode code, const PurchaseFacts& facts) {
  switch (code) {
    case DiagnosticCode::kNilProduct:
      return {Prose("The purchase has no product. Nothing else is read.")};
    case DiagnosticCode::kEmptyProductId:
      return {Prose(facts.productIdentifier().has_value()
                        ? "The product's identifier is empty. Nothing else is read."
                        : "The product has no identifier. Nothing else is read.")};
    case DiagnosticCode::kNilTransaction:
      return {Prose("The purchase has no transaction. Nothing else is read.")};
    case DiagnosticCode::kEmptyTransactionId:
      return {Prose(facts.transactionIdentifier().has_value()
                        ? "The transaction's identifier is empty. This is only a warning."
                        : "The transaction has no identifier. This is only a warning.")};
    case DiagnosticCode::kMissingInReceipt:
      return {missingInReceiptFact(facts)};
    case DiagnosticCode::kRestoredNonConsumable:
      return restoredFacts(facts);
    case DiagnosticCode::kMismatchedTransactionIds:
      return {kindFact(facts),
              Prose("Its transaction identifier ", InputText{facts.reported->transactionID},
                    " and its original one ", InputText{facts.reported->originalTransactionID},
                    " are not equal.")};
    case DiagnosticCode::kConsumable:
    case DiagnosticCode::kNonConsumable:
      return {kindFact(facts),
              Prose("Its two transaction identifiers are equal. Its date is not compared.")};
    case DiagnosticCode::kSubscriptionMissingInReceipt:
    case DiagnosticCode::kDuplicateTransactionDate:
    case DiagnosticCode::kNonRenewingSubscription:
      return entryFacts(facts);
    case DiagnosticCode::kAutoRenewable:
      return autoRenewableFacts(facts);
    case DiagnosticCode::kFreeTrial:
      return freeTrialFacts(facts);
    case DiagnosticCode::kRepurchasedFreeTrial:
      return repurchasedFreeTrialFacts(facts);
    case DiagnosticCode::kIntroductoryOffer:
      return introductoryOfferFacts(facts);
    case DiagnosticCode::kAutoRenewableRenewal:
      return {Prose("The last code of every valid free trial and introductory offer.")};
  }
  return {};
}

}  // namespace

std::vector<Decision> decisionsOf(const PurchaseFacts& facts) {
  std::vector<Decision> decisions;
  bool isClassified = false;
  for (const RecordedDiagnostic& diagnostic : facts.diagnostics) {
    const auto code = static_cast<DiagnosticCode>(diagnostic.code);
    if (code != DiagnosticCode::kEmptyTransactionId) isClassified = true;
    decisions.push_back({diagnostic.code, diagnostic.message, factsOfCode(code, facts)});
  }
  if (!isClassified && facts.reported != nullptr) {
    decisions.push_back({0,
                         "A single entry of a type without a meaning is reported without a code.",
                         {kindFact(facts), Prose("Its two transaction identifiers are equal.")}});
  }
  if (!facts.missing.empty()) {
    decisions.push_back({0, "An event needs price, value, currency and product_id.", {}});
    for (const MissingInput input : facts.missing) {
      decisions.back().facts.push_back(missingFact(input, facts));
    }
  }
  return decisions;
}

}  // namespace qel::tool
