// The last stage of an event: the merge of the discount, and the check of the required keys.

#ifndef QEL_SRC_COMPLETED_EVENT_H_
#define QEL_SRC_COMPLETED_EVENT_H_

#include <optional>

#include "qel/event_parameters.h"

namespace qel {

// Adds `discount`, if there is one, to `validated`; its values replace those under the same keys.
// Returns std::nullopt if `validated` is absent, or if "price", "value", "currency" or "product_id"
// is missing from the result.
std::optional<EventParameters> completedEvent(std::optional<EventParameters>&& validated,
                                              const std::optional<EventParameters>& discount);

}  // namespace qel

#endif  // QEL_SRC_COMPLETED_EVENT_H_
