#include "Conf/Private/GrahpImpl.h"
#include "Conf/Private/GraphUnit.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PrintPropertyValue.h"

#include <sstream>
#include <string>

namespace Zelnor::Conf
{

namespace
{

using Core::Property;

/// Whether the record says nothing: what is left of an empty one that was saved and loaded.
bool IsTrivial(const Property& record, std::string_view emptyName)
{
    return record.GetType() == PROPERTY_TYPE_GROUP && record.Count() == 0 && record.GetName() == emptyName;
}

/// Graphviz refuses a quoted text of more than 16,384 bytes without an escape in it. It drops an escaped line
/// break, so these may stand wherever needed.
constexpr std::size_t kLongestStretch = 8192;
/// It also refuses to draw what is wider than 65,535 points, some 9,000 characters. A line that would not fit
/// a screen anyway is continued on the next.
constexpr std::size_t kLongestLine = 1000;

/// Copies a quoted text and breaks it where Graphviz needs it, never inside a character or an escape.
void AppendBroken(const std::string& quoted, std::string& text)
{
    std::size_t line = 0;
    std::size_t stretch = 0;
    bool escaped = false;
    for (const char c : quoted)
    {
        const bool mayBreak = !escaped && (static_cast<unsigned char>(c) & 0xC0u) != 0x80u;
        if (mayBreak && line >= kLongestLine && c != '\n')
        {
            text += "\\n";
            line = stretch = 0;
        }
        if (mayBreak && stretch >= kLongestStretch)
        {
            text += "\\\n";
            stretch = 0;
        }
        text += c;
        escaped = c == '\\' && !escaped;
        line = c == '\n' ? 0 : line + 1;
        stretch = escaped ? 0 : stretch + 1;
    }
}

/// The printed record is escaped already.
void AppendRecord(const Property& record, std::string& text)
{
    std::ostringstream os;
    Core::PrintPropertyValue(record, 0, os, true, true);
    AppendBroken(os.str(), text);
}

} // namespace

// Numbers go through std::to_string, which no locale changes. A node's name is a number, so it needs no
// quotes.

void ITranscodingMetaGraph::GrahpImpl::SaveInToDot(Core::IDataOutput& out) const
{
    std::string text = "digraph G {\n";
    for (const auto& node : m_nodes)
    {
        text += std::to_string(node->position) + "[label=\"Node Id: " + std::to_string(node->meta.id) + '\n';
        AppendRecord(node->meta.data, text);
        text += "\"];\n";
    }
    for (const Link& link : m_links)
    {
        text += std::to_string(link.source->position) + "->" + std::to_string(link.target->position) + ' ';
        if (!IsTrivial(link.meta.data, DATA))
        {
            text += "[label=\"";
            AppendRecord(link.meta.data, text);
            text += "\"]";
        }
        text += ";\n";
    }
    text += "}\n";
    out.Write(text.data(), text.size());
}

void ITranscodingMetaGraph::SaveInToDot(boost::intrusive_ptr<Core::IDataOutput> out) const
{
    if (out == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, NoStream());
    }
    m_impl->SaveInToDot(*out);
}

} // namespace Zelnor::Conf
