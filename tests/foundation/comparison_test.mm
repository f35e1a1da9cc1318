// Compares live objects, plain records and the oracle for the same purchase: the same event and the
// same messages, and through live objects and plain records the same calls to the store.

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <map>
#include <random>
#include <string>

#import "live_doubles.h"
#include "own_process.h"
#include "random_purchases.h"

namespace qel::testing {
namespace {

struct ComparedPlatform {
  const char* name;
  OraclePlatform platform;
  int purchases;
  friend std::ostream& operator<<(std::ostream& out, const ComparedPlatform& p) {
    return out << p.name;
  }
};

class ComparisonTest : public ::testing::TestWithParam<ComparedPlatform> {};

// How often each message, each key, and an event or none came.
using Coverage = std::map<std::string, int>;

void countIn(Coverage& coverage, const Outcome& outcome) {
  ++coverage[outcome.event.has_value() ? "event" : "no event"];
  for (const Diagnostic& diagnostic : outcome.diagnostics) {
    ++coverage[std::to_string(diagnostic.code)];
  }
  if (outcome.event.has_value()) {
    for (const auto& [key, value] : *outcome.event) ++coverage[key];
  }
}

TEST_P(ComparisonTest, RandomPurchasesGiveTheSameThroughLiveObjects) {
  inProcessOfItsOwn([] {
    const int count = GetParam().purchases;
    const std::uint64_t seed = std::random_device()();
    std::cout << count << " purchases, seed " << seed << std::endl;
    registerDiscountClass(GetParam().platform);

    RandomPurchases purchases(seed);
    Coverage coverage;
    for (int i = 0; i < count; ++i) {
      OraclePurchase purchase = purchases.next();
      purchase.platform = GetParam().platform;
      const Outcome expected = outcomeOfPlainRecords(purchase);
      ASSERT_EQ(outcomeOfLiveObjects(purchase), expected)
          << "purchase " << i << " of the seed " << seed;
      Outcome ofOracle = outcomeOfOracle(purchase);
      ofOracle.asked = expected.asked;
      ASSERT_EQ(expected, ofOracle) << "purchase " << i << " of the seed " << seed;
      countIn(coverage, expected);
    }
    // Every message and every key came.
    EXPECT_EQ(coverage.size(), 17u + 14u + 2u) << ::testing::PrintToString(coverage);
  });
}

INSTANTIATE_TEST_SUITE_P(
    Platforms, ComparisonTest,
    ::testing::Values(ComparedPlatform{"Whole", {}, 100000},
                      ComparedPlatform{"WithoutTheClass", {.hasDiscountClass = false}, 20000},
                      ComparedPlatform{"WithoutPrice", {.discountsAnswerPrice = false}, 20000},
                      ComparedPlatform{
                          "WithoutPaymentMode", {.discountsAnswerPaymentMode = false}, 20000}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace qel::testing
