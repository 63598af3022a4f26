#pragma once

// Private to the library, not installed.

#include "Media/Planning/JobRequest.h"
#include "Media/Probe/MediaProbe.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Whether the request says which audio streams to take, without naming their indexes.
bool IsAudioChosen(const StreamRequest& request);

/// The audio streams that a request's languages and its wish for all of them mean.
/// \param ranked  the source's audio streams, the best first
/// \throw PlanException "in.mkv: there is no audio in 'fra'; the file has deu, eng"
std::vector<const MediaStream*> ChooseAudio(const MediaFile& source,
                                            const std::vector<const MediaStream*>& ranked,
                                            const StreamRequest& request);

} // namespace Zelnor::Media
