#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <string>

namespace Zelnor::Media
{

/// The encoder that a codec's record asks for.
struct EncoderChoice
{
    const AVCodec* encoder = nullptr; ///< null when there is none here, or it must not be used
    std::string key = {};             ///< where the fault is: "codec_id" or "preferred_encoder"
    std::string fault = {};           ///< empty when there is an encoder
};

/// The encoder that `preferred_encoder` names, else the usual one of the installed FFmpeg. A codec of the
/// library's list of disabled encoders is encoded only by an encoder that is named.
EncoderChoice ChooseEncoder(const Core::Property& codec);

/// Whether the codec, a `CODEC_ID_` text, is in the library's list of disabled encoders.
bool IsEncodingDisabled(const std::string& codecId);

/// Whether the record says that its stream goes into the target unchanged.
bool IsCopied(const Core::Property& codec);

} // namespace Zelnor::Media
