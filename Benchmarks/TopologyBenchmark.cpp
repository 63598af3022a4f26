// Questions about a job's nodes and links, all asked of a job that is there already.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"
#include "Conf/Interfaces/GraphAlgorithms.h"

#include <algorithm>
#include <vector>

namespace Zelnor::Benchmarks
{
namespace
{

void Validate(benchmark::State& state)
{
    const Graph& graph = GetJob(state.range(0));
    Measure(state, [&] { return graph->TopologyIsValid(); });
}
BENCHMARK(Validate)->Name("Validate/Zelnor")->Apply(OfTopologies);

void Path(benchmark::State& state)
{
    const Graph& graph = GetJob(state.range(0));
    Measure(state, [&] { return Conf::PathExistInGraph(graph, 1, state.range(0)); });
}
BENCHMARK(Path)->Name("Path/Zelnor")->Apply(OfPaths);

/// Every seventh node is gone, so that no identifier tells its position. A question about a node without
/// links costs the finding of the node and little else.
void NodeById(benchmark::State& state)
{
    const Graph graph = Conf::ITranscodingMetaGraph::Create();
    std::vector<long long> ids;
    for (long long id = 1; id <= state.range(0); ++id)
    {
        graph->AddNode(Core::Property());
    }
    for (long long id = 1; id <= state.range(0); ++id)
    {
        if (id % 7 == 3)
        {
            graph->RemoveNode(id);
        }
        else
        {
            ids.push_back(id * 7919 % state.range(0) + 1);
        }
    }
    ids.erase(std::remove_if(ids.begin(), ids.end(), [](long long id) { return id % 7 == 3; }), ids.end());
    std::vector<long long> outputs;
    MeasureEach(state, ids, [&](long long id) {
        graph->Outputs(id, outputs);
        return outputs.data();
    });
}
BENCHMARK(NodeById)->Name("NodeById/Zelnor")->Arg(10'000);

} // namespace
} // namespace Zelnor::Benchmarks
