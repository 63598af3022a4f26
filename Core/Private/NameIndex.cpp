#include "Core/Private/NameIndex.h"

#include "Core/Private/EqualText.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include <unistd.h>

namespace Zelnor::Core
{

namespace
{

/// The first table has room for half as many names.
constexpr std::size_t kLeastSlots = 256;

/// Another one in each process, where the system has random bytes.
struct Key
{
    Key() noexcept
    {
        if (::getentropy(words, sizeof words) != 0)
        {
            words[0] = words[1] = 0;
        }
    }

    std::uint64_t words[2];
};

/// SipHash with one round a word and three at the end. Names may come from a stranger, who must not be able
/// to choose many with one hash, as is easy with that of the standard library.
class SipHash
{
public:
    explicit SipHash(const Key& key) noexcept
        : m_words{key.words[0] ^ 0x736F6D6570736575, key.words[1] ^ 0x646F72616E646F6D,
                  key.words[0] ^ 0x6C7967656E657261, key.words[1] ^ 0x7465646279746573}
    {}

    std::uint64_t Of(std::string_view text) noexcept
    {
        const std::uint64_t size = text.size();
        for (; text.size() >= sizeof size; text.remove_prefix(sizeof size))
        {
            Add(Word(text));
        }
        Add(Word(text) | size << 56U);
        m_words[2] ^= 0xFF;
        for (int round = 0; round < 3; ++round)
        {
            Mix();
        }
        return m_words[0] ^ m_words[1] ^ m_words[2] ^ m_words[3];
    }

private:
    /// The first eight bytes, as many as there are.
    static std::uint64_t Word(std::string_view text) noexcept
    {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), text.size() < sizeof word ? text.size() : sizeof word);
        return word;
    }

    void Add(std::uint64_t word) noexcept
    {
        m_words[3] ^= word;
        Mix();
        m_words[0] ^= word;
    }

    void Mix() noexcept
    {
        const auto rotate = [](std::uint64_t word, unsigned int by) {
            return word << by | word >> (64 - by);
        };
        auto& [a, b, c, d] = m_words;
        a += b;
        c += d;
        b = rotate(b, 13) ^ a;
        d = rotate(d, 16) ^ c;
        a = rotate(a, 32) + d;
        c += b;
        b = rotate(b, 17) ^ c;
        d = rotate(d, 21) ^ a;
        c = rotate(c, 32);
    }

    std::uint64_t m_words[4];
};

std::size_t HashOfName(std::string_view name) noexcept
{
    static const Key s_key;
    return static_cast<std::size_t>(SipHash(s_key).Of(name));
}

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
