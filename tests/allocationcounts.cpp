#include "tests/allocationcounts.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "tests/allocations.h"
#include "tests/callstack.h"

namespace MCVelscore_850 {

namespace {

std::atomic<long> made{0};
std::atomic<long> released{0};

// Calls until memory runs out; negative where it has, kPlenty where it doesn't.
constexpr long kPlenty = std::numeric_limits<long>::max();
std::atomic<long> left{kPlenty};
std::atomic<bool> failsOnce{false};

CallStack firstLack;

// VELSCORE_TEST_CALLS prints who asked for the memory that ran out first.
void KeepCaller()
{
    static const bool isPrinted = std::getenv("VELSCORE_TEST_CALLS") != nullptr;
    firstLack.Take();
    if (!isPrinted) return;
    std::fputs("memory runs out in", stderr);
    firstLack.Print();
}

}  // namespace

bool IsOutOfMemory()
{
    if (left.load(std::memory_order_relaxed) == kPlenty) return false;
    const long before = left.fetch_sub(1, std::memory_order_relaxed);
    if (before == 0) {
        const long now = left.exchange(kPlenty);  // what that takes isn't counted
        KeepCaller();
        left = now;
    }
    return before == 0 || (before < 0 && !failsOnce);
}

void* CountMade(void* memory)
{
    if (memory != nullptr) made.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void CountReleased(const void* memory)
{
    if (memory != nullptr) released.fetch_add(1, std::memory_order_relaxed);
}

long AllocationCount() { return made.load(); }
long LiveAllocations() { return made.load() - released.load(); }

MemoryRunsOut::MemoryRunsOut(long after, For which)
{
    failsOnce = which == For::One;
    left = after;
}
MemoryRunsOut::~MemoryRunsOut() { left = kPlenty; }
bool MemoryRunsOut::HasHappened() const { return left.load() < 0; }
bool MemoryRunsOut::WasIn(const char* function) { return firstLack.Has(function); }

}  // namespace MCVelscore_850
