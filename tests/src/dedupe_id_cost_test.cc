// How often the deduplication identifier asks for memory. Replaces operator new, so it is an
// executable of its own.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "micros_and_dedupe_id.h"

namespace {

std::size_t allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace qel::testing {
namespace {

TEST(DedupeIdCostTest, PiecesAreJoinedInOneAllocation) {
  // Longer than what a string holds in itself.
  const std::string originalTransactionID(100, '1');
  const std::string productID(200, 'p');
  const std::size_t before = allocations;
  QELTransactionDedupeID(originalTransactionID, "-9223372036854775808", productID);
  EXPECT_EQ(allocations - before, 1u);
}

}  // namespace
}  // namespace qel::testing
