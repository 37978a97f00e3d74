#include "tests/allocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

#include "tests/callstack.h"

namespace {

std::atomic<long> made{0};
std::atomic<long> released{0};

// Calls of operator new until memory runs out; negative where it has, kPlenty where it doesn't.
constexpr long kPlenty = std::numeric_limits<long>::max();
std::atomic<long> left{kPlenty};
std::atomic<bool> failsOnce{false};

MCVelscore_850::CallStack firstLack;

[[maybe_unused]] bool IsOut()
{
    if (left.load(std::memory_order_relaxed) == kPlenty) return false;
    const long before = left.fetch_sub(1, std::memory_order_relaxed);
    if (before == 0) firstLack.Take();
    return before == 0 || (before < 0 && !failsOnce);
}

[[maybe_unused]] void* Counted(void* memory)
{
    if (memory != nullptr) made.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

[[maybe_unused]] void* OrThrow(void* memory)
{
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

[[maybe_unused]] void Release(void* memory)
{
    if (memory != nullptr) released.fetch_add(1, std::memory_order_relaxed);
    std::free(memory);
}

}  // namespace

namespace MCVelscore_850 {

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

// With those that don't throw, so that no memory is taken by one allocator and given back to
// another. ThreadSanitizer has operators of its own: nothing is counted then.
#ifndef VELSCORE_THREAD_SANITIZER
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return IsOut() ? nullptr : Counted(std::malloc(size == 0 ? 1 : size));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    const auto align = static_cast<std::size_t>(alignment);
    const std::size_t whole = (size + align - 1) / align * align;  // as aligned_alloc wants it
    return IsOut() ? nullptr : Counted(std::aligned_alloc(align, whole == 0 ? align : whole));
}
void* operator new(std::size_t size) { return OrThrow(operator new(size, std::nothrow)); }
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return OrThrow(operator new(size, alignment, std::nothrow));
}
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Release(memory); }
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept
{
    Release(memory);
}
#endif
