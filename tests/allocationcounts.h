#ifndef VELSCORE_TESTS_ALLOCATIONCOUNTS_H
#define VELSCORE_TESTS_ALLOCATIONCOUNTS_H

namespace MCVelscore_850 {

// What the two ways to count have in common, operator new's (allocations.cpp) and malloc()'s
// (mallocs.cpp).

/// Counts a call; true where there is no memory for it.
bool IsOutOfMemory();
/// Counts a piece that was made, unless it is null, and answers it.
void* CountMade(void* memory);
void CountReleased(const void* memory);

}  // namespace MCVelscore_850

#endif
