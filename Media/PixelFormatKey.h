#pragma once

// Private to the library, not installed.

#include <string>

namespace Zelnor::Media
{

/// The key of the pixel format's number in the record of a video codec.
inline const std::string kPixelFormatKey = "PIXELFORMAT";

} // namespace Zelnor::Media
