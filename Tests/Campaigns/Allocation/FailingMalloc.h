#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Zelnor::Testing
{

/// Which allocations fail once the chosen one has failed.
enum class Shortage
{
    Moment,  ///< none: the next one succeeds, as after a huge request
    Lasting, ///< all: there is no memory for what is done about it either
};

/// Whose allocations fail.
enum class Whose
{
    Everybodys,
    Ours, ///< those of `operator new`; a library in C has none
};

/// The call stacks of allocations, in their order: a number for each that tells it from others.
struct AllocationSites
{
    std::size_t count; ///< of all; those beyond what fits are not listed
    std::array<std::uint64_t, 1 << 16> stacks;
};

/// Makes allocations of this thread fail, from `malloc` and its kin and so from `operator new`, in the
/// program and in every library it uses. Under a sanitizer that has a `malloc` of its own, only those from
/// `operator new` fail.
class FailingMalloc
{
public:
    /// Allocation number `n`, counted from 0, fails.
    FailingMalloc(std::size_t n, Shortage shortage, Whose whose);
    /// None fails; they are written down.
    FailingMalloc(Whose whose, AllocationSites& sites);
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;

    /// Ends it; what happens later is not counted.
    void Stop();
    std::size_t Failed() const { return m_failed; }

    /// How many allocations of the whole program have not been freed.
    static long Outstanding();

private:
    std::size_t m_failed = 0;
    bool m_isRunning = true;
};

} // namespace Zelnor::Testing
