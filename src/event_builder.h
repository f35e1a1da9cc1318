// The stages of an event, in their order.

#ifndef QEL_SRC_EVENT_BUILDER_H_
#define QEL_SRC_EVENT_BUILDER_H_

#include <optional>
#include <string_view>

#include "qel/event_parameters.h"
#include "qel/receipt_item.h"
#include "qel/store_records.h"

namespace qel {

// Builds the event of a purchase whose records have passed checkInputs, which returned
// `productIdentifier`. Returns std::nullopt if a required key is missing.
std::optional<EventParameters> buildEvent(std::string_view productIdentifier,
                                          const StoreProduct& product,
                                          const StoreTransaction& transaction,
                                          QELInAppPurchaseItemsView receiptItems) noexcept;

}  // namespace qel

#endif  // QEL_SRC_EVENT_BUILDER_H_
