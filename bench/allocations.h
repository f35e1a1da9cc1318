// Counts heap allocations.

#ifndef QEL_BENCH_ALLOCATIONS_H_
#define QEL_BENCH_ALLOCATIONS_H_

#include <cstdint>

namespace qel::bench {

// Returns the number of calls of operator new on this thread so far.
std::uint64_t allocationsOfThisThread();

}  // namespace qel::bench

#endif  // QEL_BENCH_ALLOCATIONS_H_
