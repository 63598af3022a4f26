#pragma once

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/DataStream.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <rapidjson/document.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// What a record becomes on its way through a document.
inline Core::Property AfterReload(const Core::Property& record)
{
    const bool empty = record.GetType() == PROPERTY_TYPE_NONE || record == Core::Property();
    return empty ? Core::Property("data") : record;
}

/// Saves a graph, loads it again and compares the two.
class GraphRoundTrip
{
public:
    explicit GraphRoundTrip(const Conf::ITranscodingMetaGraph& graph) : m_graph(graph) {}

    /// What differs; empty when nothing does.
    std::string FindDifference()
    {
        const std::string json = Save(m_graph);
        m_saved.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
        if (m_saved.HasParseError())
        {
            return "the document is no JSON";
        }
        if (UsesLastLinkIdentifier())
        {
            return "";
        }
        m_loaded->Load(Core::MemoryDataInput::Create(json));
        return Compare();
    }

private:
    using Ids = std::vector<Conf::NodeId>;

    static std::string Save(const Conf::ITranscodingMetaGraph& graph)
    {
        const auto out = Core::MemoryDataOutput::Create();
        graph.Save(out);
        return out->GetData();
    }

    /// Such a document cannot be loaded: links get the identifier after their own.
    bool UsesLastLinkIdentifier() const
    {
        long long counter = 0;
        for (const auto& edge : m_saved["edges"].GetArray())
        {
            counter = std::max<long long>(counter, edge["id"].GetInt64());
            if (counter == std::numeric_limits<long long>::max())
            {
                return true;
            }
            ++counter;
        }
        return false;
    }

    std::string Compare() const
    {
        long long largest = 0;
        for (const auto& vertex : m_saved["vertices"].GetArray())
        {
            const Conf::NodeId id = vertex["id"].GetInt64();
            largest = std::max<long long>(largest, id);
            const std::string difference = CompareNode(id);
            if (!difference.empty())
            {
                return difference + " of node " + std::to_string(id);
            }
        }
        if (m_loaded->GetNodesCount() != largest)
        {
            return "the counter of nodes";
        }
        if (m_loaded->TopologyIsValid() != m_graph.TopologyIsValid())
        {
            return "the validity";
        }
        return CompareLinkIdentifiers();
    }

    std::string CompareNode(Conf::NodeId id) const
    {
        if ((*m_loaded)[id] != AfterReload(m_graph[id]))
        {
            return "the record";
        }
        if (Outputs(*m_loaded, id) != Outputs(m_graph, id))
        {
            return "the outputs";
        }
        Ids before;
        Ids after;
        m_graph.Inputs(id, before);
        m_loaded->Inputs(id, after);
        if (before != after)
        {
            return "the inputs";
        }
        for (const Conf::NodeId to : Outputs(m_graph, id))
        {
            if (m_loaded->GetLink(id, to) != AfterReload(m_graph.GetLink(id, to)))
            {
                return "the record of the link to " + std::to_string(to);
            }
        }
        return "";
    }

    static Ids Outputs(const Conf::ITranscodingMetaGraph& graph, Conf::NodeId id)
    {
        Ids ids;
        graph.Outputs(id, ids);
        return ids;
    }

    std::string CompareLinkIdentifiers() const
    {
        const std::string json = Save(*m_loaded);
        rapidjson::Document again;
        again.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
        const auto before = m_saved["edges"].GetArray();
        const auto after = again["edges"].GetArray();
        if (before.Size() != after.Size())
        {
            return "the number of links";
        }
        long long counter = 0;
        for (rapidjson::SizeType i = 0; i < before.Size(); ++i)
        {
            counter = std::max<long long>(counter, before[i]["id"].GetInt64()) + 1;
            if (after[i]["id"].GetInt64() != counter)
            {
                return "the identifier of link " + std::to_string(i);
            }
        }
        return "";
    }

    const Conf::ITranscodingMetaGraph& m_graph;
    rapidjson::Document m_saved;
    boost::intrusive_ptr<Conf::ITranscodingMetaGraph> m_loaded = Conf::ITranscodingMetaGraph::Create();
};

} // namespace Zelnor::Testing
