#pragma once

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"
#include "Core/Interfaces/Export.h"

#include <string>

/// \file
/// What FFmpeg calls things, for people. A text is empty when the installed FFmpeg does not have the thing.

namespace Zelnor::Media
{

/// "yuv420p"
ZELNOR_API std::string FFmpegNameOf(PixFmt format);
/// "fltp"
ZELNOR_API std::string FFmpegNameOf(Conf::SampleFormats format);
/// "5.1(side)" for CH_LAYOUT_5POINT1
ZELNOR_API std::string FFmpegNameOf(Conf::ChannelLayout layout);

/// FFmpeg's ID of a codec, by its `CODEC_ID_` text; AV_CODEC_ID_NONE when the FFmpeg headers of this build
/// have none.
ZELNOR_API AVCodecID CodecNumberOf(const std::string& textId);

/// What FFmpeg says of its muxer, or demuxer, of that name: "QuickTime / MOV" for "mov".
ZELNOR_API std::string MuxerDescription(const std::string& name);
ZELNOR_API std::string DemuxerDescription(const std::string& name);

} // namespace Zelnor::Media
