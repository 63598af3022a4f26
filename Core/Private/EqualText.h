#pragma once

// Private to the library, not installed.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Zelnor::Core
{

/// Up to this size `IsEqualText` calls no function.
constexpr std::size_t kShortText = 32;

/// Whether both are the same. Most names are shorter than a call of the C library is long.
[[gnu::always_inline]] inline bool IsEqualText(std::string_view left, std::string_view right)
{
    const std::size_t size = left.size();
    if (size != right.size())
    {
        return false;
    }
    const auto differs = [&](auto word, std::size_t at) {
        auto other = word;
        std::memcpy(&word, left.data() + at, sizeof word);
        std::memcpy(&other, right.data() + at, sizeof other);
        return word ^ other;
    };
    if (size > kShortText)
    {
        return std::memcmp(left.data(), right.data(), size) == 0;
    }
    // Two words that overlap cover every size from one word to two, four those from two words to four.
    if (size > 16)
    {
        return (differs(std::uint64_t{}, 0) | differs(std::uint64_t{}, 8) |
                differs(std::uint64_t{}, size - 16) | differs(std::uint64_t{}, size - 8)) == 0;
    }
    if (size >= 8)
    {
        return (differs(std::uint64_t{}, 0) | differs(std::uint64_t{}, size - 8)) == 0;
    }
    if (size >= 4)
    {
        return (differs(std::uint32_t{}, 0) | differs(std::uint32_t{}, size - 4)) == 0;
    }
    for (std::size_t i = 0; i < size; ++i)
    {
        if (left[i] != right[i])
        {
            return false;
        }
    }
    return true;
}

} // namespace Zelnor::Core
