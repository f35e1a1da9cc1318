// Random numbers for tests, such that a failing run can be repeated.

#ifndef QEL_TESTS_REFERENCE_RANDOM_SOURCE_H_
#define QEL_TESTS_REFERENCE_RANDOM_SOURCE_H_

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace qel::testing {

// Makes a generator with a new seed for each run, and prints the seed. QEL_TEST_SEED in the
// environment sets it instead.
inline std::mt19937_64 seededRandom() {
  const char* const given = std::getenv("QEL_TEST_SEED");
  const std::uint64_t seed = given != nullptr ? std::stoull(given) : std::random_device()();
  std::cout << "To repeat this run: QEL_TEST_SEED=" << seed << std::endl;
  return std::mt19937_64(seed);
}

// A number from `least` to `most`, both included.
template <typename Integer>
Integer randomBetween(std::mt19937_64& random, Integer least, Integer most) {
  return std::uniform_int_distribution<Integer>(least, most)(random);
}

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_RANDOM_SOURCE_H_
