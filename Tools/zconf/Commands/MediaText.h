#pragma once

#include "Media/Probe/MediaProbe.h"
#include "Tools/zconf/Console/Terminal.h"

namespace Zelnor::Tool
{

/// The lines about a file and its streams that people read.
std::string MediaText(const Media::MediaFile& file, const Painter& paint);

/// The line about a stream, without its index: "CODEC_ID_H264  720x576 (16:9)  25 fps  ..."
std::string StreamText(const Media::MediaStream& stream);

/// "1:02:03.500"
std::string DurationText(std::int64_t microseconds);

} // namespace Zelnor::Tool
