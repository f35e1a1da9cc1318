#include "receipt_validation.h"

#include <cstdint>

#include "diagnostics.h"
#include "micros_and_dedupe_id.h"
#include "qel/receipt_matching.h"
#include "subscription_flags.h"

namespace qel {
namespace {

// What a receipt entry's purchase type means. Other values occur and mean nothing of their own.
enum class PurchaseType : std::int32_t {
  kNonConsumable = 0,
  kConsumable = 1,
  kNonRenewingSubscription = 2,
  kAutoRenewableSubscription = 3,
};

PurchaseType typeOf(const QELInAppPurchaseItem& item) {
  return static_cast<PurchaseType>(static_cast<std::int32_t>(item.purchaseType.value_or(0)));
}

bool isSubscriptionLike(const QELInAppPurchaseItem& item) {
  const PurchaseType type = typeOf(item);
  return type == PurchaseType::kAutoRenewableSubscription ||
         type == PurchaseType::kNonRenewingSubscription || item.webOrderLineItemID.has_value();
}

void setDedupeId(EventParameters& parameters, const QELInAppPurchaseItem& item,
                 const OptionalText& webOrderLineItemID) {
  const std::uint64_t dedupeId =
      QELTransactionDedupeID(item.originalTransactionID, webOrderLineItemID, item.productID);
  parameters.set(ParameterKey::kDedupeId,
                 QELValue::initWithInt64(static_cast<std::int64_t>(dedupeId)));
}

// A one-off purchase: the receipt's only entry for the product, and no subscription.
void reportSingleItem(const QELInAppPurchaseItem& item, EventParameters& result) {
  if (!isFirstPurchase(item)) {
    log(message::kMismatchedTransactionIds);
    return;
  }
  const PurchaseType type = typeOf(item);
  if (type == PurchaseType::kConsumable) log(message::kConsumable);
  if (type == PurchaseType::kNonConsumable) log(message::kNonConsumable);
  setDedupeId(result, item, std::nullopt);
}

void reportInvalidSubscription(EventParameters& result) {
  result.setFlag(ParameterKey::kInvalid);
  result.setFlag(ParameterKey::kSubscription);
}

void reportNonRenewingSubscription(const QELInAppPurchaseItem& item, EventParameters& result) {
  result.setFlag(ParameterKey::kSubscription);
  setDedupeId(result, item, std::nullopt);
  log(message::kNonRenewingSubscription);
}

// An auto-renewable subscription, and whatever else has more than one entry in the receipt. `items`
// are the entries of the product, earliest first.
void reportAutoRenewableSubscription(const QELInAppPurchaseItem& item,
                                     QELInAppPurchaseItemsView items, bool isRepurchase,
                                     EventParameters& result) {
  // A renewal, whose identifiers differ, is no new subscription.
  if (isFirstPurchase(item)) result.setFlag(ParameterKey::kSubscription);
  setDedupeId(result, item, item.webOrderLineItemID);

  if (!item.isFreeTrial && !item.isIntroductoryOffer) {
    log(message::kAutoRenewable);
    QELMaybeAddSubscriptionParameters(result, items, item);
    return;
  }
  if (item.isFreeTrial) {
    result.setFlag(ParameterKey::kFreeTrial);
    if (isRepurchase) {
      log(message::kRepurchasedFreeTrial);
      result.setFlag(ParameterKey::kInvalid);
      return;
    }
    log(message::kFreeTrial);
  }
  if (item.isIntroductoryOffer) {
    result.setFlag(ParameterKey::kPriceIsDiscounted);
    QELMaybeAddSubscriptionParameters(result, items, item);
    log(message::kIntroductoryOffer);
  }
  log(message::kAutoRenewableRenewal);
}

}  // namespace

std::optional<EventParameters> QELValidatedInAppPurchaseParameters(
    QELInAppPurchaseItemsView receiptItems, const OptionalText& productIdentifier,
    const OptionalText& transactionIdentifier, const OptionalText& originalTransactionIdentifier,
    const std::optional<Instant>& transactionDate, EventParameters&& parameters) {
  if (parameters.empty()) return std::nullopt;
  if (isEmpty(productIdentifier)) return std::nullopt;
  // A warning only: the purchase may still be classified by the receipt.
  if (isEmpty(transactionIdentifier)) log(message::kEmptyTransactionId);

  const std::optional<QELInAppPurchaseItems> items =
      QELMatchingInAppPurchaseItems(receiptItems, productIdentifier, std::nullopt);
  if (!items.has_value() || items->empty()) {
    log(message::kMissingInReceipt, *productIdentifier);
    parameters.setFlag(ParameterKey::kInvalid);
    return parameters;
  }
  const QELInAppPurchaseItem& latest = items->back();

  // The store's own identifiers tell a restore or a second purchase; the receipt's are not asked.
  const bool isRepurchase = !isEmpty(transactionIdentifier) &&
                            !isEmpty(originalTransactionIdentifier) &&
                            !isEqual(transactionIdentifier, originalTransactionIdentifier);
  if (typeOf(latest) == PurchaseType::kNonConsumable && isRepurchase) {
    log(message::kRestoredNonConsumable);
    parameters.setFlag(ParameterKey::kInvalid);
    return parameters;
  }
  if (items->size() == 1 && !isSubscriptionLike(latest)) {
    reportSingleItem(latest, parameters);
    return parameters;
  }

  const QELInAppPurchaseItems atDate =
      QELMatchingInAppPurchaseItems(*items, std::nullopt, transactionDate)
          .value_or(QELInAppPurchaseItems());
  if (atDate.empty() && isSubscriptionLike(latest)) {
    log(message::kSubscriptionMissingInReceipt, *productIdentifier);
    reportInvalidSubscription(parameters);
    return parameters;
  }
  if (atDate.size() > 1) {
    log(message::kDuplicateTransactionDate, *productIdentifier, atDate.size());
    // Whatever the entries are.
    reportInvalidSubscription(parameters);
    return parameters;
  }

  const auto report = [&](const QELInAppPurchaseItem& item) {
    if (typeOf(latest) == PurchaseType::kNonRenewingSubscription) {
      reportNonRenewingSubscription(item, parameters);
    } else {
      reportAutoRenewableSubscription(item, *items, isRepurchase, parameters);
    }
  };
  if (atDate.empty()) {
    // Several one-off purchases, none of them at the transaction's date, leave no entry to report.
    // Every field of such an entry is absent.
    report(QELInAppPurchaseItem());
  } else {
    report(atDate.front());
  }
  return parameters;
}

}  // namespace qel
