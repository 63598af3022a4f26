#pragma once

// Private to the library, not installed.

#include "Media/FFmpeg/Calls.h"

extern "C" {
#include <libavutil/base64.h>
}

#include <cstdint>
#include <string>

namespace Zelnor::Media
{

inline std::string Base64(const std::string& bytes)
{
    std::string encoded(AV_BASE64_SIZE(bytes.size()), '\0');
    av_base64_encode(encoded.data(), static_cast<int>(encoded.size()),
                     reinterpret_cast<const std::uint8_t*>(bytes.data()), static_cast<int>(bytes.size()));
    encoded.resize(encoded.size() - 1);
    return encoded;
}

} // namespace Zelnor::Media
