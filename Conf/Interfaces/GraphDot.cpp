#include "Conf/Private/GrahpImpl.h"
#include "Conf/Private/GraphUnit.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

namespace Zelnor::Conf
{

namespace
{

using Core::Property;

/// Whether the record is what remains of an empty record that was saved and loaded.
bool IsTrivial(const Property& record, std::string_view emptyName)
{
    return record.GetType() == PROPERTY_TYPE_GROUP && record.Count() == 0 && record.GetName() == emptyName;
}

/// Graphviz refuses a quoted text of more than 16,384 bytes without a backslash in it. It ignores
/// an escaped line break, which can be inserted anywhere.
constexpr std::size_t kLongestStretch = 16'000;
/// It also refuses a drawing in which neighbours are more than 65,535 points apart, as two nodes of 3,500 of
/// the widest letters are. Longer lines are continued on the next.
constexpr std::size_t kLongestLine = 2'700;

/// Whether Graphviz draws a reference to the character so that the SVG is well-formed. XML may not hold most
/// control characters, surrogates, U+FFFE and U+FFFF. Graphviz 2.42 writes the last character of one byte and
/// that of two a byte too long, and those of four bytes too short.
bool IsDrawn(unsigned long character)
{
    const bool isTooLong = character == 0x7F || character == 0x7FF;
    return character == '\t' || character == '\n' || character == '\r' ||
           (character >= 0x20 && character <= 0xD7FF && !isTooLong) ||
           (character >= 0xE000 && character <= 0xFFFD);
}

/// Whether the text begins with a reference to a character, "&#1;" or "&#x1;", that is not drawn well.
bool BeginsWithBadReference(std::string_view text)
{
    if (text.substr(0, 2) != "&#")
    {
        return false;
    }
    text.remove_prefix(2);
    const bool isHexadecimal = !text.empty() && (text.front() == 'x' || text.front() == 'X');
    text.remove_prefix(isHexadecimal ? 1 : 0);
    unsigned long character = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), character, isHexadecimal ? 16 : 10);
    const bool isReference = end != text.data() && end != text.data() + text.size() && *end == ';';
    return isReference && (error != std::errc() || !IsDrawn(character));
}

/// What Graphviz shows as "&".
constexpr std::string_view kAmpersand = "&amp;";

/// The printed text without what would make characters that XML may not hold: references to them are shown as
/// they are written, and U+FFFE and U+FFFF as other bytes that are not text.
std::string WithoutBadCharacters(std::string_view printed)
{
    std::string text;
    text.reserve(printed.size());
    for (std::size_t at = 0; at < printed.size(); ++at)
    {
        const std::string_view rest = printed.substr(at);
        if (rest.front() == '&' && BeginsWithBadReference(rest))
        {
            text += kAmpersand;
        }
        else if (rest.substr(0, 3) == "\xEF\xBF\xBE" || rest.substr(0, 3) == "\xEF\xBF\xBF")
        {
            text += rest[2] == '\xBE' ? "\\357\\277\\276" : "\\357\\277\\277";
            at += 2;
        }
        else
        {
            text += rest.front();
        }
    }
    return text;
}

/// The length of the escape or UTF-8 character at the beginning of a printed text.
std::size_t CharacterLength(std::string_view text)
{
    if (text.substr(0, kAmpersand.size()) == kAmpersand)
    {
        return kAmpersand.size();
    }
    if (text.front() == '\\')
    {
        const bool isOctal = text.size() > 1 && text[1] >= '0' && text[1] <= '7';
        return isOctal ? 4 : 2;
    }
    return std::max<std::size_t>(Core::Utf8Length(text), 1);
}

/// Appends a printed text and breaks it where Graphviz requires it, but never inside a character or an
/// escape.
void AppendBroken(std::string_view printed, std::string& text)
{
    std::size_t line = 0;
    std::size_t stretch = 0;
    while (!printed.empty())
    {
        const std::string_view character = printed.substr(0, CharacterLength(printed));
        const bool endsLine = character == "\n" || character == "\\n";
        if (line == kLongestLine && !endsLine)
        {
            text += "\\n";
            line = 0;
            stretch = 1;
        }
        const bool isEscape = character.front() == '\\';
        if (stretch + character.size() > kLongestStretch && !isEscape)
        {
            text += "\\\n";
            stretch = 1;
        }
        text += character;
        line = endsLine ? 0 : line + 1;
        stretch = isEscape ? character.size() - 1 - character.rfind('\\') : stretch + character.size();
        printed.remove_prefix(character.size());
    }
}

/// The print of a record is escaped already.
void AppendRecord(const Property& record, std::string& text)
{
    std::ostringstream os;
    // Otherwise the stream would ignore a failed allocation, and the text would be incomplete.
    os.exceptions(std::ios_base::badbit);
    Core::PrintPropertyValue(record, 0, os, true, true);
    AppendBroken(WithoutBadCharacters(os.str()), text);
}

} // namespace

// Numbers are written with std::to_string, which does not depend on the locale. The names of nodes are
// numbers and need no quotes.

void ITranscodingMetaGraph::GrahpImpl::SaveInToDot(Core::IDataOutput& out) const
{
    std::string text = "digraph G {\n";
    const std::vector<VertexT> positions = GetPositions();
    ForEachNode([&](VertexT vertex) {
        text +=
            std::to_string(positions[vertex]) + "[label=\"Node Id: " + std::to_string(IdOf(vertex)) + '\n';
        AppendRecord(m_nodes[vertex].data, text);
        text += "\"];\n";
    });
    ForEachLink([&](EdgeT edge, const AdjacencyList::Link& link) {
        text += std::to_string(positions[link.source]) + "->" + std::to_string(positions[link.target]) + ' ';
        if (!IsTrivial(m_links[edge].data, DATA))
        {
            text += "[label=\"";
            AppendRecord(m_links[edge].data, text);
            text += "\"]";
        }
        text += ";\n";
    });
    text += "}\n";
    out.Write(text.data(), text.size());
}

void ITranscodingMetaGraph::SaveInToDot(boost::intrusive_ptr<Core::IDataOutput> out) const
{
    if (out == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, NoStream());
    }
    const boost::intrusive_ptr<const ITranscodingMetaGraph> self(this);
    const GrahpImpl::StreamScope scope(*m_impl);
    m_impl->SaveInToDot(*out);
}

} // namespace Zelnor::Conf
