#include "event_builder.h"

#include <cstdint>
#include <utility>

#include "base_parameters.h"
#include "completed_event.h"
#include "discount_parameters.h"
#include "qel/micros_multiplier.h"
#include "receipt_validation.h"

namespace qel {

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

}  // namespace qel
