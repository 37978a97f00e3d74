#include "tests/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> made{0};
std::atomic<long> released{0};

[[maybe_unused]] void Release(void* memory)
{
    if (memory != nullptr) released.fetch_add(1, std::memory_order_relaxed);
    std::free(memory);
}

}  // namespace

namespace MCVelscore_850 {

long AllocationCount() { return made.load(); }
long LiveAllocations() { return made.load() - released.load(); }

}  // namespace MCVelscore_850

// With those that don't throw, so that no memory is taken by one allocator and given back to
// another. ThreadSanitizer has operators of its own: nothing is counted then.
#ifndef VELSCORE_THREAD_SANITIZER
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr) made.fetch_add(1, std::memory_order_relaxed);
    return memory;
}
void* operator new(std::size_t size)
{
    void* const memory = operator new(size, std::nothrow);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Release(memory); }
#endif
