#pragma once

// Private to the library, not installed.

#include "Media/Planning/EncoderChoice.h"

#include <string>

/// \file
/// Why no streams of a codec can be made in files of a container, and what can be made instead: in the words
/// of explanations, plans, checks of jobs and validation alike.

namespace Zelnor::Media
{

/// "the installed FFmpeg cannot write the container 'a64x'" or "the container 'hls' is not written as one
/// file"; empty for what can be written.
std::string CannotWriteText(const std::string& container);

/// "the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264 or CODEC_ID_VP9; CODEC_ID_VP8 goes
/// into avi or matroska"
/// \param codec  a `CODEC_ID_` text
std::string CannotHoldText(const std::string& container, const std::string& codec);
/// The same for a codec that the vocabulary may have no identifier for.
std::string CannotHoldText(const std::string& container, AVCodecID codec);

/// "the installed FFmpeg does not have an encoder for CODEC_ID_VC1; for avi it can encode CODEC_ID_MPEG4"
std::string NoEncoderText(const std::string& container, const std::string& codec);

/// "encoding CODEC_ID_H265 is disabled unless its encoder is named ('libx265', under preferred_encoder)"
std::string DisabledText(const std::string& codec, const std::string& encoder);

/// `ChooseEncoder`, whose fault also tells what can be encoded for the container.
EncoderChoice ChooseEncoderFor(const Core::Property& codec, const std::string& container);

/// "The container mp4 cannot hold CODEC_ID_VP8. It holds CODEC_ID_H264 or CODEC_ID_VP9."
std::string AsSentences(const std::string& reason);

} // namespace Zelnor::Media
