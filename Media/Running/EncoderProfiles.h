#pragma once

// Private to the library, not installed.

#include "Media/Running/CodecArguments.h"

namespace Zelnor::Media
{

/// \file
/// The vocabulary's texts for profiles, speed presets and tunings, as FFmpeg's encoders call them. Each adds
/// its option; a text that the encoder does not know is a fault at the setting's key.

void AddProfile(const AVCodec& encoder, const Core::Property& setting, CodecOptions& options,
                const Place& place, FaultList& faults);
void AddPreset(const AVCodec& encoder, const Core::Property& setting, CodecOptions& options,
               const Place& place, FaultList& faults);
void AddTune(const AVCodec& encoder, const Core::Property& setting, CodecOptions& options, const Place& place,
             FaultList& faults);

} // namespace Zelnor::Media
