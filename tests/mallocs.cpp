// Whoever links this instead of allocations.cpp has the C library's malloc() and its kin counted
// and failing, whoever calls them: operator new, and the libraries of others.
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include <malloc.h>

#include "tests/allocations.h"
#include "tests/callstack.h"

// The C library's own, below the names that stand here in their place.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);
}

namespace {

std::atomic<long> made{0};
std::atomic<long> released{0};

// As allocations.cpp has them.
constexpr long kPlenty = std::numeric_limits<long>::max();
std::atomic<long> left{kPlenty};
std::atomic<bool> failsOnce{false};

MCVelscore_850::CallStack firstLack;

// VELSCORE_TEST_CALLS prints who asked for the memory that ran out first.
void TellCaller()
{
    static const bool wanted = std::getenv("VELSCORE_TEST_CALLS") != nullptr;
    firstLack.Take();
    if (!wanted) return;
    std::fputs("memory runs out in", stderr);
    firstLack.Print();
}

bool IsOut()
{
    if (left.load(std::memory_order_relaxed) == kPlenty) return false;
    const long before = left.fetch_sub(1, std::memory_order_relaxed);
    if (before == 0) {
        const long now = left.exchange(kPlenty);  // what telling takes isn't counted
        TellCaller();
        left = now;
    }
    return before == 0 || (before < 0 && !failsOnce);
}

void* Counted(void* memory)
{
    if (memory != nullptr) made.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void* NoMemory()
{
    errno = ENOMEM;
    return nullptr;
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

extern "C" {

void* malloc(size_t size) noexcept { return IsOut() ? NoMemory() : Counted(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) noexcept
{
    return IsOut() ? NoMemory() : Counted(__libc_calloc(count, size));
}
void* realloc(void* memory, size_t size) noexcept
{
    if (memory == nullptr) return malloc(size);
    if (IsOut()) return NoMemory();
    return __libc_realloc(memory, size);
}
void* memalign(size_t alignment, size_t size) noexcept
{
    return IsOut() ? NoMemory() : Counted(__libc_memalign(alignment, size));
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
    if (memory != nullptr) released.fetch_add(1, std::memory_order_relaxed);
    __libc_free(memory);
}
}
