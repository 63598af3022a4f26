#pragma once

#include "Media/Probe/FFmpegNames.h"

#include "Core/Interfaces/Property.h"

namespace Zelnor::Media
{

/// Refuses a codec's record whose size, rate, pixels or samples the encoder does not take.
/// \throw PlanException "The encoder libx264 does not take the pixel format RGBA"
void RequireAccepted(const Core::Property& codec, const AVCodec& encoder);

} // namespace Zelnor::Media
