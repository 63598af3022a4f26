#include "Core/Interfaces/PrintPropertyValue.h"

#include "Core/Interfaces/Utf8.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <string_view>

namespace Zelnor::Core
{

namespace
{

/// Writes three digits for each byte, so that a digit of the text after it cannot be mistaken for one of
/// them.
void AppendOctal(std::string_view bytes, std::string& out)
{
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        out += '\\';
        out += static_cast<char>('0' + (byte >> 6));
        out += static_cast<char>('0' + ((byte >> 3) & 7));
        out += static_cast<char>('0' + (byte & 7));
    }
}

/// Appends the character at the beginning of `text`, or its first byte when that is not UTF-8.
/// \returns how many bytes that were
std::size_t AppendCharacter(std::string_view text, std::string& out)
{
    const std::size_t length = Utf8Length(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    if (length == 0 || IsInvisibleControl(Utf8CodePoint(character)))
    {
        AppendOctal(character, out);
    }
    else
    {
        out += character;
    }
    return character.size();
}

void AppendEscaped(std::string_view text, std::string& out)
{
    while (!text.empty())
    {
        std::size_t length = 1;
        switch (text.front())
        {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            length = AppendCharacter(text, out);
        }
        text.remove_prefix(length);
    }
}

void AppendNumber(long long number, std::string& out)
{
    std::array<char, 20> digits;
    out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

/// Passes text to a stream in pieces: a deep tree is mostly indentation, too much to keep in memory.
class Lines
{
public:
    explicit Lines(std::ostream& os) : m_os(os) {}
    void Add(const Property& property, std::size_t level);
    void Flush();

private:
    std::ostream& m_os;
    std::string m_text;
};

void AppendLine(const Property& property, std::size_t level, std::string& out)
{
    out.append(2 * level, ' ');
    AppendEscaped(property.GetName(), out);
    out += ':';
    switch (property.GetType())
    {
    case PROPERTY_TYPE_GROUP:
        break;
    case PROPERTY_TYPE_NONE:
        out += " null";
        break;
    case PROPERTY_TYPE_INT64:
        out += ' ';
        AppendNumber(property.GetInt64(), out);
        break;
    case PROPERTY_TYPE_STRING:
        out += ' ';
        AppendEscaped(property.GetString(), out);
        break;
    case PROPERTY_TYPE_RATIO:
        out += ' ';
        AppendNumber(property.GetRatio().numerator(), out);
        out += '/';
        AppendNumber(property.GetRatio().denominator(), out);
        break;
    }
    out += '\n';
}

void Lines::Add(const Property& property, std::size_t level)
{
    constexpr std::size_t kPiece = 4096;
    AppendLine(property, level, m_text);
    if (m_text.size() >= kPiece)
    {
        Flush();
    }
}

void Lines::Flush()
{
    m_os.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
    m_text.clear();
}

/// Adds a line for each descendant of `property`, without recursion.
void AddChildren(const Property& property, std::size_t level, Lines& lines)
{
    struct Level
    {
        Property::const_iterator next;
        Property::const_iterator end;
    };
    boost::container::small_vector<Level, 16> open{{property.begin(), property.end()}};
    while (!open.empty())
    {
        if (open.back().next == open.back().end)
        {
            open.pop_back();
            continue;
        }
        const Property& child = *open.back().next++;
        lines.Add(child, level + open.size() - 1);
        open.push_back({child.begin(), child.end()});
    }
}

} // namespace

void PrintPropertyValue(const Property& property, int indent, std::ostream& os, bool printName,
                        bool printChildren)
{
    std::size_t level = static_cast<std::size_t>(std::max(indent, 0));
    Lines lines(os);
    if (printName)
    {
        lines.Add(property, level);
        ++level;
    }
    if (printChildren)
    {
        AddChildren(property, level, lines);
    }
    lines.Flush();
}

} // namespace Zelnor::Core
