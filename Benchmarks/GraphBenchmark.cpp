// The graph beside its peers: RapidJSON parsing and writing the same text, and a plain adjacency list of the
// Boost Graph Library doing the same work on the same links.

#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <benchmark/benchmark.h>
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/breadth_first_search.hpp>
#include <boost/graph/connected_components.hpp>
#include <boost/graph/copy.hpp>
#include <boost/graph/depth_first_search.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using Conf::ITranscodingMetaGraph;
using Core::Property;
using Graph = boost::intrusive_ptr<ITranscodingMetaGraph>;

/// A chain of nodes with a link over every other one: half again as many links as nodes.
std::vector<std::pair<long long, long long>> Links(long long nodes)
{
    std::vector<std::pair<long long, long long>> links;
    for (long long id = 1; id < nodes; ++id)
    {
        links.emplace_back(id, id + 1);
        if (id % 2 == 0 && id + 2 <= nodes)
        {
            links.emplace_back(id, id + 2);
        }
    }
    return links;
}

Graph MakeNodes(long long nodes)
{
    Graph graph = ITranscodingMetaGraph::Create();
    const Property record = ITranscodingMetaGraph::MakeInFileDescription("/media/camera/2013-05-01/clip.mp4");
    for (long long i = 0; i < nodes; ++i)
    {
        graph->AddNode(record);
    }
    return graph;
}

Graph MakeGraph(long long nodes)
{
    Graph graph = MakeNodes(nodes);
    const Property record = ITranscodingMetaGraph::MakeRawStreamDescription(1);
    for (const auto& [from, to] : Links(nodes))
    {
        graph->AddLink(from, to, record);
    }
    return graph;
}

std::string JsonOf(const Graph& graph)
{
    const auto out = Core::MemoryDataOutput::Create();
    graph->Save(out);
    return out->GetData();
}

struct Record
{
    long long id = 0;
    Property data;
};

using BoostGraph = boost::adjacency_list<boost::vecS, boost::vecS, boost::bidirectionalS, Record, Record,
                                         boost::no_property, boost::listS>;
using UndirectedGraph = boost::adjacency_list<boost::vecS, boost::vecS, boost::undirectedS>;

BoostGraph MakeBoostGraph(long long nodes)
{
    BoostGraph graph(static_cast<std::size_t>(nodes));
    for (const auto& [from, to] : Links(nodes))
    {
        boost::add_edge(static_cast<std::size_t>(from - 1), static_cast<std::size_t>(to - 1), graph);
    }
    return graph;
}

void CountItems(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * state.range(0)); }

void GraphLoad(benchmark::State& state)
{
    const std::string json = JsonOf(MakeGraph(state.range(0)));
    for (auto _ : state)
    {
        const Graph graph = ITranscodingMetaGraph::Create();
        graph->Load(Core::MemoryDataInput::Create(json));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(json.size()));
    CountItems(state);
}

void GraphLoadRapidJsonParse(benchmark::State& state)
{
    const std::string json = JsonOf(MakeGraph(state.range(0)));
    for (auto _ : state)
    {
        rapidjson::Document document;
        document.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(json.size()));
    CountItems(state);
}

void GraphSave(benchmark::State& state)
{
    const Graph graph = MakeGraph(state.range(0));
    std::size_t size = 0;
    for (auto _ : state)
    {
        const auto out = Core::MemoryDataOutput::Create();
        graph->Save(out);
        size = out->GetData().size();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
    CountItems(state);
}

/// From a document that is there already.
void GraphSaveRapidJsonWrite(benchmark::State& state)
{
    const std::string json = JsonOf(MakeGraph(state.range(0)));
    rapidjson::Document document;
    document.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
    for (auto _ : state)
    {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        document.Accept(writer);
        benchmark::DoNotOptimize(buffer.GetString());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(json.size()));
    CountItems(state);
}

void GraphAddLink(benchmark::State& state)
{
    const auto links = Links(state.range(0));
    for (auto _ : state)
    {
        state.PauseTiming();
        Graph graph = MakeNodes(state.range(0));
        state.ResumeTiming();
        for (const auto& [from, to] : links)
        {
            graph->AddLink(from, to, Property());
        }
        state.PauseTiming();
        graph.reset();
        state.ResumeTiming();
    }
    CountItems(state);
}

/// Nodes are asked for by position, which the graph first has to find.
void GraphAddLinkBoost(benchmark::State& state)
{
    const auto links = Links(state.range(0));
    for (auto _ : state)
    {
        state.PauseTiming();
        auto graph = std::make_unique<BoostGraph>(static_cast<std::size_t>(state.range(0)));
        long long counter = 0;
        state.ResumeTiming();
        for (const auto& [from, to] : links)
        {
            const auto source = static_cast<std::size_t>(from - 1);
            const auto target = static_cast<std::size_t>(to - 1);
            if (!boost::edge(source, target, *graph).second)
            {
                boost::add_edge(source, target, Record{++counter, Property()}, *graph);
            }
        }
        state.PauseTiming();
        graph.reset();
        state.ResumeTiming();
    }
    CountItems(state);
}

void GraphValidate(benchmark::State& state)
{
    const Graph graph = MakeGraph(state.range(0));
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(graph->TopologyIsValid());
    }
    CountItems(state);
}

struct FindCycle : boost::default_dfs_visitor
{
    explicit FindCycle(bool& cycle) : found(cycle) {}
    template <class Edge, class G>
    void back_edge(Edge, const G&) const
    {
        found = true;
    }

    bool& found;
};

struct CopyNothing
{
    template <class From, class To>
    void operator()(const From&, const To&) const
    {}
};

void GraphValidateBoost(benchmark::State& state)
{
    const BoostGraph graph = MakeBoostGraph(state.range(0));
    for (auto _ : state)
    {
        bool cycle = false;
        boost::depth_first_search(graph, boost::visitor(FindCycle(cycle)));
        UndirectedGraph undirected;
        boost::copy_graph(graph, undirected, boost::vertex_copy(CopyNothing()).edge_copy(CopyNothing()));
        std::vector<int> components(boost::num_vertices(undirected));
        const int count = boost::connected_components(undirected, components.data());
        benchmark::DoNotOptimize(cycle || count != 1);
    }
    CountItems(state);
}

void GraphPath(benchmark::State& state)
{
    const Graph graph = MakeGraph(state.range(0));
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(Conf::PathExistInGraph(graph, 1, state.range(0)));
    }
    CountItems(state);
}

void GraphPathBoost(benchmark::State& state)
{
    const BoostGraph graph = MakeBoostGraph(state.range(0));
    const std::size_t nodes = boost::num_vertices(graph);
    for (auto _ : state)
    {
        std::vector<boost::default_color_type> colors(nodes);
        boost::breadth_first_search(graph, std::size_t{0},
                                    boost::color_map(boost::make_iterator_property_map(
                                        colors.begin(), boost::get(boost::vertex_index, graph))));
        benchmark::DoNotOptimize(colors.back());
    }
    CountItems(state);
}

BENCHMARK(GraphLoad)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphLoadRapidJsonParse)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphSave)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphSaveRapidJsonWrite)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphAddLink)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphAddLinkBoost)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphValidate)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphValidateBoost)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphPath)->Arg(1'000)->Arg(100'000);
BENCHMARK(GraphPathBoost)->Arg(1'000)->Arg(100'000);

} // namespace
