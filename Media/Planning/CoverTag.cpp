#include "Media/Planning/CoverTag.h"

#include "Media/FFmpeg/Base64.h"
#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/VideoSettings.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstdint>

namespace Zelnor::Media
{

namespace
{

/// Four bytes, the most significant one first.
std::string FourBytes(std::uint32_t value)
{
    constexpr unsigned int kBits = 32;
    constexpr unsigned int kBitsOfByte = 8;
    std::string bytes;
    for (unsigned int shift = kBits; shift > 0; shift -= kBitsOfByte)
    {
        bytes += static_cast<char>(value >> (shift - kBitsOfByte) & 0xFFU);
    }
    return bytes;
}

std::string WithLength(const std::string& bytes)
{
    return FourBytes(static_cast<std::uint32_t>(bytes.size())) + bytes;
}

std::uint32_t BitsOf(const MediaStream& cover)
{
    constexpr std::uint32_t kUsualBits = 24;
    const AVPixFmtDescriptor* const known = av_pix_fmt_desc_get(PixelFormatOf(cover));
    return known == nullptr ? kUsualBits : static_cast<std::uint32_t>(av_get_bits_per_pixel(known));
}

} // namespace

std::string CoverTagText(const MediaStream& cover, const std::string& picture)
{
    constexpr std::uint32_t kFrontCover = 3;
    constexpr std::uint32_t kNoPalette = 0;
    const Core::Property& facts = cover.descriptor->GetProperty();
    // Players look at the image itself, so a size that is not known may be 0.
    const auto length = [&facts](const std::string& key) {
        const auto child = facts.FindChild(key);
        return child == facts.end() ? 0U : static_cast<std::uint32_t>(child->GetInt64());
    };
    return Base64(FourBytes(kFrontCover) + WithLength(cover.codec == "png" ? "image/png" : "image/jpeg") +
                  WithLength("") + FourBytes(length(Conf::IFormatCodecVideo::TAG_WIDTH)) +
                  FourBytes(length(Conf::IFormatCodecVideo::TAG_HEIGHT)) + FourBytes(BitsOf(cover)) +
                  FourBytes(kNoPalette) + WithLength(picture));
}

} // namespace Zelnor::Media
