#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// Makes names that have one hash in libstdc++, whatever its seed is. It takes in eight bytes at a time; a
/// flip of the highest bit of what it makes of them is undone by the same flip in the next eight. So each
/// sixteen bytes may be one of two, which doubles the names. There are no letters in upper case in them, nor
/// what JSON escapes.
class CollidingNames
{
public:
    /// Two to the power of `choices` names.
    static std::vector<std::string> Make(unsigned int choices)
    {
        std::mt19937_64 random(1);
        std::vector<std::string> names = {""};
        for (unsigned int i = 0; i < choices; ++i)
        {
            const Pair first = FindPair(random);
            const Pair second = FindPair(random);
            std::vector<std::string> longer;
            longer.reserve(2 * names.size());
            for (const std::string& name : names)
            {
                longer.push_back(name + TextOf(first.first) + TextOf(second.first));
                longer.push_back(name + TextOf(first.second) + TextOf(second.second));
            }
            names = std::move(longer);
        }
        return names;
    }

private:
    using Block = std::uint64_t;
    using Pair = std::pair<Block, Block>;

    static constexpr Block kFactor = 0xC6A4A7935BD1E995;

    static Block Shifted(Block block) { return block ^ (block >> 47U); }
    static Block Mixed(Block block) { return Shifted(block * kFactor) * kFactor; }
    static Block Unmixed(Block block)
    {
        Block inverse = kFactor;
        for (int i = 0; i < 6; ++i)
        {
            inverse *= 2 - kFactor * inverse;
        }
        return Shifted(block * inverse) * inverse;
    }

    static std::string TextOf(Block block)
    {
        std::string text(sizeof block, '\0');
        std::memcpy(text.data(), &block, sizeof block);
        return text;
    }

    static bool IsPlain(Block block)
    {
        for (const char c : TextOf(block))
        {
            const auto byte = static_cast<unsigned char>(c);
            if (byte <= ' ' || byte == 0x7F || c == '"' || c == '\\' || (c >= 'A' && c <= 'Z'))
            {
                return false;
            }
        }
        return true;
    }

    /// Two blocks that differ in the highest bit alone once they are mixed.
    static Pair FindPair(std::mt19937_64& random)
    {
        constexpr Block kHighest = Block{1} << 63U;
        for (;;)
        {
            const Block one = random();
            const Block other = Unmixed(Mixed(one) ^ kHighest);
            if (IsPlain(one) && IsPlain(other))
            {
                return {one, other};
            }
        }
    }
};

} // namespace Zelnor::Testing
