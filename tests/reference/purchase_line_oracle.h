// The oracle for input lines: reads a purchase from a line of JSON.

#ifndef QEL_TESTS_REFERENCE_PURCHASE_LINE_ORACLE_H_
#define QEL_TESTS_REFERENCE_PURCHASE_LINE_ORACLE_H_

#include <optional>
#include <string_view>

#include "event_oracle.h"

namespace qel::testing {

// Returns the purchase that `line` holds, or std::nullopt if the line must be rejected.
std::optional<OraclePurchase> oraclePurchase(std::string_view line, bool ignoresUnknownKeys);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_PURCHASE_LINE_ORACLE_H_
