#include "Core/Interfaces/Utf8.h"

#include <algorithm>
#include <iterator>

namespace Zelnor::Core
{

std::size_t Utf8Length(std::string_view text)
{
    const auto byte = [text](std::size_t i) -> unsigned {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    const auto continues = [text](std::size_t i) { return i < text.size() && IsUtf8Continuation(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
    {
        return text.empty() ? 0 : 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF)
    {
        return continues(1) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF)
    {
        const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = lead == 0xED && byte(1) > 0x9F;
        return continues(1) && continues(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4)
    {
        const bool overlong = lead == 0xF0 && byte(1) < 0x90;
        const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
        return continues(1) && continues(2) && continues(3) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

char32_t Utf8CodePoint(std::string_view character)
{
    const auto lead = static_cast<unsigned char>(character.front());
    char32_t point = character.size() == 1 ? lead : lead & (0x7Fu >> character.size());
    for (const char c : character.substr(1))
    {
        point = (point << 6) | (static_cast<unsigned char>(c) & 0x3Fu);
    }
    return point;
}

bool IsInvisibleControl(char32_t point)
{
    struct Range
    {
        char32_t first;
        char32_t last;
    };
    constexpr Range kRanges[] = {
        {0x0000, 0x001F},   // C0
        {0x007F, 0x009F},   // DEL and C1
        {0x00AD, 0x00AD},   // soft hyphen
        {0x061C, 0x061C},   // Arabic letter mark
        {0x200B, 0x200B},   // zero width space
        {0x200E, 0x200F},   // left-to-right and right-to-left marks
        {0x2028, 0x202E},   // line and paragraph separators; bidirectional embeddings and overrides
        {0x2060, 0x206F},   // word joiner, invisible operators, bidirectional isolates, deprecated controls
        {0xFEFF, 0xFEFF},   // zero width no-break space
        {0xFFF9, 0xFFFB},   // interlinear annotations
        {0x1BCA0, 0x1BCA3}, // shorthand format controls
        {0x1D173, 0x1D17A}, // musical format controls
        {0xE0000, 0xE007F}, // tags
    };
    const auto* const range = std::find_if(std::begin(kRanges), std::end(kRanges),
                                           [point](const Range& each) { return point <= each.last; });
    return range != std::end(kRanges) && range->first <= point;
}

} // namespace Zelnor::Core
