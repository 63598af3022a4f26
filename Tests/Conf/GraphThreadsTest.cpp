#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Campaign.h"
#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace Zelnor::Conf
{
namespace
{

using namespace Zelnor::Testing;

/// Makes, saves, loads, draws and takes apart one graph. \returns what does not depend on the others
std::string UseAGraph()
{
    const GraphPtr graph = GraphWithNodes(4);
    Link(*graph, {{1, 2}, {2, 3}, {2, 4}});
    const GraphPtr loaded = Loaded(JsonOf(*graph));
    graph->RemoveLink(2, 4);
    try
    {
        graph->RemoveNode(1);
    }
    catch (const LinkExists&)
    {
        graph->RemoveNode(4);
    }
    const bool isReached = PathExistInGraph(loaded, 1, 4) && !PathExistInGraph(graph, 3, 1);
    return JsonOf(*graph) + DotOf(*loaded) + std::to_string(isReached) +
           std::to_string(graph->TopologyIsValid()) + std::to_string(GetTopologyFaults(*loaded).size());
}

TEST(GraphThreads, EachThreadHasAGraphOfItsOwn)
{
    const std::string expected = UseAGraph();
    // A round is some two hundred cheap operations in each of four threads.
    const auto rounds = std::max<std::size_t>(CampaignRuns(100'000) / 800, 1);
    std::atomic<std::size_t> equal{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([&] {
            for (std::size_t round = 0; round < rounds; ++round)
            {
                equal += UseAGraph() == expected ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(equal, 4 * rounds);
}

} // namespace
} // namespace Zelnor::Conf
