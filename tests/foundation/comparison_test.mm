// Compares live objects, plain records and the oracle for the same purchase: the same event and the
// same messages, and through live objects and plain records the same calls to the store.

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <map>
#include <random>
#include <string>

#include "own_process.h"
#include "purchase_values.h"
#include "random_purchases.h"
#import "stand_ins.h"

namespace qel::testing {
namespace {

struct Platform {
  const char* name;
  DiscountClass discountClass;
  int purchases;
  friend std::ostream& operator<<(std::ostream& out, const Platform& p) { return out << p.name; }
};

class ComparisonTest : public ::testing::TestWithParam<Platform> {};

// How often each message came, and how often each kind of event: what the purchases have covered.
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
    registerDiscountClass(GetParam().discountClass);

    RandomPurchases purchases(seed);
    Coverage coverage;
    for (int i = 0; i < count; ++i) {
      const PurchaseValues purchase = purchases.next();
      const Outcome expected = outcomeOfPlainRecords(purchase, GetParam().discountClass);
      ASSERT_EQ(outcomeOfLiveObjects(purchase), expected)
          << "purchase " << i << " of the seed " << seed;
      Outcome ofOracle = outcomeOfOracle(purchase, GetParam().discountClass);
      ofOracle.asked = expected.asked;
      ASSERT_EQ(expected, ofOracle) << "purchase " << i << " of the seed " << seed;
      countIn(coverage, expected);
    }
    // Every message and every key has come up, so that none was left uncompared.
    EXPECT_EQ(coverage.size(), 17u + 14u + 2u) << ::testing::PrintToString(coverage);
  });
}

INSTANTIATE_TEST_SUITE_P(
    Platforms, ComparisonTest,
    ::testing::Values(Platform{"Whole", {}, 100000},

                      Platform{"WithoutTheClass", {.exists = false}, 20000},
                      Platform{"WithoutPrice", {.answersPrice = false}, 20000},
                      Platform{"WithoutPaymentMode", {.answersPaymentMode = false}, 20000}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace qel::testing
