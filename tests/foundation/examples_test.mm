// The example purchases through live objects give the golden results.

#include <gtest/gtest.h>

#include <iostream>

#include "examples.h"
#include "own_process.h"
#import "stand_ins.h"

namespace qel::testing {
namespace {

TEST(ExamplesTest, GiveTheGoldenResultsThroughLiveObjects) {
  const std::vector<Example> examples = examplePurchases();
  ASSERT_FALSE(examples.empty());
  for (const Example& example : examples) {
    SCOPED_TRACE(example.name);
    inProcessOfItsOwn([&example] {
      registerDiscountClass(example.discountClass);
      const Outcome outcome = outcomeOfLiveObjects(example.purchase);
      const Outcome golden = {example.event, example.diagnostics, outcome.asked};
      EXPECT_EQ(outcome, golden);
      EXPECT_EQ(outcome, outcomeOfPlainRecords(example.purchase, example.discountClass));
    });
    // The copies that follow would take the failure for theirs.
    if (HasFailure()) return;
  }
  std::cout << examples.size() << " examples" << std::endl;
}

}  // namespace
}  // namespace qel::testing
