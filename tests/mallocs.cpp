// Whoever links this instead of allocations.cpp has the C library's malloc() and its kin counted
// and failing, whoever calls them: operator new, and the libraries of others.
#include <cerrno>
#include <cstddef>

#include <malloc.h>

#include "tests/allocationcounts.h"

// The C library's own, below the names that stand here in their place.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);
}

namespace {

using namespace MCVelscore_850;

void* NoMemory()
{
    errno = ENOMEM;
    return nullptr;
}

}  // namespace

extern "C" {

void* malloc(size_t size) noexcept
{
    return IsOutOfMemory() ? NoMemory() : CountMade(__libc_malloc(size));
}
void* calloc(size_t count, size_t size) noexcept
{
    return IsOutOfMemory() ? NoMemory() : CountMade(__libc_calloc(count, size));
}
void* realloc(void* memory, size_t size) noexcept
{
    if (memory == nullptr) return malloc(size);
    if (IsOutOfMemory()) return NoMemory();
    return __libc_realloc(memory, size);
}
void* memalign(size_t alignment, size_t size) noexcept
{
    return IsOutOfMemory() ? NoMemory() : CountMade(__libc_memalign(alignment, size));
}
void* aligned_alloc(size_t alignment, size_t size) noexcept { return memalign(alignment, size); }
int posix_memalign(void** memory, size_t alignment, size_t size) noexcept
{
    void* const found = memalign(alignment, size);
    if (found == nullptr) return ENOMEM;
    *memory = found;
    return 0;
}
void free(void* memory) noexcept
{
    CountReleased(memory);
    __libc_free(memory);
}
}
