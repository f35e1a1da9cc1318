// The allocations of the values of an event, and what is left when one fails.

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>
#include <utility>

#include "qel/parameter_values.h"
#include "support/counted_allocations.h"

namespace qel::testing {
namespace {

constexpr ParameterKey kPrice = ParameterKey::kPrice;
constexpr ParameterKey kName = ParameterKey::kProductName;

TEST(ParameterValuesMemoryTest, EveryKeyHasAValueInOneAllocation) {
  const std::size_t before = allocationCount();
  ParameterValues values;
  for (std::size_t i = 0; i < kParameterKeyTexts.size(); ++i) {
    values.setInt64(static_cast<ParameterKey>(i), 1);
  }
  const ParameterValues moved = std::move(values);
  EXPECT_EQ(allocationCount() - before, 1U);
}

TEST(ParameterValuesMemoryTest, CopyTakesOneAllocation) {
  ParameterValues values;
  values.setInt64(kPrice, 499);
  values.setString(kName, std::string(5000, 'x'));
  const std::size_t before = allocationCount();
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): a copy is what is tested.
  const ParameterValues copy = values;
  EXPECT_EQ(allocationCount() - before, 1U);
}

TEST(ParameterValuesMemoryTest, FailedAllocationLeavesTheValuesAsTheyWere) {
  const std::string longText(5000, 'x');
  const QELValuePtr other = QELValue::initWithInt64(7);
  ParameterValues values;
  failAllocationAfter(0);
  EXPECT_THROW(values.setInt64(kPrice, 499), std::bad_alloc);
  failAllocationAfter(0);
  EXPECT_THROW(values.set(kPrice, other), std::bad_alloc);
  EXPECT_EQ(values.get(kPrice), nullptr);

  values.setString(kName, "Coins");
  failAllocationAfter(0);
  EXPECT_THROW(values.setString(kName, longText), std::bad_alloc);
  EXPECT_EQ(values.get(kName)->stringValue(), "Coins");
  failAllocationAfter(0);
  EXPECT_THROW((void)ParameterValues(values), std::bad_alloc);
  EXPECT_EQ(values.get(kName)->stringValue(), "Coins");
}

}  // namespace
}  // namespace qel::testing
