#ifndef VELSCORE_TESTS_ALLOCATIONS_H
#define VELSCORE_TESTS_ALLOCATIONS_H

namespace MCVelscore_850 {

// Whoever links the library velallocations has its operator new and delete in place of the
// standard ones, in the shared libraries that the program loads too.

/// How often this process has allocated through operator new.
long AllocationCount();
/// How many objects of operator new it holds now.
long LiveAllocations();

}  // namespace MCVelscore_850

#endif
