#pragma once

// Private to the library, not installed.

#include "Media/Running/CodecArguments.h"

namespace Zelnor::Media
{

/// \file
/// The words of the vocabulary for profiles, speed presets and tunings, in the words of FFmpeg's encoders.
/// Each adds its option, or refuses a word that the encoder has not. \throw RunException

void AddProfile(const AVCodec& encoder, const Core::Property& setting, CodecOptions& options);
void AddPreset(const AVCodec& encoder, const Core::Property& setting, CodecOptions& options);
void AddTune(const AVCodec& encoder, const Core::Property& setting, CodecOptions& options);

} // namespace Zelnor::Media
