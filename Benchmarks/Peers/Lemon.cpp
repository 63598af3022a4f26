// LEMON's static graph.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <lemon/bfs.h>
#include <lemon/connectivity.h>
#include <lemon/static_graph.h>

namespace Zelnor::Benchmarks
{
namespace
{

using lemon::StaticDigraph;

void Build(StaticDigraph& graph, long long nodes)
{
    std::vector<std::pair<int, int>> links;
    for (const auto& [from, to] : MakeLinks(nodes))
    {
        links.emplace_back(from - 1, to - 1);
    }
    graph.build(static_cast<int>(nodes), links.begin(), links.end());
}

void Validate(benchmark::State& state)
{
    StaticDigraph graph;
    Build(graph, state.range(0));
    Measure(state, [&] { return lemon::dag(graph) && lemon::connected(lemon::undirector(graph)); });
}
BENCHMARK(Validate)->Name("Validate/LEMON")->Apply(OfTopologies);

void Path(benchmark::State& state)
{
    StaticDigraph graph;
    Build(graph, state.range(0));
    Measure(state, [&] {
        lemon::Bfs<StaticDigraph> search(graph);
        return search.run(StaticDigraph::node(0), StaticDigraph::node(graph.nodeNum() - 1));
    });
}
BENCHMARK(Path)->Name("Path/LEMON")->Apply(OfPaths);

} // namespace
} // namespace Zelnor::Benchmarks
