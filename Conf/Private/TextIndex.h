#pragma once

// Private to the library, not installed: finds a text among those of a table, in the time that comparing two
// takes. The index is made when it is compiled.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Zelnor::Conf
{

constexpr std::uint64_t GetByte(const char* text, std::size_t position)
{
    return static_cast<unsigned char>(text[position]);
}

/// Eight bytes as a number; written out, so that the compiler makes one load of it.
constexpr std::uint64_t GetWord(const char* text)
{
    return GetByte(text, 0) | GetByte(text, 1) << 8 | GetByte(text, 2) << 16 | GetByte(text, 3) << 24 |
           GetByte(text, 4) << 32 | GetByte(text, 5) << 40 | GetByte(text, 6) << 48 | GetByte(text, 7) << 56;
}

/// A number of 32 bits of the length, the last eight bytes and the eight in the middle: names of one family
/// begin alike.
constexpr std::uint64_t HashText(std::string_view text)
{
    constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15U;
    std::uint64_t last = 0;
    std::uint64_t middle = 0;
    if (text.size() >= 8)
    {
        last = GetWord(text.data() + text.size() - 8);
        middle = GetWord(text.data() + (text.size() - 8) / 2);
    }
    else
    {
        for (std::size_t i = 0; i < text.size(); ++i)
        {
            last = last << 8 | GetByte(text.data(), i);
        }
    }
    // Of a product, all bits of both factors have a part in the highest.
    return (last ^ (middle << 23 | middle >> 41) ^ text.size()) * kSpread >> 32;
}

/// Of equal length; most are a few words long, which a call of a function costs as much as comparing.
constexpr bool AreEqual(const char* left, const char* right, std::size_t size)
{
    if (size < 8)
    {
        for (std::size_t i = 0; i < size; ++i)
        {
            if (left[i] != right[i])
            {
                return false;
            }
        }
        return true;
    }
    for (std::size_t i = 0; i + 8 < size; i += 8)
    {
        if (GetWord(left + i) != GetWord(right + i))
        {
            return false;
        }
    }
    return GetWord(left + size - 8) == GetWord(right + size - 8);
}

/// `kSlots` is a power of two and larger than the number of texts, so that a search always comes to a free
/// slot. `Rows` has the texts: the row number i has the text `Rows::GetText(i)`.
template <class Rows, std::size_t kSlots>
class TextIndex
{
    static_assert((kSlots & (kSlots - 1)) == 0 && kSlots < 65'536);

public:
    /// Of equal texts, the first is found.
    constexpr explicit TextIndex(std::size_t rows)
    {
        for (std::size_t row = 0; row < rows; ++row)
        {
            std::size_t slot = 0;
            if (Find(Rows::GetText(row), slot) == kNone)
            {
                m_rows[slot] = static_cast<std::uint16_t>(row + 1);
            }
        }
    }

    static constexpr std::size_t kNone = kSlots;

    /// The row with that text, or `kNone`.
    constexpr std::size_t Find(std::string_view text) const
    {
        std::size_t slot = 0;
        return Find(text, slot);
    }

private:
    constexpr std::size_t Find(std::string_view text, std::size_t& slot) const
    {
        for (slot = static_cast<std::size_t>(HashText(text) * kSlots >> 32); m_rows[slot] != 0;
             slot = (slot + 1) % kSlots)
        {
            const std::size_t row = m_rows[slot] - std::size_t{1};
            const std::string_view other = Rows::GetText(row);
            if (other.size() == text.size() && AreEqual(other.data(), text.data(), text.size()))
            {
                return row;
            }
        }
        return kNone;
    }

    /// Counted from 1; 0 is a free slot.
    std::array<std::uint16_t, kSlots> m_rows = {};
};

} // namespace Zelnor::Conf
