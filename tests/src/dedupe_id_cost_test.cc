// The number of allocations of a deduplication identifier.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "micros_and_dedupe_id.h"
#include "support/counted_allocations.h"

namespace qel::testing {
namespace {

TEST(DedupeIdCostTest, PiecesAreJoinedInOneAllocation) {
  // Longer than what a string holds in itself.
  const std::string originalTransactionID(100, '1');
  const std::string productID(200, 'p');
  const std::size_t before = allocationCount();
  QELTransactionDedupeID(originalTransactionID, "-9223372036854775808", productID);
  EXPECT_EQ(allocationCount() - before, 1u);
}

}  // namespace
}  // namespace qel::testing
