#include "Core/Interfaces/Utf8.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Core
{

namespace
{

static_assert(IsUtf8Continuation('\x80') && IsUtf8Continuation('\xBF'));
static_assert(!IsUtf8Continuation('\x7F') && !IsUtf8Continuation('\xC0') && !IsUtf8Continuation('\0'));

/// The character as the definition of UTF-8 writes it in `length` bytes, whether or not that is well-formed.
std::string Encode(unsigned long character, std::size_t length)
{
    if (length == 1)
    {
        return std::string(1, static_cast<char>(character));
    }
    constexpr unsigned kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    std::string text;
    for (std::size_t i = length - 1; i > 0; --i)
    {
        text.insert(text.begin(), static_cast<char>(0x80 | (character & 0x3F)));
        character >>= 6;
    }
    text.insert(text.begin(), static_cast<char>(kLeads[length] | character));
    return text;
}

std::size_t ShortestLength(unsigned long character)
{
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

TEST(Utf8Length, IsThatOfTheShortestFormOfEveryCharacterAndOfNoLongerForm)
{
    for (unsigned long character = 0; character < 0x200000; ++character)
    {
        const bool isCharacter = character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
        const std::size_t shortest = ShortestLength(character);
        for (std::size_t length = shortest; length <= 4; ++length)
        {
            const std::size_t expected = isCharacter && length == shortest ? length : 0;
            ASSERT_EQ(Utf8Length(Encode(character, length)), expected) << character << " in " << length;
        }
    }
}

/// With the test above: what is well-formed is a character, for there are no more forms than characters.
TEST(Utf8Length, IsNotZeroForAsManySequencesAsThereAreCharacters)
{
    std::size_t two = 0;
    std::size_t three = 0;
    std::size_t four = 0;
    std::string text(4, '\0');
    for (unsigned lead = 0; lead < 0x100; ++lead)
    {
        for (unsigned second = 0; second < 0x100; ++second)
        {
            for (const char third : {'\0', '\x7F', '\x80', '\xBF', '\xC0', '\xFF'})
            {
                for (const char last : {'\0', '\x7F', '\x80', '\xBF', '\xC0', '\xFF'})
                {
                    text = {static_cast<char>(lead), static_cast<char>(second), third, last};
                    const std::size_t length = Utf8Length(text);
                    two += length == 2 ? 1 : 0;
                    three += length == 3 ? 1 : 0;
                    four += length == 4 ? 1 : 0;
                }
            }
        }
    }
    EXPECT_EQ(two, 6u * 6 * (0x800 - 0x80));
    EXPECT_EQ(three, 6u * 2 * (0x10000 - 0x800 - 0x800) / 64);
    EXPECT_EQ(four, 2u * 2 * (0x110000 - 0x10000) / 64 / 64);
}

TEST(Utf8Length, OfATextThatEndsTooEarlyIsZero)
{
    EXPECT_EQ(Utf8Length(""), 0u);
    for (const std::string whole : {"\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x8E\xAC"})
    {
        EXPECT_EQ(Utf8Length(whole), whole.size());
        for (std::size_t size = 1; size < whole.size(); ++size)
        {
            EXPECT_EQ(Utf8Length(std::string_view(whole).substr(0, size)), 0u) << size;
        }
    }
}

TEST(Utf8Length, OfNulIsOneAndLooksAtNothingBehindTheCharacter)
{
    using namespace std::string_literals;
    EXPECT_EQ(Utf8Length("\0\x80"s), 1u);
    EXPECT_EQ(Utf8Length("a\xFF"), 1u);
    EXPECT_EQ(Utf8Length("\xC3\xA4\xBF"), 2u);
}

TEST(Utf8CodePoint, IsTheNumberThatEveryCharacterEncodes)
{
    for (unsigned long character = 0; character <= 0x10FFFF; ++character)
    {
        if (character < 0xD800 || character > 0xDFFF)
        {
            ASSERT_EQ(Utf8CodePoint(Encode(character, ShortestLength(character))), character);
        }
    }
}

TEST(IsInvisibleControl, HoldsForControlsSeparatorsAndInvisibleFormatCharactersAlone)
{
    const std::vector<std::pair<char32_t, char32_t>> ranges = {
        {0x00, 0x1F},       {0x7F, 0x9F},       {0xAD, 0xAD},       {0x61C, 0x61C},   {0x200B, 0x200B},
        {0x200E, 0x200F},   {0x2028, 0x202E},   {0x2060, 0x206F},   {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB},
        {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE007F},
    };
    char32_t next = 0;
    for (const auto& [first, last] : ranges)
    {
        for (; next < first; ++next)
        {
            ASSERT_FALSE(IsInvisibleControl(next)) << static_cast<unsigned long>(next);
        }
        for (; next <= last; ++next)
        {
            ASSERT_TRUE(IsInvisibleControl(next)) << static_cast<unsigned long>(next);
        }
    }
    for (; next <= 0x10FFFF; ++next)
    {
        ASSERT_FALSE(IsInvisibleControl(next)) << static_cast<unsigned long>(next);
    }
}

} // namespace

} // namespace Zelnor::Core
