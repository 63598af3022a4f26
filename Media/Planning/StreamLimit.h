#pragma once

// Private to the library, not installed.

#include "Media/Planning/StreamPlan.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// How many of the audio streams the container holds beside the videos: its muxer is asked. All where that
/// cannot be asked.
/// \param videos  `CODEC_ID_` texts
/// \param audio   the same, in order
std::size_t CountHeldAudio(const std::string& container, const std::vector<std::string>& videos,
                           const std::vector<std::string>& audio);

/// "container mp3 cannot hold 2 audio streams"
std::string TooManyAudioText(const std::string& container, std::size_t count);

/// Leaves out the last audio streams where the container holds fewer of them, and notes it.
/// \throw PlanException when the request names the streams: "in.mkv: container mp3 cannot hold 2 audio
/// streams"
void LimitStreams(const MediaFile& source, const StreamRequest& request, const std::string& container,
                  StreamPlan& plan);

} // namespace Zelnor::Media
