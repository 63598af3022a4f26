#include "Media/Options/ColorNames.h"

#include "Media/FFmpeg/Calls.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Zelnor::Media
{

namespace
{

/// Whether `nameOf` gives that name to a number that means something.
template <class Number>
bool IsOneOf(const std::string& name, int count, const char* (*nameOf)(Number))
{
    for (int i = 0; i < count; ++i)
    {
        const char* const known = nameOf(static_cast<Number>(i));
        if (known != nullptr && name == known)
        {
            return name != "unknown" && name.compare(0, 8, "reserved") != 0;
        }
    }
    return false;
}

} // namespace

bool IsColorRange(const std::string& name)
{
    return IsOneOf(name, AVCOL_RANGE_NB, FFmpeg().av_color_range_name);
}

bool IsColorMatrix(const std::string& name)
{
    return IsOneOf(name, AVCOL_SPC_NB, FFmpeg().av_color_space_name);
}

bool IsColorPrimaries(const std::string& name)
{
    return IsOneOf(name, AVCOL_PRI_NB, FFmpeg().av_color_primaries_name);
}

bool IsColorTransfer(const std::string& name)
{
    return IsOneOf(name, AVCOL_TRC_NB, FFmpeg().av_color_transfer_name);
}

bool IsPixelFormatName(const std::string& name)
{
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(av_get_pix_fmt(name.c_str()));
    return format != nullptr && name == format->name && (format->flags & AV_PIX_FMT_FLAG_HWACCEL) == 0;
}

} // namespace Zelnor::Media
