// The example purchases through live objects give the golden results.

#include <gtest/gtest.h>

#include <iostream>

#include "examples.h"
#import "live_doubles.h"
#include "own_process.h"

namespace qel::testing {
namespace {

TEST(ExamplesTest, GiveTheGoldenResultsThroughLiveObjects) {
  const std::vector<Example> examples = examplePurchases();
  ASSERT_FALSE(examples.empty());
  for (const Example& example : examples) {
    SCOPED_TRACE(example.name);
    inProcessOfItsOwn([&example] {
      registerDiscountClass(example.purchase.platform);
      const Outcome outcome = outcomeOfLiveObjects(example.purchase);
      Outcome golden = example.golden;
      golden.asked = outcome.asked;
      EXPECT_EQ(outcome, golden);
      EXPECT_EQ(outcome, outcomeOfPlainRecords(example.purchase));
    });
    // The processes that follow would report this failure again.
    if (HasFailure()) return;
  }
  std::cout << examples.size() << " examples" << std::endl;
}

}  // namespace
}  // namespace qel::testing
