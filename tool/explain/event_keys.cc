#include <algorithm>

#include "explain/entry_text.h"
#include "explain/explanation.h"
#include "explain/money.h"
#include "qel/digest.h"

namespace qel::tool {
namespace {

bool hasPriceOfOffer(const PurchaseFacts& facts) {
  const EventParameters& event = *facts.event;
  const bool isDiscounted = event.find(ParameterKey::kPriceIsDiscounted) != nullptr &&
                            event.find(ParameterKey::kFreeTrial) == nullptr;
  return isDiscounted && (event.find(ParameterKey::kOriginalPrice) != nullptr ||
                          !facts.purchase.product->price.has_value());
}

bool isFreeOffer(const PurchaseFacts& facts) {
  const std::optional<PlainDiscount>& offer = facts.purchase.product->introductoryPrice;
  return offer.has_value() && offer->paymentMode == 2;
}

Prose priceOrigin(const PurchaseFacts& facts) {
  if (facts.event->find(ParameterKey::kFreeTrial) != nullptr) {
    return Prose("a free trial costs nothing");
  }
  if (hasPriceOfOffer(facts)) {
    return Prose(isFreeOffer(facts) ? "the introductory offer is a free trial (payment mode 2)"
                                    : "the price of the product's introductory offer");
  }
  if (isAtFullPrice(facts)) return Prose("the product's price: the offer's cannot be read");
  return Prose("the product's price");
}

Prose valueOrigin(const PurchaseFacts& facts) {
  const bool isFree = facts.event->find(ParameterKey::kFreeTrial) != nullptr ||
                      (hasPriceOfOffer(facts) && isFreeOffer(facts));
  if (isFree) return priceOrigin(facts);
  return Prose("price x quantity ", facts.purchase.transaction->quantity.value_or(0));
}

Prose subscriptionOrigin(const PurchaseFacts& facts) {
  if (facts.hasCode(DiagnosticCode::kSubscriptionMissingInReceipt)) return Prose("code 40023");
  if (facts.hasCode(DiagnosticCode::kDuplicateTransactionDate)) return Prose("code 40024");
  if (facts.hasCode(DiagnosticCode::kNonRenewingSubscription)) {
    return Prose("every purchase of a non-renewing subscription");
  }
  return Prose("first purchase: entry ", nameOf(*facts.reported), " has two equal identifiers");
}

Prose invalidOrigin(const PurchaseFacts& facts) {
  for (const DiagnosticCode code :
       {DiagnosticCode::kRestoredNonConsumable, DiagnosticCode::kRepurchasedFreeTrial,
        DiagnosticCode::kMissingInReceipt, DiagnosticCode::kSubscriptionMissingInReceipt,
        DiagnosticCode::kDuplicateTransactionDate}) {
    if (facts.hasCode(code)) return Prose("code ", static_cast<int>(code));
  }
  return Prose();
}

Prose renewalOrigin(const PurchaseFacts& facts) {
  if (facts.reported == nullptr) return Prose("there is no entry to report");
  if (facts.previous == nullptr) {
    return Prose("the receipt has no entry of the product before ", nameOf(*facts.reported));
  }
  return Prose("entry ", nameOf(*facts.previous), " before ", nameOf(*facts.reported),
               " is no free trial");
}

Prose dedupeOrigin(const PurchaseFacts& facts, const std::vector<std::string>& texts) {
  const std::int64_t value = facts.event->find(ParameterKey::kDedupeId)->int64Value();
  if (value == -1 && texts.empty()) {
    if (facts.reported == nullptr) return Prose("there is no entry to make it from");
    return Prose("entry ", nameOf(*facts.reported), " has no original transaction identifier");
  }
  if (texts.empty())
    return Prose("the identifiers have half a character, which UTF-8 cannot encode");
  Prose text("MD5, last 8 bytes, of ");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    text.append(Prose(i == 0 ? "" : " + ", InputText{texts[i]}));
  }
  text.append(texts.size() == 3 ? ": original transaction, web order line item, product"
                                : ": original transaction, product");
  return text;
}

Prose originOf(ParameterKey key, const PurchaseFacts& facts,
               const std::vector<std::string>& dedupeTexts) {
  switch (key) {
    case ParameterKey::kDedupeId:
      return dedupeOrigin(facts, dedupeTexts);
    case ParameterKey::kCurrency:
      return Prose("the currency of the product's price");
    case ParameterKey::kFreeTrial:
      return Prose("entry ", nameOf(*facts.reported), " is a free trial");
    case ParameterKey::kInvalid:
      return invalidOrigin(facts);
    case ParameterKey::kOriginalPrice:
      return Prose("the product's price");
    case ParameterKey::kPrice:
      return priceOrigin(facts);
    case ParameterKey::kPriceIsDiscounted:
      return Prose("entry ", nameOf(*facts.reported),
                   facts.event->find(ParameterKey::kFreeTrial) != nullptr
                       ? " is a free trial"
                       : " is an introductory offer");
    case ParameterKey::kProductId:
      return Prose("the product's identifier");
    case ParameterKey::kProductName:
      return Prose("the product's localized title");
    case ParameterKey::kQuantity:
      return Prose("the payment's quantity");
    case ParameterKey::kSubConvert:
      return Prose("entry ", nameOf(*facts.previous), " before ", nameOf(*facts.reported),
                   " is a free trial");
    case ParameterKey::kSubRenew:
      return renewalOrigin(facts);
    case ParameterKey::kSubscription:
      return subscriptionOrigin(facts);
    case ParameterKey::kValue:
      return valueOrigin(facts);
  }
  return Prose();
}

bool hasAmount(ParameterKey key) {
  return key == ParameterKey::kPrice || key == ParameterKey::kValue ||
         key == ParameterKey::kOriginalPrice;
}

// The order in which people read an event: the product, the money, what it was, the identifier.
constexpr ParameterKey kReadingOrder[] = {ParameterKey::kProductId,
                                          ParameterKey::kProductName,
                                          ParameterKey::kPrice,
                                          ParameterKey::kQuantity,
                                          ParameterKey::kValue,
                                          ParameterKey::kOriginalPrice,
                                          ParameterKey::kCurrency,
                                          ParameterKey::kInvalid,
                                          ParameterKey::kSubscription,
                                          ParameterKey::kFreeTrial,
                                          ParameterKey::kPriceIsDiscounted,
                                          ParameterKey::kSubConvert,
                                          ParameterKey::kSubRenew,
                                          ParameterKey::kDedupeId};
static_assert(std::size(kReadingOrder) == kParameterKeyTexts.size());

}  // namespace

std::vector<std::string> dedupeTextsOf(const PurchaseFacts& facts) {
  if (!facts.event.has_value() || facts.reported == nullptr) return {};
  const QELValuePtr& value = facts.event->find(ParameterKey::kDedupeId);
  const QELInAppPurchaseItem& item = *facts.reported;
  if (value == nullptr || !item.originalTransactionID || !item.productID) return {};

  // The digest itself says whether the web order line item is part of it.
  std::vector<std::vector<std::string>> candidates;
  candidates.push_back({*item.originalTransactionID, *item.productID});
  if (!isEmpty(item.webOrderLineItemID)) {
    candidates.push_back({*item.originalTransactionID, *item.webOrderLineItemID, *item.productID});
  }
  for (const std::vector<std::string>& texts : candidates) {
    std::string joined;
    for (const std::string& text : texts) joined += text;
    const std::optional<std::string> bytes = utf8DataWithoutLoss(std::move(joined));
    const bool isDigest =
        bytes.has_value() && static_cast<std::int64_t>(qel_64LSBMD5(*bytes)) == value->int64Value();
    if (isDigest) return texts;
  }
  return {};
}

std::vector<EventKey> eventKeysOf(const PurchaseFacts& facts,
                                  const std::vector<std::string>& dedupeTexts) {
  std::vector<EventKey> keys;
  if (!facts.event.has_value()) return keys;
  const OptionalText currency = facts.currency();
  for (const ParameterKey key : kReadingOrder) {
    const QELValuePtr& value = facts.event->find(key);
    if (value == nullptr) continue;
    EventKey shown{.key = textOf(key),
                   .value = Prose(),
                   .readable = Prose(),
                   .origin = originOf(key, facts, dedupeTexts)};
    if (const OptionalText text = value->stringValue()) {
      shown.value = Prose(InputText{text});
    } else {
      shown.value = Prose(value->int64Value());
    }
    if (hasAmount(key)) {
      shown.readable = Prose(amountText(value->int64Value(), currency.value_or("")));
      if (!isEmpty(currency) && isAmount(value->int64Value())) {
        shown.readable.append(Prose(" ", InputText{currency}));
      }
    }
    keys.push_back(std::move(shown));
  }
  return keys;
}

}  // namespace qel::tool
