#pragma once

#include "Media/Jobs/JobFault.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// What there is to say about a job before it runs.
struct JobReport
{
    std::vector<JobFault> faults; ///< every reason why it cannot be run
    std::vector<JobFault> losses; ///< what of its sources its targets will not have, if it can be run
};

/// Everything that `CheckJob` finds, and what of the sources would be lost: streams, tags, chapters,
/// languages.
ZELNOR_API JobReport ReportJob(const Conf::ITranscodingMetaGraph& job, const std::string& document = "");

/// Every reason why the job cannot be run, each with its place; empty when `RunJob` would start. Asks all
/// that running asks before it starts: topology, sources and their streams, encoders, containers, settings,
/// targets. A target that is there already is not a fault. Opens the sources, and writes nothing.
///
/// \param document  what the faults call the job's document; empty when it has none
ZELNOR_API std::vector<JobFault> CheckJob(const Conf::ITranscodingMetaGraph& job,
                                          const std::string& document = "");

} // namespace Zelnor::Media
