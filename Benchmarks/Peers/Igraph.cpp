// igraph, by the calls that its manual gives for these questions.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <igraph/igraph.h>

namespace Zelnor::Benchmarks
{
namespace
{

class Igraph
{
public:
    explicit Igraph(long long nodes)
    {
        igraph_vector_int_t ends;
        igraph_vector_int_init(&ends, 0);
        for (const auto& [from, to] : MakeLinks(nodes))
        {
            igraph_vector_int_push_back(&ends, from - 1);
            igraph_vector_int_push_back(&ends, to - 1);
        }
        igraph_create(&graph, &ends, nodes, IGRAPH_DIRECTED);
        igraph_vector_int_destroy(&ends);
    }
    ~Igraph() { igraph_destroy(&graph); }
    Igraph(const Igraph&) = delete;
    Igraph& operator=(const Igraph&) = delete;

    igraph_t graph;
};

void Validate(benchmark::State& state)
{
    const Igraph igraph(state.range(0));
    Measure(state, [&] {
        igraph_bool_t isAcyclic = false;
        igraph_bool_t isConnected = false;
        // igraph keeps such answers with the graph; ours has none to keep.
        igraph_invalidate_cache(&igraph.graph);
        igraph_is_dag(&igraph.graph, &isAcyclic);
        igraph_is_connected(&igraph.graph, &isConnected, IGRAPH_WEAK);
        return isAcyclic && isConnected;
    });
}
BENCHMARK(Validate)->Name("Validate/igraph")->Apply(OfTopologies);

void Path(benchmark::State& state)
{
    const Igraph igraph(state.range(0));
    igraph_vector_int_t order;
    igraph_vector_int_t layers;
    igraph_vector_int_t parents;
    igraph_vector_int_init(&order, 0);
    igraph_vector_int_init(&layers, 0);
    igraph_vector_int_init(&parents, 0);
    Measure(state, [&] {
        igraph_bfs_simple(&igraph.graph, 0, IGRAPH_OUT, &order, &layers, &parents);
        return VECTOR(parents)[state.range(0) - 1] >= 0;
    });
    igraph_vector_int_destroy(&parents);
    igraph_vector_int_destroy(&layers);
    igraph_vector_int_destroy(&order);
}
BENCHMARK(Path)->Name("Path/igraph")->Apply(OfPaths);

} // namespace
} // namespace Zelnor::Benchmarks
