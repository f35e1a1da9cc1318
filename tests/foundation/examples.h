// The purchases of examples/purchases.jsonl with their results in tests/golden/purchases.jsonl.

#ifndef QEL_TESTS_FOUNDATION_EXAMPLES_H_
#define QEL_TESTS_FOUNDATION_EXAMPLES_H_

#include <string>
#include <vector>

#include "outcome.h"

namespace qel::testing {

struct Example {
  std::string name;
  OraclePurchase purchase;
  Outcome golden;  // `asked` is empty
};

// Returns all examples in their order. Throws if one of the files is not readable.
std::vector<Example> examplePurchases();

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_EXAMPLES_H_
