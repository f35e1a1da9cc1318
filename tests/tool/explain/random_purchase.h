// Purchases at random, as the command reads them.

#ifndef QEL_TESTS_TOOL_EXPLAIN_RANDOM_PURCHASE_H_
#define QEL_TESTS_TOOL_EXPLAIN_RANDOM_PURCHASE_H_

#include <deque>
#include <random>

#include "purchase.h"

namespace qel::tool::testing {

// A purchase whose receipt refers to its entries.
class RandomPurchase {
 public:
  // Makes a purchase from few values, so that identifiers and dates meet often. Most purchases are
  // of a product that the receipt has.
  explicit RandomPurchase(std::mt19937_64& random);
  RandomPurchase(const RandomPurchase&) = delete;
  RandomPurchase& operator=(const RandomPurchase&) = delete;

  const Purchase& operator*() const { return purchase_; }

 private:
  std::deque<QELInAppPurchaseItem> entries_;
  Purchase purchase_;
};

}  // namespace qel::tool::testing

#endif  // QEL_TESTS_TOOL_EXPLAIN_RANDOM_PURCHASE_H_
