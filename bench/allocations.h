// Counting what is allocated on the heap.

#ifndef QEL_BENCH_ALLOCATIONS_H_
#define QEL_BENCH_ALLOCATIONS_H_

#include <cstdint>

namespace qel::bench {

// How many blocks this thread has allocated with operator new so far.
std::uint64_t allocationsOfThisThread();

}  // namespace qel::bench

#endif  // QEL_BENCH_ALLOCATIONS_H_
