#pragma once

#include <cstdint>

namespace Zelnor
{

/// The kinds of stream that a preset holds. Not the numbers that a codec descriptor reports with
/// `GetCodecType()`, which are FFmpeg's (0 video, 1 audio, 3 subtitle).
enum MediaType : std::int32_t
{
    MEDIA_TYPE_VIDEO = 1,
    MEDIA_TYPE_AUDIO = 2,
    MEDIA_TYPE_SUBTITLE = 3,
};

} // namespace Zelnor
