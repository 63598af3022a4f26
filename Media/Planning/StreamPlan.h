#pragma once

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A stream of the source and the record of what it becomes.
struct PlannedStream
{
    unsigned int source;
    Core::Property codec;
};

/// What becomes of a source's streams, and what the user should know about it.
struct StreamPlan
{
    std::vector<PlannedStream> streams;
    std::vector<std::string> notes;
};

/// What the user wants of a job's streams.
struct StreamWishes
{
    std::vector<unsigned int> chosen; ///< streams of the source; empty: the best ones
    bool losslessDvd = false;         ///< what a DVD can hold goes into it unchanged
};

/// Chooses the streams of the source and makes the target's codec records, video before audio before
/// subtitles. By default, each video and audio stream of the preset gets the best stream of the source that
/// is left (the best one again when none is left), and all subtitles that the container can hold are taken.
///
/// \param preset     a preset's record
/// \param container  the target's, a `FORMAT_` text
/// \throw PlanException
ZELNOR_API StreamPlan PlanStreams(const MediaFile& source, const Core::Property& preset,
                                  const std::string& container, const StreamWishes& wishes);

/// The source's streams of a kind, the best first: those marked as default, the largest picture or the most
/// channels, the highest bitrate. Attached pictures are no videos.
ZELNOR_API std::vector<const MediaStream*> RankStreams(const MediaFile& source, StreamKind kind);

} // namespace Zelnor::Media
