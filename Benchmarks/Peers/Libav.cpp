// FFmpeg's own names and numbers of the same codecs and pixel formats.

#include "Benchmarks/Support/Sizes.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/PixelFormatDescription.h"

#include <algorithm>
#include <cctype>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
}

namespace Zelnor::Benchmarks
{
namespace
{

void CodecByText(benchmark::State& state)
{
    std::vector<const char*> names;
    for (const auto& codec : Conf::mapCodecs)
    {
        names.push_back(avcodec_get_name(codec.first));
    }
    MeasureEach(state, names, [](const char* name) { return avcodec_descriptor_get_by_name(name); });
}
BENCHMARK(CodecByText)->Name("CodecByText/libavcodec");

void TextOfCodec(benchmark::State& state)
{
    MeasureEach(state, Conf::mapCodecs, [](const auto& codec) { return avcodec_get_name(codec.first); });
}
BENCHMARK(TextOfCodec)->Name("TextOfCodec/libavcodec");

std::vector<AVPixelFormat> PixelFormats()
{
    std::vector<AVPixelFormat> formats;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        std::string name = record.name;
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        const AVPixelFormat format = av_get_pix_fmt(name.c_str());
        if (format != AV_PIX_FMT_NONE)
        {
            formats.push_back(format);
        }
    }
    return formats;
}

void PixelFormatByName(benchmark::State& state)
{
    std::vector<const char*> names;
    for (const AVPixelFormat format : PixelFormats())
    {
        names.push_back(av_get_pix_fmt_name(format));
    }
    MeasureEach(state, names, [](const char* name) { return av_get_pix_fmt(name); });
}
BENCHMARK(PixelFormatByName)->Name("PixelFormatByName/libavutil");

void PixelFormatByValue(benchmark::State& state)
{
    const std::vector<AVPixelFormat> formats = PixelFormats();
    MeasureEach(state, formats, [](AVPixelFormat format) { return av_pix_fmt_desc_get(format); });
}
BENCHMARK(PixelFormatByValue)->Name("PixelFormatByValue/libavutil");

} // namespace
} // namespace Zelnor::Benchmarks
