#pragma once

#include <atomic>

namespace Zelnor
{

/// The counter that a reference-counted class keeps as a member. It may be used from several threads at once.
/// A copy of an object is a new object: copying a counter starts a fresh one, assigning leaves the target's
/// alone.
class RefCountImpl
{
public:
    RefCountImpl() noexcept = default;
    RefCountImpl(const RefCountImpl&) noexcept {}
    RefCountImpl& operator=(const RefCountImpl&) noexcept { return *this; }

    /// Counts one reference more and returns the new count.
    int AddRefImpl() const noexcept { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    /// Counts one reference less and returns the new count. Whoever gets 0 destroys the object, and sees
    /// everything that other holders wrote into it before they let go.
    int ReleaseImpl() const noexcept { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    int GetRefCountImpl() const noexcept { return m_count.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<int> m_count{0};
};

} // namespace Zelnor
