#include "Tools/zconf/Console/Text.h"

#include "Core/Interfaces/Utf8.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Zelnor::Tool
{

namespace
{

unsigned char ByteAt(const std::string& text, std::size_t position)
{
    return position < text.size() ? static_cast<unsigned char>(text[position]) : 0;
}

/// The code point of the well-formed character at `position`, `length` bytes long.
char32_t CodePoint(const std::string& text, std::size_t position, std::size_t length)
{
    if (length == 1)
    {
        return ByteAt(text, position);
    }
    char32_t point = ByteAt(text, position) & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
    {
        point = (point << 6U) | (ByteAt(text, position + i) & 0x3FU);
    }
    return point;
}

/// Characters that break a line, steer a terminal or change the order in which text is shown.
bool IsControl(char32_t point)
{
    struct Range
    {
        char32_t first;
        char32_t last;
    };
    constexpr std::array<Range, 6> kControls = {{
        {0x00, 0x1F},     // C0
        {0x7F, 0x9F},     // DEL and C1
        {0x061C, 0x061C}, // bidirectional: Arabic letter mark
        {0x200E, 0x200F}, // bidirectional: marks
        {0x2028, 0x202E}, // line and paragraph separators; bidirectional: embeddings and overrides
        {0x2066, 0x2069}, // bidirectional: isolates
    }};
    return std::any_of(kControls.begin(), kControls.end(),
                       [point](const Range& range) { return range.first <= point && point <= range.last; });
}

std::string Escaped(unsigned char byte)
{
    switch (byte)
    {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        break;
    }
    constexpr std::array<char, 16> kDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                              '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
    return std::string("\\x") + kDigits[byte >> 4U] + kDigits[byte & 0xFU];
}

} // namespace

std::string Printable(const std::string& text)
{
    std::string printable;
    printable.reserve(text.size());
    for (std::size_t i = 0; i < text.size();)
    {
        const std::size_t length = Core::Utf8Length(std::string_view(text).substr(i));
        if (length != 0 && !IsControl(CodePoint(text, i, length)))
        {
            printable.append(text, i, length);
            i += length;
            continue;
        }
        const std::size_t end = i + std::max<std::size_t>(length, 1);
        for (; i < end; ++i)
        {
            printable += Escaped(ByteAt(text, i));
        }
    }
    return printable;
}

std::size_t Columns(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !Core::IsUtf8Continuation(c); }));
}

} // namespace Zelnor::Tool
