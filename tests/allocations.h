#ifndef VELSCORE_TESTS_ALLOCATIONS_H
#define VELSCORE_TESTS_ALLOCATIONS_H

namespace MCVelscore_850 {

// Whoever links the library velallocations has its operator new and delete in place of the
// standard ones, in the shared libraries that the program loads too.

/// How often this process has allocated through operator new.
long AllocationCount();
/// How many objects of operator new it holds now.
long LiveAllocations();

/// While it stands memory runs out, for all threads: operator new throws once it was called so many
/// times, from then on or that one time.
class MemoryRunsOut {
public:
    enum class For { One, All };
    MemoryRunsOut(long after, For which);
    MemoryRunsOut(const MemoryRunsOut&) = delete;
    MemoryRunsOut& operator=(const MemoryRunsOut&) = delete;
    ~MemoryRunsOut();
    /// Whether that came about.
    bool HasHappened() const;
    /// Whether the call that found none first was made by this function, or for it (CallStack).
    static bool WasIn(const char* function);
};

}  // namespace MCVelscore_850

#endif
