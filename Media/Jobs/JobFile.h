#pragma once

#include "Core/Interfaces/Export.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A job that was read from a document.
struct JobFile
{
    std::string name;                                        ///< what messages call the document
    boost::intrusive_ptr<Conf::ITranscodingMetaGraph> graph; ///< never null
    /// What the document holds and the graph does not, as sentences that begin with the place.
    std::vector<std::string> notes = {};
};

/// \throw JobException, Core::CoreException; both name the file: "big.json: Not enough memory"
ZELNOR_API JobFile ReadJob(const ioPath& path);
/// The same from a stream, which messages call `name`.
ZELNOR_API JobFile ReadJob(Core::IDataInput& input, const std::string& name);

} // namespace Zelnor::Media
