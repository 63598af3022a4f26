#include "Conf/Interfaces/GraphAlgorithms.h"

#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;

TEST(PathExistInGraph, FollowsLinksForward)
{
    const GraphPtr graph = GraphWithNodes(5);
    Link(*graph, {{1, 2}, {2, 3}, {4, 3}});
    EXPECT_TRUE(PathExistInGraph(graph, 1, 2));
    EXPECT_TRUE(PathExistInGraph(graph, 1, 3));
    EXPECT_FALSE(PathExistInGraph(graph, 3, 1));
    EXPECT_FALSE(PathExistInGraph(graph, 1, 4));
    EXPECT_FALSE(PathExistInGraph(graph, 1, 5));
    EXPECT_FALSE(PathExistInGraph(graph, 5, 1));
}

TEST(PathExistInGraph, ReachesANodeFromItselfEvenIfTheGraphHasNoSuchNode)
{
    const GraphPtr graph = GraphWithNodes(1);
    EXPECT_TRUE(PathExistInGraph(graph, 1, 1));
    EXPECT_TRUE(PathExistInGraph(graph, 5, 5));
    EXPECT_TRUE(PathExistInGraph(graph, -1, -1));
}

TEST(PathExistInGraph, FromAnUnknownNodeThrows)
{
    const GraphPtr graph = GraphWithNodes(1);
    ExpectNodeNotFound(5, [&] { PathExistInGraph(graph, 5, 6); });
    ExpectNodeNotFound(5, [&] { PathExistInGraph(graph, 5, 1); });
}

TEST(PathExistInGraph, ToAnUnknownNodeIsFalse)
{
    const GraphPtr graph = GraphWithNodes(2);
    Link(*graph, {{1, 2}});
    EXPECT_FALSE(PathExistInGraph(graph, 1, 6));
}

TEST(PathExistInGraph, EndsOnCycles)
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{1, 1}, {1, 2}, {2, 3}, {3, 1}});
    EXPECT_TRUE(PathExistInGraph(graph, 3, 2));
    EXPECT_FALSE(PathExistInGraph(graph, 1, 4));
}

TEST(PathExistInGraph, FollowsTheFirstOfSeveralNodesWithOneIdentifier)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":1},{"id":2},{"id":2},{"id":3}],)"
                                  R"("edges":[{"from":1,"to":2},{"from":2,"to":3}]})");
    EXPECT_TRUE(PathExistInGraph(graph, 1, 3));
}

TEST(PathExistInGraph, TakesIdentifiersOfAnySize)
{
    const GraphPtr graph = Loaded(
        R"({"vertices":[{"id":-5},{"id":0},{"id":16777215},{"id":16777216},{"id":4611686018427387904}],)"
        R"("edges":[{"from":4611686018427387904,"to":16777216},{"from":16777216,"to":16777215},)"
        R"({"from":16777215,"to":0},{"from":0,"to":-5},{"from":0,"to":4611686018427387904},)"
        R"({"from":-5,"to":16777216}]})");
    EXPECT_TRUE(PathExistInGraph(graph, 4611686018427387904, -5));
    EXPECT_TRUE(PathExistInGraph(graph, -5, 4611686018427387904));
    EXPECT_FALSE(PathExistInGraph(graph, -5, 1));
}

TEST(PathExistInGraph, WithoutAGraphThrows)
{
    const Thrown thrown = ExpectThrow<std::invalid_argument>([] { PathExistInGraph(nullptr, 1, 1); });
    EXPECT_EQ(thrown.what.rfind("graph is NULL\n", 0), 0u) << thrown.what;
    EXPECT_EQ(thrown.file, "Conf/Interfaces/GraphAlgorithms");
    EXPECT_NE(thrown.function.value_or("").find("PathExistInGraph("), std::string::npos);
}

/// Every rung doubles the number of ways. Whoever walks each way does not end.
TEST(PathExistInGraph, WalksALadderOfDiamondsOnce)
{
    constexpr int kRungs = 10'000;
    const GraphPtr graph = GraphWithNodes(3 * kRungs + 2);
    for (NodeId top = 1; top <= 3 * kRungs; top += 3)
    {
        Link(*graph, {{top, top + 1}, {top, top + 2}, {top + 1, top + 3}, {top + 2, top + 3}});
    }
    EXPECT_TRUE(PathExistInGraph(graph, 1, 3 * kRungs + 1));
    EXPECT_FALSE(PathExistInGraph(graph, 1, 3 * kRungs + 2));
    EXPECT_FALSE(PathExistInGraph(graph, 2, 1));
}

} // namespace

} // namespace Zelnor::Conf
