#pragma once

// Private to the library, not installed.

#include "Media/Jobs/FaultList.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Running/TranscodeCommand.h"

#include "Core/Interfaces/Property.h"

namespace Zelnor::Media
{

/// Whether the record, of checked settings, asks for two passes.
bool WantsTwoPasses(const Core::Property& codec);

/// The encoder that a codec's record of checked settings asks for; null, with the reason among the faults,
/// when there is none here, or it must not be used.
const AVCodec* EncoderFor(const Core::Property& codec, const std::string& container, const Place& place,
                          FaultList& faults);

/// Everything that a codec's record of checked settings says about encoding, but for what filters do (size,
/// rate, samples). What the encoder does not support is a fault.
CodecOptions EncodingOptions(const Core::Property& codec, const AVCodec& encoder, const Place& place,
                             FaultList& faults);

/// Tells the encoder that frames are interlaced and are coded as such.
void AddInterlacedFlags(CodecOptions& options);

} // namespace Zelnor::Media
