#pragma once

// Private to the library, not installed: finds the children of a group by their names.

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace Zelnor::Core
{

/// A table with open addressing, at most half of whose slots are taken: a map that gets memory for each name
/// takes longer for that than for all else. It does not own the children, and a name must not change while it
/// is in here.
class ZELNOR_LOCAL NameIndex
{
public:
    /// The child of that name; null if there is none.
    Property* Find(std::string_view name) const noexcept;
    /// Adds a child unless there is one of its name. \return whether it was added
    /// \throw std::bad_alloc; the index stays as it was
    bool Add(Property& child);
    /// \return whether the child was in the index
    bool Remove(const Property& child) noexcept;

private:
    /// Without a child, it is free.
    struct Slot
    {
        Property* child = nullptr;
        std::size_t hash = 0;
    };

    /// The slot of that name, or the free one in which it would be. Precondition: there are slots.
    Slot& SlotOf(std::string_view name, std::size_t hash) const noexcept;
    void Grow();

    std::unique_ptr<Slot[]> m_slots;
    /// A power of two, or 0.
    std::size_t m_capacity = 0;
    std::size_t m_count = 0;
};

} // namespace Zelnor::Core
