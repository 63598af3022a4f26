#pragma once

#include "Tests/Support/Graphs.h"
#include "Tests/Support/NaiveGraph.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// One graph under test beside the model of it. Every step is taken on both, and whatever can be asked is
/// asked of both. What differs is thrown, so that fuzzers and tests can share it.
class GraphBesideModel
{
public:
    void AddNode(long long record)
    {
        m_model.Append(++m_model.nodeCounter, record);
        Hold(m_graph->AddNode(Core::Property("r", record)) == m_model.nodeCounter,
             "the identifier of a node");
    }

    void RemoveNode(long long id)
    {
        if (const auto failure = MissingNode({id}))
        {
            ExpectMissing(*failure, [&] { m_graph->RemoveNode(id); });
            return;
        }
        const std::size_t position = *m_model.Find(id);
        for (const bool outgoing : {true, false})
        {
            const auto neighbours = m_model.Neighbours(position, outgoing);
            if (!neighbours.empty())
            {
                const LinkPair link =
                    outgoing ? LinkPair(id, neighbours.front()) : LinkPair(neighbours.front(), id);
                ExpectFailure<Conf::LinkExists>(link, [&] { m_graph->RemoveNode(id); });
                return;
            }
        }
        m_model.nodes.erase(m_model.nodes.begin() + static_cast<std::ptrdiff_t>(position));
        m_graph->RemoveNode(id);
    }

    void AddLink(long long from, long long to, long long record)
    {
        const auto add = [&] { return m_graph->AddLink(from, to, Core::Property("r", record)); };
        if (const auto failure = MissingNode({from, to}))
        {
            ExpectMissing(*failure, add);
            return;
        }
        if (m_model.FindLink(from, to))
        {
            ExpectFailure<Conf::LinkExists>({from, to}, add);
            return;
        }
        m_model.Append(++m_model.linkCounter, from, to, record);
        Hold(add() == m_model.linkCounter, "the identifier of a link");
    }

    void RemoveLink(long long from, long long to)
    {
        const auto remove = [&] { m_graph->RemoveLink(from, to); };
        if (const auto failure = MissingNode({from, to}))
        {
            ExpectMissing(*failure, remove);
            return;
        }
        const auto position = m_model.FindLink(from, to);
        if (!position)
        {
            ExpectFailure<Conf::LinkNotFound>({from, to}, remove);
            return;
        }
        m_model.links.erase(m_model.links.begin() + static_cast<std::ptrdiff_t>(*position));
        remove();
    }

    /// A document with a node, a link to it, and the link's source if it is not there yet. It may repeat
    /// identifiers and break their order.
    void Load(long long id, long long from, long long record)
    {
        const std::string data = ",\"data\":{\"data\":{\"r\":" + std::to_string(record) + "}}}";
        std::string json = "{\"vertices\":[{\"id\":" + std::to_string(id) + data;
        m_model.nodeCounter = std::max(0LL, id);
        m_model.Append(id, record);
        if (!m_model.Find(from))
        {
            json += ",{\"id\":" + std::to_string(from) + data;
            m_model.nodeCounter = std::max(m_model.nodeCounter, from);
            m_model.Append(from, record);
        }
        json += "],\"edges\":[{\"id\":" + std::to_string(from) + ",\"from\":" + std::to_string(from) +
                ",\"to\":" + std::to_string(id) + data + "]}";
        m_model.linkCounter = std::max(0LL, from);
        if (m_model.FindLink(from, id))
        {
            ExpectFailure<Conf::LinkExists>({from, id}, [&] { LoadInto(*m_graph, json); });
            return;
        }
        m_model.Append(++m_model.linkCounter, from, id, record);
        LoadInto(*m_graph, json);
    }

    /// One edit or document of the kinds 0 to `kKinds` - 1.
    void Take(int kind, long long a, long long b)
    {
        switch (kind)
        {
        case 0:
        case 1:
            AddNode(a);
            break;
        case 2:
            RemoveNode(a);
            break;
        case 3:
            RemoveLink(a, b);
            break;
        case 4:
            Load(a, b, a * b);
            break;
        default:
            AddLink(a, b, a - b);
            break;
        }
    }

    static constexpr int kKinds = 9;

    /// Asks both for what they hold, which takes little time.
    void CompareContents() const
    {
        Hold(m_graph->GetNodesCount() == m_model.nodeCounter, "the counter of nodes");
        Hold(JsonOf(*m_graph) == m_model.Json(), "the document");
    }

    /// Asks both everything about the nodes -1 to `most`.
    void Compare(long long most) const
    {
        CompareContents();
        Hold(DotOf(*m_graph) == m_model.Dot(), "the drawing");
        Hold(EntriesOf(*m_graph) == m_model.Without(false), "the entries");
        Hold(ExitsOf(*m_graph) == m_model.Without(true), "the exits");
        Hold(NodesOf(*m_graph) == m_model.Ids(), "the nodes");
        Hold(LinksOf(*m_graph) == m_model.LinkedIds(), "the links");
        Hold(m_graph->TopologyIsValid() == m_model.IsValid(), "the validity");
        CompareFaults();
        for (long long id = -1; id <= most; ++id)
        {
            CompareNode(id, most);
        }
    }

private:
    using LinkPair = std::pair<long long, long long>;
    using Groups = std::vector<std::vector<long long>>;

    void CompareFaults() const
    {
        const std::vector<Conf::TopologyFault> faults = Conf::GetTopologyFaults(*m_graph);
        Hold(faults.empty() == m_model.IsValid(), "faults exactly when it is not valid");
        Hold(std::is_sorted(faults.begin(), faults.end(),
                            [](const auto& left, const auto& right) { return left.kind < right.kind; }),
             "the order of faults");
        const std::vector<long long> unlinked = m_model.UnlinkedIds();
        const Groups parts = m_model.Parts();
        const bool few = m_model.nodes.size() < 2;
        ExpectGroups(faults, Conf::TopologyFault::TOO_FEW_NODES, few ? Groups{m_model.Ids()} : Groups());
        ExpectGroups(faults, Conf::TopologyFault::REPEATED_IDS, OneUnlessEmpty(m_model.RepeatedIds()));
        ExpectGroups(faults, Conf::TopologyFault::UNLINKED_NODES, few ? Groups() : OneUnlessEmpty(unlinked));
        ExpectGroups(faults, Conf::TopologyFault::SEVERAL_PARTS, parts.size() > 1 ? parts : Groups());
        CompareCycles(faults);
    }

    static Groups OneUnlessEmpty(const std::vector<long long>& ids)
    {
        return ids.empty() ? Groups() : Groups{ids};
    }

    /// The groups of all faults of the kind; the kinds but cycles are reported once.
    static void ExpectGroups(const std::vector<Conf::TopologyFault>& faults, Conf::TopologyFault::Kind kind,
                             const Groups& expected)
    {
        Groups groups;
        for (const Conf::TopologyFault& fault : faults)
        {
            if (fault.kind == kind)
            {
                Hold(groups.empty(), "a kind of fault reported once");
                groups = fault.groups;
            }
        }
        Hold(groups == expected, "the nodes of a fault");
    }

    /// One cycle, whichever, of each set of nodes that lie on cycles together.
    void CompareCycles(const std::vector<Conf::TopologyFault>& faults) const
    {
        Groups cyclicParts = m_model.CyclicParts();
        for (const Conf::TopologyFault& fault : faults)
        {
            if (fault.kind != Conf::TopologyFault::CYCLE)
            {
                continue;
            }
            Hold(!cyclicParts.empty(), "a cycle where there is one");
            Hold(fault.groups.size() == 1u, "one group for a cycle");
            const std::vector<long long>& cycle = fault.groups.front();
            const std::vector<long long>& part = cyclicParts.front();
            for (std::size_t i = 0; i < cycle.size(); ++i)
            {
                Hold(m_model.FindLink(cycle[i], cycle[(i + 1) % cycle.size()]).has_value(),
                     "a cycle along links");
                Hold(std::count(cycle.begin(), cycle.end(), cycle[i]) == 1, "each node of a cycle once");
                Hold(std::count(part.begin(), part.end(), cycle[i]) == 1, "a cycle in its part");
            }
            cyclicParts.erase(cyclicParts.begin());
        }
        Hold(cyclicParts.empty(), "a cycle for each part with one");
    }

    void CompareNode(long long id, long long most) const
    {
        const auto position = m_model.Find(id);
        if (!position)
        {
            ExpectMissing(id, [&] { return (*m_graph)[id]; });
            Hold(Conf::PathExistInGraph(m_graph, id, id), "a path from a missing node to itself");
            ExpectMissing(id, [&] { return Conf::PathExistInGraph(m_graph, id, id + 1); });
            return;
        }
        Hold((*m_graph)[id] == Core::Property("r", m_model.nodes[*position].record), "the record of a node");
        Hold(InputsOf(*m_graph, id) == m_model.Neighbours(*position, false), "the inputs of a node");
        Hold(OutputsOf(*m_graph, id) == m_model.Neighbours(*position, true), "the outputs of a node");
        for (long long to = -1; to <= most; ++to)
        {
            Hold(Conf::PathExistInGraph(m_graph, id, to) == m_model.HasPath(id, to),
                 "whether there is a path");
            if (m_model.Find(to) && m_model.FindLink(id, to))
            {
                Hold(m_graph->GetLink(id, to) ==
                         Core::Property("r", m_model.links[*m_model.FindLink(id, to)].record),
                     "the record of a link");
            }
        }
    }

    std::optional<long long> MissingNode(const std::vector<long long>& ids) const
    {
        const auto missing =
            std::find_if(ids.begin(), ids.end(), [this](long long id) { return !m_model.Find(id); });
        return missing == ids.end() ? std::nullopt : std::optional<long long>(*missing);
    }

    template <class Action>
    static void ExpectMissing(long long id, Action&& action)
    {
        try
        {
            action();
            Hold(false, "an exception is thrown");
        }
        catch (const Conf::NodeNotFound& e)
        {
            Hold(*boost::get_error_info<Conf::ProfileException::TagRequestedNodeId>(e) == id,
                 "the node that is missing");
        }
    }

    template <class E, class Action>
    static void ExpectFailure(const LinkPair& link, Action&& action)
    {
        try
        {
            action();
            Hold(false, "an exception is thrown");
        }
        catch (const E& e)
        {
            Hold(*boost::get_error_info<Conf::ProfileException::TagRequestedLink>(e) == link,
                 "the link of a failure");
        }
    }

    static void Hold(bool isEqual, const char* what)
    {
        if (!isEqual)
        {
            throw std::logic_error(std::string("graph and model differ: ") + what);
        }
    }

    GraphPtr m_graph = Conf::ITranscodingMetaGraph::Create();
    NaiveGraph m_model;
};

} // namespace Zelnor::Testing
