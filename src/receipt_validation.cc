#include "receipt_validation.h"

#include <cstdint>

#include "diagnostics.h"
#include "micros_and_dedupe_id.h"
#include "qel/receipt_matching.h"
#include "subscription_flags.h"

namespace qel {
namespace {

// Meanings of a receipt entry's purchase type. Other values occur and have no meaning.
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
  parameters.setInt64(ParameterKey::kDedupeId, static_cast<std::int64_t>(dedupeId));
}

void setInvalidSubscription(EventParameters& parameters) {
  parameters.setFlag(ParameterKey::kInvalid);
  parameters.setFlag(ParameterKey::kSubscription);
}

// Logs a one-off purchase. Types without a meaning are not logged.
void logOneOffPurchase(PurchaseType type) {
  if (type == PurchaseType::kConsumable) log(DiagnosticCode::kConsumable);
  if (type == PurchaseType::kNonConsumable) log(DiagnosticCode::kNonConsumable);
}

// Classifies a purchase of an auto-renewable subscription, or of another product with several
// entries in the receipt: adds its keys to `result` and logs the decisions. `items` are the entries
// of the product, earliest first; `item` is the one to report.
void classifyAutoRenewableSubscription(const QELInAppPurchaseItem& item,
                                       QELInAppPurchaseItemsView items, bool isRepurchase,
                                       EventParameters& result) {
  // A renewal, whose identifiers differ, is not a new subscription.
  if (isFirstPurchase(item)) result.setFlag(ParameterKey::kSubscription);
  setDedupeId(result, item, item.webOrderLineItemID);

  if (!item.isFreeTrial && !item.isIntroductoryOffer) {
    log(DiagnosticCode::kAutoRenewable);
    QELMaybeAddSubscriptionParameters(result, items, item);
    return;
  }
  if (item.isFreeTrial) {
    result.setFlag(ParameterKey::kFreeTrial);
    if (isRepurchase) {
      log(DiagnosticCode::kRepurchasedFreeTrial);
      result.setFlag(ParameterKey::kInvalid);
      return;
    }
    log(DiagnosticCode::kFreeTrial);
  }
  if (item.isIntroductoryOffer) {
    result.setFlag(ParameterKey::kPriceIsDiscounted);
    QELMaybeAddSubscriptionParameters(result, items, item);
    log(DiagnosticCode::kIntroductoryOffer);
  }
  log(DiagnosticCode::kAutoRenewableRenewal);
}

}  // namespace

std::optional<EventParameters> QELValidatedInAppPurchaseParameters(
    QELInAppPurchaseItemsView receiptItems, const OptionalText& productIdentifier,
    const OptionalText& transactionIdentifier, const OptionalText& originalTransactionIdentifier,
    const std::optional<Instant>& transactionDate, EventParameters&& parameters) {
  if (parameters.empty()) return std::nullopt;
  if (isEmpty(productIdentifier)) return std::nullopt;
  // Only a warning: the receipt can still classify the purchase.
  if (isEmpty(transactionIdentifier)) log(DiagnosticCode::kEmptyTransactionId);

  const std::optional<QELInAppPurchaseItems> items =
      QELMatchingInAppPurchaseItems(receiptItems, productIdentifier, std::nullopt);
  if (!items.has_value() || items->empty()) {
    log(DiagnosticCode::kMissingInReceipt, *productIdentifier);
    parameters.setFlag(ParameterKey::kInvalid);
    return parameters;
  }
  const QELInAppPurchaseItem& latest = items->back();

  // Decided by the identifiers of the store's transaction, not by those of the receipt's entry.
  const bool isRepurchase = !isEmpty(transactionIdentifier) &&
                            !isEmpty(originalTransactionIdentifier) &&
                            !isEqual(transactionIdentifier, originalTransactionIdentifier);
  if (typeOf(latest) == PurchaseType::kNonConsumable && isRepurchase) {
    log(DiagnosticCode::kRestoredNonConsumable);
    parameters.setFlag(ParameterKey::kInvalid);
    return parameters;
  }
  if (items->size() == 1 && !isSubscriptionLike(latest)) {
    if (!isFirstPurchase(latest)) {
      log(DiagnosticCode::kMismatchedTransactionIds);
      return parameters;
    }
    logOneOffPurchase(typeOf(latest));
    setDedupeId(parameters, latest, std::nullopt);
    return parameters;
  }

  const QELInAppPurchaseItems atDate =
      QELMatchingInAppPurchaseItems(*items, std::nullopt, transactionDate)
          .value_or(QELInAppPurchaseItems());
  if (atDate.empty() && isSubscriptionLike(latest)) {
    log(DiagnosticCode::kSubscriptionMissingInReceipt, *productIdentifier);
    setInvalidSubscription(parameters);
    return parameters;
  }
  if (atDate.size() > 1) {
    log(DiagnosticCode::kDuplicateTransactionDate, *productIdentifier, atDate.size());
    // Also if the product is not a subscription.
    setInvalidSubscription(parameters);
    return parameters;
  }

  // Several one-off purchases, none of them at the transaction's date, leave no entry to report.
  // All fields of an absent entry are absent.
  const QELInAppPurchaseItem absent;
  const QELInAppPurchaseItem& item = atDate.empty() ? absent : atDate.front().get();
  if (typeOf(latest) == PurchaseType::kNonRenewingSubscription) {
    parameters.setFlag(ParameterKey::kSubscription);
    setDedupeId(parameters, item, std::nullopt);
    log(DiagnosticCode::kNonRenewingSubscription);
  } else {
    classifyAutoRenewableSubscription(item, *items, isRepurchase, parameters);
  }
  return parameters;
}

}  // namespace qel
