// The purchases of examples/purchases.jsonl, and what tests/golden/purchases.jsonl says that each
// must give. make_examples.py writes what stands behind it.

#ifndef QEL_TESTS_FOUNDATION_EXAMPLES_H_
#define QEL_TESTS_FOUNDATION_EXAMPLES_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "purchase_values.h"

namespace qel::testing {

struct Example {
  std::string name;
  PurchaseValues purchase;
  DiscountClass discountClass;
  std::optional<std::map<std::string, Outcome::Value>> event;
  std::vector<Diagnostic> diagnostics;
};

// All of them, in their order.
std::vector<Example> examplePurchases();

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_EXAMPLES_H_
