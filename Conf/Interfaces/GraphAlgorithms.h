#pragma once

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

namespace Zelnor::Conf
{

/// Whether the node `to` can be reached from the node `from` along links. A node is always reached from
/// itself, even if the graph has no such node. \throw NodeNotFound when there is no node `from`;
/// std::invalid_argument "graph is NULL"
ZELNOR_API bool PathExistInGraph(const boost::intrusive_ptr<const ITranscodingMetaGraph>& graph, NodeId from,
                                 NodeId to);

} // namespace Zelnor::Conf
