#pragma once

// Private to the library, not installed.

#include "Media/Probe/FFmpegNames.h"

#include "Core/Interfaces/Property.h"

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// Names of ffmpeg's options, without their dashes and the stream that they are for, and their values.
using CodecOptions = std::vector<std::pair<std::string, std::string>>;

/// Whether the record says that its stream goes into the target unchanged.
bool IsCopied(const Core::Property& codec);

/// Whether the record asks for two passes.
bool WantsTwoPasses(const Core::Property& codec);

/// The encoder that a codec's record asks for.
/// \throw RunException when there is none here, or it must not be used
const AVCodec& EncoderFor(const Core::Property& codec);

/// Everything that a codec's record says about encoding, but for what filters do (size, rate, samples).
/// \throw RunException for settings that the encoder has not or that are not known
CodecOptions EncodingOptions(const Core::Property& codec, const AVCodec& encoder);

} // namespace Zelnor::Media
