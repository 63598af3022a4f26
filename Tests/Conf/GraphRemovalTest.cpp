// Many removals: a graph keeps the places of what was removed for a while, and closes the gaps then.

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Tests/Support/GraphBesideModel.h"
#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using Core::Property;

constexpr long long kMany = 200;

/// Nodes with records of their own identifiers, in a chain.
boost::intrusive_ptr<ITranscodingMetaGraph> MakeChain(long long nodes)
{
    auto graph = ITranscodingMetaGraph::Create();
    for (long long id = 1; id <= nodes; ++id)
    {
        graph->AddNode(Property("node", id));
    }
    for (long long id = 1; id < nodes; ++id)
    {
        graph->AddLink(id, id + 1, Property("link", id));
    }
    return graph;
}

bool IsKept(long long id) { return id % 10 == 7; }

void RemoveAllButATenth(ITranscodingMetaGraph& graph)
{
    for (long long id = 1; id < kMany; ++id)
    {
        graph.RemoveLink(id, id + 1);
    }
    for (long long id = 1; id <= kMany; ++id)
    {
        if (!IsKept(id))
        {
            graph.RemoveNode(id);
        }
    }
}

TEST(GraphRemovals, KeepTheIdentifiersAndRecordsOfTheOthers)
{
    const auto graph = MakeChain(kMany);
    RemoveAllButATenth(*graph);
    std::vector<NodeId> kept;
    for (long long id = 1; id <= kMany; ++id)
    {
        if (IsKept(id))
        {
            EXPECT_EQ((*graph)[id].GetInt64(), id);
            kept.push_back(id);
        }
        else
        {
            ExpectNodeNotFound(id, [&] { static_cast<void>((*graph)[id]); });
        }
    }
    EXPECT_EQ(NodesOf(*graph), kept);
}

TEST(GraphRemovals, LetIdentifiersGoOn)
{
    const auto graph = MakeChain(kMany);
    RemoveAllButATenth(*graph);
    EXPECT_EQ(graph->AddNode(Property("next")), kMany + 1);
    EXPECT_EQ((*graph)[kMany + 1].GetName(), "next");
    EXPECT_EQ(graph->AddLink(7, kMany + 1, Property("link")), kMany);
}

TEST(GraphRemovals, KeepTheOrderAndRecordsOfLinks)
{
    const auto graph = ITranscodingMetaGraph::Create();
    for (long long id = 0; id <= kMany; ++id)
    {
        graph->AddNode(Property());
    }
    for (long long id = kMany; id > 1; --id)
    {
        graph->AddLink(1, id, Property("link", id));
    }
    std::vector<NodeId> kept;
    for (long long id = kMany; id > 1; --id)
    {
        if (IsKept(id))
        {
            kept.push_back(id);
        }
        else
        {
            graph->RemoveLink(1, id);
        }
    }
    EXPECT_EQ(OutputsOf(*graph, 1), kept);
    for (const NodeId id : kept)
    {
        EXPECT_EQ(graph->GetLink(1, id).GetInt64(), id);
        EXPECT_EQ(InputsOf(*graph, id), std::vector<NodeId>{1});
    }
}

TEST(GraphRemovals, NumberTheNodesOfADrawingByTheirPositions)
{
    const auto graph = MakeChain(3);
    graph->RemoveLink(1, 2);
    graph->RemoveNode(1);
    const std::string drawing = DotOf(*graph);
    EXPECT_NE(drawing.find("0[label=\"Node Id: 2\n"), std::string::npos) << drawing;
    EXPECT_NE(drawing.find("0->1 "), std::string::npos) << drawing;
}

TEST(GraphRemovals, OfAllNodesLeaveAnEmptyGraph)
{
    const auto graph = ITranscodingMetaGraph::Create();
    for (long long id = 1; id <= kMany; ++id)
    {
        graph->AddNode(Property());
    }
    for (long long id = kMany; id > 0; --id)
    {
        graph->RemoveNode(id);
    }
    EXPECT_EQ(NodesOf(*graph), std::vector<NodeId>());
    EXPECT_FALSE(graph->TopologyIsValid());
    EXPECT_EQ(graph->AddNode(Property()), kMany + 1);
}

TEST(GraphRemovals, DoNotMakeANodeReachable)
{
    const auto graph = MakeChain(kMany);
    graph->RemoveLink(kMany / 2, kMany / 2 + 1);
    EXPECT_FALSE(PathExistInGraph(graph, 1, kMany));
    EXPECT_TRUE(PathExistInGraph(graph, kMany / 2 + 1, kMany));
    EXPECT_FALSE(PathExistInGraph(graph, 1, kMany + 1));
}

TEST(GraphRemovals, InALoadedGraphWithRepeatedIdentifiersFindTheNextOfThem)
{
    std::string nodes;
    for (int i = 0; i < 100; ++i)
    {
        nodes += (i == 0 ? "" : ",") + std::string(R"({"id":)") + std::to_string(i % 50) +
                 R"(,"data":{"data":{"position":)" + std::to_string(i) + "}}}";
    }
    const auto graph = ITranscodingMetaGraph::Create();
    LoadInto(*graph, R"({"vertices":[)" + nodes + R"(],"edges":[]})");
    for (long long id = 0; id < 50; ++id)
    {
        EXPECT_EQ((*graph)[id].GetInt64(), id);
        graph->RemoveNode(id);
        EXPECT_EQ((*graph)[id].GetInt64(), id + 50);
    }
    for (long long id = 0; id < 40; ++id)
    {
        graph->RemoveNode(id);
    }
    EXPECT_EQ((*graph)[40].GetInt64(), 90);
    EXPECT_EQ((*graph)[49].GetInt64(), 99);
    ExpectNodeNotFound(39, [&] { static_cast<void>((*graph)[39]); });
}

TEST(GraphRemovals, OfADocumentWithGapsFindEveryNode)
{
    std::string nodes;
    std::vector<long long> ids;
    for (long long id = -40; id < 4'000'000; id = id < 30 ? id + 1 : id * 3 / 2)
    {
        nodes += (ids.empty() ? "" : ",") + std::string(R"({"id":)") + std::to_string(id) + "}";
        ids.push_back(id);
    }
    const auto graph = ITranscodingMetaGraph::Create();
    LoadInto(*graph, R"({"vertices":[)" + nodes + R"(],"edges":[]})");
    for (std::size_t i = 0; i < ids.size(); i += 3)
    {
        graph->RemoveNode(ids[i]);
    }
    for (std::size_t i = 0; i < ids.size(); ++i)
    {
        const auto find = [&] { static_cast<void>((*graph)[ids[i]]); };
        if (i % 3 == 0)
        {
            ExpectNodeNotFound(ids[i], find);
        }
        else
        {
            EXPECT_NO_THROW(find());
        }
    }
    ExpectNodeNotFound(ids.back() - 1, [&] { static_cast<void>((*graph)[ids.back() - 1]); });
}

/// Grows the graph, then takes most of it away again, several times.
void EditAtRandom(GraphBesideModel& pair, unsigned seed)
{
    std::mt19937 random(seed);
    const auto below = [&random](long long end) { return static_cast<long long>(random() % unsigned(end)); };
    long long most = 30;
    for (int round = 0; round < 3; ++round)
    {
        for (int step = 0; step < 40; ++step)
        {
            pair.AddNode(++most);
            pair.AddLink(1 + below(most), 1 + below(most), step);
        }
        for (int step = 0; step < 1500; ++step)
        {
            const long long id = 1 + below(most);
            below(4) == 0 ? pair.RemoveNode(id) : pair.RemoveLink(id, 1 + below(most));
        }
        pair.Compare(most);
    }
}

TEST(GraphRemovals, AgreeWithTheModel)
{
    for (unsigned seed = 1; seed <= 5; ++seed)
    {
        GraphBesideModel pair;
        EditAtRandom(pair, seed);
    }
}

TEST(GraphRemovals, AgreeWithTheModelWhereIdentifiersDoNotAscend)
{
    for (unsigned seed = 1; seed <= 5; ++seed)
    {
        GraphBesideModel pair;
        pair.Load(30, 20, 1);
        pair.Load(3, 2, 1);
        EditAtRandom(pair, seed);
    }
}

} // namespace

} // namespace Zelnor::Conf
