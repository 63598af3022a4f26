// The Boost Graph Library's compressed rows.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <boost/graph/breadth_first_search.hpp>
#include <boost/graph/compressed_sparse_row_graph.hpp>
#include <boost/graph/depth_first_search.hpp>
#include <boost/pending/disjoint_sets.hpp>

namespace Zelnor::Benchmarks
{
namespace
{

using Csr = boost::compressed_sparse_row_graph<boost::directedS>;

Csr MakeCsr(long long nodes)
{
    std::vector<std::pair<std::size_t, std::size_t>> links;
    for (const auto& [from, to] : MakeLinks(nodes))
    {
        links.emplace_back(from - 1, to - 1);
    }
    return Csr(boost::edges_are_sorted, links.begin(), links.end(), static_cast<std::size_t>(nodes));
}

struct FindCycle : boost::default_dfs_visitor
{
    explicit FindCycle(bool& cycle) : found(cycle) {}
    template <class Edge>
    void back_edge(Edge, const Csr&) const
    {
        found = true;
    }

    bool& found;
};

using NumberOfNode = boost::iterator_property_map<std::size_t*, boost::identity_property_map>;

bool IsValid(const Csr& graph)
{
    bool hasCycle = false;
    boost::depth_first_search(graph, boost::visitor(FindCycle(hasCycle)));
    const std::size_t nodes = boost::num_vertices(graph);
    std::vector<std::size_t> ranks(nodes);
    std::vector<std::size_t> parents(nodes);
    boost::disjoint_sets<NumberOfNode, NumberOfNode> sets(NumberOfNode(ranks.data()),
                                                          NumberOfNode(parents.data()));
    std::size_t parts = nodes;
    for (std::size_t node = 0; node < nodes; ++node)
    {
        sets.make_set(node);
    }
    for (auto [edge, end] = boost::edges(graph); edge != end; ++edge)
    {
        const std::size_t left = sets.find_set(boost::source(*edge, graph));
        const std::size_t right = sets.find_set(boost::target(*edge, graph));
        if (left != right)
        {
            sets.link(left, right);
            --parts;
        }
    }
    return !hasCycle && parts == 1;
}

void Validate(benchmark::State& state)
{
    const Csr graph = MakeCsr(state.range(0));
    Measure(state, [&] { return IsValid(graph); });
}
BENCHMARK(Validate)->Name("Validate/Boost.Graph CSR")->Apply(OfTopologies);

void Path(benchmark::State& state)
{
    const Csr graph = MakeCsr(state.range(0));
    Measure(state, [&] {
        std::vector<boost::default_color_type> colors(boost::num_vertices(graph));
        boost::breadth_first_search(graph, std::size_t{0},
                                    boost::color_map(boost::make_iterator_property_map(
                                        colors.begin(), boost::get(boost::vertex_index, graph))));
        return colors.back() != boost::white_color;
    });
}
BENCHMARK(Path)->Name("Path/Boost.Graph CSR")->Apply(OfPaths);

} // namespace
} // namespace Zelnor::Benchmarks
