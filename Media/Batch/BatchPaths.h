#pragma once

// Private to the library, not installed.

#include "Media/Batch/Batch.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <functional>
#include <string>

namespace Zelnor::Media
{

/// A path as the batch in the folder `base` keeps it: an absolute one as it is, another one as the way from
/// that folder. Links are followed in the folder that it is in, not in its last part.
std::string KeptPath(const std::string& path, const std::string& base);

/// The same job with other paths for its sources and targets.
/// \throw JobException when its nodes are not numbered from 1 in order, as those of a plan are
boost::intrusive_ptr<Conf::ITranscodingMetaGraph>
WithPaths(const Conf::ITranscodingMetaGraph& job, const std::string& document,
          const std::function<std::string(const std::string&)>& change);

/// The job that the document holds, with paths to open.
/// \param text  of the document
/// \throw JobException when it is not a job, or reads another file than the batch says, or makes another one
boost::intrusive_ptr<Conf::ITranscodingMetaGraph> ReadBatchJob(const Batch& batch, const BatchJob& job,
                                                               const std::string& text);

} // namespace Zelnor::Media
