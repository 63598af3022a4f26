#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/HookedStreams.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Conf
{

namespace
{

using namespace Testing;
using Core::Property;
using Graph = ITranscodingMetaGraph;

/// A graph that is written in several blocks.
GraphPtr LargeGraph()
{
    GraphPtr graph = GraphWithNodes(1500);
    Link(*graph, {{1, 2}, {2, 3}, {4, 3}});
    return graph;
}

/// A way in which a graph calls a stream.
struct StreamCall
{
    const char* name;
    GraphPtr graph;
    /// Lets the graph call a stream with that hook, and returns what came of it.
    std::function<std::string(Graph&, const StreamHook&)> run;
    std::string expected;
    std::size_t calls;
};

std::string SaveThrough(const Graph& graph, const StreamHook& hook)
{
    const auto out = HookedOutput::Create(hook);
    graph.Save(out);
    return *out->GetBytes();
}

std::string DrawThrough(const Graph& graph, const StreamHook& hook)
{
    const auto out = HookedOutput::Create(hook);
    graph.SaveInToDot(out);
    return *out->GetBytes();
}

std::vector<StreamCall> StreamCalls()
{
    const GraphPtr large = LargeGraph();
    const std::string json = JsonOf(*large);
    const auto load = [json](Graph& graph, const StreamHook& hook) {
        graph.Load(HookedInput::Create(json, hook));
        return JsonOf(graph);
    };
    constexpr std::size_t kBlock = 16384;
    const std::size_t blocks = (json.size() + kBlock - 1) / kBlock;
    EXPECT_GT(blocks, 2u);
    return {{"Save", large, SaveThrough, json, blocks},
            {"SaveInToDot", large, DrawThrough, DotOf(*large), 1},
            {"Load", Graph::Create(), load, JsonOf(*Loaded(json)), blocks + 1}};
}

using Operation = std::pair<const char*, std::function<void(Graph&)>>;

std::vector<Operation> Changes()
{
    return {{"AddNode", [](Graph& graph) { graph.AddNode(Property("n")); }},
            {"RemoveNode", [](Graph& graph) { graph.RemoveNode(1500); }},
            {"AddLink", [](Graph& graph) { graph.AddLink(1, 3, Property()); }},
            {"RemoveLink", [](Graph& graph) { graph.RemoveLink(1, 2); }},
            {"Load", [](Graph& graph) { LoadInto(graph, R"({"vertices":[{}],"edges":[]})"); }}};
}

void ExpectRefused(const Operation& operation, Graph& graph)
{
    const Thrown thrown = ExpectThrow<ProfileException>([&] { operation.second(graph); });
    EXPECT_EQ(thrown.description, "The graph cannot be changed while it is being loaded or saved");
    EXPECT_EQ(thrown.file, "Conf/Interfaces/ITranscodingMetaGraph");
    EXPECT_NE(thrown.function.value_or("").find(operation.first), std::string::npos)
        << thrown.function.value_or("");
}

} // namespace

TEST(GraphStreams, CannotChangeTheGraphThatCallsThem)
{
    for (const Operation& change : Changes())
    {
        for (const StreamCall& call : StreamCalls())
        {
            SCOPED_TRACE(std::string(change.first) + " during " + call.name);
            std::size_t calls = 0;
            const auto hook = [&](std::size_t number) {
                calls = number;
                ExpectRefused(change, *call.graph);
            };
            EXPECT_EQ(call.run(*call.graph, hook), call.expected);
            EXPECT_EQ(calls, call.calls);
        }
    }
}

TEST(GraphStreams, MayReadSaveAndDrawTheGraphThatCallsThem)
{
    for (const StreamCall& call : StreamCalls())
    {
        SCOPED_TRACE(call.name);
        const std::string json = JsonOf(*call.graph);
        const std::string dot = DotOf(*call.graph);
        const Ids nodes = NodesOf(*call.graph);
        const IdPairs links = LinksOf(*call.graph);
        const bool valid = call.graph->TopologyIsValid();
        const auto hook = [&](std::size_t) {
            EXPECT_EQ(JsonOf(*call.graph), json);
            EXPECT_EQ(DotOf(*call.graph), dot);
            EXPECT_EQ(NodesOf(*call.graph), nodes);
            EXPECT_EQ(LinksOf(*call.graph), links);
            EXPECT_EQ(call.graph->TopologyIsValid(), valid);
            // The calls above are over, the one that called the stream is not.
            ExpectRefused(Changes().front(), *call.graph);
        };
        EXPECT_EQ(call.run(*call.graph, hook), call.expected);
    }
}

TEST(GraphStreams, MayChangeAnotherGraph)
{
    const GraphPtr other = GraphWithNodes(1);
    EXPECT_EQ(SaveThrough(*GraphWithNodes(1), [&](std::size_t) { other->AddNode(Property("n")); }),
              R"({"vertices":[{"id":1,"data":{"data":{"n":1}}}],"edges":[]})");
    EXPECT_EQ(other->GetNodesCount(), 2);
}

TEST(GraphStreams, LetTheGraphBeChangedAfterTheyHaveFailed)
{
    for (const StreamCall& call : StreamCalls())
    {
        SCOPED_TRACE(call.name);
        for (std::size_t failing = 1; failing <= call.calls; ++failing)
        {
            const auto hook = [failing](std::size_t number) {
                if (number == failing)
                {
                    ZELNOR_THROW(kTestStreamsUnit, StreamFailure());
                }
            };
            ExpectThrow<Core::CoreException>([&] { call.run(*call.graph, hook); });
            const NodeId added = call.graph->AddNode(Property("n"));
            call.graph->RemoveNode(added);
        }
    }
}

TEST(GraphStreams, MayReleaseTheGraphAndThemselves)
{
    const std::string json = JsonOf(*LargeGraph());
    const std::size_t reads = json.size() / 16384 + 2;
    for (std::size_t releasing = 1; releasing <= reads; ++releasing)
    {
        GraphPtr graph = LargeGraph();
        boost::intrusive_ptr<HookedOutput> out;
        const auto release = [&](std::size_t number) {
            if (number == releasing)
            {
                graph.reset();
                out.reset();
            }
        };
        out = HookedOutput::Create(release);
        const auto bytes = out->GetBytes();
        graph->Save(out);
        EXPECT_EQ(*bytes, json);
        EXPECT_EQ(bytes.use_count() == 1, releasing < reads) << "the stream is gone when it let go of itself";

        GraphPtr drawn = LargeGraph();
        const auto drawing = HookedOutput::Create([&drawn](std::size_t) { drawn.reset(); });
        drawn->SaveInToDot(drawing);
        EXPECT_EQ(*drawing->GetBytes(), DotOf(*LargeGraph()));

        GraphPtr loaded = Graph::Create();
        boost::intrusive_ptr<HookedInput> in;
        in = HookedInput::Create(json, [&](std::size_t number) {
            if (number == releasing)
            {
                loaded.reset();
                in.reset();
            }
        });
        loaded->Load(in);
        EXPECT_EQ(loaded, nullptr);
    }
}

} // namespace Zelnor::Conf
