#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/pixfmt.h>
#include <libavutil/samplefmt.h>
}

#include <optional>
#include <string>

/// \file
/// Between the words of our records and FFmpeg's. Numbers are never cast: those of the pixel formats differ,
/// and two of the layouts' names mean other things in FFmpeg.

namespace Zelnor::Media
{

/// AV_PIX_FMT_NONE when FFmpeg has no such format.
ZELNOR_API AVPixelFormat ToFFmpeg(PixFmt format);
/// Nothing when the vocabulary has no such format.
ZELNOR_API std::optional<PixFmt> FromFFmpeg(AVPixelFormat format);

ZELNOR_API AVSampleFormat ToFFmpeg(Conf::SampleFormats format);
ZELNOR_API std::optional<Conf::SampleFormats> FromFFmpeg(AVSampleFormat format);

/// "5.1(side)" for CH_LAYOUT_5POINT1; null for CH_LAYOUT_UNKNOWN.
ZELNOR_API const char* ToFFmpeg(Conf::ChannelLayout layout);
/// A layout that only counts its channels is taken for FFmpeg's default one of that number.
ZELNOR_API std::optional<Conf::ChannelLayout> FromFFmpeg(const AVChannelLayout& layout);

/// "CODEC_ID_H264"; nothing when the vocabulary has no identifier for the codec.
ZELNOR_API std::optional<std::string> CodecTextOf(AVCodecID id);
/// AV_CODEC_ID_NONE when the FFmpeg headers of this build have no number for the text.
ZELNOR_API AVCodecID CodecNumberOf(const std::string& textId);

/// The encoder that the installed FFmpeg takes for the codec by itself; null when it has none.
ZELNOR_API const AVCodec* FindEncoder(const std::string& codecTextId);

} // namespace Zelnor::Media
