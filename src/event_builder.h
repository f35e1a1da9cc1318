// The three steps of building an event. The exported function runs them one after the other; an
// app's own platform may read the receipt between the first and the second.

#ifndef QEL_SRC_EVENT_BUILDER_H_
#define QEL_SRC_EVENT_BUILDER_H_

#include <optional>
#include <string_view>

#include "qel/event_parameters.h"
#include "qel/receipt_item.h"
#include "qel/store_records.h"

namespace qel {

// Checks the records of a purchase, either of which may be null. Returns the product's identifier,
// which is not empty, if an event can be built from them. Otherwise logs why not and returns
// std::nullopt.
std::optional<std::string_view> checkInputs(const StoreProduct* product,
                                            const StoreTransaction* transaction) noexcept;

// Builds the event of a purchase whose records have passed checkInputs, which returned
// `productIdentifier`. Returns std::nullopt if a required parameter is missing.
std::optional<EventParameters> buildEvent(std::string_view productIdentifier,
                                          const StoreProduct& product,
                                          const StoreTransaction& transaction,
                                          QELInAppPurchaseItemsView receiptItems) noexcept;

// Adds `discount`, if there is one, to `validated`; its values replace those under the same keys.
// Returns std::nullopt if `validated` is absent, or if "price", "value", "currency" or "product_id"
// is missing from the result.
std::optional<EventParameters> completedEvent(std::optional<EventParameters>&& validated,
                                              const std::optional<EventParameters>& discount);

}  // namespace qel

#endif  // QEL_SRC_EVENT_BUILDER_H_
