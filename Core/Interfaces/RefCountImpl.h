#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"

#include <atomic>

namespace Zelnor
{

/// The counter that a reference-counted class has as a member. Several threads may use it at once. A copy of
/// an object is a new object: the copy of a counter starts at 0, and an assignment does not change the
/// target's.
class RefCountImpl
{
public:
    RefCountImpl() noexcept = default;
    RefCountImpl(const RefCountImpl&) noexcept {}                           ///< starts at 0
    RefCountImpl& operator=(const RefCountImpl&) noexcept { return *this; } ///< the count stays

    /// Adds a reference and returns the new count.
    int AddRefImpl() const noexcept { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    /// Removes a reference and returns the new count. Whoever gets 0 destroys the object, and sees everything
    /// that other holders wrote to it before they released it.
    int ReleaseImpl() const noexcept { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    /// The same, and deletes `object`, which this counter belongs to, at 0.
    int ReleaseOrDestroyImpl(const IRefCountable* object) const
    {
        const int count = ReleaseImpl();
        if (count == 0)
        {
            delete object;
        }
        return count;
    }
    int GetRefCountImpl() const noexcept { return m_count.load(std::memory_order_relaxed); } ///< the count

private:
    mutable std::atomic<int> m_count{0};
};

/// Implements the counting for a class that implements an interface derived from `IRefCountable`, so that
/// only the interface's own operations remain. Objects are made with `new` and held by
/// `boost::intrusive_ptr`:
///
///     class Preset final : public Zelnor::Counted<Zelnor::Conf::IPreset>
///     {
///     public:
///         static boost::intrusive_ptr<const IPreset> Create() { return new Preset(); }
///         ...
///     };
template <class Interface>
class ZELNOR_API Counted : public Interface
{
public:
    using Interface::Interface;
    /// As `IRefCountable` says.
    int AddRef() const final { return m_references.AddRefImpl(); }
    int GetRefCount() const final { return m_references.GetRefCountImpl(); }
    int Release() const final { return m_references.ReleaseOrDestroyImpl(this); }

private:
    RefCountImpl m_references;
};

} // namespace Zelnor
