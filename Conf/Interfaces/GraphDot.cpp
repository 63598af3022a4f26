#include "Conf/Interfaces/GrahpImpl.h"

#include "Core/Interfaces/PrintPropertyValue.h"

#include <locale>
#include <sstream>

namespace Zelnor::Conf
{

namespace
{

/// Whether the record says nothing: what is left of an empty one that was saved and loaded.
bool IsTrivial(const Core::Property& record, std::string_view emptyName)
{
    return record.GetType() == PROPERTY_TYPE_GROUP && record.Count() == 0 && record.GetName() == emptyName;
}

} // namespace

void ITranscodingMetaGraph::GrahpImpl::SaveInToDot(Core::IDataOutput& out) const
{
    std::ostringstream os;
    os.imbue(std::locale::classic());
    os << "digraph G {\n";
    for (const auto& node : m_nodes)
    {
        // A position is all digits, so it may stand without quotes. Printed records are escaped already.
        os << node->position << "[label=\"Node Id: " << node->meta.id << '\n';
        Core::PrintPropertyValue(node->meta.data, 0, os, true, true);
        os << "\"];\n";
    }
    for (const Link& link : m_links)
    {
        os << link.source->position << "->" << link.target->position << ' ';
        if (!IsTrivial(link.meta.data, DATA))
        {
            os << "[label=\"";
            Core::PrintPropertyValue(link.meta.data, 0, os, true, true);
            os << "\"]";
        }
        os << ";\n";
    }
    os << "}\n";
    const std::string text = os.str();
    out.Write(text.data(), text.size());
}

} // namespace Zelnor::Conf
