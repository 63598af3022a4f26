#pragma once

#include "Media/Probe/MediaProbe.h"
#include "Tools/zconf/Console/Terminal.h"

namespace Zelnor::Tool
{

/// The file and its streams as a person reads them, in lines.
std::string MediaText(const Media::MediaFile& file, const Painter& paint);

/// One line about a stream without its number: "H264  720x576 (16:9)  25 fps  ..."
std::string StreamText(const Media::MediaStream& stream);

/// "1:02:03.500"
std::string DurationText(std::int64_t microseconds);

} // namespace Zelnor::Tool
