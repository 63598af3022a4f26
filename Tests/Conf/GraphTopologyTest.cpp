#include "Conf/Interfaces/GraphAlgorithms.h"

#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;

static_assert(std::is_same_v<std::underlying_type_t<TopologyFault::Kind>, std::int32_t>);

/// Every fault as a line: its kind and its groups.
std::string FaultsOf(const ITranscodingMetaGraph& graph)
{
    static constexpr const char* kNames[] = {"too few", "repeated", "unlinked", "cycle", "parts"};
    std::string text;
    for (const TopologyFault& fault : GetTopologyFaults(graph))
    {
        text += kNames[fault.kind];
        for (const std::vector<NodeId>& group : fault.groups)
        {
            text += " {";
            for (std::size_t i = 0; i < group.size(); ++i)
            {
                text += (i == 0 ? "" : ", ") + std::to_string(group[i]);
            }
            text += "}";
        }
        text += "\n";
    }
    EXPECT_EQ(text.empty(), graph.TopologyIsValid());
    return text;
}

TEST(GetTopologyFaults, AValidGraphHasNone)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{1, 3}, {2, 3}, {3, 4}, {1, 4}});
    EXPECT_EQ(FaultsOf(*graph), "");
}

TEST(GetTopologyFaults, FewerThanTwoNodesAreTooFewAndNotReportedAsUnlinked)
{
    EXPECT_EQ(FaultsOf(*ITranscodingMetaGraph::Create()), "too few {}\n");
    EXPECT_EQ(FaultsOf(*GraphWithNodes(1)), "too few {1}\n");
}

TEST(GetTopologyFaults, ASingleNodeMayBeOnACycleToo)
{
    const GraphPtr graph = GraphWithNodes(1);
    Link(*graph, {{1, 1}});
    EXPECT_EQ(FaultsOf(*graph), "too few {1}\ncycle {1}\n");
}

TEST(GetTopologyFaults, UnlinkedNodesAreListedAndDoNotCountAsParts)
{
    const GraphPtr graph = GraphWithNodes(5);
    Link(*graph, {{2, 4}});
    EXPECT_EQ(FaultsOf(*graph), "unlinked {1, 3, 5}\n");
}

TEST(GetTopologyFaults, ACycleIsListedInTheOrderOfItsLinksWithoutTheWayToIt)
{
    const GraphPtr graph = GraphWithNodes(5);
    Link(*graph, {{1, 4}, {4, 2}, {2, 5}, {5, 4}, {5, 3}});
    EXPECT_EQ(FaultsOf(*graph), "cycle {2, 5, 4}\n");
}

TEST(GetTopologyFaults, CyclesThatShareNoNodeAreListedApart)
{
    const GraphPtr graph = GraphWithNodes(6);
    Link(*graph, {{1, 2}, {2, 1}, {2, 3}, {3, 4}, {4, 5}, {5, 4}, {5, 6}, {6, 6}});
    EXPECT_EQ(FaultsOf(*graph), "cycle {1, 2}\ncycle {4, 5}\ncycle {6}\n");
}

TEST(GetTopologyFaults, OfCyclesThatShareANodeOneIsListed)
{
    const GraphPtr graph = GraphWithNodes(3);
    Link(*graph, {{1, 2}, {2, 1}, {2, 3}, {3, 2}, {3, 3}});
    EXPECT_EQ(FaultsOf(*graph), "cycle {1, 2}\n");
}

TEST(GetTopologyFaults, PartsAreGroupedInStorageOrderWhicheverWayTheirLinksPoint)
{
    const GraphPtr graph = GraphWithNodes(7);
    Link(*graph, {{6, 1}, {6, 4}, {5, 2}, {7, 3}, {7, 5}});
    EXPECT_EQ(FaultsOf(*graph), "parts {1, 4, 6} {2, 3, 5, 7}\n");
}

TEST(GetTopologyFaults, RepeatedIdsAreListedOnceBesideTheNodesThatNoLinkReaches)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":3},{"id":1},{"id":3},{"id":1},{"id":3}],)"
                                  R"("edges":[{"from":1,"to":3}]})");
    EXPECT_EQ(FaultsOf(*graph), "repeated {3, 1}\nunlinked {3, 1, 3}\n");
}

TEST(GetTopologyFaults, IdsInBrokenOrderAreNotRepeatedOnes)
{
    const GraphPtr graph = Loaded(
        R"({"vertices":[{"id":3},{"id":-1},{"id":2}],"edges":[{"from":2,"to":3},{"from":3,"to":-1}]})");
    EXPECT_EQ(FaultsOf(*graph), "");
}

TEST(GetTopologyFaults, EveryReasonIsGivenInTheOrderOfTheKinds)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":1},{"id":2},{"id":3},{"id":4},{"id":9},{"id":3}],)"
                                  R"("edges":[{"from":1,"to":2},{"from":2,"to":1},{"from":4,"to":3}]})");
    EXPECT_EQ(FaultsOf(*graph), "repeated {3}\nunlinked {9, 3}\ncycle {1, 2}\nparts {1, 2} {3, 4}\n");
}

TEST(GetTopologyFaults, MendingWhatIsListedMakesTheGraphValid)
{
    const GraphPtr graph = GraphWithNodes(6);
    Link(*graph, {{1, 2}, {2, 1}, {3, 4}, {4, 5}, {5, 3}});
    EXPECT_EQ(FaultsOf(*graph), "unlinked {6}\ncycle {1, 2}\ncycle {3, 4, 5}\nparts {1, 2} {3, 4, 5}\n");
    graph->RemoveNode(6);
    graph->RemoveLink(2, 1);
    graph->RemoveLink(5, 3);
    Link(*graph, {{2, 3}});
    EXPECT_EQ(FaultsOf(*graph), "");
}

// The sizes below end in moments where every step is linear, and not within a test's patience where one is
// quadratic.

TEST(GetTopologyFaults, ACycleOfAMillionNodesIsListed)
{
    constexpr int kNodes = 1'000'000;
    const GraphPtr graph = GraphWithNodes(kNodes);
    for (int i = 1; i <= kNodes; ++i)
    {
        graph->AddLink(i, i % kNodes + 1, Core::Property());
    }
    const std::vector<TopologyFault> faults = GetTopologyFaults(*graph);
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].kind, TopologyFault::CYCLE);
    EXPECT_EQ(faults[0].groups, std::vector<Ids>{NodesOf(*graph)});
}

TEST(GetTopologyFaults, ManySmallPartsAndCyclesAreListed)
{
    constexpr int kPairs = 200'000;
    const GraphPtr graph = GraphWithNodes(2 * kPairs);
    for (int i = 1; i <= 2 * kPairs; i += 2)
    {
        Link(*graph, {{i, i + 1}, {i + 1, i}});
    }
    const std::vector<TopologyFault> faults = GetTopologyFaults(*graph);
    ASSERT_EQ(faults.size(), kPairs + 1u);
    EXPECT_EQ(faults.front().groups, std::vector<Ids>{(Ids{1, 2})});
    EXPECT_EQ(faults.back().kind, TopologyFault::SEVERAL_PARTS);
    EXPECT_EQ(faults.back().groups.size(), static_cast<std::size_t>(kPairs));
}

} // namespace

} // namespace Zelnor::Conf
