// The early check of receipt matching, which a platform makes before it reads the receipt.

#ifndef QEL_SRC_MATCH_CRITERION_H_
#define QEL_SRC_MATCH_CRITERION_H_

#include <optional>

#include "qel/instant.h"
#include "qel/text.h"

namespace qel {

// Returns whether there is anything to match by: an identifier that is not empty, or a date.
inline bool hasCriterion(const OptionalText& productIdentifier,
                         const std::optional<Instant>& date) {
  return !isEmpty(productIdentifier) || date.has_value();
}

}  // namespace qel

#endif  // QEL_SRC_MATCH_CRITERION_H_
