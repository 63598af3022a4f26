#include "Media/Planning/SampleLosses.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Planning/VideoSettings.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/ServiceRecords.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
}

#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecAudio;
using Core::Property;

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

void AddChromaLoss(AVPixelFormat source, AVPixelFormat target, std::vector<std::string>& losses)
{
    const Chroma from = ChromaOf(source);
    const Chroma to = ChromaOf(target);
    if (!from.exists)
    {
        return;
    }
    if (!to.exists)
    {
        losses.emplace_back("its colours are left out");
    }
    else if (to.width > from.width || to.height > from.height)
    {
        losses.push_back(IsRgb(source) ? "its RGB samples become " + NameOf(to) + ", whose chroma is coarser"
                                       : "its " + NameOf(from) + " chroma becomes " + NameOf(to));
    }
}

/// The format of the output's samples.
AVPixelFormat PixelFormatOf(const Property& record, const AVCodec& encoder, AVPixelFormat source)
{
    const AVPixelFormat own = PixelFormatIn(record);
    // A palette is made of the colours that there are.
    return encoder.id == AV_CODEC_ID_GIF ? AV_PIX_FMT_PAL8
           : own != AV_PIX_FMT_NONE      ? own
                                         : NearestPixelFormat(encoder, source);
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

/// What the encoder says when it is open; nothing when it does not open, 0 when it does not say.
std::optional<int> AskWrittenBits(const AVCodec& encoder, AVSampleFormat format)
{
    constexpr int kUsualRate = 48000;
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
    return isOpen ? std::optional(context->bits_per_raw_sample) : std::nullopt;
}

/// FLAC and ALAC write 24 bits of samples of 32.
int WrittenBits(const AVCodec& encoder, AVSampleFormat format)
{
    const int exact = av_get_exact_bits_per_sample(encoder.id);
    if (exact != 0)
    {
        return exact;
    }
    // To open an encoder takes as long as to plan the rest of a job.
    static std::mutex s_mutex;
    static std::map<std::pair<std::string, AVSampleFormat>, int> s_known;
    const std::pair<std::string, AVSampleFormat> asked(encoder.name, format);
    const std::lock_guard<std::mutex> lock(s_mutex);
    auto known = s_known.find(asked);
    if (known == s_known.end())
    {
        const std::optional<int> bits = AskWrittenBits(encoder, format);
        if (!bits)
        {
            return PrecisionOf(format);
        }
        known = s_known.emplace(asked, *bits).first;
    }
    return known->second > 0 ? known->second : PrecisionOf(format);
}

AVSampleFormat SampleFormatOf(const Property& record, const AVCodec& encoder, AVSampleFormat source)
{
    const std::string own = TextUnder(record, IFormatCodecAudio::TAG_SAMPLE_FORMAT);
    if (!own.empty())
    {
        return ToFFmpeg(Conf::SampleFmtRecord::Find(own)->format);
    }
    const auto known = FromFFmpeg(source);
    return known ? ToFFmpeg(NearestSampleFormat(encoder, *known)) : AV_SAMPLE_FMT_NONE;
}

/// "floating-point samples" or "24 bits a sample"
std::string TextOf(AVSampleFormat format, int bits)
{
    return IsFloat(format) ? "floating-point samples" : std::to_string(bits) + " bits a sample";
}

} // namespace

bool HoldsAlpha(const AVCodec& encoder, const std::string& container)
{
    return (encoder.id != AV_CODEC_ID_VP8 && encoder.id != AV_CODEC_ID_VP9) ||
           container == Conf::IFormatFile::FORMAT_MATROSKA || container == Conf::IFormatFile::FORMAT_WEBM;
}

int ChannelsIn(const Property& record)
{
    const std::string layout = TextUnder(record, IFormatCodecAudio::TAG_LAYOUT);
    try
    {
        return layout.empty() ? 0 : Conf::LayoutRecord::Find(layout)->channels;
    }
    catch (const Exception&)
    {
        return 0;
    }
}

std::vector<std::string> PixelLosses(const MediaStream& source, const Property& record,
                                     const AVCodec& encoder, const std::string& container)
{
    std::vector<std::string> losses;
    const AVPixelFormat from = PixelFormatOf(source);
    const AVPixelFormat to = PixelFormatOf(record, encoder, from);
    if (from == AV_PIX_FMT_NONE || to == AV_PIX_FMT_NONE || to == AV_PIX_FMT_PAL8)
    {
        return losses;
    }
    if (DepthOf(to) < DepthOf(from))
    {
        losses.push_back("its " + std::to_string(DepthOf(from)) + " bits a sample become " +
                         std::to_string(DepthOf(to)));
    }
    AddChromaLoss(from, to, losses);
    if (HasAlpha(from) && !(HasAlpha(to) && HoldsAlpha(encoder, container)))
    {
        losses.emplace_back("its transparency is left out");
    }
    return losses;
}

std::vector<std::string> SoundLosses(const MediaStream& source, const Property& record,
                                     const AVCodec& encoder)
{
    std::vector<std::string> losses;
    const int channels = ChannelsIn(record);
    if (channels != 0 && channels < static_cast<int>(source.channels))
    {
        losses.push_back("its " + std::to_string(source.channels) + " channels become " +
                         std::to_string(channels));
    }
    const AVCodecDescriptor* const codec = avcodec_descriptor_get_by_name(source.codec.c_str());
    const AVSampleFormat known = av_get_sample_fmt(source.sampleFormat.c_str());
    const AVSampleFormat format = SampleFormatOf(record, encoder, known);
    if (codec == nullptr || IsLossy(codec->id) || IsLossy(encoder.id) || known == AV_SAMPLE_FMT_NONE ||
        format == AV_SAMPLE_FMT_NONE)
    {
        return losses;
    }
    const int from = !IsFloat(known) && source.bitsPerSample != 0 ? static_cast<int>(source.bitsPerSample)
                                                                  : PrecisionOf(known);
    const int to = IsFloat(format) ? PrecisionOf(format) : WrittenBits(encoder, format);
    if (to < from)
    {
        losses.push_back("its " + TextOf(known, from) + " become " + std::to_string(to) +
                         (IsFloat(known) ? " bits" : ""));
    }
    return losses;
}

} // namespace Zelnor::Media
