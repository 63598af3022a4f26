#pragma once

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <cstdint>
#include <vector>

namespace Zelnor::Conf
{

/// Whether the node `to` can be reached from the node `from` along links. A node can always be reached from
/// itself, even if it does not exist. Each node and link is visited at most once.
///
/// \throw NodeNotFound when the node `from` does not exist, unless it equals `to`
/// \throw std::invalid_argument "graph is NULL"
ZELNOR_API bool PathExistInGraph(const boost::intrusive_ptr<const ITranscodingMetaGraph>& graph, NodeId from,
                                 NodeId to);

/// One reason why the topology of a graph is not valid, with the nodes that are concerned.
struct TopologyFault
{
    enum Kind : std::int32_t
    {
        TOO_FEW_NODES, ///< there are less than two; one group with the nodes there are
        REPEATED_IDS,  ///< one group with the identifiers that several nodes have; links reach the first only
        UNLINKED_NODES, ///< one group with the nodes that have no links, among two or more nodes
        CYCLE, ///< one group with the nodes of a cycle, each linked to the next and the last to the first
        SEVERAL_PARTS, ///< a group for each connected component, without the unlinked nodes
    };                 ///< What can be wrong.

    Kind kind; ///< what is wrong
    /// Never empty. Apart from cycles, nodes come in storage order, and groups in that of their first nodes.
    std::vector<std::vector<NodeId>> groups;
};

/// Every reason why the topology of a graph is not valid, for people who have to mend it: empty exactly when
/// `TopologyIsValid()`. Faults come in the order of their kinds. Of cycles that share nodes, or that reach
/// each other, one is listed: all of them may be too many. Time and memory are linear in nodes and links.
ZELNOR_API std::vector<TopologyFault> GetTopologyFaults(const ITranscodingMetaGraph& graph);

} // namespace Zelnor::Conf
