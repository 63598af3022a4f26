#pragma once

// Private to the library, not installed.

#include "Media/Probe/FFmpegInfo.h"

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
/// Translates between the names in our records and FFmpeg's. Numbers are never cast: those of the pixel
/// formats differ, and two of the layouts' names mean other things in FFmpeg.

namespace Zelnor::Media
{

/// AV_PIX_FMT_NONE when FFmpeg has no such format.
AVPixelFormat ToFFmpeg(PixFmt format);
/// Nothing when the vocabulary has no such format.
std::optional<PixFmt> FromFFmpeg(AVPixelFormat format);

AVSampleFormat ToFFmpeg(Conf::SampleFormats format);
std::optional<Conf::SampleFormats> FromFFmpeg(AVSampleFormat format);

/// "5.1(side)" for CH_LAYOUT_5POINT1; null for CH_LAYOUT_UNKNOWN.
const char* ToFFmpeg(Conf::ChannelLayout layout);
/// A layout that only counts its channels is taken for FFmpeg's default one of that number.
std::optional<Conf::ChannelLayout> FromFFmpeg(const AVChannelLayout& layout);

/// "CODEC_ID_H264"; nothing when the vocabulary has no identifier for the codec.
std::optional<std::string> CodecTextOf(AVCodecID id);
/// The installed FFmpeg's default encoder for the codec; null when it has none.
const AVCodec* FindEncoder(const std::string& codecTextId);
/// The decoder that ffmpeg uses for a codec, which is given by FFmpeg's name ("h264"); null when there is
/// none.
const AVCodec* FindDecoder(const std::string& codecName);

} // namespace Zelnor::Media
