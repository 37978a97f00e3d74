// operator new and delete, counted and failing.
#include <cstdlib>
#include <new>

#include "tests/allocationcounts.h"

namespace {

using namespace MCVelscore_850;

[[maybe_unused]] void* OrThrow(void* memory)
{
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

[[maybe_unused]] void Release(void* memory)
{
    CountReleased(memory);
    std::free(memory);
}

}  // namespace

// With those that don't throw, so that no memory is taken by one allocator and given back to
// another. ThreadSanitizer has operators of its own: nothing is counted then.
#ifndef VELSCORE_THREAD_SANITIZER
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return IsOutOfMemory() ? nullptr : CountMade(std::malloc(size == 0 ? 1 : size));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    const auto align = static_cast<std::size_t>(alignment);
    const std::size_t whole = (size + align - 1) / align * align;  // as aligned_alloc wants it
    return IsOutOfMemory() ? nullptr
                           : CountMade(std::aligned_alloc(align, whole == 0 ? align : whole));
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
