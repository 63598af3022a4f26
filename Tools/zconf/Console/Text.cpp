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
        if (length != 0 &&
            !Core::IsInvisibleControl(Core::Utf8CodePoint(std::string_view(text).substr(i, length))))
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

std::string Utf8Text(const std::string& text)
{
    for (std::size_t i = 0; i < text.size();)
    {
        const std::size_t length = Core::Utf8Length(std::string_view(text).substr(i));
        if (length == 0)
        {
            return Printable(text);
        }
        i += length;
    }
    return text;
}

std::size_t Columns(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !Core::IsUtf8Continuation(c); }));
}

} // namespace Zelnor::Tool
