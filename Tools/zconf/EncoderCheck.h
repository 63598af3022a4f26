#pragma once

#include "Tools/zconf/FFmpegNames.h"

#include "Core/Interfaces/Property.h"

namespace Zelnor::Tool
{

/// Refuses a codec's record whose size, rate, pixels or samples the encoder does not take.
/// \throw ToolError "The encoder libx264 does not take the pixel format RGBA"
void RequireAccepted(const Core::Property& codec, const AVCodec& encoder);

} // namespace Zelnor::Tool
