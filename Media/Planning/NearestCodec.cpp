#include "Media/Planning/NearestCodec.h"

#include "Media/MediaException.h"
#include "Media/Planning/AudioTrial.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/ValueText.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/NearestCodec";

/// An encoder that the library does not use by itself must be named in the job.
void AllowEncoder(const TargetStream& stream, const StreamRequest& request, Property& settings)
{
    const std::string& codecId = settings[IFormatCodec::TAG_CODEC_ID].GetString();
    const AVCodec* const encoder = FindEncoder(codecId);
    const EncoderChoice choice = ChooseEncoder(settings);
    if (encoder == nullptr || choice.encoder != nullptr || !IsEncodingDisabled(codecId) ||
        choice.key != IFormatCodec::TAG_CODEC_ID)
    {
        return;
    }
    if (!request.allowDisabled)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(stream.place.Under(choice.key),
                                                     DisabledText(codecId, encoder->name) +
                                                         " or the request allows it"));
    }
    settings.SetChildT(IFormatCodec::TAG_PREFERREDIMPL, std::string(encoder->name));
}

/// The same channels in FFmpeg's other arrangement, which one encoder has and the other has not.
std::optional<Conf::ChannelLayout> SiblingOf(Conf::ChannelLayout layout)
{
    static const std::pair<Conf::ChannelLayout, Conf::ChannelLayout> s_siblings[] = {
        {Conf::CH_LAYOUT_5POINT1, Conf::CH_LAYOUT_5POINT1_BACK},
        {Conf::CH_LAYOUT_5POINT0, Conf::CH_LAYOUT_5POINT0_BACK},
        {Conf::CH_LAYOUT_2_2, Conf::CH_LAYOUT_QUAD},
        {Conf::CH_LAYOUT_6POINT1, Conf::CH_LAYOUT_6POINT1_BACK},
        {Conf::CH_LAYOUT_7POINT1_WIDE, Conf::CH_LAYOUT_7POINT1_WIDE_BACK},
    };
    for (const auto& [side, back] : s_siblings)
    {
        if (layout == side || layout == back)
        {
            return layout == side ? back : side;
        }
    }
    return std::nullopt;
}

void ChooseArrangement(Property& settings)
{
    const auto layout = settings.FindChild(IFormatCodecAudio::TAG_LAYOUT);
    const AVCodec* const encoder = ChooseEncoder(settings).encoder;
    if (layout == settings.end() || encoder == nullptr)
    {
        return;
    }
    const Conf::ChannelLayout wanted = Conf::LayoutRecord::Find(layout->GetString())->layout;
    const auto sibling = SiblingOf(wanted);
    if (sibling && !Supports(*encoder, wanted) && Supports(*encoder, *sibling))
    {
        settings.SetChildT(IFormatCodecAudio::TAG_LAYOUT, *Conf::LayoutRecord::Find(*sibling)->textId);
    }
}

long long EvenPart(double length)
{
    // A length that is whole but for the rounding of doubles stays whole.
    constexpr double kRounding = 1e-6;
    constexpr long long kStep = 2;
    return std::max(static_cast<long long>(length + kRounding) / kStep * kStep, kStep);
}

/// Sets a size that fits into the limit; false when the record's does already.
bool LimitSize(const Property& codec, const FrameLimit& limit, bool mayUpscale, Property& settings)
{
    const auto number = [&codec](const std::string& key) {
        return static_cast<double>(codec[key].GetInt64());
    };
    const double height = number(IFormatCodecVideo::TAG_HEIGHT);
    const double aspect =
        number(IFormatCodecVideo::TAG_ASPECTX) / std::max(number(IFormatCodecVideo::TAG_ASPECTY), 1.0);
    const double width = number(IFormatCodecVideo::TAG_WIDTH);
    const double shown = aspect > 0 ? width * aspect : width;
    const double factor = std::min(limit.width / shown, limit.height / height);
    if (factor == 1 || (factor > 1 && !mayUpscale))
    {
        return false;
    }
    settings.SetChildT(IFormatCodecVideo::TAG_WIDTH, EvenPart(width * factor));
    settings.SetChildT(IFormatCodecVideo::TAG_HEIGHT, EvenPart(height * factor));
    // MPEG-2 has a few display aspect ratios only; others keep their square pixels whatever the rounding.
    if (aspect == 1 &&
        codec[IFormatCodec::TAG_CODEC_ID].GetString() != IFormatCodecVideo::CODEC_ID_MPEG2VIDEO)
    {
        settings.SetChildT(IFormatCodecVideo::TAG_ASPECTX, 1LL);
        settings.SetChildT(IFormatCodecVideo::TAG_ASPECTY, 1LL);
    }
    return true;
}

/// The bitrates in kbit/s of MPEG's layers 2 and 3 and of AC-3, by their standards.
const std::vector<long long>& BitratesOf(const std::string& codecId, long long sampleRate)
{
    static const std::vector<long long> s_layer3 = {32,  40,  48,  56,  64,  80,  96,
                                                    112, 128, 160, 192, 224, 256, 320};
    static const std::vector<long long> s_layer2 = {32,  48,  56,  64,  80,  96,  112,
                                                    128, 160, 192, 224, 256, 320, 384};
    static const std::vector<long long> s_lowRates = {8,  16, 24, 32,  40,  48,  56,
                                                      64, 80, 96, 112, 128, 144, 160};
    static const std::vector<long long> s_ac3 = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                                 192, 224, 256, 320, 384, 448, 512, 576, 640};
    static const std::vector<long long> s_any;
    constexpr long long kLeastOfMpeg1 = 32000;
    if (codecId == IFormatCodecAudio::CODEC_ID_AC3)
    {
        return s_ac3;
    }
    const bool isLayer3 = codecId == IFormatCodecAudio::CODEC_ID_MP3;
    if (!isLayer3 && codecId != IFormatCodecAudio::CODEC_ID_MP2)
    {
        return s_any;
    }
    return sampleRate < kLeastOfMpeg1 ? s_lowRates : isLayer3 ? s_layer3 : s_layer2;
}

void ChooseAudioBitrate(Property& codec)
{
    const auto bitrate = codec.FindChild(IFormatCodec::TAG_BITRATE);
    if (bitrate != codec.end())
    {
        const long long nearest =
            NearestAudioBitrate(codec[IFormatCodec::TAG_CODEC_ID].GetString(),
                                codec[IFormatCodecAudio::TAG_SAMPLE_RATE].GetInt64(), bitrate->GetInt64());
        codec.SetChildT(IFormatCodec::TAG_BITRATE, nearest);
    }
}

/// An encoder that is asked for very little may refuse, or make more without a word.
void TryBitrate(const TargetStream& stream, const Property& codec)
{
    constexpr long long kLittle = 16000;
    constexpr long long kNoticeable = 2;
    const auto bitrate = codec.FindChild(IFormatCodec::TAG_BITRATE);
    const AVCodec* const encoder = ChooseEncoder(codec).encoder;
    if (bitrate == codec.end() || encoder == nullptr || IsWithoutBitrate(encoder->id) ||
        !codec.ChildExists(IFormatCodecAudio::TAG_LAYOUT) ||
        bitrate->GetInt64() >=
            kLittle * Conf::LayoutRecord::Find(codec[IFormatCodecAudio::TAG_LAYOUT].GetString())->channels)
    {
        return;
    }
    const Place place = stream.place.Under(IFormatCodec::TAG_BITRATE);
    const auto measured = MeasureBitrate(*encoder, codec);
    if (!measured)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(place, std::string("encoder ") + encoder->name +
                                                                " does not support bitrate " +
                                                                std::to_string(bitrate->GetInt64())));
    }
    if (*measured > kNoticeable * bitrate->GetInt64())
    {
        constexpr long long kKilo = 1000;
        stream.notes.push_back(place.Text() + ": " + std::to_string(bitrate->GetInt64()) + " becomes about " +
                               std::to_string((*measured + kKilo / 2) / kKilo * kKilo) +
                               ", the least that encoder " + encoder->name + " makes");
    }
}

/// Tells each setting that the record holds with another value.
void NoteChanges(const TargetStream& stream, const Property& codec, bool isLimited)
{
    for (const Property& wanted : stream.settings)
    {
        const auto made = codec.FindChild(wanted.GetName());
        // A bitrate of video that is raised has a note of its own.
        const bool isTold =
            stream.source.kind == StreamKind::Video && wanted.GetName() == IFormatCodec::TAG_BITRATE;
        const bool isSize = wanted.GetName() == IFormatCodecVideo::TAG_WIDTH ||
                            wanted.GetName() == IFormatCodecVideo::TAG_HEIGHT;
        if (wanted.GetType() != PROPERTY_TYPE_GROUP && made != codec.end() && *made != wanted && !isTold &&
            !(isSize && isLimited))
        {
            stream.notes.push_back(stream.place.Under(wanted.GetName()).Text() + ": " + ValueText(wanted) +
                                   " becomes " + ValueText(*made) +
                                   ", the nearest that the encoder supports");
        }
    }
}

} // namespace

long long NearestAudioBitrate(const std::string& codecId, long long sampleRate, long long wanted)
{
    constexpr long long kKilo = 1000;
    long long nearest = 0;
    for (const long long rate : BitratesOf(codecId, sampleRate))
    {
        const long long candidate = rate * kKilo;
        if (nearest == 0 || std::llabs(candidate - wanted) < std::llabs(nearest - wanted))
        {
            nearest = candidate;
        }
    }
    return nearest == 0 ? wanted : nearest;
}

Property MakeNearestCodec(const TargetStream& stream, const StreamRequest& request)
{
    Property settings = stream.settings;
    AllowEncoder(stream, request, settings);
    ChooseArrangement(settings);
    std::vector<std::string> notes;
    const auto make = [&] {
        notes.clear();
        return MakeTargetCodec(
            {stream.source, settings, stream.container, stream.place, notes, stream.isBitrateAsked});
    };
    Property codec = make();
    const bool isLimited = stream.source.kind == StreamKind::Video && request.maxSize &&
                           LimitSize(codec, *request.maxSize, request.mayUpscale, settings);
    if (isLimited)
    {
        codec = make();
    }
    stream.notes.insert(stream.notes.end(), notes.begin(), notes.end());
    if (stream.source.kind == StreamKind::Audio)
    {
        ChooseAudioBitrate(codec);
        TryBitrate(stream, codec);
    }
    NoteChanges(stream, codec, isLimited);
    return codec;
}

} // namespace Zelnor::Media
