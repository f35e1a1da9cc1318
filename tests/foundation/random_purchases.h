// Random purchases. In most of them the receipt has entries of the product.

#ifndef QEL_TESTS_FOUNDATION_RANDOM_PURCHASES_H_
#define QEL_TESTS_FOUNDATION_RANDOM_PURCHASES_H_

#include <cstdint>
#include <random>

#include "reference/event_oracle.h"

namespace qel::testing {

class RandomPurchases {
 public:
  explicit RandomPurchases(std::uint64_t seed) : random_(seed) {}

  OraclePurchase next();

 private:
  std::mt19937_64 random_;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_RANDOM_PURCHASES_H_
