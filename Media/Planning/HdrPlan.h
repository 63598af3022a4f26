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

/// Tells the encoder of a video that stays in high dynamic range the display that the source was mastered on
/// and its content light. Where neither the encoder nor the container can hold them, a note names them.
/// \param stream  "video stream 0"
/// \param record  with its colours
void PlanHdr(const MediaStream& source, const AVCodec& encoder, const std::string& container,
             const std::string& stream, Core::Property& record, std::vector<std::string>& notes);

} // namespace Zelnor::Media
