#include "Media/Planning/TargetCodec.h"

#include "Media/MediaException.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Planning/EncoderCheck.h"
#include "Media/Planning/VideoGeometry.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecSubtitle;
using Conf::IFormatCodecVideo;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/TargetCodec";

/// Sets what `settings` holds in the descriptor's record.
void Overlay(const Property& settings, IFormatCodec& descriptor)
{
    Property record = descriptor.GetProperty();
    for (const Property& setting : settings)
    {
        record.SetChild(setting.GetName(), setting);
    }
    descriptor.SetProperty(record);
}

template <class T>
void SetValue(IFormatCodec& descriptor, const std::string& key, const T& value)
{
    Property record = descriptor.GetProperty();
    record.SetChildT(key, value);
    descriptor.SetProperty(record);
}

bool IsSet(const IFormatCodec& descriptor, const std::string& key)
{
    return descriptor.GetProperty().ChildExists(key);
}

const std::string& CodecIdOf(const IFormatCodec& descriptor)
{
    return descriptor.GetProperty()[IFormatCodec::TAG_CODEC_ID].GetString();
}

const AVCodec& RequireEncoder(const std::string& codecId)
{
    const AVCodec* const encoder = FindEncoder(codecId);
    if (encoder == nullptr)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>("The installed FFmpeg has no encoder for " + codecId));
    }
    return *encoder;
}

/// H.264's profiles for all players have no other pixels.
bool NeedsUsualPixels(const Property& target)
{
    const auto profile = target.FindChild(IFormatCodec::TAG_PROFILE);
    const std::string word = profile == target.end() ? "" : profile->GetString();
    return target[IFormatCodec::TAG_CODEC_ID].GetString() == IFormatCodecVideo::CODEC_ID_H264 &&
           (word == IFormatCodecVideo::TAG_X264_PROFILE_BASELINE ||
            word == IFormatCodecVideo::TAG_X264_PROFILE_MAIN ||
            word == IFormatCodecVideo::TAG_X264_PROFILE_HIGH);
}

void ChoosePixelFormat(const AVCodec& encoder, const IFormatCodecVideo& source, IFormatCodecVideo& target)
{
    if (target.GetPixelFormat() != PIX_FMT_NONE)
    {
        return;
    }
    const PixFmt known = source.GetPixelFormat();
    const bool usual = known == PIX_FMT_NONE || NeedsUsualPixels(target.GetProperty());
    const PixFmt nearest = NearestPixelFormat(encoder, usual ? PIX_FMT_YUV420P : known);
    if (nearest != PIX_FMT_NONE)
    {
        target.SetPixelFormat(nearest);
    }
}

void ChooseFrameRate(const AVCodec& encoder, const IFormatCodecVideo& source, IFormatCodecVideo& target)
{
    if (IsSet(target, IFormatCodecVideo::TAG_FPS))
    {
        return;
    }
    constexpr int kUsualRate = 25;
    Property::Ratio ratio(kUsualRate);
    if (IsSet(source, IFormatCodecVideo::TAG_FPS))
    {
        ratio = source.GetProperty()[IFormatCodecVideo::TAG_FPS].GetRatio();
    }
    AVRational rate = {};
    constexpr int kLargestTerm = 65535;
    av_reduce(&rate.num, &rate.den, ratio.numerator(), ratio.denominator(), kLargestTerm);
    const AVRational nearest = NearestFrameRate(encoder, rate);
    target.SetFrameRate(static_cast<unsigned int>(nearest.num), static_cast<unsigned int>(nearest.den));
}

void FillBitrate(const AVCodec& encoder, IFormatCodecVideo& target)
{
    if (IsSet(target, IFormatCodec::TAG_BITRATE) || IsWithoutBitrate(encoder.id))
    {
        return;
    }
    const Conf::FrameInfo frame = target.GetFrameInfo();
    const Property::Ratio& rate = target.GetProperty()[IFormatCodecVideo::TAG_FPS].GetRatio();
    const double fps = static_cast<double>(rate.numerator()) / static_cast<double>(rate.denominator());
    const long long bitrate = Conf::GetDefVideoBitrate(CodecIdOf(target), frame.width, frame.height, fps);
    SetValue(target, IFormatCodec::TAG_BITRATE,
             std::min<long long>(bitrate, IFormatCodecVideo::MAX_VIDEO_BITRATE));
}

void FillBitrateMode(IFormatCodec& target)
{
    if (IsSet(target, IFormatCodec::TAG_BITRATE) && !IsSet(target, IFormatCodec::TAG_BITRATE_MODE))
    {
        SetValue(target, IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO);
    }
}

/// The words about a stream that stay true when it is converted.
void CarryTags(const MediaStream& source, const Property& settings, IFormatCodec& target)
{
    Property metadata = target.GetMetadata();
    const Property& tags = source.descriptor->GetMetadata();
    for (const std::string& key : {IFormatCodec::TAG_LANGUAGE, Conf::IFormatFile::TAG_TITLE})
    {
        const auto tag = tags.FindChild(key);
        if (tag != tags.end() && !metadata.ChildExists(key))
        {
            metadata.SetChild(key, *tag);
        }
    }
    // A preset may set the language beside the other settings, too.
    const auto language = settings.FindChild(IFormatCodec::TAG_LANGUAGE);
    if (language != settings.end())
    {
        metadata.SetChild(IFormatCodec::TAG_LANGUAGE, *language);
    }
    target.SetMetadata(metadata);
}

Property MakeVideo(const MediaStream& source, const Property& settings, const std::string& container)
{
    const auto& facts = dynamic_cast<const IFormatCodecVideo&>(*source.descriptor);
    if (!IsSet(facts, IFormatCodecVideo::TAG_WIDTH))
    {
        ZELNOR_THROW(
            kUnit, MakeError<PlanException>("Stream " + std::to_string(source.index) + " has no known size"));
    }
    const auto target = IFormatCodecVideo::Create();
    Overlay(settings, *target);
    const AVCodec& encoder = RequireEncoder(CodecIdOf(*target));
    SetValue(*target, IFormatCodec::TAG_NAME, std::string(avcodec_get_name(encoder.id)));
    ChoosePixelFormat(encoder, facts, *target);
    ChooseSize(ShownFrame(source), NeedsSquarePixels(encoder.id, container), *target);
    ChooseFrameRate(encoder, facts, *target);
    RequireAccepted(target->GetProperty(), encoder);
    FillBitrate(encoder, *target);
    FillBitrateMode(*target);
    CarryTags(source, settings, *target);
    return target->GetProperty();
}

Conf::SampleFormats SampleFormatOf(const IFormatCodecAudio& audio)
{
    return IsSet(audio, IFormatCodecAudio::TAG_SAMPLE_FORMAT) ? audio.GetSampleFormat()
                                                              : Conf::SAMPLE_FMT_NONE;
}

Conf::ChannelLayout LayoutOf(const IFormatCodecAudio& audio)
{
    return IsSet(audio, IFormatCodecAudio::TAG_LAYOUT) ? audio.GetChannelLayout() : Conf::CH_LAYOUT_UNKNOWN;
}

int RateOf(const IFormatCodecAudio& audio)
{
    constexpr int kUsualRate = 48000;
    return IsSet(audio, IFormatCodecAudio::TAG_SAMPLE_RATE)
               ? static_cast<int>(audio.GetProperty()[IFormatCodecAudio::TAG_SAMPLE_RATE].GetInt64())
               : kUsualRate;
}

/// Fills in what the preset leaves open.
void ChooseSamples(const AVCodec& encoder, const IFormatCodecAudio& source, IFormatCodecAudio& target)
{
    if (!IsSet(target, IFormatCodecAudio::TAG_SAMPLE_FORMAT))
    {
        target.SetSampleFormat(NearestSampleFormat(encoder, SampleFormatOf(source)));
    }
    if (!IsSet(target, IFormatCodecAudio::TAG_LAYOUT))
    {
        target.SetChannelLayout(NearestLayout(encoder, LayoutOf(source)));
    }
    if (!IsSet(target, IFormatCodecAudio::TAG_SAMPLE_RATE))
    {
        SetValue(target, IFormatCodecAudio::TAG_SAMPLE_RATE,
                 static_cast<long long>(NearestRate(encoder, RateOf(source))));
    }
}

Property MakeAudio(const MediaStream& source, const Property& settings)
{
    const auto target = IFormatCodecAudio::Create();
    Overlay(settings, *target);
    const AVCodec& encoder = RequireEncoder(CodecIdOf(*target));
    SetValue(*target, IFormatCodec::TAG_NAME, std::string(avcodec_get_name(encoder.id)));
    ChooseSamples(encoder, dynamic_cast<const IFormatCodecAudio&>(*source.descriptor), *target);
    RequireAccepted(target->GetProperty(), encoder);
    FillBitrateMode(*target);
    CarryTags(source, settings, *target);
    return target->GetProperty();
}

Property MakeSubtitle(const MediaStream& source, const Property& settings)
{
    const auto target = IFormatCodecSubtitle::Create();
    Overlay(settings, *target);
    const AVCodec& encoder = RequireEncoder(CodecIdOf(*target));
    SetValue(*target, IFormatCodec::TAG_NAME, std::string(avcodec_get_name(encoder.id)));
    CarryTags(source, settings, *target);
    return target->GetProperty();
}

} // namespace

Property MakeTargetCodec(const MediaStream& source, const Property& settings, const std::string& container)
{
    switch (source.kind)
    {
    case StreamKind::Video:
        return MakeVideo(source, settings, container);
    case StreamKind::Audio:
        return MakeAudio(source, settings);
    case StreamKind::Subtitle:
        return MakeSubtitle(source, settings);
    case StreamKind::Data:
    case StreamKind::Attachment:
    case StreamKind::Unknown:
        break;
    }
    ZELNOR_THROW(kUnit,
                 MakeError<PlanException>("Stream " + std::to_string(source.index) + " is of the kind " +
                                          NameOf(source.kind) + ", which cannot be converted"));
}

Property MakeCopiedCodec(const MediaStream& source)
{
    const bool isVideo = source.kind == StreamKind::Video;
    Property record = source.descriptor->GetProperty();
    record.SetChildT(IFormatCodec::TAG_LOSSLESS, 1LL);
    record.SetChildT(IFormatCodec::TAG_PREFERREDIMPL,
                     isVideo ? IFormatCodecVideo::ENCODER_LOSSLESS : IFormatCodecAudio::ENCODER_LOSSLESS);
    return record;
}

Property DvdSettings(const MediaStream& source)
{
    Property settings;
    if (source.kind == StreamKind::Video)
    {
        const Property& facts = source.descriptor->GetProperty();
        const bool isPal = facts.ChildExists(IFormatCodecVideo::TAG_FPS) &&
                           facts[IFormatCodecVideo::TAG_FPS].GetRatio().numerator() % 25 == 0 &&
                           facts[IFormatCodecVideo::TAG_FPS].GetRatio().denominator() == 1;
        settings.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecVideo::CODEC_ID_MPEG2VIDEO);
        settings.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO);
        settings.SetChildT(IFormatCodec::TAG_BITRATE, 6000000LL);
        settings.SetChildT(IFormatCodecVideo::TAG_WIDTH, 720LL);
        settings.SetChildT(IFormatCodecVideo::TAG_HEIGHT, isPal ? 576LL : 480LL);
        settings.SetChildT(IFormatCodecVideo::TAG_FPS,
                           isPal ? Property::Ratio(25, 1) : Property::Ratio(30000, 1001));
    }
    else if (source.kind == StreamKind::Audio)
    {
        settings.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecAudio::CODEC_ID_AC3);
        settings.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_CBR);
        settings.SetChildT(IFormatCodec::TAG_BITRATE, 448000LL);
        settings.SetChildT(IFormatCodecAudio::TAG_SAMPLE_RATE, 48000LL);
    }
    return settings;
}

} // namespace Zelnor::Media
