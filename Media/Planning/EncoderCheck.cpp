#include "Media/Planning/EncoderCheck.h"

#include "Media/MediaException.h"
#include "Media/Planning/EncoderCapabilities.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <climits>
#include <string>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/EncoderCheck";

[[noreturn]] void Refuse(const AVCodec& encoder, const std::string& what)
{
    ZELNOR_THROW(kUnit, MakeError<PlanException>(std::string("The encoder ") + encoder.name +
                                                 " does not take " + what));
}

std::string PixelFormatName(PixFmt format)
{
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        if (record.pixFmt == format)
        {
            return record.name;
        }
    }
    return "number " + std::to_string(format);
}

void RequireLength(const Property& codec, const std::string& key, const AVCodec& encoder)
{
    constexpr long long kLongest = 65535;
    const auto length = codec.FindChild(key);
    if (length != codec.end() && (length->GetInt64() < 1 || length->GetInt64() > kLongest))
    {
        Refuse(encoder, "the " + key + " " + std::to_string(length->GetInt64()));
    }
}

void RequireFrameRate(const Property& codec, const AVCodec& encoder)
{
    const auto child = codec.FindChild(IFormatCodecVideo::TAG_FPS);
    if (child == codec.end())
    {
        return;
    }
    const Property::Ratio& ratio = child->GetRatio();
    AVRational rate = {};
    const bool exact = av_reduce(&rate.num, &rate.den, ratio.numerator(), ratio.denominator(), INT_MAX) != 0;
    if (!exact || rate.num <= 0 || av_cmp_q(NearestFrameRate(encoder, rate), rate) != 0)
    {
        Refuse(encoder, "the frame rate " + std::to_string(ratio.numerator()) + "/" +
                            std::to_string(ratio.denominator()));
    }
}

void RequireVideo(const Property& codec, const AVCodec& encoder)
{
    const auto video = IFormatCodecVideo::Create();
    video->SetProperty(codec);
    const PixFmt format = video->GetPixelFormat();
    if (format != PIX_FMT_NONE && !Accepts(encoder, format))
    {
        Refuse(encoder, "the pixel format " + PixelFormatName(format));
    }
    RequireLength(codec, IFormatCodecVideo::TAG_WIDTH, encoder);
    RequireLength(codec, IFormatCodecVideo::TAG_HEIGHT, encoder);
    RequireFrameRate(codec, encoder);
}

void RequireAudio(const Property& codec, const AVCodec& encoder)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetProperty(codec);
    if (codec.ChildExists(IFormatCodecAudio::TAG_SAMPLE_FORMAT) &&
        !Accepts(encoder, audio->GetSampleFormat()))
    {
        Refuse(encoder, codec[IFormatCodecAudio::TAG_SAMPLE_FORMAT].GetString());
    }
    if (codec.ChildExists(IFormatCodecAudio::TAG_LAYOUT) && !Accepts(encoder, audio->GetChannelLayout()))
    {
        Refuse(encoder, "the layout " + codec[IFormatCodecAudio::TAG_LAYOUT].GetString());
    }
    const auto rate = codec.FindChild(IFormatCodecAudio::TAG_SAMPLE_RATE);
    if (rate != codec.end() &&
        (rate->GetInt64() > INT_MAX || !AcceptsRate(encoder, static_cast<int>(rate->GetInt64()))))
    {
        Refuse(encoder, "the sample rate " + std::to_string(rate->GetInt64()));
    }
}

} // namespace

void RequireAccepted(const Property& codec, const AVCodec& encoder)
{
    if (encoder.type == AVMEDIA_TYPE_VIDEO)
    {
        RequireVideo(codec, encoder);
    }
    else if (encoder.type == AVMEDIA_TYPE_AUDIO)
    {
        RequireAudio(codec, encoder);
    }
}

} // namespace Zelnor::Media
