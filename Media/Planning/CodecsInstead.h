#pragma once

// Private to the library, not installed.

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Up to three codecs of the same kind as `codec` that the container certainly holds and the installed FFmpeg
/// encodes, without asking for a disabled encoder: the muxer's own choice first, then what bitrates are known
/// for, then the others; of each, those whose names are like the codec's come first.
std::vector<std::string> CodecsFor(const std::string& container, const std::string& codec);

/// "CODEC_ID_H264, CODEC_ID_H263 or CODEC_ID_MPEG4"
std::string AlternativesText(const std::vector<std::string>& names);

/// Up to three containers that certainly hold the codec and are written as one file: those that most
/// programs read first, and of each those whose muxer chooses the codec by itself.
std::vector<std::string> ContainersFor(const std::string& codec);

} // namespace Zelnor::Media
