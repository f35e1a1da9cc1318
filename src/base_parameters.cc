#include "base_parameters.h"

#include "diagnostics.h"
#include "micros_and_dedupe_id.h"

namespace qel {

std::optional<std::string_view> checkInputs(const StoreProduct* product,
                                            const StoreTransaction* transaction) noexcept {
  if (product == nullptr) {
    log(DiagnosticCode::kNilProduct);
    return std::nullopt;
  }
  const OptionalText productIdentifier = product->productIdentifier();
  if (isEmpty(productIdentifier)) {
    log(DiagnosticCode::kEmptyProductId);
    return std::nullopt;
  }
  if (transaction == nullptr) {
    log(DiagnosticCode::kNilTransaction);
    return std::nullopt;
  }
  return *productIdentifier;
}

EventParameters baseParameters(std::string_view productIdentifier, const StoreProduct& product,
                               const StoreTransaction& transaction, std::int64_t multiplier) {
  EventParameters base;
  base.set(ParameterKey::kProductId, QELValue::initWithString(productIdentifier));
  if (const std::optional<Decimal> price = product.price()) {
    base.set(ParameterKey::kPrice, QELValue::initWithInt64(amountFromPrice(*price, multiplier)));
    if (quantityOf(transaction) != 0) {
      // Read again, not kept: both keys have the quantity of this second reading.
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

}  // namespace qel
