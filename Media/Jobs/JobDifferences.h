#pragma once

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// One thing in which two jobs differ. A side that does not have it has an empty text.
struct JobDifference
{
    std::string place; ///< "node 2", "link 3 -> 2"
    std::string key;   ///< the path of names inside the record; empty: the whole
    std::string one;   ///< what the first job has, as text
    std::string other; ///< what the second one has
    /// The values, where it is values that differ; their names do not matter.
    std::optional<Core::Property> oneValue = {};
    std::optional<Core::Property> otherValue = {};
};

/// What differs between two jobs: nodes by their ids, links by their ends, records by key. Equal keys of a
/// group are compared in order and told apart as "key[1]", "key[2]". Empty exactly when the jobs are equal
/// but for the order in which nodes and links are listed.
ZELNOR_API std::vector<JobDifference> DiffJobs(const Conf::ITranscodingMetaGraph& one,
                                               const Conf::ITranscodingMetaGraph& other);

} // namespace Zelnor::Media
