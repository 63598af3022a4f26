#pragma once

#include "Core/Interfaces/Export.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// A job that was read from a file, and what its document lists, in the document's order. Several nodes may
/// have the same id; the graph then finds the first of them.
struct JobFile
{
    using Link = std::pair<Conf::NodeId, Conf::NodeId>;

    std::string name;
    boost::intrusive_ptr<Conf::ITranscodingMetaGraph> graph;
    std::vector<Conf::NodeId> nodes;
    std::vector<Link> links;
};

/// \throw JobException, Core::CoreException; both name the file
ZELNOR_API JobFile ReadJob(const ioPath& path);
/// The same from a stream, which messages call `name`.
ZELNOR_API JobFile ReadJob(Core::IDataInput& input, const std::string& name);

} // namespace Zelnor::Media
