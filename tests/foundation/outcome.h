// All that can be seen of one call of the component: through plain records, and as the oracle
// expects it.

#ifndef QEL_TESTS_FOUNDATION_OUTCOME_H_
#define QEL_TESTS_FOUNDATION_OUTCOME_H_

#include <iosfwd>
#include <optional>
#include <vector>

#include "reference/event_oracle.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {

struct Outcome {
  std::optional<Event> event;
  std::vector<Diagnostic> diagnostics;
  // The operations that were called on the store's records, in order, without the lookup of the
  // class SKProductDiscount: a live object cannot see that.
  Asked asked;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

// Writes an outcome for a test that fails.
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

// Returns the component's outcome for `purchase` through plain records.
Outcome outcomeOfPlainRecords(const OraclePurchase& purchase);

// Returns the outcome that the oracle expects. `asked` is empty: the oracle has no records.
Outcome outcomeOfOracle(const OraclePurchase& purchase);

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_OUTCOME_H_
