#include "Media/Pages/HtmlText.h"

#include "Media/Unicode.h"

#include "Core/Interfaces/Utf8.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

bool IsShownAsItIs(std::string_view character)
{
    const char32_t point = Core::Utf8CodePoint(character);
    return point != U'\\' && !Core::IsInvisibleControl(point) && !IsNonCharacter(point);
}

void AppendEscape(char c, std::string& out)
{
    switch (c)
    {
    case '\\':
        out += "\\\\";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        break;
    }
    const auto byte = static_cast<unsigned char>(c);
    out += '\\';
    out += static_cast<char>('0' + (byte >> 6));
    out += static_cast<char>('0' + ((byte >> 3) & 7));
    out += static_cast<char>('0' + (byte & 7));
}

} // namespace

std::string ShownText(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty())
    {
        const std::size_t length = Core::Utf8Length(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length != 0 && IsShownAsItIs(character))
        {
            shown += character;
        }
        else
        {
            std::for_each(character.begin(), character.end(), [&shown](char c) { AppendEscape(c, shown); });
        }
        text.remove_prefix(character.size());
    }
    return shown;
}

void AppendHtml(std::string_view text, std::string& html)
{
    for (const char c : text)
    {
        switch (c)
        {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html += c;
        }
    }
}

std::string HtmlText(std::string_view text)
{
    std::string html;
    AppendHtml(ShownText(text), html);
    return html;
}

std::string Shortened(const std::string& shown, std::size_t most)
{
    std::size_t characters = 0;
    std::size_t end = 0; // of the first `most` - 1 characters
    for (std::size_t i = 0; i < shown.size(); ++i)
    {
        if (Core::IsUtf8Continuation(shown[i]))
        {
            continue;
        }
        if (++characters == most)
        {
            end = i;
        }
        if (characters > most)
        {
            return shown.substr(0, end) + "\xE2\x80\xA6";
        }
    }
    return shown;
}

} // namespace Zelnor::Media
