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
/// dynamic range. `notes` get what the user should know about it.
///
/// \param record  the output's, with its size and pixel format
/// \param stream  what notes call the stream: "video stream 0"
void PlanColor(const MediaStream& source, const AVCodec& encoder, const std::string& container,
               const std::string& stream, Core::Property& record, std::vector<std::string>& notes);

} // namespace Zelnor::Media
