#pragma once

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Which streams of the source become streams of the output.
struct StreamRequest
{
    /// Indexes of the source's streams, in the order in which the output gets them within each kind; the same
    /// stream may be named twice. Empty: the best video and audio streams for the preset, and all subtitles
    /// that the output's container can hold.
    std::vector<unsigned int> chosen;
    /// Makes the container DVD, whatever the preset says, and copies what a DVD can hold as it is.
    bool losslessDvd = false;
};

/// Two streams of the source that become one: audio is mixed into audio, a subtitle is drawn over a video.
struct StreamMerge
{
    unsigned int base;    ///< index of the stream that is converted
    unsigned int overlay; ///< index of the stream that is merged into it
};

/// What a job shall do beyond what its preset says.
struct JobRequest
{
    std::string output; ///< the output file; a name without an extension gets its container's default one
    StreamRequest streams;
    std::vector<StreamMerge> merges;
};

} // namespace Zelnor::Media
