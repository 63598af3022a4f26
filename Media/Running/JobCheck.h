#pragma once

#include "Media/Jobs/JobFault.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Every reason why the job cannot be run, each with its place; empty when `RunJob` would start. Asks all
/// that running asks before it starts: topology, sources and their streams, encoders, containers, settings,
/// targets. A target that is there already is not a fault. Opens the sources, and writes nothing.
///
/// \param document  what the faults call the job's document; empty when it has none
ZELNOR_API std::vector<JobFault> CheckJob(const Conf::ITranscodingMetaGraph& job,
                                          const std::string& document = "");

} // namespace Zelnor::Media
