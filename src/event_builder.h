// The end of building an event. Its beginning is the exported function.

#ifndef QEL_SRC_EVENT_BUILDER_H_
#define QEL_SRC_EVENT_BUILDER_H_

#include <optional>

#include "qel/event_parameters.h"

namespace qel {

// Takes the validated parameters over and lays `discount`, if there is one, over them. Returns
// nothing when they are nothing, or when what came of them lacks "price", "value", "currency" or
// "product_id".
std::optional<EventParameters> completedEvent(std::optional<EventParameters>&& validated,
                                              const std::optional<EventParameters>& discount);

}  // namespace qel

#endif  // QEL_SRC_EVENT_BUILDER_H_
