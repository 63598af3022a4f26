// Feeds documents to the graph's loader. Whatever it takes must come back the same after being saved, and
// every operation must end.

#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Core/Interfaces/Exception.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tests/Support/GraphRoundTrip.h"

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using Conf::ITranscodingMetaGraph;
using Graph = boost::intrusive_ptr<ITranscodingMetaGraph>;

/// Takes everything apart again.
void Dismantle(ITranscodingMetaGraph& graph)
{
    std::vector<Conf::NodeId> exits;
    graph.Outputs(exits);
    for (const Conf::NodeId id : exits)
    {
        std::vector<Conf::NodeId> inputs;
        graph.Inputs(id, inputs);
        for (const Conf::NodeId input : inputs)
        {
            graph.RemoveLink(input, id);
        }
    }
    for (const Conf::NodeId id : exits)
    {
        try
        {
            graph.RemoveNode(id);
        }
        catch (const Conf::LinkExists&)
        {
            // Another node with this identifier came first.
        }
    }
}

/// Whether the loader took the document.
bool Run(const std::string& document)
{
    const Graph graph = ITranscodingMetaGraph::Create();
    bool taken = true;
    try
    {
        graph->Load(Core::MemoryDataInput::Create(document));
    }
    catch (const Conf::ProfileException&)
    {
        taken = false;
    }
    catch (const Core::PropertyException&)
    {
        taken = false;
    }
    // What was read before a failure is a graph, too.
    const std::string difference = Testing::GraphRoundTrip(*graph).FindDifference();
    Fuzz::Require(difference.empty(), difference.c_str());
    graph->SaveInToDot(Core::MemoryDataOutput::Create());
    std::vector<Conf::NodeId> entries;
    graph->Inputs(entries);
    if (!entries.empty())
    {
        PathExistInGraph(graph, entries.front(), entries.back());
    }
    Dismantle(*graph);
    return taken;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return Run(Fuzz::ToString(data, size)) ? 0 : -1;
}
