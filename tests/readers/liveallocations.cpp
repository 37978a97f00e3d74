#include "tests/readers/liveallocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> live{0};

void Free(void* memory)
{
    if (memory != nullptr) live.fetch_sub(1, std::memory_order_relaxed);
    std::free(memory);
}
}  // namespace

namespace MCVelscore_850::testing {
long LiveAllocations() { return live.load(); }
}  // namespace MCVelscore_850::testing

void* operator new(size_t size)
{
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        live.fetch_add(1, std::memory_order_relaxed);
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, size_t) noexcept { Free(memory); }
