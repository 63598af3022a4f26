#include "Media/Running/ShellWords.h"

#include "Media/Unicode.h"

#include "Core/Interfaces/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

bool IsPlain(char c)
{
    constexpr std::string_view kPlain = "%+,-./:=@_";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kPlain.find(c) != std::string_view::npos;
}

/// Whether a reader does not see the character as it is. Blanks, tabs and ends of lines only make room.
bool IsHidden(std::string_view character)
{
    if (character == "\n" || character == "\t")
    {
        return false;
    }
    const char32_t point = Core::Utf8Length(character) == 0 ? U'\0' : Core::Utf8CodePoint(character);
    return Core::IsInvisibleControl(point) || IsNonCharacter(point);
}

/// A command that writes the bytes: every shell knows it, and no line hides what it writes.
std::string Substituted(std::string_view bytes)
{
    std::string digits;
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        for (const unsigned shift : {6U, 3U, 0U})
        {
            digits +=
                (shift == 6U ? "\\" : "") + std::string(1, static_cast<char>('0' + (byte >> shift & 7U)));
        }
    }
    return "'\"$(printf '" + digits + "')\"'";
}

std::string Quoted(const std::string& word)
{
    if (!word.empty() && std::all_of(word.begin(), word.end(), IsPlain))
    {
        return word;
    }
    std::string quoted = "'";
    for (std::string_view rest = word; !rest.empty();)
    {
        const std::string_view character = rest.substr(0, std::max<std::size_t>(Core::Utf8Length(rest), 1));
        quoted += IsHidden(character) ? Substituted(character)
                  : character == "'"  ? "'\\''"
                                      : std::string(character);
        rest.remove_prefix(character.size());
    }
    return quoted + "'";
}

} // namespace

std::string ShellLine(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words)
    {
        line += (line.empty() ? "" : " ") + Quoted(word);
    }
    return line;
}

} // namespace Zelnor::Media
