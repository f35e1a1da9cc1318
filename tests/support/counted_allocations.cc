#include "support/counted_allocations.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

std::size_t allocations = 0;

// Number of the allocation that fails; the first one has the number 0.
std::size_t failing = std::numeric_limits<std::size_t>::max();

}  // namespace

void* operator new(std::size_t size) {
  if (allocations++ == failing) throw std::bad_alloc();
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace qel::testing {

std::size_t allocationCount() { return allocations; }

void failAllocationAfter(std::size_t count) { failing = allocations + count; }

}  // namespace qel::testing
