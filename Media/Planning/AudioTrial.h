#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <optional>

namespace Zelnor::Media
{

/// The bitrate that the encoder really makes of some noise when it is asked for the record's: some
/// take any number, and make what they can. Nothing when it does not take the record at all.
/// \param codec  a record with bitrate, sample rate, sample format and layout
std::optional<long long> MeasureBitrate(const AVCodec& encoder, const Core::Property& codec);

} // namespace Zelnor::Media
