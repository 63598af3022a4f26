#include "Media/Planning/SampleLosses.h"

#include "Media/Planning/VideoSettings.h"
#include "Media/Probe/FFmpegNames.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
}

#include <memory>
#include <new>

namespace Zelnor::Media
{

namespace
{

/// How many pixels share one sample of chroma, as powers of two; nothing where there is no chroma.
struct Chroma
{
    bool exists;
    int width;
    int height;
};

Chroma ChromaOf(AVPixelFormat format)
{
    constexpr int kColorComponents = 3;
    const AVPixFmtDescriptor* const known = av_pix_fmt_desc_get(format);
    const bool exists = known != nullptr && (known->nb_components >= kColorComponents ||
                                             (known->flags & AV_PIX_FMT_FLAG_PAL) != 0);
    return exists ? Chroma{true, known->log2_chroma_w, known->log2_chroma_h} : Chroma{false, 0, 0};
}

/// "4:2:0"
std::string NameOf(const Chroma& chroma)
{
    constexpr int kPixels = 4;
    const int across = kPixels >> chroma.width;
    return "4:" + std::to_string(across) + ":" + std::to_string(chroma.height == 0 ? across : 0);
}

void NoteLostChroma(AVPixelFormat source, AVPixelFormat target, const std::string& stream,
                    std::vector<std::string>& notes)
{
    const Chroma from = ChromaOf(source);
    const Chroma to = ChromaOf(target);
    if (!from.exists)
    {
        return;
    }
    if (!to.exists)
    {
        notes.push_back("The colours of " + stream + " will be lost");
    }
    else if (to.width > from.width || to.height > from.height)
    {
        notes.push_back("The " + (IsRgb(source) ? std::string("RGB samples") : NameOf(from) + " chroma") +
                        " of " + stream + " will become " + NameOf(to) +
                        (IsRgb(source) ? ", whose chroma is coarser" : ""));
    }
}

/// The bits of precision that samples of the format can have.
int PrecisionOf(AVSampleFormat format)
{
    constexpr int kMantissa = 24;
    constexpr int kLongMantissa = 53;
    constexpr int kBitsOfByte = 8;
    switch (av_get_packed_sample_fmt(format))
    {
    case AV_SAMPLE_FMT_FLT:
        return kMantissa;
    case AV_SAMPLE_FMT_DBL:
        return kLongMantissa;
    default:
        return av_get_bytes_per_sample(format) * kBitsOfByte;
    }
}

bool IsFloat(AVSampleFormat format)
{
    const AVSampleFormat packed = av_get_packed_sample_fmt(format);
    return packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
}

bool IsLossy(AVCodecID id)
{
    const AVCodecDescriptor* const codec = avcodec_descriptor_get(id);
    return codec == nullptr || (codec->props & AV_CODEC_PROP_LOSSY) != 0;
}

struct FreeContext
{
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};

/// FLAC and ALAC write 24 bits of samples of 32; the encoder says so when it is open.
int WrittenBits(const AVCodec& encoder, AVSampleFormat format)
{
    constexpr int kUsualRate = 48000;
    const int exact = av_get_exact_bits_per_sample(encoder.id);
    if (exact != 0)
    {
        return exact;
    }
    const std::unique_ptr<AVCodecContext, FreeContext> context(avcodec_alloc_context3(&encoder));
    if (context == nullptr)
    {
        throw std::bad_alloc();
    }
    context->log_level_offset = 2 * AV_LOG_TRACE;
    context->sample_fmt = format;
    context->sample_rate = kUsualRate;
    av_channel_layout_default(&context->ch_layout, 2);
    const bool isOpen = avcodec_open2(context.get(), &encoder, nullptr) == 0;
    return isOpen && context->bits_per_raw_sample > 0 ? context->bits_per_raw_sample : PrecisionOf(format);
}

} // namespace

void NoteLostPixels(const MediaStream& source, const Core::Property& record, const std::string& stream,
                    std::vector<std::string>& notes)
{
    const AVPixelFormat from = PixelFormatOf(source);
    const AVPixelFormat to = PixelFormatIn(record);
    // A palette is made of the colours that there are.
    if (from == AV_PIX_FMT_NONE || to == AV_PIX_FMT_NONE || to == AV_PIX_FMT_PAL8)
    {
        return;
    }
    if (DepthOf(to) < DepthOf(from))
    {
        notes.push_back("The " + std::to_string(DepthOf(from)) + " bits a sample of " + stream +
                        " will become " + std::to_string(DepthOf(to)));
    }
    NoteLostChroma(from, to, stream, notes);
    if (HasAlpha(from) && !HasAlpha(to))
    {
        notes.push_back("The transparency of " + stream + " will be lost");
    }
}

void NoteLostSoundBits(const MediaStream& source, const AVCodec& encoder, AVSampleFormat format,
                       const std::string& stream, std::vector<std::string>& notes)
{
    const AVCodecDescriptor* const codec = avcodec_descriptor_get_by_name(source.codec.c_str());
    const AVSampleFormat known = av_get_sample_fmt(source.sampleFormat.c_str());
    if (codec == nullptr || IsLossy(codec->id) || IsLossy(encoder.id) || known == AV_SAMPLE_FMT_NONE ||
        format == AV_SAMPLE_FMT_NONE)
    {
        return;
    }
    const bool isFloat = IsFloat(known);
    const int from =
        !isFloat && source.bitsPerSample != 0 ? static_cast<int>(source.bitsPerSample) : PrecisionOf(known);
    const int to = IsFloat(format) ? PrecisionOf(format) : WrittenBits(encoder, format);
    if (to < from)
    {
        notes.push_back(
            "The " +
            (isFloat ? std::string("floating-point samples") : std::to_string(from) + " bits a sample") +
            " of " + stream + " will become " + std::to_string(to) + (isFloat ? " bits" : ""));
    }
}

} // namespace Zelnor::Media
