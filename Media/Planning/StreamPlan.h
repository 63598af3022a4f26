#pragma once

// Private to the library, not installed.

#include "Media/Place.h"
#include "Media/Planning/JobRequest.h"
#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A stream of the source and the record of what it becomes.
struct PlannedStream
{
    unsigned int source;
    bool isCopied; ///< it goes into the output unchanged
    Core::Property codec;
};

/// What becomes of a source's streams, and what the user should know about it.
struct StreamPlan
{
    std::vector<PlannedStream> streams;
    std::vector<std::string> notes;
};

/// Chooses streams of the source and makes the output's codec records, video before audio before subtitles.
/// By default, each video and audio stream of the preset gets the best stream of the source that is left (the
/// best one again when none is left), and all subtitles that the container can hold are taken.
///
/// \param preset     a preset's record, which keeps to the rules
/// \param container  the output's, a `FORMAT_` text
/// \param overrides  settings of `preset` that are the request's own
/// \throw PlanException
StreamPlan PlanStreams(const MediaFile& source, const Core::Property& preset, const std::string& container,
                       const StreamRequest& request, const std::vector<SettingOverride>& overrides = {});

/// The source's streams of a kind, the best first: those marked as default, the largest image or the most
/// channels, the highest bitrate. Attached pictures are not videos.
std::vector<const MediaStream*> RankStreams(const MediaFile& source, StreamKind kind);

/// Checks that the streams of each merge exist, that the base is converted, and that their kinds go together.
/// \throw PlanException "in.mkv: audio stream 1: cannot be merged into video stream 0, expected a subtitle"
void CheckMerges(const MediaFile& source, const StreamPlan& plan, const std::vector<StreamMerge>& merges);

/// "in.mkv: video stream 0"
Place PlaceOf(const MediaFile& source, const MediaStream& stream);

} // namespace Zelnor::Media
