#include "Benchmarks/Support/Allocations.h"

#include <malloc.h>

#include <atomic>

// The program's own functions are the ones that its libraries call. `operator new` of the standard library
// calls them too.

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace
{

std::atomic<std::size_t> g_allocations;

} // namespace

extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void* realloc(void* memory, std::size_t size)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(memory, size);
}
}

namespace Zelnor::Benchmarks
{

std::size_t CountAllocations() { return g_allocations.load(); }

std::size_t BytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace Zelnor::Benchmarks
