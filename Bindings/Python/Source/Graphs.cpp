#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Records.h"
#include "Bindings/Python/Source/Values.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Core/Interfaces/DataStream.h"
#include "Media/Pages/JobPage.h"

#include <pybind11/stl.h>

#include <utility>

namespace Zelnor::Python
{

namespace
{

using Conf::NodeId;
using Interface = Conf::ITranscodingMetaGraph;
using Id = Integer<long long>;
using Index = Integer<unsigned int>;

constexpr const char* kUnit = "Bindings/Python/Source/Graphs";

/// For an edit.
Interface& ToEdit(Graph& graph)
{
    if (graph.users != 0)
    {
        ZELNOR_THROW(kUnit, Conf::ProfileException() << TagDescription(
                                "The graph cannot be changed while it is being read without the lock: it "
                                "is being run, checked, verified or compared"));
    }
    return *graph.graph;
}

Graph LoadText(const Text& text)
{
    Graph graph;
    graph.graph->Load(Core::MemoryDataInput::Create(text.bytes));
    return graph;
}

Graph LoadFile(const Path& path)
{
    Graph graph;
    const WithoutLock withoutLock;
    graph.graph->Load(Core::FileDataInput::Create(path.bytes));
    return graph;
}

std::string Document(const Graph& graph)
{
    const auto output = Core::MemoryDataOutput::Create();
    graph.graph->Save(output);
    return output->GetData();
}

std::string Drawing(const Graph& graph)
{
    const auto output = Core::MemoryDataOutput::Create();
    graph.graph->SaveInToDot(output);
    return output->GetData();
}

py::str Page(Graph& graph, const Text& document, bool opensSources)
{
    std::string page;
    {
        const GraphUse use(graph);
        const WithoutLock withoutLock;
        page = Media::MakeJobPage(*graph.graph, {document.bytes, opensSources});
    }
    return ToPython(page);
}

void WriteFile(const Path& path, const std::string& bytes)
{
    const WithoutLock withoutLock;
    const auto output = Core::AtomicFileDataOutput::Create(path.bytes);
    output->Write(bytes.data(), bytes.size());
    output->Commit();
}

std::vector<NodeId> Neighbours(const Graph& graph, const std::optional<Id>& id, bool isInputs)
{
    std::vector<NodeId> nodes;
    if (id)
    {
        isInputs ? graph.graph->Inputs(id->value, nodes) : graph.graph->Outputs(id->value, nodes);
    }
    else
    {
        isInputs ? graph.graph->Inputs(nodes) : graph.graph->Outputs(nodes);
    }
    return nodes;
}

std::vector<NodeId> Nodes(const Graph& graph)
{
    std::vector<NodeId> nodes;
    graph.graph->Nodes(nodes);
    return nodes;
}

std::vector<std::pair<NodeId, NodeId>> Links(const Graph& graph)
{
    std::vector<std::pair<NodeId, NodeId>> links;
    graph.graph->Links(links);
    return links;
}

void BindEdits(py::class_<Graph>& type)
{
    type.def(
            "add_node",
            [](Graph& self, const Core::Property& record) { return ToEdit(self).AddNode(record); },
            py::arg("record"),
            "Add a node with a copy of the record; return its identifier. Identifiers count from 1.")
        .def(
            "remove_node", [](Graph& self, Id node) { ToEdit(self).RemoveNode(node.value); }, py::arg("node"),
            "Remove a node without links. Raise NodeNotFound, or LinkExists when it still has links.")
        .def(
            "add_link",
            [](Graph& self, Id source, Id target, const std::optional<Core::Property>& record) {
                return ToEdit(self).AddLink(source.value, target.value, record.value_or(Core::Property()));
            },
            py::arg("source"), py::arg("target"), py::arg("record") = py::none(),
            "Add a link with a copy of the record (an empty group without one); return its identifier.\n\n"
            "Raise NodeNotFound, or LinkExists when there is one.")
        .def(
            "remove_link",
            [](Graph& self, Id source, Id target) { ToEdit(self).RemoveLink(source.value, target.value); },
            py::arg("source"), py::arg("target"), "Remove a link. Raise NodeNotFound or LinkNotFound.");
}

void BindLooks(py::class_<Graph>& type)
{
    type.def(
            "node", [](const Graph& self, Id node) { return (*self.graph)[node.value]; }, py::arg("node"),
            "Return a copy of a node's record: changing it does not change the graph.")
        .def(
            "link",
            [](const Graph& self, Id source, Id target) {
                return self.graph->GetLink(source.value, target.value);
            },
            py::arg("source"), py::arg("target"),
            "Return a copy of a link's record: changing it does not change the graph.")
        .def("nodes", &Nodes, "Return the identifiers of the nodes, in the order in which they were added.")
        .def("links", &Links, "Return the links as pairs of source and target, in order.")
        .def(
            "inputs",
            [](const Graph& self, const std::optional<Id>& node) { return Neighbours(self, node, true); },
            py::arg("node") = py::none(),
            "Return the nodes that link to a node; without one, the nodes that nothing links to.")
        .def(
            "outputs",
            [](const Graph& self, const std::optional<Id>& node) { return Neighbours(self, node, false); },
            py::arg("node") = py::none(),
            "Return the nodes that a node links to; without one, the nodes that link to nothing.")
        .def(
            "path_exists",
            [](const Graph& self, Id from, Id to) {
                return Conf::PathExistInGraph(self.graph, from.value, to.value);
            },
            py::arg("source"), py::arg("target"), "Whether the target can be reached along links.")
        .def(
            "topology_is_valid", [](const Graph& self) { return self.graph->TopologyIsValid(); },
            "Whether there are two nodes or more, all linked, in one piece and without a cycle.")
        .def(
            "topology_faults", [](const Graph& self) { return ToList(Conf::GetTopologyFaults(*self.graph)); },
            "Return every reason why the topology is not valid, as TopologyFault values.")
        .def(
            "faults",
            [](const Graph& self, const Text& document) {
                return ToList(Media::FindTopologyFaults(*self.graph, document.bytes));
            },
            py::arg("document") = Text(),
            "Return the same as JobFault values, whose sentences are for people.")
        .def("__len__", [](const Graph& self) { return Nodes(self).size(); });
}

void BindDocuments(py::class_<Graph>& type)
{
    type.def_static("from_json", &LoadText, py::arg("text"),
                    "Read a job document. Raise BadJson, NodeNotFound, LinkExists or PropertyException.")
        .def_static("load", &LoadFile, py::arg("path"), "Read a job document from a file.")
        .def(
            "to_json", [](const Graph& self) { return ToPython(Document(self)); },
            "Return the job document, as one line without blanks.")
        .def(
            "save", [](const Graph& self, const Path& path) { WriteFile(path, Document(self)); },
            py::arg("path"), "Write the job document to a file, completely or not at all.")
        .def(
            "to_dot", [](const Graph& self) { return ToPython(Drawing(self)); },
            "Return a drawing in Graphviz's DOT language.")
        .def(
            "to_svg",
            [](const py::object& self) {
                return py::module_::import("zelnor._drawing").attr("to_svg")(self);
            },
            "Return a drawing as SVG; None when Graphviz's program dot cannot make one.")
        .def("_repr_svg_", [](const py::object& self) { return self.attr("to_svg")(); })
        .def(
            "draw",
            [](const py::object& self, const py::object& path) {
                py::module_::import("zelnor._drawing").attr("draw")(self, path);
            },
            py::arg("path"),
            "Write a drawing to a file, completely or not at all. The extension says what: dot or gv, or\n"
            "svg, png and pdf, which Graphviz's program dot makes.")
        .def(
            "to_html", &Page, py::arg("document") = Text(), py::arg("opens_sources").noconvert() = true,
            "Return a page for people, complete in itself: the drawing, the records, what is wrong, and the\n"
            "sources, which it opens unless told not to, beside the targets.\n\n"
            "Raise DrawingException when Graphviz is missing or fails.")
        .def("__repr__", [](const Graph& self) {
            return "<zelnor.Graph: " + std::to_string(Nodes(self).size()) + " nodes, " +
                   std::to_string(Links(self).size()) + " links>";
        });
}

void BindRecordMakers(py::class_<Graph>& type)
{
    type.def_static(
            "controlled_by", [](Index stream) { return Interface::GetControlledBy(stream.value); },
            py::arg("stream"), "Make the record of a stream that is controlled by another.")
        .def_static(
            "in_file", [](const Path& path) { return Interface::MakeInFileDescription(path.bytes); },
            py::arg("path"), "Make the record of a source file.")
        .def_static(
            "out_file",
            [](const Preset& preset, const Path& path, bool losslessDvd) {
                return Interface::MakeOutFileDescription(preset.preset, path.bytes, losslessDvd);
            },
            py::arg("preset"), py::arg("path"), py::arg("lossless_dvd").noconvert() = false,
            "Make the record of a target file: the preset's record without its streams, and the path.")
        .def_static(
            "raw_stream", [](Index stream) { return Interface::MakeRawStreamDescription(stream.value); },
            py::arg("stream"), "Make the record of a stream of a source file.")
        .def_static(
            "with_merged_stream",
            [](Core::Property target, const Core::Property& settings, Index stream) {
                Interface::AddSlaveStreamIndex(target, settings, stream.value);
                return target;
            },
            py::arg("record"), py::arg("settings"), py::arg("stream"),
            "Return a copy of a raw stream's record into which another stream is merged as well.");
}

} // namespace

void BindGraphs(py::module_& module)
{
    py::class_<Graph> type(module, "Graph", py::is_final(),
                           "A transcoding job: files and streams, and what becomes of them.\n\n"
                           "Records are copied in and out. A graph that is being run, checked, verified or\n"
                           "compared refuses edits with ProfileException.");
    BindEdits(type);
    BindLooks(type);
    BindDocuments(type);
    BindRecordMakers(type);
    Seal(type, &MakeDefault<Graph>);
    module.def(
        "_write_file",
        [](const Path& path, const py::bytes& contents) { WriteFile(path, std::string(contents)); },
        py::arg("path"), py::arg("contents"));
}

} // namespace Zelnor::Python
