#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include <string>

namespace Zelnor::Media
{

/// The tag by which containers of Xiph hold a cover: FLAC's block of a picture, in base 64. libavformat makes
/// a cover of it again.
constexpr const char* kCoverTag = "METADATA_BLOCK_PICTURE";

/// The tag's text for a cover in PNG or JPEG.
/// \param picture  its bytes
std::string CoverTagText(const MediaStream& cover, const std::string& picture);

} // namespace Zelnor::Media
