#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Dot.h"
#include "Tests/Support/GraphGenerators.h"
#include "Tests/Support/GraphRoundTrip.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/NaiveGraph.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using Core::Property;
using LinkPair = std::pair<long long, long long>;

/// One graph under test beside the model of it. Every step is taken on both, and everything that can be asked
/// is then asked of both.
class Pair
{
public:
    void AddNode(long long record)
    {
        m_model.Append(++m_model.nodeCounter, record);
        RC_ASSERT(m_graph->AddNode(Property("r", record)) == m_model.nodeCounter);
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
                ExpectFailure<LinkExists>(link, [&] { m_graph->RemoveNode(id); });
                return;
            }
        }
        m_model.nodes.erase(m_model.nodes.begin() + static_cast<std::ptrdiff_t>(position));
        m_graph->RemoveNode(id);
    }

    void AddLink(long long from, long long to, long long record)
    {
        const auto add = [&] { return m_graph->AddLink(from, to, Property("r", record)); };
        if (const auto failure = MissingNode({from, to}))
        {
            ExpectMissing(*failure, add);
            return;
        }
        if (m_model.FindLink(from, to))
        {
            ExpectFailure<LinkExists>({from, to}, add);
            return;
        }
        m_model.Append(++m_model.linkCounter, from, to, record);
        RC_ASSERT(add() == m_model.linkCounter);
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
            ExpectFailure<LinkNotFound>({from, to}, remove);
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
            ExpectFailure<LinkExists>({from, id}, [&] { LoadInto(*m_graph, json); });
            return;
        }
        m_model.Append(++m_model.linkCounter, from, id, record);
        LoadInto(*m_graph, json);
    }

    void Compare(long long most) const
    {
        RC_ASSERT(m_graph->GetNodesCount() == m_model.nodeCounter);
        RC_ASSERT(JsonOf(*m_graph) == m_model.Json());
        RC_ASSERT(DotOf(*m_graph) == m_model.Dot());
        RC_ASSERT(EntriesOf(*m_graph) == m_model.Without(false));
        RC_ASSERT(ExitsOf(*m_graph) == m_model.Without(true));
        RC_ASSERT(NodesOf(*m_graph) == m_model.Ids());
        RC_ASSERT(LinksOf(*m_graph) == m_model.LinkedIds());
        RC_ASSERT(m_graph->TopologyIsValid() == m_model.IsValid());
        CompareFaults();
        for (long long id = -1; id <= most; ++id)
        {
            CompareNode(id, most);
        }
    }

private:
    using Groups = std::vector<std::vector<long long>>;

    void CompareFaults() const
    {
        const std::vector<TopologyFault> faults = GetTopologyFaults(*m_graph);
        RC_ASSERT(faults.empty() == m_model.IsValid());
        RC_ASSERT(std::is_sorted(faults.begin(), faults.end(),
                                 [](const auto& left, const auto& right) { return left.kind < right.kind; }));
        const std::vector<long long> unlinked = m_model.UnlinkedIds();
        const Groups parts = m_model.Parts();
        const bool few = m_model.nodes.size() < 2;
        ExpectGroups(faults, TopologyFault::TOO_FEW_NODES, few ? Groups{m_model.Ids()} : Groups());
        ExpectGroups(faults, TopologyFault::REPEATED_IDS, OneUnlessEmpty(m_model.RepeatedIds()));
        ExpectGroups(faults, TopologyFault::UNLINKED_NODES, few ? Groups() : OneUnlessEmpty(unlinked));
        ExpectGroups(faults, TopologyFault::SEVERAL_PARTS, parts.size() > 1 ? parts : Groups());
        CompareCycles(faults);
    }

    static Groups OneUnlessEmpty(const std::vector<long long>& ids)
    {
        return ids.empty() ? Groups() : Groups{ids};
    }

    /// The groups of all faults of the kind; the kinds but cycles are reported once.
    static void ExpectGroups(const std::vector<TopologyFault>& faults, TopologyFault::Kind kind,
                             const Groups& expected)
    {
        Groups groups;
        for (const TopologyFault& fault : faults)
        {
            if (fault.kind == kind)
            {
                RC_ASSERT(groups.empty());
                groups = fault.groups;
            }
        }
        RC_ASSERT(groups == expected);
    }

    /// One cycle, whichever, of each set of nodes that lie on cycles together.
    void CompareCycles(const std::vector<TopologyFault>& faults) const
    {
        Groups cyclicParts = m_model.CyclicParts();
        for (const TopologyFault& fault : faults)
        {
            if (fault.kind != TopologyFault::CYCLE)
            {
                continue;
            }
            RC_ASSERT(!cyclicParts.empty());
            RC_ASSERT(fault.groups.size() == 1u);
            const std::vector<long long>& cycle = fault.groups.front();
            const std::vector<long long>& part = cyclicParts.front();
            for (std::size_t i = 0; i < cycle.size(); ++i)
            {
                RC_ASSERT(m_model.FindLink(cycle[i], cycle[(i + 1) % cycle.size()]).has_value());
                RC_ASSERT(std::count(cycle.begin(), cycle.end(), cycle[i]) == 1);
                RC_ASSERT(std::count(part.begin(), part.end(), cycle[i]) == 1);
            }
            cyclicParts.erase(cyclicParts.begin());
        }
        RC_ASSERT(cyclicParts.empty());
    }

    void CompareNode(long long id, long long most) const
    {
        const auto position = m_model.Find(id);
        if (!position)
        {
            ExpectMissing(id, [&] { return (*m_graph)[id]; });
            RC_ASSERT(PathExistInGraph(m_graph, id, id));
            ExpectMissing(id, [&] { return PathExistInGraph(m_graph, id, id + 1); });
            return;
        }
        RC_ASSERT((*m_graph)[id] == Property("r", m_model.nodes[*position].record));
        RC_ASSERT(InputsOf(*m_graph, id) == m_model.Neighbours(*position, false));
        RC_ASSERT(OutputsOf(*m_graph, id) == m_model.Neighbours(*position, true));
        for (long long to = -1; to <= most; ++to)
        {
            RC_ASSERT(PathExistInGraph(m_graph, id, to) == m_model.HasPath(id, to));
            if (m_model.Find(to) && m_model.FindLink(id, to))
            {
                RC_ASSERT(m_graph->GetLink(id, to) ==
                          Property("r", m_model.links[*m_model.FindLink(id, to)].record));
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
            RC_FAIL("no exception");
        }
        catch (const NodeNotFound& e)
        {
            RC_ASSERT(*boost::get_error_info<ProfileException::TagRequestedNodeId>(e) == id);
        }
    }

    template <class E, class Action>
    static void ExpectFailure(const LinkPair& link, Action&& action)
    {
        try
        {
            action();
            RC_FAIL("no exception");
        }
        catch (const E& e)
        {
            RC_ASSERT(*boost::get_error_info<ProfileException::TagRequestedLink>(e) == link);
        }
    }

    GraphPtr m_graph = ITranscodingMetaGraph::Create();
    NaiveGraph m_model;
};

constexpr int kMost = 9;

void TakeStep(Pair& pair, const std::tuple<int, int, int>& step)
{
    const auto& [kind, a, b] = step;
    switch (kind)
    {
    case 0:
    case 1:
        pair.AddNode(a);
        break;
    case 2:
        pair.RemoveNode(a);
        break;
    case 3:
        pair.RemoveLink(a, b);
        break;
    case 4:
        pair.Load(a, b, a * b);
        break;
    default:
        pair.AddLink(a, b, a - b);
        break;
    }
}

rc::Gen<std::vector<std::tuple<int, int, int>>> Steps(int kinds)
{
    return rc::gen::container<std::vector<std::tuple<int, int, int>>>(rc::gen::tuple(
        rc::gen::map(rc::gen::inRange(0, kinds), [](int kind) { return kind < 4 ? kind : kind + 1; }),
        rc::gen::inRange(-1, kMost), rc::gen::inRange(-1, kMost)));
}

RC_GTEST_PROP(GraphProperty, EditsDoWhatTheRulesSay, ())
{
    Pair pair;
    for (const auto& step : *Steps(9))
    {
        TakeStep(pair, step);
        pair.Compare(kMost);
    }
}

RC_GTEST_PROP(GraphProperty, EditsAndDocumentsInAnyOrderDoWhatTheRulesSay, ())
{
    Pair pair;
    for (const auto& [kind, a, b] :
         *rc::gen::container<std::vector<std::tuple<int, int, int>>>(rc::gen::tuple(
             rc::gen::inRange(0, 9), rc::gen::inRange(-1, kMost), rc::gen::inRange(-1, kMost))))
    {
        TakeStep(pair, {kind, a, b});
        pair.Compare(kMost);
    }
}

RC_GTEST_PROP(GraphProperty, SavingAndLoadingKeepsEverything, ())
{
    RC_ASSERT(GraphRoundTrip(*AnyGraph(AnyRecord())).FindDifference() == "");
}

RC_GTEST_PROP(GraphProperty, SavingAndLoadingKeepsDeepRecords, ())
{
    RC_ASSERT(GraphRoundTrip(*AnyGraph(rc::gen::resize(10, DeepRecord(500)))).FindDifference() == "");
}

RC_GTEST_PROP(GraphProperty, GraphvizAcceptsEveryDrawing, ())
{
    if (!Dot::IsInstalled())
    {
        return;
    }
    const std::string drawing = DotOf(*AnyGraph(rc::gen::resize(30, AnyRecord(2))));
    const std::string canonical = Dot::Run(drawing, "canon");
    RC_ASSERT(!canonical.empty());
    RC_ASSERT(!::testing::Test::HasFailure());
}

} // namespace

} // namespace Zelnor::Conf
