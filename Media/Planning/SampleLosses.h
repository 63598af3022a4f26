#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Notes the bits, the chroma and the transparency that the samples of the output lack.
/// \param stream  "video stream 0"
void NoteLostPixels(const MediaStream& source, const Core::Property& record, const std::string& stream,
                    std::vector<std::string>& notes);

/// Notes the bits that the samples of the output lack. Those of lossy codecs are not counted.
void NoteLostSoundBits(const MediaStream& source, const AVCodec& encoder, AVSampleFormat format,
                       const std::string& stream, std::vector<std::string>& notes);

} // namespace Zelnor::Media
