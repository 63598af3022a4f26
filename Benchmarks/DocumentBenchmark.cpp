// Jobs from and to JSON.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"
#include "Core/Interfaces/DataStream.h"

namespace Zelnor::Benchmarks
{
namespace
{

void Load(benchmark::State& state)
{
    const std::string& json = GetJson(state.range(0));
    Measure(state, [&] {
        Graph graph = Conf::ITranscodingMetaGraph::Create();
        graph->Load(Core::MemoryDataInput::Create(json));
        return graph;
    });
}
BENCHMARK(Load)->Name("Load/Zelnor")->Apply(OfDocuments);

void Save(benchmark::State& state)
{
    const Graph& graph = GetJob(state.range(0));
    Measure(state, [&] {
        auto out = Core::MemoryDataOutput::Create();
        graph->Save(out);
        return out;
    });
}
BENCHMARK(Save)->Name("Save/Zelnor")->Apply(OfDocuments);

} // namespace
} // namespace Zelnor::Benchmarks
