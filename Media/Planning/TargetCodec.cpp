#include "Media/Planning/TargetCodec.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/MediaException.h"
#include "Media/Options/OptionRules.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/ColorPlan.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Planning/EncoderCheck.h"
#include "Media/Planning/HdrPlan.h"
#include "Media/Planning/SampleLosses.h"
#include "Media/Planning/VideoGeometry.h"
#include "Media/Planning/VideoSettings.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecSubtitle;
using Conf::IFormatCodecVideo;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/TargetCodec";

bool IsSet(const IFormatCodec& descriptor, const std::string& key)
{
    return descriptor.GetProperty().ChildExists(key);
}

const std::string& CodecIdOf(const Property& record)
{
    return record[IFormatCodec::TAG_CODEC_ID].GetString();
}

const AVCodec& RequireEncoder(const TargetStream& stream)
{
    const EncoderChoice choice = ChooseEncoderFor(stream.settings, stream.container);
    if (choice.encoder == nullptr)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(stream.place.Under(choice.key), choice.fault));
    }
    return *choice.encoder;
}

/// Gives a new descriptor what the preset asks for, and the codec's name.
void Fill(const Property& settings, const AVCodec& encoder, IFormatCodec& descriptor)
{
    Property record = descriptor.GetProperty();
    for (const Property& setting : settings)
    {
        record.SetChild(setting.GetName(), setting);
    }
    record.SetChildT(IFormatCodec::TAG_NAME, std::string(avcodec_get_name(encoder.id)));
    descriptor.SetProperty(record);
}

/// H.264's profiles that every player decodes have 4:2:0 only.
bool NeedsUsualPixels(const Property& target)
{
    const auto profile = target.FindChild(IFormatCodec::TAG_PROFILE);
    const std::string word = profile == target.end() ? "" : profile->GetString();
    return target[IFormatCodec::TAG_CODEC_ID].GetString() == IFormatCodecVideo::CODEC_ID_H264 &&
           (word == IFormatCodecVideo::TAG_X264_PROFILE_BASELINE ||
            word == IFormatCodecVideo::TAG_X264_PROFILE_MAIN ||
            word == IFormatCodecVideo::TAG_X264_PROFILE_HIGH);
}

/// The source's samples, as near as the encoder can; by FFmpeg's name where the vocabulary has none.
void ChoosePixelFormat(const AVCodec& encoder, const MediaStream& source, const std::string& container,
                       IFormatCodecVideo& target)
{
    if (PixelFormatIn(target.GetProperty()) != AV_PIX_FMT_NONE)
    {
        return;
    }
    const AVPixelFormat format = PixelFormatOf(source);
    const bool isGif = encoder.id == AV_CODEC_ID_GIF;
    const bool isUsual = format == AV_PIX_FMT_NONE || NeedsUsualPixels(target.GetProperty()) ||
                         (HasAlpha(format) && !HoldsAlpha(encoder, container));
    if (!isUsual && !isGif && !FromFFmpeg(format))
    {
        const AVPixelFormat nearest = NearestPixelFormat(encoder, format);
        if (nearest != AV_PIX_FMT_NONE && !FromFFmpeg(nearest))
        {
            Property record = target.GetProperty();
            record.SetChildT(JobKeys::kPixelFormat, std::string(av_get_pix_fmt_name(nearest)));
            target.SetProperty(record);
            return;
        }
    }
    const PixFmt known = FromFFmpeg(format).value_or(PIX_FMT_YUV420P);
    const PixFmt nearest = NearestPixelFormat(encoder, isUsual ? PIX_FMT_YUV420P : known);
    if (nearest != PIX_FMT_NONE)
    {
        target.SetPixelFormat(nearest);
    }
}

void ChooseFrameRate(const AVCodec& encoder, const TargetStream& stream, IFormatCodecVideo& target)
{
    const auto& source = dynamic_cast<const IFormatCodecVideo&>(*stream.source.descriptor);
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
    // As many frames as the source has fields.
    if (stream.source.isInterlaced && DeinterlacingIn(target.GetProperty()) == Deinterlacing::EveryField)
    {
        ratio *= 2;
    }
    AVRational rate = {};
    constexpr int kLargestTerm = 65535;
    av_reduce(&rate.num, &rate.den, ratio.numerator(), ratio.denominator(), kLargestTerm);
    const AVRational nearest = NearestFrameRate(encoder, rate);
    target.SetFrameRate(static_cast<unsigned int>(nearest.num), static_cast<unsigned int>(nearest.den));
}

Property::Ratio RateIn(const Property& record)
{
    const auto rate = record.FindChild(IFormatCodecVideo::TAG_FPS);
    return rate == record.end() ? Property::Ratio(0) : rate->GetRatio();
}

/// A DVD is played on interlaced displays as well, so its frames stay what they are; what other files become
/// is shown frame by frame. A rate of twice the source's asks for a frame of each field.
void ChooseDeinterlacing(const AVCodec& encoder, const TargetStream& stream, Property& record)
{
    if (!stream.source.isInterlaced || record.ChildExists(JobKeys::kDeinterlace))
    {
        return;
    }
    const Property::Ratio source = RateIn(stream.source.descriptor->GetProperty());
    const Property::Ratio target = RateIn(record);
    const bool isForInterlaced = encoder.id == AV_CODEC_ID_DVVIDEO ||
                                 (encoder.id == AV_CODEC_ID_MPEG2VIDEO && IsDvd(stream.container));
    if (isForInterlaced && source == target && SupportsInterlaced(encoder))
    {
        record.SetChildT(JobKeys::kDeinterlace, std::string(JobKeys::kDeinterlaceKeep));
        return;
    }
    const bool isEveryField = source > 0 && target >= source * 2;
    record.SetChildT(JobKeys::kDeinterlace, std::string(isEveryField ? JobKeys::kDeinterlaceEveryField
                                                                     : JobKeys::kDeinterlaceEveryFrame));
}

void FillBitrate(const TargetStream& stream, const AVCodec& encoder, const Conf::FrameInfo& frame,
                 Property& record)
{
    if (record.ChildExists(IFormatCodec::TAG_BITRATE) || IsWithoutBitrate(encoder.id))
    {
        return;
    }
    const Property::Ratio& rate = record[IFormatCodecVideo::TAG_FPS].GetRatio();
    const double fps = static_cast<double>(rate.numerator()) / static_cast<double>(rate.denominator());
    const long long bitrate = Conf::GetDefVideoBitrate(CodecIdOf(record), frame.width, frame.height, fps);
    const long long filled = std::min<long long>(bitrate, IFormatCodecVideo::MAX_VIDEO_BITRATE);
    record.SetChildT(IFormatCodec::TAG_BITRATE, filled);
    if (!Conf::HasVideoBitrateCurve(CodecIdOf(record)))
    {
        stream.notes.push_back("Stream " + std::to_string(stream.source.index) + " gets " +
                               std::to_string(filled) + " bit/s, as for " + IFormatCodecVideo::CODEC_ID_H264 +
                               ", since the bitrate calculator does not know " + CodecIdOf(record));
    }
}

/// "25" or "30000/1001"
std::string RateText(const Property::Ratio& rate)
{
    return std::to_string(rate.numerator()) +
           (rate.denominator() == 1 ? "" : "/" + std::to_string(rate.denominator()));
}

/// A preset that leaves the size open cannot know what its bitrate is spread over. Somebody who asks for a
/// bitrate does.
void RaiseBitrate(const TargetStream& stream, const AVCodec& encoder, const Conf::FrameInfo& frame,
                  Property& record)
{
    const Property& settings = stream.settings;
    if (!settings.ChildExists(IFormatCodec::TAG_BITRATE) ||
        settings.ChildExists(IFormatCodecVideo::TAG_WIDTH) ||
        settings.ChildExists(IFormatCodecVideo::TAG_HEIGHT) || IsWithoutBitrate(encoder.id))
    {
        return;
    }
    const Property::Ratio& rate = record[IFormatCodecVideo::TAG_FPS].GetRatio();
    const double fps = static_cast<double>(rate.numerator()) / static_cast<double>(rate.denominator());
    constexpr int kBestQuality = 0;
    const long long least = std::min<long long>(
        Conf::GetMinVideoBitrate(CodecIdOf(record), frame.width, frame.height, fps, kBestQuality),
        IFormatCodecVideo::MAX_VIDEO_BITRATE);
    const long long wanted = record[IFormatCodec::TAG_BITRATE].GetInt64();
    if (wanted >= least)
    {
        return;
    }
    const std::string stays = " bit/s as asked for, although " + std::to_string(least) + " is the least";
    const std::string changes = " bit/s instead of " + std::to_string(wanted) + ", which is too little";
    stream.notes.push_back(
        "Stream " + std::to_string(stream.source.index) + " gets " +
        (stream.isBitrateAsked ? std::to_string(wanted) + stays : std::to_string(least) + changes) + " for " +
        std::to_string(frame.width) + "x" + std::to_string(frame.height) + " at " + RateText(rate) +
        " frames per second");
    if (!stream.isBitrateAsked)
    {
        record.SetChildT(IFormatCodec::TAG_BITRATE, least);
    }
}

/// How many frames an encoder lets pass between two key frames by itself; 0 where it keeps them close.
int UsualKeyInterval(const AVCodec& encoder)
{
    constexpr std::array<std::pair<std::string_view, int>, 6> kIntervals = {{{"libx264", 250},
                                                                             {"libx265", 250},
                                                                             {"libvpx", 128},
                                                                             {"libvpx-vp9", 128},
                                                                             {"libaom-av1", 9999},
                                                                             {"librav1e", 240}}};
    const auto* const found = std::find_if(kIntervals.begin(), kIntervals.end(),
                                           [&](const auto& row) { return row.first == encoder.name; });
    return found == kIntervals.end() ? 0 : found->second;
}

/// A player that seeks must not wait longer than this for a picture.
void LimitKeyInterval(const AVCodec& encoder, Property& record)
{
    const auto keyOnly = record.FindChild(IFormatCodecVideo::TAG_KEY_ONLY);
    if (record.ChildExists(IFormatCodecVideo::TAG_MAX_I_FRAME_INTERVAL) ||
        (keyOnly != record.end() && keyOnly->GetInt64() != 0))
    {
        return;
    }
    constexpr long long kSeconds = 10;
    const Property::Ratio& rate = record[IFormatCodecVideo::TAG_FPS].GetRatio();
    const long long frames = std::max(kSeconds * rate.numerator() / rate.denominator(), 1LL);
    if (frames < UsualKeyInterval(encoder))
    {
        record.SetChildT(IFormatCodecVideo::TAG_MAX_I_FRAME_INTERVAL, frames);
    }
}

void FillBitrateMode(Property& record)
{
    if (record.ChildExists(IFormatCodec::TAG_BITRATE) && !record.ChildExists(IFormatCodec::TAG_BITRATE_MODE))
    {
        record.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO);
    }
}

/// The tags that stay true when the stream is converted.
void CarryTags(const TargetStream& stream, Property& record)
{
    Property& metadata = record[Conf::IFormat::TAG_METADATA];
    const Property& tags = stream.source.descriptor->GetMetadata();
    for (const std::string* const key : {&IFormatCodec::TAG_LANGUAGE, &Conf::IFormatFile::TAG_TITLE})
    {
        const auto tag = tags.FindChild(*key);
        if (tag != tags.end() && !metadata.ChildExists(*key))
        {
            metadata.SetChild(*key, *tag);
        }
    }
    // A preset may set the language beside the other settings, too.
    const auto language = stream.settings.FindChild(IFormatCodec::TAG_LANGUAGE);
    if (language != stream.settings.end())
    {
        metadata.SetChild(IFormatCodec::TAG_LANGUAGE, *language);
    }
}

Property MakeVideo(const TargetStream& stream)
{
    const auto& source = dynamic_cast<const IFormatCodecVideo&>(*stream.source.descriptor);
    if (!IsSet(source, IFormatCodecVideo::TAG_WIDTH))
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(stream.place.At(""), "its size is not known"));
    }
    const AVCodec& encoder = RequireEncoder(stream);
    const auto target = IFormatCodecVideo::Create();
    Fill(stream.settings, encoder, *target);
    ChoosePixelFormat(encoder, stream.source, stream.container, *target);
    ChooseSize(DisplayedFrame(stream.source), PixelLimitsOf(encoder.id, stream.container), *target);
    ChooseFrameRate(encoder, stream, *target);
    Property record = target->GetProperty();
    ChooseDeinterlacing(encoder, stream, record);
    PlanColor(stream.source, encoder, stream.container, record);
    PlanHdr(stream.source, encoder, record);
    RequireAccepted(record, encoder, stream.place);
    FillBitrate(stream, encoder, target->GetFrameInfo(), record);
    RaiseBitrate(stream, encoder, target->GetFrameInfo(), record);
    LimitKeyInterval(encoder, record);
    FillBitrateMode(record);
    CarryTags(stream, record);
    return record;
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

bool IsLossless(const MediaStream& stream)
{
    const AVCodecDescriptor* const codec = avcodec_descriptor_get_by_name(stream.codec.c_str());
    return codec != nullptr && (codec->props & AV_CODEC_PROP_LOSSY) == 0;
}

/// Fills in what the preset leaves open.
void ChooseSamples(const AVCodec& encoder, const MediaStream& stream, const IFormatCodecAudio& source,
                   IFormatCodecAudio& target)
{
    if (!IsSet(target, IFormatCodecAudio::TAG_SAMPLE_FORMAT))
    {
        const Conf::SampleFormats known = SampleFormatOf(source);
        target.SetSampleFormat(IsLossless(stream) ? FinestSampleFormat(encoder, known)
                                                  : NearestSampleFormat(encoder, known));
    }
    // Channels that the vocabulary has no layout for stay as they are where the encoder supports any.
    const bool isUnknown = LayoutOf(source) == Conf::CH_LAYOUT_UNKNOWN && stream.channels > 2;
    if (!IsSet(target, IFormatCodecAudio::TAG_LAYOUT) &&
        !(isUnknown && Supports(encoder, Conf::CH_LAYOUT_UNKNOWN)))
    {
        target.SetChannelLayout(NearestLayout(encoder, LayoutOf(source)));
    }
}

Property MakeAudio(const TargetStream& stream)
{
    const auto& source = dynamic_cast<const IFormatCodecAudio&>(*stream.source.descriptor);
    const AVCodec& encoder = RequireEncoder(stream);
    const auto target = IFormatCodecAudio::Create();
    Fill(stream.settings, encoder, *target);
    ChooseSamples(encoder, stream.source, source, *target);
    Property record = target->GetProperty();
    if (!record.ChildExists(IFormatCodecAudio::TAG_SAMPLE_RATE))
    {
        record.SetChildT(IFormatCodecAudio::TAG_SAMPLE_RATE,
                         static_cast<long long>(NearestRate(encoder, RateOf(source))));
    }
    RequireAccepted(record, encoder, stream.place);
    FillBitrateMode(record);
    CarryTags(stream, record);
    return record;
}

Property MakeSubtitle(const TargetStream& stream)
{
    const auto target = IFormatCodecSubtitle::Create();
    Fill(stream.settings, RequireEncoder(stream), *target);
    Property record = target->GetProperty();
    CarryTags(stream, record);
    return record;
}

/// A preset does not know the decoder of the source.
void RequireDecoderOptions(const TargetStream& stream)
{
    const auto group = stream.settings.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE);
    const AVCodec* const decoder = FindDecoder(stream.source.codec);
    if (group == stream.settings.end() || decoder == nullptr)
    {
        return;
    }
    for (const Property& option : *group)
    {
        const CheckedOption checked = CheckDecoderOption(decoder, option.GetName(), option);
        if (!checked.fault.empty())
        {
            ZELNOR_THROW(
                kUnit, MakeError<PlanException>(stream.place.Under(group->GetName()).Under(option.GetName()),
                                                checked.fault));
        }
    }
}

Property MakeCodec(const TargetStream& stream)
{
    switch (stream.source.kind)
    {
    case StreamKind::Video:
        return MakeVideo(stream);
    case StreamKind::Audio:
        return MakeAudio(stream);
    case StreamKind::Subtitle:
        return MakeSubtitle(stream);
    case StreamKind::Data:
    case StreamKind::Attachment:
    case StreamKind::Unknown:
        break;
    }
    ZELNOR_THROW(kUnit,
                 MakeError<PlanException>(stream.place.At(""), "streams of this kind cannot be converted"));
}

} // namespace

Property MakeTargetCodec(const TargetStream& stream)
{
    RequireDecoderOptions(stream);
    return MakeCodec(stream);
}

Property MakeCopiedCodec(const MediaStream& source)
{
    Property record = source.descriptor->GetProperty();
    record.SetChildT(IFormatCodec::TAG_LOSSLESS, 1LL);
    // Subtitles do not have such a word.
    if (source.kind != StreamKind::Subtitle)
    {
        record.SetChildT(IFormatCodec::TAG_PREFERREDIMPL, source.kind == StreamKind::Video
                                                              ? IFormatCodecVideo::ENCODER_LOSSLESS
                                                              : IFormatCodecAudio::ENCODER_LOSSLESS);
    }
    return record;
}

} // namespace Zelnor::Media
