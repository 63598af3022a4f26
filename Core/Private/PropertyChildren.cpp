#include "Core/Private/PropertyChildren.h"

#include "Core/Private/EqualText.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace Zelnor::Core
{

namespace
{

/// From here on an index of names is faster than comparing them.
constexpr std::size_t kManyChildren = 64;

} // namespace

// Memory

Property::Group Property::Children::Create(std::size_t capacity)
{
    void* const memory = ::operator new(sizeof(Children) + capacity * sizeof(Property));
    return Group(::new (memory) Children(capacity));
}

Property::Children::Children(std::size_t capacity) noexcept
    : m_unused(PlacesOf(m_firstBlock)), m_firstBlock{nullptr, nullptr, 0, capacity}
{}

Property* Property::Children::PlacesOf(const Block& block)
{
    return reinterpret_cast<Property*>(const_cast<Block*>(&block) + 1);
}

void Property::Children::Destroy(Children* children) noexcept
{
    // Every group is taken from its parent before the parent is destroyed, so that destructors never nest.
    Children* pending = children;
    while (pending != nullptr)
    {
        Children* const next = std::exchange(pending, pending->m_nextToDestroy);
        DestroyOne(next, pending);
    }
}

void Property::Children::DestroyOne(Children* children, Children*& pending) noexcept
{
    for (Property* child = children->m_first; child != nullptr;)
    {
        Property* const next = child->m_next;
        if (Group* const group = std::get_if<Group>(&child->m_value); group != nullptr && *group != nullptr)
        {
            Children* const grandchildren = group->release();
            grandchildren->m_nextToDestroy = std::exchange(pending, grandchildren);
        }
        child->Property::~Property(); // not virtually: there are no others here
        child = next;
    }
    children->FreeBlocksBehindFirst();
    children->~Children();
    ::operator delete(children);
}

void Property::Children::FreeBlocksBehindFirst() noexcept
{
    while (m_lastBlock != &m_firstBlock)
    {
        ::operator delete(std::exchange(m_lastBlock, m_lastBlock->previous));
    }
    m_firstBlock.next = nullptr;
}

void Property::Children::AddBlock()
{
    // As many places again as there are.
    const std::size_t capacity = m_lastBlock->begin + m_lastBlock->capacity;
    void* const memory = ::operator new(sizeof(Block) + capacity * sizeof(Property));
    Block* const block = ::new (memory) Block{m_lastBlock, nullptr, capacity, capacity};
    m_lastBlock->next = block;
    m_lastBlock = block;
    m_unused = PlacesOf(*block);
}

// Editing

Property& Property::Children::Link(Property* child) noexcept
{
    child->m_siblings = this;
    child->m_previous = m_last;
    child->m_next = nullptr;
    (m_last == nullptr ? m_first : m_last->m_next) = child;
    m_last = child;
    if (m_count < kTags)
    {
        m_tags[m_count] = TagOf(child->m_name);
    }
    ++m_count;
    return *child;
}

void Property::Children::Remove(Property& child) noexcept
{
    ForgetNameOf(child);
    (child.m_previous == nullptr ? m_first : child.m_previous->m_next) = child.m_next;
    (child.m_next == nullptr ? m_last : child.m_next->m_previous) = child.m_previous;
    --m_count;
    child.~Property();
    ReleasePlace(child);
}

void Property::Children::ReleasePlace(Property& child) noexcept
{
    if (m_count == 0)
    {
        FreeBlocksBehindFirst();
        m_unused = PlacesOf(m_firstBlock);
        m_free = nullptr;
        m_isDense = true;
        m_isTagged = true;
    }
    else if (&child + 1 == m_unused)
    {
        --m_unused;
    }
    else
    {
        m_free = ::new (static_cast<void*>(&child)) Free{m_free};
        m_isDense = false;
        m_isTagged = false;
    }
}

// Looking up

Property* Property::Children::At(std::size_t index) const
{
    if (m_isDense)
    {
        const Block* block = m_lastBlock;
        while (index < block->begin)
        {
            block = block->previous;
        }
        return PlacesOf(*block) + (index - block->begin);
    }
    if (index < m_count / 2)
    {
        Property* child = m_first;
        for (; index != 0; --index)
        {
            child = child->m_next;
        }
        return child;
    }
    Property* child = m_last;
    for (; index + 1 != m_count; ++index)
    {
        child = child->m_previous;
    }
    return child;
}

Property* Property::Children::Find(std::string_view name) const
{
    if (m_names != nullptr)
    {
        return FindNamed(name);
    }
    return m_isTagged ? FindTagged(name) : FindFrom(m_first, name);
}

Property::Children::Tag Property::Children::TagOf(std::string_view name)
{
    const auto at = [name](std::size_t i) { return std::size_t{static_cast<unsigned char>(name[i])}; };
    // Names that begin alike, as "codec.options.encode" and "codec.options.analyze", mostly end differently.
    return name.empty() ? Tag{0}
                        : static_cast<Tag>(name.size() + 7 * at(0) + 13 * at(name.size() / 2) +
                                           31 * at(name.size() - 1));
}

Property* Property::Children::FindTagged(std::string_view name) const
{
    const Tag tag = TagOf(name);
    const Tag* const end = m_tags + std::min(m_count, kTags);
    for (const Tag* at = m_tags; at != end; ++at)
    {
        at = static_cast<const Tag*>(std::memchr(at, tag, static_cast<std::size_t>(end - at)));
        if (at == nullptr)
        {
            break;
        }
        Property* const child = At(static_cast<std::size_t>(at - m_tags));
        if (IsEqualText(child->m_name, name))
        {
            return child;
        }
    }
    return m_count <= kTags ? nullptr : FindFrom(At(kTags), name);
}

Property* Property::Children::FindFrom(Property* child, std::string_view name)
{
    while (child != nullptr && !IsEqualText(child->m_name, name))
    {
        child = child->m_next;
    }
    return child;
}

Property* Property::Children::FindNamed(std::string_view name) const
{
    Property* const found = m_names->first.Find(name);
    return found != nullptr ? found
                            : FindFrom(m_names->last == nullptr ? m_first : m_names->last->m_next, name);
}

Property* Property::Children::FindToSet(std::string_view name)
{
    if (m_count >= kManyChildren)
    {
        IndexNames();
    }
    return Find(name);
}

void Property::Children::IndexNames()
{
    if (m_names == nullptr)
    {
        m_names = std::make_unique<Names>();
    }
    while (m_names->last != m_last)
    {
        Property* const child = m_names->last == nullptr ? m_first : m_names->last->m_next;
        m_names->areRepeated = !m_names->first.Add(*child) || m_names->areRepeated;
        m_names->last = child;
    }
}

void Property::Children::ForgetNames() noexcept
{
    m_names.reset();
    m_isTagged = false;
}

void Property::Children::ForgetNameOf(const Property& child) noexcept
{
    if (m_names == nullptr)
    {
        return;
    }
    if (m_names->first.Remove(child) && m_names->areRepeated)
    {
        // Another child may be the first of that name now.
        m_names.reset();
        return;
    }
    if (m_names->last == &child)
    {
        m_names->last = child.m_previous;
    }
}

} // namespace Zelnor::Core
