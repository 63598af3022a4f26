// The hand-written limit: links sorted by their nodes in two arrays, no identifiers and no records.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <cstdint>
#include <numeric>

namespace Zelnor::Benchmarks
{
namespace
{

using Index = std::uint32_t;

struct PlainGraph
{
    std::vector<Index> firstLink;
    std::vector<Index> targets;

    explicit PlainGraph(long long nodes) : firstLink(static_cast<std::size_t>(nodes) + 1)
    {
        const Pairs links = MakeLinks(nodes);
        for (const auto& link : links)
        {
            ++firstLink[static_cast<std::size_t>(link.first)];
        }
        std::partial_sum(firstLink.begin(), firstLink.end(), firstLink.begin());
        // The links ascend by their sources.
        for (const auto& link : links)
        {
            targets.push_back(static_cast<Index>(link.second - 1));
        }
    }

    Index NodeCount() const { return static_cast<Index>(firstLink.size() - 1); }
};

Index Root(std::vector<Index>& parents, Index node)
{
    while (parents[node] != node)
    {
        node = parents[node] = parents[parents[node]];
    }
    return node;
}

/// Whether the graph is in one part without a cycle: parts by uniting, cycles by taking away sources.
bool IsValid(const PlainGraph& graph)
{
    const Index nodes = graph.NodeCount();
    std::vector<Index> parents(nodes);
    std::iota(parents.begin(), parents.end(), Index{0});
    std::vector<Index> inputs(nodes);
    Index parts = nodes;
    for (Index from = 0; from < nodes; ++from)
    {
        for (Index link = graph.firstLink[from]; link < graph.firstLink[from + 1]; ++link)
        {
            const Index to = graph.targets[link];
            ++inputs[to];
            const Index left = Root(parents, from);
            const Index right = Root(parents, to);
            parts -= left == right ? 0 : 1;
            parents[left] = right;
        }
    }
    std::vector<Index> queue;
    queue.reserve(nodes);
    for (Index node = 0; node < nodes; ++node)
    {
        if (inputs[node] == 0)
        {
            queue.push_back(node);
        }
    }
    for (std::size_t next = 0; next < queue.size(); ++next)
    {
        for (Index link = graph.firstLink[queue[next]]; link < graph.firstLink[queue[next] + 1]; ++link)
        {
            if (--inputs[graph.targets[link]] == 0)
            {
                queue.push_back(graph.targets[link]);
            }
        }
    }
    return parts == 1 && queue.size() == nodes;
}

void Validate(benchmark::State& state)
{
    const PlainGraph graph(state.range(0));
    Measure(state, [&] { return IsValid(graph); });
}
BENCHMARK(Validate)->Name("Validate/hand-written CSR")->Apply(OfTopologies);

bool PathExists(const PlainGraph& graph, Index from, Index to)
{
    std::vector<char> isQueued(graph.NodeCount());
    std::vector<Index> queue = {from};
    isQueued[from] = 1;
    for (std::size_t next = 0; next < queue.size(); ++next)
    {
        const Index node = queue[next];
        if (node == to)
        {
            return true;
        }
        for (Index link = graph.firstLink[node]; link < graph.firstLink[node + 1]; ++link)
        {
            const Index target = graph.targets[link];
            if (isQueued[target] == 0)
            {
                isQueued[target] = 1;
                queue.push_back(target);
            }
        }
    }
    return false;
}

void Path(benchmark::State& state)
{
    const PlainGraph graph(state.range(0));
    Measure(state, [&] { return PathExists(graph, 0, graph.NodeCount() - 1); });
}
BENCHMARK(Path)->Name("Path/hand-written CSR")->Apply(OfPaths);

/// Of an array, the position is the number.
void NodeById(benchmark::State& state)
{
    std::vector<Index> positions(static_cast<std::size_t>(state.range(0)));
    std::iota(positions.begin(), positions.end(), Index{0});
    std::vector<Index> ids;
    for (Index i = 0; i < positions.size(); ++i)
    {
        ids.push_back(static_cast<Index>(i * 7919ULL % positions.size()));
    }
    MeasureEach(state, ids, [&](Index id) { return positions[id]; });
}
BENCHMARK(NodeById)->Name("NodeById/array")->Arg(10'000);

} // namespace
} // namespace Zelnor::Benchmarks
