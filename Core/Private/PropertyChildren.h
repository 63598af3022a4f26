#pragma once

// Private to the library, not installed: what a group keeps its children in.

#include "Core/Interfaces/Property.h"
#include "Core/Private/NameIndex.h"
#include "Core/Private/Slab.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

namespace Zelnor::Core
{

/// The children of a group: a linked list whose nodes stand in blocks of memory, the first block behind this
/// object. A child keeps its address as long as it exists. The places of removed children are used again.
///
/// As long as no child is removed, the children stand in the blocks in their order and are found by their
/// positions: a processor follows links several times as slowly.
class ZELNOR_LOCAL Property::Children
{
public:
    /// With room for that many children.
    static Group Create(std::size_t capacity);
    static Group Create(std::size_t capacity, Slabs& slabs);
    /// Those of a group, made when it has none.
    static Children& Of(Property& group);
    static void Destroy(Children* children) noexcept;

    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    std::size_t Count() const { return m_count; }
    /// Null if there are none.
    Property* GetFirst() const { return m_first; }
    Property* GetLast() const { return m_last; }
    /// Precondition: `index` is less than `Count()`.
    Property* At(std::size_t index) const;
    /// The first child of that name; null if there is none.
    Property* Find(std::string_view name) const;
    /// The same, and where there are many children their names are indexed.
    Property* FindToSet(std::string_view name);

    /// Whether no name occurs twice, if that follows from the tags of the names.
    std::optional<bool> AreNamesDistinct() const;

    /// Gets memory for one more child.
    void MakeRoom()
    {
        if (m_free == nullptr && m_unused == EndOf(*m_lastBlock))
        {
            AddBlock();
        }
    }
    /// Appends copies of the others' children. Precondition: this was created with room for them and has
    /// none. \param copyGroup  is called with the children of a group, which are not copied, and the empty
    /// group
    template <class CopyGroup>
    void CopyFrom(const Children& other, CopyGroup&& copyGroup);
    /// Appends a child that is constructed from the arguments. Precondition: there is room for it.
    template <class... Arguments>
    Property& Append(Arguments&&... arguments);
    /// The same. Precondition: there is room for it in the block, and no child was removed.
    template <class... Arguments>
    Property& AppendWithin(Arguments&&... arguments);
    void Remove(Property& child) noexcept;
    /// To be called when the name of a child has changed.
    void ForgetNames() noexcept;
    /// To be called when a child may own memory that it did not own before.
    void OwnsMore(const Property& child) noexcept;

private:
    struct Block
    {
        Block* previous;
        Block* next;
        /// Number of places in the blocks before.
        std::size_t begin;
        std::size_t capacity;
    };

    /// What stands in the place of a removed child.
    struct Free
    {
        Free* next;
    };

    /// Finds the children from the first up to `last` by their names.
    struct Names
    {
        /// The first child of each name.
        NameIndex first;
        const Property* last = nullptr;
        bool areRepeated = false;
    };

    Children(std::size_t capacity, Slab* slab) noexcept;
    ~Children() = default;

    static Property* PlacesOf(const Block& block)
    {
        return reinterpret_cast<Property*>(const_cast<Block*>(&block) + 1);
    }
    static Property* EndOf(const Block& block) { return PlacesOf(block) + block.capacity; }
    static void DestroyOne(Children* children, Children*& pending) noexcept;
    void AddBlock();
    void FreeBlocksBehindFirst() noexcept;
    /// Names of different tags are different.
    using Tag = unsigned char;
    static constexpr std::size_t kTags = 32;
    static constexpr std::size_t kOwners = 64;
    static bool OwnsMemory(const Property& child) noexcept;
    static Tag TagOf(std::string_view name);
    static Property* CopyWithoutChildren(const Property& from, void* place);
    Property& Link(Property* child) noexcept;
    Property& LinkUntagged(Property* child) noexcept;
    /// Precondition: no child was removed, and `index` is less than `Count()`.
    Property* AtPlace(std::size_t index) const;
    [[gnu::noinline]] static Property* FindFrom(Property* child, std::string_view name);
    Property* FindTagged(std::string_view name) const;
    /// \param places  a bit for each of the first children that may have that name
    [[gnu::noinline]] Property* FindAmong(std::uint64_t places, std::string_view name) const;
    [[gnu::noinline]] Property* FindNamed(std::string_view name) const;
    void IndexNames();
    void ForgetNameOf(const Property& child) noexcept;
    void ReleasePlace(Property& child) noexcept;

    Property* m_first = nullptr;
    Property* m_last = nullptr;
    std::size_t m_count = 0;
    /// Whether the children stand in the blocks in their order, without a gap.
    bool m_isDense = true;
    /// Whether `m_tags` are those of the first children. If not, the names are compared one by one.
    bool m_isTagged = true;
    /// A bit for each of the first children, as long as they stand in their order: whether it may own memory.
    /// The others need not be destroyed, which spares a look at each of them when a group ends.
    std::uint64_t m_owners = 0;
    /// The place behind the last one of the last block that was used.
    Property* m_unused;
    Free* m_free = nullptr;
    /// Exists only where children are many and have been set by their names.
    std::unique_ptr<Names> m_names;
    Children* m_nextToDestroy = nullptr;
    /// That this was taken from; null if it has memory of its own.
    Slab* m_slab;
    Tag m_tags[kTags] = {};
    Block* m_lastBlock = &m_firstBlock;
    /// The last member: its places follow.
    Block m_firstBlock;
};

template <class Name, class T, class... Arguments>
Property::Property(Named, const Name& name, std::in_place_type_t<T> type, Arguments&&... arguments)
    : m_name(name), m_value(type, std::forward<Arguments>(arguments)...)
{}

inline Property::Children::Tag Property::Children::TagOf(std::string_view name)
{
    const auto at = [name](std::size_t i) { return std::size_t{static_cast<unsigned char>(name[i])}; };
    // Names that begin alike, as "codec.options.encode" and "codec.options.analyze", mostly end differently.
    return name.empty() ? Tag{0}
                        : static_cast<Tag>(name.size() + 7 * at(0) + 13 * at(name.size() / 2) +
                                           31 * at(name.size() - 1));
}

inline bool Property::Children::OwnsMemory(const Property& child) noexcept
{
    // What a string holds without memory of its own.
    const std::size_t within = std::string().capacity();
    if (const auto* const text = std::get_if<std::string>(&child.m_value);
        child.m_name.capacity() > within || (text != nullptr && text->capacity() > within))
    {
        return true;
    }
    const Group* const group = std::get_if<Group>(&child.m_value);
    return group != nullptr && *group != nullptr;
}

inline Property& Property::Children::LinkUntagged(Property* child) noexcept
{
    if (m_count < kOwners)
    {
        m_owners |= std::uint64_t{OwnsMemory(*child)} << m_count;
    }
    child->m_siblings = this;
    child->m_previous = m_last;
    child->m_next = nullptr;
    (m_last == nullptr ? m_first : m_last->m_next) = child;
    m_last = child;
    ++m_count;
    return *child;
}

inline Property& Property::Children::Link(Property* child) noexcept
{
    if (m_count < kTags)
    {
        m_tags[m_count] = TagOf(child->m_name);
    }
    return LinkUntagged(child);
}

inline Property* Property::Children::CopyWithoutChildren(const Property& from, void* place)
{
    constexpr Named named;
    const auto copy = [&](auto type, const auto* value) {
        return ::new (place) Property(named, from.m_name, type, *value);
    };
    switch (from.GetType())
    {
    case PROPERTY_TYPE_INT64:
        return copy(std::in_place_type<long long>, std::get_if<long long>(&from.m_value));
    case PROPERTY_TYPE_STRING:
        return copy(std::in_place_type<std::string>, std::get_if<std::string>(&from.m_value));
    case PROPERTY_TYPE_RATIO:
        return copy(std::in_place_type<Ratio>, std::get_if<Ratio>(&from.m_value));
    case PROPERTY_TYPE_NONE:
        return copy(std::in_place_type<std::monostate>, std::get_if<std::monostate>(&from.m_value));
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return ::new (place) Property(named, from.m_name, std::in_place_type<Group>);
}

template <class CopyGroup>
void Property::Children::CopyFrom(const Children& other, CopyGroup&& copyGroup)
{
    const bool isTagged = other.m_isTagged;
    if (isTagged)
    {
        std::memcpy(m_tags, other.m_tags, sizeof m_tags);
    }
    for (const Property* child = other.m_first; child != nullptr; child = child->m_next)
    {
        Property* const copy = CopyWithoutChildren(*child, m_unused);
        ++m_unused;
        isTagged ? LinkUntagged(copy) : Link(copy);
        if (const Group* const group = std::get_if<Group>(&child->m_value); group != nullptr)
        {
            copyGroup(group->get(), *copy);
            // It will.
            OwnsMore(*copy);
        }
    }
}

template <class... Arguments>
Property& Property::Children::Append(Arguments&&... arguments)
{
    if (m_free != nullptr)
    {
        // Constructed elsewhere, since a constructor that fails would have written over the list of places.
        Property child(std::forward<Arguments>(arguments)...);
        void* const place = std::exchange(m_free, m_free->next);
        return Link(::new (place) Property(std::move(child)));
    }
    if (m_unused == EndOf(*m_lastBlock))
    {
        AddBlock();
    }
    return AppendWithin(std::forward<Arguments>(arguments)...);
}

template <class... Arguments>
Property& Property::Children::AppendWithin(Arguments&&... arguments)
{
    Property* const child =
        ::new (static_cast<void*>(m_unused)) Property(std::forward<Arguments>(arguments)...);
    ++m_unused;
    return Link(child);
}

} // namespace Zelnor::Core
