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
  base.setString(ParameterKey::kProductId, productIdentifier);
  if (const std::optional<Decimal> price = product.price()) {
    base.setInt64(ParameterKey::kPrice, amountFromPrice(*price, multiplier));
    if (quantityOf(transaction) != 0) {
      // Read again, not kept: both keys have the quantity of this second reading.
      const std::int64_t quantity = quantityOf(transaction);
      base.setInt64(ParameterKey::kValue, QELValueInMicrosFromPriceAndQuantity(*price, quantity));
      base.setInt64(ParameterKey::kQuantity, quantity);
    }
  }
  if (const OptionalText currency = product.priceLocaleCurrencyCode()) {
    base.setString(ParameterKey::kCurrency, *currency);
  }
  if (const OptionalText title = product.localizedTitle()) {
    base.setString(ParameterKey::kProductName, *title);
  }
  return base;
}

}  // namespace qel
