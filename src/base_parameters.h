// The first stage of an event: the input checks, and what the store's records alone give.

#ifndef QEL_SRC_BASE_PARAMETERS_H_
#define QEL_SRC_BASE_PARAMETERS_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "qel/event_parameters.h"
#include "qel/store_records.h"

namespace qel {

// Checks the records of a purchase, either of which may be null. Returns the product's identifier,
// which is not empty, if an event can be built from them. Otherwise logs why not and returns
// std::nullopt.
std::optional<std::string_view> checkInputs(const StoreProduct* product,
                                            const StoreTransaction* transaction) noexcept;

// Returns the parameters that the records of a purchase give without a receipt: "product_id", and
// those of "price", "value", "quantity", "currency" and "product_name" that they have.
//
// `productIdentifier` is what checkInputs returned. `multiplier` is the number of micros in one
// unit of the currency.
EventParameters baseParameters(std::string_view productIdentifier, const StoreProduct& product,
                               const StoreTransaction& transaction, std::int64_t multiplier);

}  // namespace qel

#endif  // QEL_SRC_BASE_PARAMETERS_H_
