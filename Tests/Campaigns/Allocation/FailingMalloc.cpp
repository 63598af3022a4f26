#include "Tests/Campaigns/Allocation/FailingMalloc.h"

#include <execinfo.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <new>

namespace Zelnor::Testing
{

namespace details
{
namespace
{

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// Plain data: `malloc` is called before anything is constructed.
struct State
{
    bool isRunning;
    Shortage shortage;
    Whose whose;
    std::size_t failAt;
    std::size_t asked;
    std::size_t failed;
    AllocationSites* sites;
};

thread_local State t_state = {false, Shortage::Moment, Whose::Everybodys, kNone, 0, 0, nullptr};
std::atomic<long> g_outstanding{0};

/// A number for the calls that lead to this one.
std::uint64_t HashOfStack()
{
    std::array<void*, 48> calls{};
    const int count = ::backtrace(calls.data(), static_cast<int>(calls.size()));
    std::uint64_t hash = 14695981039346656037u;
    for (int i = 0; i < count; ++i)
    {
        hash = (hash ^ reinterpret_cast<std::uintptr_t>(calls[static_cast<std::size_t>(i)])) * 1099511628211u;
    }
    return hash;
}

void WriteDown(AllocationSites& sites)
{
    // What walking the stack allocates is not the operation's.
    t_state.isRunning = false;
    if (sites.count < sites.stacks.size())
    {
        sites.stacks[sites.count] = HashOfStack();
    }
    ++sites.count;
    t_state.isRunning = true;
}

bool Fails(Whose whose)
{
    if (!t_state.isRunning || t_state.whose != whose)
    {
        return false;
    }
    if (t_state.sites != nullptr)
    {
        WriteDown(*t_state.sites);
        return false;
    }
    const std::size_t number = t_state.asked++;
    const bool fails =
        t_state.shortage == Shortage::Moment ? number == t_state.failAt : number >= t_state.failAt;
    t_state.failed += fails ? 1 : 0;
    return fails;
}

void* Counted(void* memory)
{
    if (memory != nullptr)
    {
        g_outstanding.fetch_add(1, std::memory_order_relaxed);
    }
    return memory;
}

void CountFree(const void* memory)
{
    if (memory != nullptr)
    {
        g_outstanding.fetch_sub(1, std::memory_order_relaxed);
    }
}

} // namespace
} // namespace details

using namespace details;

FailingMalloc::FailingMalloc(std::size_t n, Shortage shortage, Whose whose)
{
    t_state = {true, shortage, whose, n, 0, 0, nullptr};
}

FailingMalloc::FailingMalloc(Whose whose, AllocationSites& sites)
{
    sites.count = 0;
    t_state = {true, Shortage::Moment, whose, kNone, 0, 0, &sites};
}

FailingMalloc::~FailingMalloc() { Stop(); }

void FailingMalloc::Stop()
{
    t_state.isRunning = false;
    if (m_isRunning)
    {
        m_isRunning = false;
        m_failed = t_state.failed;
    }
}

long FailingMalloc::Outstanding() { return g_outstanding.load(); }

} // namespace Zelnor::Testing

using Zelnor::Testing::Whose;
using Zelnor::Testing::details::Counted;
using Zelnor::Testing::details::CountFree;
using Zelnor::Testing::details::Fails;

// The C library calls these wherever it would call its own, and its own go by these names.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

#define ZELNOR_REPLACES extern "C" __attribute__((visibility("default")))

namespace
{

void* NoMemory()
{
    errno = ENOMEM;
    return nullptr;
}

} // namespace

ZELNOR_REPLACES void* malloc(std::size_t size) noexcept
{
    return Fails(Whose::Everybodys) ? NoMemory() : Counted(__libc_malloc(size));
}

ZELNOR_REPLACES void* calloc(std::size_t count, std::size_t size) noexcept
{
    return Fails(Whose::Everybodys) ? NoMemory() : Counted(__libc_calloc(count, size));
}

ZELNOR_REPLACES void* realloc(void* memory, std::size_t size) noexcept
{
    if (Fails(Whose::Everybodys))
    {
        return NoMemory();
    }
    void* const resized = __libc_realloc(memory, size);
    if (memory == nullptr)
    {
        return Counted(resized);
    }
    if (size == 0)
    {
        CountFree(memory);
    }
    return resized;
}

ZELNOR_REPLACES void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return Fails(Whose::Everybodys) ? NoMemory() : Counted(__libc_memalign(alignment, size));
}

ZELNOR_REPLACES void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return aligned_alloc(alignment, size);
}

ZELNOR_REPLACES int posix_memalign(void** result, std::size_t alignment, std::size_t size) noexcept
{
    void* const memory = aligned_alloc(alignment, size);
    if (memory == nullptr)
    {
        return ENOMEM;
    }
    *result = memory;
    return 0;
}

ZELNOR_REPLACES void free(void* memory) noexcept
{
    CountFree(memory);
    const int kept = errno;
    __libc_free(memory);
    errno = kept;
}

// Not inlined: the compiler would see an object made by `new` go to `free`, and warn.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* const memory = Fails(Whose::Ours) ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
    {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
