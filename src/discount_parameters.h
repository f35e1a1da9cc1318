// What a free trial or an introductory offer was actually charged.

#ifndef QEL_SRC_DISCOUNT_PARAMETERS_H_
#define QEL_SRC_DISCOUNT_PARAMETERS_H_

#include <cstdint>
#include <optional>

#include "qel/event_parameters.h"
#include "qel/store_records.h"

namespace qel {

// Returns the parameters that replace those of `validated` because the purchase was discounted: at
// most "original_price", "price_is_discounted", "price" and "value", and never none of them.
// Returns nothing when `validated` is absent or marks neither a free trial nor a discounted price,
// and when the price of the introductory offer cannot be had.
//
// `multiplier` is the number of micros in one unit of the currency.
std::optional<EventParameters> QELDiscountParameters(
    const std::optional<EventParameters>& validated, const StoreProduct& product,
    const StoreTransaction& transaction, std::int64_t multiplier);

}  // namespace qel

#endif  // QEL_SRC_DISCOUNT_PARAMETERS_H_
