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

/// Whether a file of the container says how the colours of a video of the codec are coded: matrix, primaries
/// and transfer. The range is another question.
bool TellsColor(AVCodecID codec, const std::string& container);
/// Whether it says that the samples use all values.
bool TellsRange(AVCodecID codec, const std::string& container);

/// Chooses what the record leaves open of the output's colours. They are the source's where the output can
/// hold them, else they are converted: from RGB, to the matrix that players expect, from high to standard
/// dynamic range.
/// \param record  the output's, with its size and pixel format
void PlanColor(const MediaStream& source, const AVCodec& encoder, const std::string& container,
               Core::Property& record);

/// Names what of the source's colours viewers will not see: "its high dynamic range (smpte2084) is mapped to
/// standard dynamic range (bt709)".
/// \param record  what the video becomes
std::vector<std::string> ColorLosses(const MediaStream& source, const Core::Property& record,
                                     const AVCodec& encoder, const std::string& container);

} // namespace Zelnor::Media
