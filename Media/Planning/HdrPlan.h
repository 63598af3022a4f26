#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <string>

namespace Zelnor::Media
{

/// Tells the encoder of a video that stays in high dynamic range the display that the source was mastered on
/// and its content light.
/// \param record  with its colours
void PlanHdr(const MediaStream& source, const AVCodec& encoder, Core::Property& record);

/// Names the mastering display and the content light that neither the encoder nor the container will hold;
/// empty where nothing is lost.
/// \param record  what the video becomes
std::string HdrLoss(const MediaStream& source, const Core::Property& record, const AVCodec& encoder,
                    const std::string& container);

} // namespace Zelnor::Media
