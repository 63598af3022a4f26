#pragma once

#include <cstddef>

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

/// Makes allocations of this thread fail, from `malloc` and its kin and so from `operator new`, in the
/// program and in every library it uses. Under a sanitizer that has a `malloc` of its own, only those from
/// `operator new` fail.
class FailingMalloc
{
public:
    /// Allocation number `n`, counted from 0, fails.
    FailingMalloc(std::size_t n, Shortage shortage, Whose whose);
    /// None fails; they are counted.
    explicit FailingMalloc(Whose whose);
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;

    /// Ends it; what happens later is not counted.
    void Stop();
    std::size_t Asked() const { return m_asked; }
    std::size_t Failed() const { return m_failed; }

    /// How many allocations of the whole program have not been freed.
    static long Outstanding();

private:
    std::size_t m_asked = 0;
    std::size_t m_failed = 0;
    bool m_isRunning = true;
};

} // namespace Zelnor::Testing
