#pragma once

// Private to the library, not installed.

#include <string>

/// \file
/// FFmpeg's names of how colours are coded, as its libraries tell them. Names are compared whole: FFmpeg's
/// own look-ups are content with the beginning of one. What stands for "not known" is not a name.

namespace Zelnor::Media
{

/// "tv" or "pc"
bool IsColorRange(const std::string& name);
/// "bt709"
bool IsColorMatrix(const std::string& name);
/// "bt2020"
bool IsColorPrimaries(const std::string& name);
/// "smpte2084"
bool IsColorTransfer(const std::string& name);

/// Whether it is the name of a pixel format whose samples are in memory: "yuv420p10le".
bool IsPixelFormatName(const std::string& name);

} // namespace Zelnor::Media
