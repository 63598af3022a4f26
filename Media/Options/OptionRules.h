#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <string>

/// \file
/// What a job or a preset may tell FFmpeg's encoders and decoders in FFmpeg's own words. Jobs travel between
/// people, so an option passes only if all of this holds: it is in our lists of options that do nothing but
/// change how a stream is coded, the codec has it under exactly this name, and the value is of its type and
/// in its range. Nothing is left to FFmpeg's parser of expressions.

namespace Zelnor::Media
{

/// An option after it was looked at.
struct CheckedOption
{
    std::string value = {}; ///< as ffmpeg is given it
    std::string fault = {}; ///< why the option must not be set; empty when it may
};

/// \param name  the option's; the name of `value` is not looked at
/// \param value  of any type
CheckedOption CheckEncoderOption(const AVCodec& encoder, const std::string& name,
                                 const Core::Property& value);

/// \param decoder  null when it is not known yet; then only what holds for every decoder is looked at
CheckedOption CheckDecoderOption(const AVCodec* decoder, const std::string& name,
                                 const Core::Property& value);

} // namespace Zelnor::Media
