#include "allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t allocations = 0;

}  // namespace

namespace qel::bench {

std::uint64_t allocationsOfThisThread() { return allocations; }

}  // namespace qel::bench

// Replaces the program's allocation functions. The array and nothrow forms call these.
void* operator new(std::size_t size) {
  ++allocations;
  if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  std::abort();
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
