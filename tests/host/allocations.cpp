#include "allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> allocations{0};
}

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace MCVelscore_850 {

long Allocations() { return allocations; }

}  // namespace MCVelscore_850
