// Counts the allocations of a program, and can make one fail. The program that links
// counted_allocations.cc has its operator new replaced.

#ifndef QEL_TESTS_SUPPORT_COUNTED_ALLOCATIONS_H_
#define QEL_TESTS_SUPPORT_COUNTED_ALLOCATIONS_H_

#include <cstddef>

namespace qel::testing {

// Returns the number of allocations so far.
std::size_t allocationCount();

// Makes the allocation after the next `count` ones throw std::bad_alloc.
void failAllocationAfter(std::size_t count);

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_COUNTED_ALLOCATIONS_H_
