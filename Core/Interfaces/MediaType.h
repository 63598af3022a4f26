#pragma once

#include <cstdint>

namespace Zelnor
{

/// The kinds of stream that a preset describes. A codec descriptor's `GetCodecType()` uses FFmpeg's numbers
/// instead (0 video, 1 audio, 3 subtitle).
enum MediaType : std::int32_t
{
    MEDIA_TYPE_VIDEO = 1,
    MEDIA_TYPE_AUDIO = 2,
    MEDIA_TYPE_SUBTITLE = 3,
};

} // namespace Zelnor
