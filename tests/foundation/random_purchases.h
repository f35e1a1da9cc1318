// Purchases at random, most of them such that the receipt and the store have something to say to
// each other.

#ifndef QEL_TESTS_FOUNDATION_RANDOM_PURCHASES_H_
#define QEL_TESTS_FOUNDATION_RANDOM_PURCHASES_H_

#include <cstdint>
#include <random>

#include "purchase_values.h"

namespace qel::testing {

class RandomPurchases {
 public:
  explicit RandomPurchases(std::uint64_t seed) : random_(seed) {}

  PurchaseValues next();

 private:
  std::mt19937_64 random_;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_RANDOM_PURCHASES_H_
