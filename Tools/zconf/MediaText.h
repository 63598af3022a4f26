#pragma once

#include "Tools/zconf/MediaProbe.h"
#include "Tools/zconf/Terminal.h"

namespace Zelnor::Tool
{

/// The file and its streams as a person reads them, in lines.
std::string MediaText(const MediaFile& file, const Painter& paint);

/// One line about a stream without its number: "H264  720x576 (16:9)  25 fps  ..."
std::string StreamText(const MediaStream& stream);

/// "1:02:03.500"
std::string DurationText(std::int64_t microseconds);

} // namespace Zelnor::Tool
