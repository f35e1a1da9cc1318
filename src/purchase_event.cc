#include "qel/purchase_event.h"

#include "base_parameters.h"
#include "event_builder.h"

namespace qel {

constinit const std::string_view kQELParameterInAppPurchaseInvalid = textOf(ParameterKey::kInvalid);
constinit const std::string_view kQELParameterIsSubscriptionConversion =
    textOf(ParameterKey::kSubConvert);
constinit const std::string_view kQELParameterIsSubscriptionRenewal =
    textOf(ParameterKey::kSubRenew);

}  // namespace qel

std::optional<qel::EventParameters> QELInAppPurchaseEventParametersFromProductAndTransactionV2(
    const qel::StoreProduct* product, const qel::StoreTransaction* transaction,
    qel::QELInAppPurchaseItemsView receiptItems) noexcept {
  const std::optional<std::string_view> productIdentifier = qel::checkInputs(product, transaction);
  if (!productIdentifier.has_value()) return std::nullopt;
  return qel::buildEvent(*productIdentifier, *product, *transaction, receiptItems);
}
