#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"

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

    /// Adds a reference and returns the new count.
    int AddRefImpl() const noexcept { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    /// Removes a reference and returns the new count. Whoever gets 0 destroys the object, and sees everything
    /// that other holders wrote to it before they released it.
    int ReleaseImpl() const noexcept { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    /// The same, and destroys `object`, whose counter this is, at 0.
    int ReleaseOrDestroyImpl(const IRefCountable* object) const
    {
        const int count = ReleaseImpl();
        if (count == 0)
        {
            delete object;
        }
        return count;
    }
    int GetRefCountImpl() const noexcept { return m_count.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<int> m_count{0};
};

/// The counting for a class that implements an interface derived from `IRefCountable`, so that the class is
/// left with the interface's own operations. Objects are made with `new` and held by `boost::intrusive_ptr`:
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

    int AddRef() const final { return m_references.AddRefImpl(); }
    int GetRefCount() const final { return m_references.GetRefCountImpl(); }
    int Release() const final { return m_references.ReleaseOrDestroyImpl(this); }

private:
    RefCountImpl m_references;
};

} // namespace Zelnor
