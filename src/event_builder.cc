#include "event_builder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "diagnostics.h"
#include "discount_parameters.h"
#include "micros_and_dedupe_id.h"
#include "qel/micros_multiplier.h"
#include "qel/purchase_event.h"
#include "receipt_validation.h"

namespace qel {

constinit const std::string_view kQELParameterInAppPurchaseInvalid = textOf(ParameterKey::kInvalid);
constinit const std::string_view kQELParameterIsSubscriptionConversion =
    textOf(ParameterKey::kSubConvert);
constinit const std::string_view kQELParameterIsSubscriptionRenewal =
    textOf(ParameterKey::kSubRenew);

namespace {

// The parameters that the store's records alone give.
EventParameters baseParameters(std::string_view productIdentifier, const StoreProduct& product,
                               const StoreTransaction& transaction, std::int64_t multiplier) {
  EventParameters base;
  base.set(ParameterKey::kProductId, QELValue::initWithString(productIdentifier));
  if (const std::optional<Decimal> price = product.price()) {
    base.set(ParameterKey::kPrice, QELValue::initWithInt64(amountFromPrice(*price, multiplier)));
    if (quantityOf(transaction) != 0) {
      const std::int64_t quantity = quantityOf(transaction);
      base.set(ParameterKey::kValue,
               QELValue::initWithInt64(QELValueInMicrosFromPriceAndQuantity(*price, quantity)));
      base.set(ParameterKey::kQuantity, QELValue::initWithInt64(quantity));
    }
  }
  if (const OptionalText currency = product.priceLocaleCurrencyCode()) {
    base.set(ParameterKey::kCurrency, QELValue::initWithString(*currency));
  }
  if (const OptionalText title = product.localizedTitle()) {
    base.set(ParameterKey::kProductName, QELValue::initWithString(*title));
  }
  return base;
}

// Returns whether every required key is present.
bool hasRequiredKeys(const EventParameters& parameters) {
  constexpr std::array kRequired = {ParameterKey::kPrice, ParameterKey::kValue,
                                    ParameterKey::kCurrency, ParameterKey::kProductId};
  return std::all_of(kRequired.begin(), kRequired.end(),
                     [&parameters](ParameterKey key) { return parameters.find(key) != nullptr; });
}

}  // namespace

std::optional<std::string_view> checkInputs(const StoreProduct* product,
                                            const StoreTransaction* transaction) noexcept {
  if (product == nullptr) {
    log(message::kNilProduct);
    return std::nullopt;
  }
  const OptionalText productIdentifier = product->productIdentifier();
  if (isEmpty(productIdentifier)) {
    log(message::kEmptyProductId);
    return std::nullopt;
  }
  if (transaction == nullptr) {
    log(message::kNilTransaction);
    return std::nullopt;
  }
  return productIdentifier;
}

std::optional<EventParameters> buildEvent(std::string_view productIdentifier,
                                          const StoreProduct& product,
                                          const StoreTransaction& transaction,
                                          QELInAppPurchaseItemsView receiptItems) noexcept {
  const std::int64_t multiplier = QELDataTypeMicrosMultiplier;
  EventParameters base = baseParameters(productIdentifier, product, transaction, multiplier);

  const OptionalText transactionIdentifier = transaction.transactionIdentifier();
  const StoreTransaction* const original = transaction.originalTransaction();
  const OptionalText originalIdentifier =
      original != nullptr ? original->transactionIdentifier() : std::nullopt;
  const std::optional<Instant> date = transaction.transactionDate();
  std::optional<EventParameters> validated =
      QELValidatedInAppPurchaseParameters(receiptItems, productIdentifier, transactionIdentifier,
                                          originalIdentifier, date, std::move(base));

  const std::optional<EventParameters> discount =
      QELDiscountParameters(validated, product, transaction, multiplier);
  return completedEvent(std::move(validated), discount);
}

std::optional<EventParameters> completedEvent(std::optional<EventParameters>&& validated,
                                              const std::optional<EventParameters>& discount) {
  if (!validated.has_value()) return std::nullopt;
  if (discount.has_value()) validated->merge(*discount);
  if (!hasRequiredKeys(*validated)) return std::nullopt;
  return validated;
}

}  // namespace qel

std::optional<qel::EventParameters> QELInAppPurchaseEventParametersFromProductAndTransactionV2(
    const qel::StoreProduct* product, const qel::StoreTransaction* transaction,
    qel::QELInAppPurchaseItemsView receiptItems) noexcept {
  const std::optional<std::string_view> productIdentifier = qel::checkInputs(product, transaction);
  if (!productIdentifier.has_value()) return std::nullopt;
  return qel::buildEvent(*productIdentifier, *product, *transaction, receiptItems);
}
