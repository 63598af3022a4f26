#pragma once

// Private to the library, not installed.

#include "Media/Place.h"
#include "Media/Probe/FFmpegNames.h"

#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A setting that an encoder does not support.
struct EncoderFault
{
    std::string key;    ///< of the codec's record: "PIXELFORMAT"
    std::string reason; ///< "encoder libx264 does not support pixel format RGBA"
};

/// What in a codec's record the encoder does not support: size, frame rate, pixel format, sample format,
/// sample rate, channel layout. A value of the wrong type is a fault, too. Empty: it supports everything.
std::vector<EncoderFault> FindEncoderFaults(const Core::Property& codec, const AVCodec& encoder);

/// Refuses a codec's record for its first fault. `place` is the record's; its key gets the fault's appended.
/// \throw PlanException "in.mkv: video stream 0, PIXELFORMAT: encoder libx264 does not support pixel format
/// RGBA"
void RequireAccepted(const Core::Property& codec, const AVCodec& encoder, const Place& place = Place());

} // namespace Zelnor::Media
