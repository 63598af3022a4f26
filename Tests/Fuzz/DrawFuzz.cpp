// Records with any bytes in names and texts, drawn: the drawing keeps to Graphviz's language, and no text
// breaks out of its label.

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/DataStream.h"
#include "Tests/Fuzz/Bytes.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tests/Support/Drawing.h"

#include <exception>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Zelnor;
    const std::string input = Fuzz::ToString(data, size);
    Fuzz::Bytes bytes(input);
    const auto graph = Conf::ITranscodingMetaGraph::Create();
    std::vector<std::pair<std::size_t, std::size_t>> links;
    while (!bytes.IsEmpty() && graph->GetNodesCount() < 4)
    {
        const Conf::NodeId node = graph->AddNode(bytes.Record(6));
        const Conf::NodeId other = 1 + bytes.Byte() % node;
        graph->AddLink(node, other, bytes.Record(2));
        links.emplace_back(node - 1, other - 1);
    }
    const auto output = Core::MemoryDataOutput::Create();
    graph->SaveInToDot(output);
    try
    {
        const Testing::Drawing drawing(output->GetData());
        Fuzz::Require(drawing.nodes == static_cast<std::size_t>(graph->GetNodesCount()),
                      "every node is drawn");
        Fuzz::Require(drawing.links == links, "every link is drawn");
    }
    catch (const std::exception& e)
    {
        Fuzz::Require(false, e.what());
    }
    return 0;
}
