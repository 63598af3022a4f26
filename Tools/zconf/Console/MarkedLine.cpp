#include "Tools/zconf/Console/MarkedLine.h"

#include "Tools/zconf/Console/Text.h"

#include "Core/Interfaces/Utf8.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Zelnor::Tool
{

namespace
{

constexpr std::size_t kMostBefore = 70;
constexpr std::size_t kMostColumns = 100;

struct PointRange
{
    char32_t first;
    char32_t last;
};

/// East Asian wide characters and emoji, in order.
constexpr PointRange kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},  {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},
    {0xA960, 0xA97C},   {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6B},
    {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF},
    {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD}};

/// Marks that stand on the character before them, and joiners, in order.
constexpr PointRange kWithoutWidth[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A}, {0x064B, 0x065F},
    {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},
    {0x20D0, 0x20FF}, {0x302A, 0x302D}, {0x3099, 0x309A}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};

template <std::size_t N>
bool IsIn(const PointRange (&ranges)[N], char32_t point)
{
    const auto* const range = std::find_if(std::begin(ranges), std::end(ranges),
                                           [point](const PointRange& known) { return point <= known.last; });
    return range != std::end(ranges) && point >= range->first;
}

/// A character, or a byte that does not belong to one, as it is shown.
struct Shown
{
    std::string text;
    std::size_t columns;
};

Shown Show(std::string_view character)
{
    if (character == "\t")
    {
        return {"    ", 4};
    }
    const std::string text = Printable(std::string(character));
    return text == character ? Shown{text, ColumnsOf(Core::Utf8CodePoint(character))}
                             : Shown{text, text.size()};
}

std::string_view CharacterAt(std::string_view text, std::size_t offset)
{
    return text.substr(offset, std::max<std::size_t>(Core::Utf8Length(text.substr(offset, 4)), 1));
}

/// Where a character begins, some before the place.
std::size_t BeginOf(std::string_view text, std::size_t offset)
{
    std::size_t begin = offset;
    for (std::size_t i = 0; i < kMostBefore && begin > 0 && text[begin - 1] != '\n'; ++i)
    {
        do
        {
            --begin;
        } while (begin > 0 && Core::IsUtf8Continuation(text[begin]));
    }
    return begin;
}

} // namespace

std::size_t ColumnsOf(char32_t point) { return IsIn(kWithoutWidth, point) ? 0 : IsIn(kWide, point) ? 2 : 1; }

std::string MarkedLine(const std::string& text, std::size_t offset, std::size_t length, const Painter& paint)
{
    const std::string_view all = text;
    const std::size_t end = std::min(all.find('\n', offset), all.size());
    const std::size_t begin = BeginOf(all, std::min(offset, all.size()));
    const bool isCut = begin > 0 && all[begin - 1] != '\n';
    std::string line = isCut ? "..." : "";
    std::size_t columns = line.size();
    std::string marks(columns, ' ');
    std::size_t next = begin;
    while (next < end && columns < kMostColumns)
    {
        const std::string_view character = CharacterAt(all, next);
        // A carriage return before the line's end is part of that.
        const Shown shown = character == "\r" && next + 1 == end ? Shown{"", 0} : Show(character);
        line += shown.text;
        columns += shown.columns;
        const bool isMarked = next >= offset && next < offset + length;
        marks.append(shown.columns, isMarked ? (next == offset ? '^' : '~') : ' ');
        next += character.size();
    }
    line += next < end ? "..." : "";
    // The first column of a wide or escaped character carries the caret alone.
    const std::size_t caret = marks.find('^');
    const std::size_t last = marks.find_last_of("^~");
    const std::string below = caret == std::string::npos
                                  ? std::string(columns, ' ') + "^"
                                  : std::string(caret, ' ') + "^" + std::string(last - caret, '~');
    return "    | " + line + "\n    | " + paint(Style::Bad, below) + "\n";
}

} // namespace Zelnor::Tool
