#pragma once

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

namespace Zelnor::Conf
{

/// Whether the node `to` can be reached from the node `from` along links. A node is always reached from
/// itself, even if the graph has no such node. Each node and link is visited at most once.
///
/// \throw NodeNotFound when there is no node `from`, unless it equals `to`
/// \throw std::invalid_argument "graph is NULL"
ZELNOR_API bool PathExistInGraph(const boost::intrusive_ptr<const ITranscodingMetaGraph>& graph, NodeId from,
                                 NodeId to);

} // namespace Zelnor::Conf
