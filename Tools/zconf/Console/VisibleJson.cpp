#include "Tools/zconf/Console/VisibleJson.h"

#include <algorithm>
#include <cstddef>

namespace Zelnor::Tool
{

namespace
{

/// A number of 16 bits.
std::string UnitEscape(char32_t unit)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U})
    {
        text += kDigits[unit >> shift & 0xFU];
    }
    return text;
}

} // namespace

std::string JsonEscape(char32_t point)
{
    constexpr char32_t kFirstOfTwo = 0x10000;
    if (point < kFirstOfTwo)
    {
        return UnitEscape(point);
    }
    const char32_t rest = point - kFirstOfTwo;
    return UnitEscape(0xD800 + (rest >> 10U)) + UnitEscape(0xDC00 + (rest & 0x3FFU));
}

std::string VisibleJson(std::string_view json)
{
    std::string visible;
    visible.reserve(json.size());
    while (!json.empty())
    {
        const std::size_t length = Core::Utf8Length(json);
        const std::string_view character = json.substr(0, std::max<std::size_t>(length, 1));
        const char32_t point = length == 0 ? U'?' : Core::Utf8CodePoint(character);
        // Those of ASCII up to the blank stand between the texts, and are escaped in them.
        const bool isEscaped = point > U' ' && Core::IsInvisibleControl(point);
        visible += isEscaped ? JsonEscape(point) : std::string(character);
        json.remove_prefix(character.size());
    }
    return visible;
}

} // namespace Zelnor::Tool
