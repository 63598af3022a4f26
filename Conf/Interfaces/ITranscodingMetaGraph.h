#pragma once

#include "Conf/Interfaces/IPreset.h"
#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/RefCountImpl.h"
#include "Core/Interfaces/ioPath.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// \file
/// A job that transcodes the first stream of a file: source -> raw stream -> target.
/// \code
/// const auto job = ITranscodingMetaGraph::Create();
/// const NodeId source = job->AddNode(ITranscodingMetaGraph::MakeInFileDescription("holiday.mov"));
/// const NodeId stream = job->AddNode(ITranscodingMetaGraph::MakeRawStreamDescription(0));
/// const NodeId target = job->AddNode(Core::Property("target"));
/// job->AddLink(source, stream, Core::Property());
/// job->AddLink(stream, target, Core::Property("format_codec_video")); // the settings to encode with
/// \endcode

namespace Zelnor::Conf
{

/// Identifiers are assigned from 1 upward and never reused.
using NodeId = long long;
using LinkId = long long;

struct TopologyFault;

/// A transcoding job: a directed graph whose nodes (files, streams) and links have records. There is at most
/// one link from one node to another.
///
/// Records are copied in and out; no operation returns a reference into the graph. An edit that throws leaves
/// the graph and its counters as they were. A graph must be used by one thread at a time.
///
/// While a graph is loaded, saved or drawn, it holds a reference to itself and to the stream, so that the
/// stream may release all others. The stream may also read, save and draw the same graph. Whatever would
/// change it (adding, removing, loading) throws `ProfileException` "The graph cannot be changed while it is
/// being loaded or saved" and changes nothing.
///
/// Every operation that takes an identifier throws `NodeNotFound` (requested id) when no node has it.
class ZELNOR_API ITranscodingMetaGraph : public virtual IRefCountable
{
public:
    // KEY_SOURCE, KEY_FILEPATH, MERGE_WITH, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"

    /// Makes an empty graph.
    static boost::intrusive_ptr<ITranscodingMetaGraph> Create();

    ITranscodingMetaGraph(const ITranscodingMetaGraph&) = delete;
    ITranscodingMetaGraph& operator=(const ITranscodingMetaGraph&) = delete;

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// Adds a node with a copy of `data` as its record and returns its identifier.
    /// \throw ProfileException "No identifier is left"
    NodeId AddNode(const Core::Property& data);
    /// Removes a node without links.
    /// \throw LinkExists (its first link, outgoing links first) when the node still has links
    void RemoveNode(NodeId id);
    /// Adds a link with a copy of `data` as its record and returns its identifier. Links from a node to
    /// itself and in the opposite direction of another link are accepted; `TopologyIsValid()` detects them.
    /// \throw LinkExists (from, to); ProfileException "No identifier is left"
    LinkId AddLink(NodeId from, NodeId to, const Core::Property& data);
    /// \throw LinkNotFound (from, to)
    void RemoveLink(NodeId from, NodeId to);

    /// The record of a node.
    Core::Property operator[](NodeId id) const;
    /// The record of a link.
    /// \throw LinkNotFound (from, to)
    Core::Property GetLink(NodeId from, NodeId to) const;

    /// Appends to `out` all nodes, and all links as pairs of source and target, in the order in which they
    /// were added.
    void Nodes(std::vector<NodeId>& out) const;
    void Links(std::vector<std::pair<NodeId, NodeId>>& out) const;
    /// Appends to `out` the nodes that link to the node `id`, or the nodes that it links to, in the order in
    /// which the links were added.
    void Inputs(NodeId id, std::vector<NodeId>& out) const;
    void Outputs(NodeId id, std::vector<NodeId>& out) const;
    /// Appends to `out` the nodes without incoming links, or the nodes without outgoing links.
    void Inputs(std::vector<NodeId>& out) const;
    void Outputs(std::vector<NodeId>& out) const;

    /// Whether the graph has at least two nodes, no node without links, no directed cycle, and one connected
    /// component. `GetTopologyFaults` (`GraphAlgorithms.h`) says what is wrong.
    bool TopologyIsValid() const;
    /// The last identifier of a node: the number of nodes that were ever added, including those removed.
    /// After `Load`, the largest identifier in the document.
    NodeId GetNodesCount() const;

    /// Adds the nodes and links of a JSON document to the graph, which usually is a new one. Both counters
    /// start from 0 again. Nodes keep their identifiers; if several are equal, operations use the first node.
    /// A link gets the identifier after the largest one read, so that the links 1, 2, 3 of a document become
    /// 2, 3, 4. After a failure, the nodes and links added before it remain. Up to 1 MiB is read ahead.
    ///
    /// \throw BadJson "The root node must be an object.", also when the input is not JSON
    /// \throw BadJson "The root object must have two nested arrays named vertices and edges"
    /// \throw BadJson "vertices[3] must be an object, found a string", for example
    /// \throw NodeNotFound, LinkExists for links of the document
    /// \throw ProfileException "No stream is given"; "No identifier is left" for links of the document
    /// \throw Core::PropertyException for records of the document
    /// \throw Core::CoreException from `in`
    void Load(boost::intrusive_ptr<Core::IDataInput> in);
    /// Writes the graph as a JSON document without white space. Records without a value are left out, and so
    /// are groups without a name and children.
    ///
    /// \throw Core::PropertyException when groups are nested deeper than 511 in a record, with the path of
    /// the place:
    ///   "data.source.metadata: groups are nested deeper than 512" (the group "data" is put around each
    ///   record); nothing is written
    /// \throw ProfileException "No stream is given"
    /// \throw Core::CoreException from `out`
    void Save(boost::intrusive_ptr<Core::IDataOutput> out) const;
    /// Writes a drawing of the graph in Graphviz's DOT language, with a single write. Nodes are named by
    /// their positions. Labels show identifiers and records as `Core::PrintPropertyValue` prints them; lines
    /// longer than 2,700 characters are broken.
    ///
    /// \throw ProfileException "No stream is given"
    /// \throw Core::CoreException from `out`
    void SaveInToDot(boost::intrusive_ptr<Core::IDataOutput> out) const;

    /// Makes the record of a stream that is controlled by the stream `index`.
    static Core::Property GetControlledBy(unsigned int index);
    /// Makes the record of a source file.
    static Core::Property MakeInFileDescription(const ioPath& path);
    /// Makes the record of a target file: the preset's record without its streams, and the path.
    /// \param losslessDvd  sets the container to DVD, regardless of the preset, and logs that
    /// \throw Core::MethodIsNotApplicable when the preset's record is not a group
    /// \throw std::invalid_argument "preset is NULL"
    static Core::Property MakeOutFileDescription(const boost::intrusive_ptr<const IPreset>& preset,
                                                 const ioPath& path, bool losslessDvd);
    /// Makes the record of the stream `index` of a source file.
    static Core::Property MakeRawStreamDescription(unsigned int index);
    /// Adds an entry to the record `target`: the stream `index` is merged into it with `settings`, which may
    /// be part of `target`. Entries are in the order of the calls; the same index may be added several times.
    /// \throw Core::MethodIsNotApplicable when `target` or its list is not a group; `target` stays as it was
    static void AddSlaveStreamIndex(Core::Property& target, const Core::Property& settings,
                                    unsigned int index);

private:
    friend ZELNOR_API bool PathExistInGraph(const boost::intrusive_ptr<const ITranscodingMetaGraph>& graph,
                                            NodeId from, NodeId to);
    friend ZELNOR_API std::vector<TopologyFault> GetTopologyFaults(const ITranscodingMetaGraph& graph);

    class GrahpImpl; // kept: the name as it is

    ITranscodingMetaGraph();
    ~ITranscodingMetaGraph() override;

    RefCountImpl m_references;
    std::unique_ptr<GrahpImpl> m_impl;
};

} // namespace Zelnor::Conf
