#include "Core/Private/NameIndex.h"

#include "Core/Private/EqualText.h"

#include <functional>
#include <utility>

namespace Zelnor::Core
{

namespace
{

/// The first table has room for half as many names.
constexpr std::size_t kLeastSlots = 256;

std::size_t HashOfName(std::string_view name) noexcept { return std::hash<std::string_view>()(name); }

} // namespace

Property* NameIndex::Find(std::string_view name) const noexcept
{
    return m_capacity == 0 ? nullptr : SlotOf(name, HashOfName(name)).child;
}

bool NameIndex::Add(Property& child)
{
    if (m_count * 2 >= m_capacity)
    {
        Grow();
    }
    const std::size_t hash = HashOfName(child.GetName());
    Slot& slot = SlotOf(child.GetName(), hash);
    if (slot.child != nullptr)
    {
        return false;
    }
    slot = {&child, hash};
    ++m_count;
    return true;
}

bool NameIndex::Remove(const Property& child) noexcept
{
    if (m_capacity == 0)
    {
        return false;
    }
    Slot* hole = &SlotOf(child.GetName(), HashOfName(child.GetName()));
    if (hole->child != &child)
    {
        return false;
    }
    // What stands behind the hole, up to a free slot, may only be found through it.
    const std::size_t last = m_capacity - 1;
    const auto at = [&](const Slot& slot) { return static_cast<std::size_t>(&slot - m_slots.get()); };
    for (Slot* next = &m_slots[(at(*hole) + 1) & last]; next->child != nullptr;
         next = &m_slots[(at(*next) + 1) & last])
    {
        const std::size_t fromWished = (at(*next) - next->hash) & last;
        const std::size_t fromHole = (at(*next) - at(*hole)) & last;
        if (fromHole <= fromWished)
        {
            *std::exchange(hole, next) = *next;
        }
    }
    *hole = {};
    --m_count;
    return true;
}

NameIndex::Slot& NameIndex::SlotOf(std::string_view name, std::size_t hash) const noexcept
{
    std::size_t at = hash & (m_capacity - 1);
    while (m_slots[at].child != nullptr &&
           (m_slots[at].hash != hash || !IsEqualText(m_slots[at].child->GetName(), name)))
    {
        at = (at + 1) & (m_capacity - 1);
    }
    return m_slots[at];
}

void NameIndex::Grow()
{
    const std::size_t capacity = m_capacity == 0 ? kLeastSlots : m_capacity * 2;
    auto slots = std::make_unique<Slot[]>(capacity);
    for (std::size_t i = 0; i < m_capacity; ++i)
    {
        if (m_slots[i].child != nullptr)
        {
            std::size_t at = m_slots[i].hash & (capacity - 1);
            while (slots[at].child != nullptr)
            {
                at = (at + 1) & (capacity - 1);
            }
            slots[at] = m_slots[i];
        }
    }
    m_slots = std::move(slots);
    m_capacity = capacity;
}

} // namespace Zelnor::Core
