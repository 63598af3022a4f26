#include "Core/Private/PropertyChildren.h"

#include "Core/Private/EqualText.h"

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Zelnor::Core
{

namespace
{

/// From here on an index of names is faster than comparing them.
constexpr std::size_t kManyChildren = 64;

/// A bit for each place at which `tag` stands. A call of `memchr` would take longer than all else in a
/// search.
std::uint64_t PlacesOfTag(const unsigned char (&tags)[32], unsigned char tag)
{
#ifdef __SSE2__
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(tag));
    const auto placesIn = [wanted](const unsigned char* half) {
        const __m128i found = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(half)), wanted);
        return static_cast<std::uint64_t>(_mm_movemask_epi8(found));
    };
    return placesIn(tags) | placesIn(tags + 16) << 16;
#else
    std::uint64_t places = 0;
    for (std::size_t i = 0; i < std::size(tags); ++i)
    {
        places |= std::uint64_t{tags[i] == tag} << i;
    }
    return places;
#endif
}

} // namespace

// Memory

Property::Group Property::Children::Create(std::size_t capacity)
{
    void* const memory = ::operator new(sizeof(Children) + capacity * sizeof(Property));
    return Group(::new (memory) Children(capacity, nullptr));
}

Property::Group Property::Children::Create(std::size_t capacity, Slabs& slabs)
{
    const Slabs::Block block = slabs.Get(sizeof(Children) + capacity * sizeof(Property));
    return Group(::new (block.memory) Children(capacity, block.slab));
}

Property::Children& Property::Children::Of(Property& group)
{
    // Most groups have few children.
    constexpr std::size_t kFewChildren = 4;
    Group& children = *std::get_if<Group>(&group.m_value);
    if (children == nullptr)
    {
        children = Create(kFewChildren);
        group.OwnsMore();
    }
    return *children;
}

Property::Children::Children(std::size_t capacity, Slab* slab) noexcept
    : m_unused(PlacesOf(m_firstBlock)), m_slab(slab), m_firstBlock{nullptr, nullptr, 0, capacity}
{}

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
    const auto destroy = [&pending](Property& child) {
        if (Group* const group = std::get_if<Group>(&child.m_value); group != nullptr && *group != nullptr)
        {
            Children* const grandchildren = group->release();
            grandchildren->m_nextToDestroy = std::exchange(pending, grandchildren);
        }
        child.Property::~Property(); // not virtually: there are no others here
    };
    Property* next = children->m_first;
    if (children->m_isDense)
    {
        const std::size_t known = std::min(children->m_count, kOwners);
        for (std::uint64_t owners = children->m_owners; owners != 0; owners &= owners - 1)
        {
            const auto place = static_cast<std::size_t>(__builtin_ctzll(owners));
            // Children that were removed at the end have left their bits.
            if (place < known)
            {
                destroy(*children->AtPlace(place));
            }
        }
        next = children->m_count > kOwners ? children->AtPlace(kOwners) : nullptr;
    }
    while (next != nullptr)
    {
        Property& child = *std::exchange(next, next->m_next);
        destroy(child);
    }
    children->FreeBlocksBehindFirst();
    Slab* const slab = children->m_slab;
    children->~Children();
    Slab::Free(children, slab);
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
        m_owners = 0;
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

void Property::Children::OwnsMore(const Property& child) noexcept
{
    if (!m_isDense)
    {
        return;
    }
    const Block* block = m_lastBlock;
    while (std::less<>()(&child, PlacesOf(*block)) || !std::less<>()(&child, EndOf(*block)))
    {
        block = block->previous;
    }
    const std::size_t place = block->begin + static_cast<std::size_t>(&child - PlacesOf(*block));
    if (place < kOwners)
    {
        m_owners |= std::uint64_t{1} << place;
    }
}

// Looking up

Property* Property::Children::At(std::size_t index) const
{
    if (m_isDense)
    {
        return AtPlace(index);
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

Property* Property::Children::AtPlace(std::size_t index) const
{
    const Block* block = m_lastBlock;
    while (index < block->begin)
    {
        block = block->previous;
    }
    return PlacesOf(*block) + (index - block->begin);
}

Property* Property::Children::Find(std::string_view name) const
{
    if (m_names != nullptr)
    {
        return FindNamed(name);
    }
    return m_isTagged ? FindTagged(name) : FindFrom(m_first, name);
}

Property* Property::Children::FindTagged(std::string_view name) const
{
    const std::size_t tagged = std::min(m_count, kTags);
    const std::uint64_t places = PlacesOfTag(m_tags, TagOf(name)) & ((std::uint64_t{1} << tagged) - 1);
    // Nearly always it is the first one, and what calls no function has nothing to put aside: that halves the
    // time.
    if (places != 0 && name.size() <= kShortText)
    {
        Property* const likely = AtPlace(static_cast<std::size_t>(__builtin_ctzll(places)));
        if (IsEqualText(likely->m_name, name))
        {
            return likely;
        }
    }
    return FindAmong(places, name);
}

Property* Property::Children::FindAmong(std::uint64_t places, std::string_view name) const
{
    for (; places != 0; places &= places - 1)
    {
        Property* const child = AtPlace(static_cast<std::size_t>(__builtin_ctzll(places)));
        if (IsEqualText(child->m_name, name))
        {
            return child;
        }
    }
    return m_count <= kTags ? nullptr : FindFrom(AtPlace(kTags), name);
}

std::optional<bool> Property::Children::AreNamesDistinct() const
{
    if (!m_isTagged || m_count > kTags)
    {
        return std::nullopt;
    }
    std::bitset<std::numeric_limits<Tag>::max() + 1> occurred;
    for (std::size_t place = 0; place < m_count; ++place)
    {
        if (occurred[m_tags[place]] && FindTagged(AtPlace(place)->m_name) != AtPlace(place))
        {
            return false;
        }
        occurred.set(m_tags[place]);
    }
    return true;
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
