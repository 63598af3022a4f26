#pragma once

#include "Core/Interfaces/Export.h"

#include "Media/Planning/StreamPlan.h"
#include "Media/Probe/MediaProbe.h"

#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// What a job is made from.
struct JobWishes
{
    std::string output; ///< the target's name; without an extension, it gets its container's default one
    StreamWishes streams;
    /// Pairs of a stream of the source and another one that is merged into it.
    std::vector<std::pair<unsigned int, unsigned int>> merges;
};

/// A job and what the user should know about it.
struct PlannedJob
{
    boost::intrusive_ptr<Conf::ITranscodingMetaGraph> graph;
    std::vector<std::string> notes;
};

/// Source and target are the nodes 1 and 2; the streams between them follow, and each one's link to the
/// target carries the full descriptor of what it becomes. \throw PlanException
ZELNOR_API PlannedJob PlanJob(const MediaFile& source,
                              const boost::intrusive_ptr<const Conf::IPreset>& preset,
                              const JobWishes& wishes);

/// `output`, with the container's default extension if it has none.
ZELNOR_API std::string WithExtension(const std::string& output, const std::string& container);

/// The container that the preset asks for, or that a DVD needs.
ZELNOR_API std::string ContainerOf(const Core::Property& preset, bool losslessDvd);

} // namespace Zelnor::Media
