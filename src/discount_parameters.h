// The discount stage of an event: what was charged for a free trial or an introductory offer.

#ifndef QEL_SRC_DISCOUNT_PARAMETERS_H_
#define QEL_SRC_DISCOUNT_PARAMETERS_H_

#include <cstdint>
#include <optional>

#include "qel/event_parameters.h"
#include "qel/store_records.h"

namespace qel {

// Returns the parameters that replace those of `validated` for a discounted purchase: at least
// "price", at most also "original_price", "price_is_discounted" and "value". Returns std::nullopt
// if `validated` is absent, if it marks neither a free trial nor a discounted price, or if the
// price of the introductory offer cannot be read.
//
// `multiplier` is the number of micros in one unit of the currency.
std::optional<EventParameters> QELDiscountParameters(
    const std::optional<EventParameters>& validated, const StoreProduct& product,
    const StoreTransaction& transaction, std::int64_t multiplier);

}  // namespace qel

#endif  // QEL_SRC_DISCOUNT_PARAMETERS_H_
