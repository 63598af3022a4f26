#pragma once

#include "Core/Interfaces/Export.h"

#include "Media/Jobs/JobFile.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// One reason why a job's topology is not valid.
struct ZELNOR_API JobFault
{
    enum Kind
    {
        TooFewNodes,   ///< `groups` holds the nodes there are
        RepeatedIds,   ///< `groups` holds the ids that more than one node has
        UnlinkedNodes, ///< `groups` holds the nodes without links
        Cycle,         ///< `groups` holds the nodes of one cycle in order, the first one not repeated
        SeveralParts,  ///< each of `groups` holds the nodes of one part, nodes without links left out
    };

    Kind kind;
    std::vector<std::vector<Conf::NodeId>> groups;

    /// "cycle", for scripts.
    std::string Name() const;
    /// The sentence for people.
    std::string Sentence() const;
};

/// Every reason why the job is not valid; empty for a valid job. Linear in nodes and links.
ZELNOR_API std::vector<JobFault> FindFaults(const JobFile& job);

} // namespace Zelnor::Media
