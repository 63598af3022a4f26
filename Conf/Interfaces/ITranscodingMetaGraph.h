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

/// Identifiers are handed out from 1 upward and never again.
using NodeId = long long;
using LinkId = long long;

struct TopologyFault;

/// One transcoding job: a directed graph whose nodes (files, streams) and links carry records. Between one
/// ordered pair of nodes there is at most one link.
///
/// Records are copied in and out; nothing hands out a reference into the graph. An edit that throws leaves
/// the graph and its counters as they were. A graph is used by one thread at a time.
///
/// \throw NodeNotFound (requested id) from every operation that takes an identifier which no node has
class ZELNOR_API ITranscodingMetaGraph : public virtual IRefCountable
{
public:
    // KEY_SOURCE, KEY_FILEPATH, MERGE_WITH, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"

    /// A new, empty graph.
    static boost::intrusive_ptr<ITranscodingMetaGraph> Create();

    ITranscodingMetaGraph(const ITranscodingMetaGraph&) = delete;
    ITranscodingMetaGraph& operator=(const ITranscodingMetaGraph&) = delete;

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// \throw ProfileException "No identifier is left"
    NodeId AddNode(const Core::Property& data);
    /// \throw LinkExists (first link, outgoing ones first) when the node still has links
    void RemoveNode(NodeId id);
    /// Links from a node to itself and back links are taken; `TopologyIsValid()` reports them.
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
    /// Appends to `out` the nodes that link to this node, or that it links to, in the order the links were
    /// added.
    void Inputs(NodeId id, std::vector<NodeId>& out) const;
    void Outputs(NodeId id, std::vector<NodeId>& out) const;
    /// Appends to `out` the nodes without incoming, or without outgoing, links.
    void Inputs(std::vector<NodeId>& out) const;
    void Outputs(std::vector<NodeId>& out) const;

    /// Whether there are at least two nodes, none without links, no directed cycle, and one connected
    /// component. `GetTopologyFaults` (`GraphAlgorithms.h`) tells what is wrong.
    bool TopologyIsValid() const;
    /// The last identifier handed out: every node ever added counts, removed ones too. After `Load`, the
    /// largest identifier read.
    NodeId GetNodesCount() const;

    /// Adds the nodes and links of a JSON document to what the graph holds; meant for a new graph. Both
    /// counters start from 0 again. Nodes keep their identifiers, of which the first one is meant when
    /// several are equal; a link gets the identifier after the largest one read, so a document's links 1, 2,
    /// 3 become 2, 3, 4. What was added before a failure stays.
    ///
    /// \throw BadJson "The root node must be an object.", also for what is no JSON at all
    /// \throw BadJson "The root object must have two nested arrays named vertices and edges"
    /// \throw BadJson "vertices[3] must be an object, found a string", for example
    /// \throw NodeNotFound, LinkExists for the document's links
    /// \throw ProfileException "No stream is given"; "No identifier is left" for its links
    /// \throw Core::PropertyException for its records
    /// \throw Core::CoreException from `in`
    void Load(boost::intrusive_ptr<Core::IDataInput> in);
    /// Writes the graph as one JSON document, without blanks. A record is left out when it has no value, or
    /// when it is a group with neither name nor children.
    ///
    /// \throw Core::PropertyException when a record has more than 511 levels; nothing is written then
    /// \throw ProfileException "No stream is given"
    /// \throw Core::CoreException from `out`
    void Save(boost::intrusive_ptr<Core::IDataOutput> out) const;
    /// Draws the graph in Graphviz's language, with the records as labels, in one write. Nodes are named by
    /// their positions; their identifiers stand in the labels.
    ///
    /// \throw ProfileException "No stream is given"
    /// \throw Core::CoreException from `out`
    void SaveInToDot(boost::intrusive_ptr<Core::IDataOutput> out) const;

    /// The record of a stream that follows the stream `index`.
    static Core::Property GetControlledBy(unsigned int index);
    /// The record of a source file.
    static Core::Property MakeInFileDescription(const ioPath& path);
    /// The record of a target file: the preset's record without its streams, with the path.
    /// \param losslessDvd  makes the container DVD, whatever the preset says, and logs that
    /// \throw Core::MethodIsNotApplicable when the preset's record is no group
    /// \throw std::invalid_argument "preset is NULL"
    static Core::Property MakeOutFileDescription(const boost::intrusive_ptr<const IPreset>& preset,
                                                 const ioPath& path, bool losslessDvd);
    /// The record of the stream `index` of a source file.
    static Core::Property MakeRawStreamDescription(unsigned int index);
    /// Adds to `target` that the stream `index` is merged into it with `settings`, which may be a part of
    /// `target`. Entries come in the order of the calls; nothing keeps an index from being added twice.
    /// \throw Core::MethodIsNotApplicable when `target`, or its list, is no group; `target` stays as it was
    static void AddSlaveStreamIndex(Core::Property& target, const Core::Property& settings,
                                    unsigned int index);

private:
    friend ZELNOR_API std::vector<TopologyFault> GetTopologyFaults(const ITranscodingMetaGraph& graph);

    class GrahpImpl; // kept: the name as it is

    ITranscodingMetaGraph();
    ~ITranscodingMetaGraph() override;

    RefCountImpl m_references;
    std::unique_ptr<GrahpImpl> m_impl;
};

} // namespace Zelnor::Conf
