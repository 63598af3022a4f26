#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using Core::Property;

static_assert(!std::is_default_constructible_v<ITranscodingMetaGraph>);
static_assert(!std::is_copy_constructible_v<ITranscodingMetaGraph>);
static_assert(!std::is_move_constructible_v<ITranscodingMetaGraph>);
static_assert(!std::is_copy_assignable_v<ITranscodingMetaGraph>);
static_assert(!std::is_move_assignable_v<ITranscodingMetaGraph>);
static_assert(!std::is_destructible_v<ITranscodingMetaGraph>, "the last Release() destroys a graph");
static_assert(std::is_same_v<NodeId, long long> && std::is_same_v<LinkId, long long>);

TEST(ITranscodingMetaGraph, CreateHandsOutTheOneReference)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    EXPECT_EQ(graph->GetRefCount(), 1);
    EXPECT_EQ(graph->AddRef(), 2);
    EXPECT_EQ(graph->Release(), 1);
}

TEST(ITranscodingMetaGraph, ANewGraphIsEmpty)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    EXPECT_EQ(graph->GetNodesCount(), 0);
    Ids ids{42};
    graph->Inputs(ids);
    graph->Outputs(ids);
    EXPECT_EQ(ids, Ids{42});
    EXPECT_FALSE(graph->TopologyIsValid());
    ExpectNodeNotFound(1, [&] { (*graph)[1]; });
}

TEST(ITranscodingMetaGraph, NodeIdentifiersAreNeverReused)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    EXPECT_EQ(graph->AddNode(Property("a")), 1);
    EXPECT_EQ(graph->AddNode(Property("b")), 2);
    EXPECT_EQ(graph->AddNode(Property("c")), 3);
    graph->RemoveNode(2);
    EXPECT_EQ(graph->GetNodesCount(), 3);
    EXPECT_EQ(graph->AddNode(Property("d")), 4);
    EXPECT_EQ(graph->GetNodesCount(), 4);
    ExpectNodeNotFound(2, [&] { (*graph)[2]; });
    EXPECT_EQ((*graph)[1].GetName(), "a");
    EXPECT_EQ((*graph)[3].GetName(), "c");
    EXPECT_EQ((*graph)[4].GetName(), "d");
}

TEST(ITranscodingMetaGraph, TheLastNodesIdentifierIsNotReusedEither)
{
    const GraphPtr graph = GraphWithNodes(2);
    graph->RemoveNode(2);
    EXPECT_EQ(graph->AddNode(Property()), 3);
}

TEST(ITranscodingMetaGraph, NodesAreFoundWhateverWasRemovedBeforeThem)
{
    const GraphPtr graph = GraphWithNodes(10);
    for (const NodeId removed : {1, 2, 5, 9})
    {
        graph->RemoveNode(removed);
    }
    for (const NodeId id : {3, 4, 6, 7, 8, 10})
    {
        EXPECT_EQ((*graph)[id].GetInt64(), id);
    }
    constexpr NodeId kMin = std::numeric_limits<NodeId>::min();
    constexpr NodeId kMax = std::numeric_limits<NodeId>::max();
    for (const NodeId id :
         {kMin, NodeId{-1}, NodeId{0}, NodeId{1}, NodeId{2}, NodeId{5}, NodeId{9}, NodeId{11}, kMax})
    {
        ExpectNodeNotFound(id, [&] { (*graph)[id]; });
    }
}

TEST(ITranscodingMetaGraph, EveryOperationOnAnUnknownNodeNamesIt)
{
    const GraphPtr graph = GraphWithNodes(1);
    Ids ids;
    ExpectNodeNotFound(7, [&] { graph->RemoveNode(7); });
    ExpectNodeNotFound(7, [&] { graph->AddLink(7, 8, Property()); });
    ExpectNodeNotFound(8, [&] { graph->AddLink(1, 8, Property()); });
    ExpectNodeNotFound(7, [&] { graph->RemoveLink(7, 8); });
    ExpectNodeNotFound(8, [&] { graph->RemoveLink(1, 8); });
    ExpectNodeNotFound(7, [&] { graph->GetLink(7, 8); });
    ExpectNodeNotFound(8, [&] { graph->GetLink(1, 8); });
    ExpectNodeNotFound(7, [&] { graph->Inputs(7, ids); });
    ExpectNodeNotFound(7, [&] { graph->Outputs(7, ids); });
    EXPECT_TRUE(ids.empty());
    EXPECT_EQ(JsonOf(*graph), JsonOf(*GraphWithNodes(1)));
}

TEST(ITranscodingMetaGraph, ASecondLinkBetweenTheSameNodesIsRefusedAndTakesNoIdentifier)
{
    const GraphPtr graph = GraphWithNodes(3);
    EXPECT_EQ(graph->AddLink(1, 2, Property("first")), 1);
    ExpectLinkFailure<LinkExists>("GrahpImpl::AddLink(", {1, 2},
                                  [&] { graph->AddLink(1, 2, Property("second")); });
    EXPECT_EQ(graph->GetLink(1, 2).GetName(), "first");
    EXPECT_EQ(OutputsOf(*graph, 1), Ids{2});
    EXPECT_EQ(InputsOf(*graph, 2), Ids{1});
    EXPECT_EQ(graph->AddLink(2, 3, Property()), 2);
}

TEST(ITranscodingMetaGraph, ALinkThatIsRefusedLeavesItsRecordToNoOther)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property());
    graph->AddNode(Property());
    ExpectNodeNotFound(3, [&] { graph->AddLink(1, 3, Property("refused", 1LL)); });
    graph->AddLink(1, 2, Property("taken", 2LL));
    EXPECT_EQ(graph->GetLink(1, 2), Property("taken", 2LL));
}

TEST(ITranscodingMetaGraph, LinkIdentifiersAreNeverReused)
{
    const GraphPtr graph = GraphWithNodes(2);
    EXPECT_EQ(graph->AddLink(1, 2, Property()), 1);
    graph->RemoveLink(1, 2);
    EXPECT_EQ(graph->AddLink(1, 2, Property()), 2);
}

TEST(ITranscodingMetaGraph, ALinkBackIsTakenAndMakesTheGraphInvalid)
{
    const GraphPtr graph = GraphWithNodes(2);
    graph->AddLink(1, 2, Property("there"));
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_EQ(graph->AddLink(2, 1, Property("back")), 2);
    EXPECT_EQ(graph->GetLink(1, 2).GetName(), "there");
    EXPECT_EQ(graph->GetLink(2, 1).GetName(), "back");
    EXPECT_FALSE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, ALinkToTheNodeItselfIsTakenAndMakesTheGraphInvalid)
{
    const GraphPtr graph = GraphWithNodes(2);
    Link(*graph, {{1, 2}});
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_EQ(graph->AddLink(1, 1, Property()), 2);
    EXPECT_EQ(OutputsOf(*graph, 1), (Ids{2, 1}));
    EXPECT_EQ(InputsOf(*graph, 1), Ids{1});
    EXPECT_FALSE(graph->TopologyIsValid());
    graph->RemoveLink(1, 1);
    EXPECT_EQ(OutputsOf(*graph, 1), Ids{2});
    EXPECT_EQ(InputsOf(*graph, 1), Ids{});
    EXPECT_TRUE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, RemovingALinkThatIsNotThereIsRefused)
{
    const GraphPtr graph = GraphWithNodes(3);
    Link(*graph, {{1, 2}, {3, 2}});
    ExpectLinkFailure<LinkNotFound>("GrahpImpl::RemoveLink(", {2, 1}, [&] { graph->RemoveLink(2, 1); });
    ExpectLinkFailure<LinkNotFound>("GrahpImpl::RemoveLink(", {1, 3}, [&] { graph->RemoveLink(1, 3); });
    ExpectLinkFailure<LinkNotFound>("GrahpImpl::GetLink(", {2, 1}, [&] { graph->GetLink(2, 1); });
    ExpectLinkFailure<LinkNotFound>("GrahpImpl::GetLink(", {1, 1}, [&] { graph->GetLink(1, 1); });
    EXPECT_EQ(InputsOf(*graph, 2), (Ids{1, 3}));
}

TEST(ITranscodingMetaGraph, ANodeWithLinksIsNotRemoved)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{1, 2}, {2, 3}, {2, 4}});
    const std::string before = JsonOf(*graph);
    ExpectLinkFailure<LinkExists>("GrahpImpl::RemoveNode(", {1, 2}, [&] { graph->RemoveNode(1); });
    // Outgoing links are named before incoming ones.
    ExpectLinkFailure<LinkExists>("GrahpImpl::RemoveNode(", {2, 3}, [&] { graph->RemoveNode(2); });
    ExpectLinkFailure<LinkExists>("GrahpImpl::RemoveNode(", {2, 4}, [&] { graph->RemoveNode(4); });
    EXPECT_EQ(JsonOf(*graph), before);
    graph->RemoveLink(2, 4);
    graph->RemoveNode(4);
    EXPECT_EQ(EntriesOf(*graph), Ids{1});
    EXPECT_EQ(ExitsOf(*graph), Ids{3});
}

TEST(ITranscodingMetaGraph, RemovingANodeLeavesTheOthersLinksAlone)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{2, 3}, {3, 4}});
    graph->RemoveNode(1);
    EXPECT_EQ(OutputsOf(*graph, 2), Ids{3});
    EXPECT_EQ(InputsOf(*graph, 4), Ids{3});
    EXPECT_TRUE(graph->TopologyIsValid());
    graph->RemoveLink(3, 4);
    graph->RemoveNode(4);
    EXPECT_EQ(ExitsOf(*graph), Ids{3});
}

TEST(ITranscodingMetaGraph, RecordsAreCopiedInAndOut)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    Property record("node");
    record.SetChildT("key", 1LL);
    graph->AddNode(record);
    graph->AddNode(record);
    graph->AddLink(1, 2, record);
    record.SetChildT("key", 2LL);
    Property node = (*graph)[1];
    Property link = graph->GetLink(1, 2);
    EXPECT_EQ(node["key"].GetInt64(), 1);
    EXPECT_EQ(link["key"].GetInt64(), 1);
    node.SetChildT("key", 3LL);
    link.SetChildT("key", 3LL);
    EXPECT_EQ((*graph)[1]["key"].GetInt64(), 1);
    EXPECT_EQ(graph->GetLink(1, 2)["key"].GetInt64(), 1);
}

TEST(ITranscodingMetaGraph, NeighboursAreAppendedToWhatIsThere)
{
    const GraphPtr graph = GraphWithNodes(2);
    Link(*graph, {{1, 2}});
    Ids ids{77};
    graph->Inputs(2, ids);
    graph->Outputs(1, ids);
    graph->Inputs(ids);
    graph->Outputs(ids);
    EXPECT_EQ(ids, (Ids{77, 1, 2, 1, 2}));
}

TEST(ITranscodingMetaGraph, NeighboursComeInTheOrderOfTheirLinks)
{
    const GraphPtr graph = GraphWithNodes(6);
    Link(*graph, {{1, 5}, {1, 2}, {1, 6}, {1, 3}, {6, 3}, {2, 3}});
    EXPECT_EQ(OutputsOf(*graph, 1), (Ids{5, 2, 6, 3}));
    EXPECT_EQ(InputsOf(*graph, 3), (Ids{1, 6, 2}));
    graph->RemoveLink(1, 2);
    EXPECT_EQ(OutputsOf(*graph, 1), (Ids{5, 6, 3}));
    graph->RemoveLink(6, 3);
    EXPECT_EQ(InputsOf(*graph, 3), (Ids{1, 2}));
    Link(*graph, {{1, 2}});
    EXPECT_EQ(OutputsOf(*graph, 1), (Ids{5, 6, 3, 2}));
}

TEST(ITranscodingMetaGraph, ANodeWithoutLinksIsAnEntryAndAnExit)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{3, 1}});
    EXPECT_EQ(EntriesOf(*graph), (Ids{2, 3, 4}));
    EXPECT_EQ(ExitsOf(*graph), (Ids{1, 2, 4}));
}

TEST(ITranscodingMetaGraph, ListsItsNodesAndLinksInTheOrderTheyWereAdded)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{3, 1}, {1, 2}, {4, 4}, {2, 1}});
    EXPECT_EQ(NodesOf(*graph), (Ids{1, 2, 3, 4}));
    EXPECT_EQ(LinksOf(*graph), (IdPairs{{3, 1}, {1, 2}, {4, 4}, {2, 1}}));
    graph->RemoveLink(3, 1);
    graph->RemoveNode(3);
    EXPECT_EQ(NodesOf(*graph), (Ids{1, 2, 4}));
    EXPECT_EQ(LinksOf(*graph), (IdPairs{{1, 2}, {4, 4}, {2, 1}}));
}

TEST(ITranscodingMetaGraph, ListsNothingWhenItIsEmpty)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    EXPECT_EQ(NodesOf(*graph), Ids());
    EXPECT_EQ(LinksOf(*graph), IdPairs());
}

TEST(ITranscodingMetaGraph, ListsAreAppended)
{
    const GraphPtr graph = GraphWithNodes(2);
    Link(*graph, {{1, 2}});
    Ids nodes = {7};
    graph->Nodes(nodes);
    EXPECT_EQ(nodes, (Ids{7, 1, 2}));
    IdPairs links = {{8, 9}};
    graph->Links(links);
    EXPECT_EQ(links, (IdPairs{{8, 9}, {1, 2}}));
}

TEST(ITranscodingMetaGraph, ListsTheNodesOfADocumentInItsOrderEqualIdsIncluded)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":7},{"id":-3},{"id":7},{"id":2}],)"
                                  R"("edges":[{"from":2,"to":7},{"from":7,"to":-3}]})");
    EXPECT_EQ(NodesOf(*graph), (Ids{7, -3, 7, 2}));
    EXPECT_EQ(LinksOf(*graph), (IdPairs{{2, 7}, {7, -3}}));
}

TEST(ITranscodingMetaGraph, OneNodeIsNoValidTopology)
{
    const GraphPtr graph = GraphWithNodes(1);
    EXPECT_FALSE(graph->TopologyIsValid());
    Link(*graph, {{1, 1}});
    EXPECT_FALSE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, TwoComponentsAreNoValidTopologyUntilTheyAreJoined)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{1, 2}, {3, 4}});
    EXPECT_FALSE(graph->TopologyIsValid());
    Link(*graph, {{2, 3}});
    EXPECT_TRUE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, AnUnlinkedNodeMakesTheTopologyInvalid)
{
    const GraphPtr graph = GraphWithNodes(3);
    Link(*graph, {{1, 2}});
    EXPECT_FALSE(graph->TopologyIsValid());
    graph->RemoveNode(3);
    EXPECT_TRUE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, ComponentsAreJoinedAgainstTheDirectionOfLinksToo)
{
    const GraphPtr graph = GraphWithNodes(5);
    Link(*graph, {{1, 3}, {2, 3}, {2, 4}, {5, 4}});
    EXPECT_TRUE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, ALongCycleInOnePartMakesTheTopologyInvalid)
{
    const GraphPtr graph = GraphWithNodes(6);
    Link(*graph, {{1, 2}, {2, 3}, {3, 4}, {4, 5}, {5, 6}});
    EXPECT_TRUE(graph->TopologyIsValid());
    Link(*graph, {{6, 3}});
    EXPECT_FALSE(graph->TopologyIsValid());
    graph->RemoveLink(4, 5);
    EXPECT_TRUE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, ADiamondIsNoCycle)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{1, 2}, {1, 3}, {2, 4}, {3, 4}, {1, 4}});
    EXPECT_TRUE(graph->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, NoNodeIsAddedWhenNoIdentifierIsLeft)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":9223372036854775806}],"edges":[]})");
    EXPECT_EQ(graph->AddNode(Property("last")), std::numeric_limits<NodeId>::max());
    const std::string before = JsonOf(*graph);
    const Thrown thrown =
        ExpectGraphThrow<ProfileException>("GrahpImpl::AddNode(", [&] { graph->AddNode(Property()); });
    EXPECT_EQ(thrown.description, "No identifier is left");
    EXPECT_EQ(graph->GetNodesCount(), std::numeric_limits<NodeId>::max());
    EXPECT_EQ(JsonOf(*graph), before);
}

TEST(ITranscodingMetaGraph, NoLinkIsAddedWhenNoIdentifierIsLeft)
{
    const GraphPtr graph =
        Loaded(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"id":9223372036854775806,"from":1,"to":2}]})");
    const std::string before = JsonOf(*graph);
    const Thrown thrown =
        ExpectGraphThrow<ProfileException>("GrahpImpl::AddLink(", [&] { graph->AddLink(2, 1, Property()); });
    EXPECT_EQ(thrown.description, "No identifier is left");
    EXPECT_EQ(JsonOf(*graph), before);
    EXPECT_EQ(OutputsOf(*graph, 2), Ids{});
    // What is known before an identifier is asked for is still said first.
    ExpectLinkFailure<LinkExists>("GrahpImpl::AddLink(", {1, 2}, [&] { graph->AddLink(1, 2, Property()); });
    ExpectNodeNotFound(3, [&] { graph->AddLink(3, 1, Property()); });
}

TEST(ITranscodingMetaGraph, OfSeveralNodesWithOneIdentifierTheFirstIsMeant)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":5,"data":{"a":1}},{"id":2,"data":{"b":2}},)"
                                  R"({"id":5,"data":{"c":3}},{"id":5,"data":{"d":4}}],"edges":[]})");
    EXPECT_EQ((*graph)[5].GetName(), "a");
    EXPECT_EQ((*graph)[2].GetName(), "b");
    graph->RemoveNode(5);
    EXPECT_EQ((*graph)[5].GetName(), "c");
    graph->RemoveNode(2);
    EXPECT_EQ((*graph)[5].GetName(), "c");
    graph->RemoveNode(5);
    EXPECT_EQ((*graph)[5].GetName(), "d");
    EXPECT_EQ(graph->AddNode(Property("e")), 6);
    EXPECT_EQ((*graph)[6].GetName(), "e");
    graph->RemoveNode(5);
    ExpectNodeNotFound(5, [&] { (*graph)[5]; });
    EXPECT_EQ((*graph)[6].GetName(), "e");
}

TEST(ITranscodingMetaGraph, NegativeIdentifiersFarApartAreFound)
{
    const GraphPtr graph =
        Loaded(R"({"vertices":[{"id":-9223372036854775808,"data":{"min":1}},{"id":-1,"data":{"minus":1}},)"
               R"({"id":0,"data":{"zero":1}},{"id":9223372036854775807,"data":{"max":1}}],"edges":[]})");
    EXPECT_EQ((*graph)[std::numeric_limits<NodeId>::min()].GetName(), "min");
    EXPECT_EQ((*graph)[-1].GetName(), "minus");
    EXPECT_EQ((*graph)[0].GetName(), "zero");
    EXPECT_EQ((*graph)[std::numeric_limits<NodeId>::max()].GetName(), "max");
    ExpectNodeNotFound(1, [&] { (*graph)[1]; });
}

// The sizes below end in moments where every step is linear, and not within a test's patience where one is
// quadratic.

TEST(ITranscodingMetaGraph, AChainOfAMillionNodesIsHandled)
{
    constexpr int kNodes = 1'000'000;
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    for (int i = 0; i < kNodes; ++i)
    {
        graph->AddNode(Property());
    }
    for (int i = 1; i < kNodes; ++i)
    {
        graph->AddLink(i, i + 1, Property());
    }
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_TRUE(PathExistInGraph(graph, 1, kNodes));
    EXPECT_FALSE(PathExistInGraph(graph, kNodes, 1));
    const GraphPtr loaded = Loaded(JsonOf(*graph));
    EXPECT_EQ(loaded->GetNodesCount(), kNodes);
    EXPECT_TRUE(loaded->TopologyIsValid());
    Link(*loaded, {{kNodes, 1}});
    EXPECT_FALSE(loaded->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, AHubOfManyLinksIsHandledInBothDirections)
{
    constexpr int kNodes = 600'000;
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    const NodeId out = graph->AddNode(Property());
    const NodeId in = graph->AddNode(Property());
    for (int i = 0; i < kNodes; ++i)
    {
        const NodeId node = graph->AddNode(Property());
        graph->AddLink(out, node, Property());
        graph->AddLink(node, in, Property());
    }
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_EQ(OutputsOf(*graph, out).size(), static_cast<std::size_t>(kNodes));
    EXPECT_EQ(InputsOf(*graph, in).size(), static_cast<std::size_t>(kNodes));
    ExpectLinkFailure<LinkExists>("GrahpImpl::AddLink(", {out, kNodes},
                                  [&] { graph->AddLink(out, kNodes, Property()); });
    EXPECT_TRUE(Loaded(JsonOf(*graph))->TopologyIsValid());
}

TEST(ITranscodingMetaGraph, NodesAreFoundQuicklyWithTheirOrderBroken)
{
    constexpr int kNodes = 100'000;
    std::string json = R"({"vertices":[)";
    for (int id = kNodes; id > 0; --id)
    {
        json += (id == kNodes ? "{\"id\":" : ",{\"id\":") + std::to_string(id) + "}";
    }
    json += R"(],"edges":[)";
    for (int id = 1; id < kNodes; ++id)
    {
        json += (id == 1 ? "{\"from\":" : ",{\"from\":") + std::to_string(id) +
                ",\"to\":" + std::to_string(id + 1) + "}";
    }
    const GraphPtr graph = Loaded(json + "]}");
    EXPECT_EQ(EntriesOf(*graph), Ids{1});
    EXPECT_EQ(ExitsOf(*graph), Ids{kNodes});
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_TRUE(PathExistInGraph(graph, 1, kNodes));
}

TEST(ITranscodingMetaGraph, NodesAreFoundQuicklyWhateverTheirIdentifiersAre)
{
    // Of a hash table of libstdc++ for so many, these are all in one bucket.
    constexpr NodeId kNodes = 100'000;
    constexpr NodeId kBuckets = 126'271;
    std::string nodes = R"({"id":)" + std::to_string(kNodes * kBuckets) + "}";
    std::string links;
    for (NodeId i = 1; i < kNodes; ++i)
    {
        const std::string id = std::to_string(i * kBuckets);
        nodes += R"(,{"id":)" + id + "}";
        links += (i == 1 ? "" : ",") + (R"({"from":)" + id) + R"(,"to":)" +
                 std::to_string((i + 1) * kBuckets) + "}";
    }
    const GraphPtr graph = Loaded(R"({"vertices":[)" + nodes + R"(],"edges":[)" + links + "]}");
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_TRUE(PathExistInGraph(graph, kBuckets, kNodes * kBuckets));
}

} // namespace

} // namespace Zelnor::Conf
