#include "Media/Running/BitrateArguments.h"

#include "Media/Planning/EncoderCapabilities.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

std::string ModeOf(const Property& codec)
{
    const auto mode = codec.FindChild(IFormatCodec::TAG_BITRATE_MODE);
    return mode == codec.end() ? IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO : mode->GetString();
}

long long ProposedBitrate(const Property& codec)
{
    const Property::Ratio& rate = codec[IFormatCodecVideo::TAG_FPS].GetRatio();
    const long long proposed = Conf::GetDefVideoBitrate(
        codec[IFormatCodec::TAG_CODEC_ID].GetString(), codec[IFormatCodecVideo::TAG_WIDTH].GetInt64(),
        codec[IFormatCodecVideo::TAG_HEIGHT].GetInt64(),
        static_cast<double>(rate.numerator()) / static_cast<double>(rate.denominator()));
    return std::min<long long>(proposed, IFormatCodecVideo::MAX_VIDEO_BITRATE);
}

/// Whether the calculator can tell the bounds of the record's bitrate, or propose one.
bool CanCalculate(const Property& codec)
{
    return codec.ChildExists(IFormatCodecVideo::TAG_WIDTH) &&
           codec.ChildExists(IFormatCodecVideo::TAG_HEIGHT) && codec.ChildExists(IFormatCodecVideo::TAG_FPS);
}

/// The record with everything that the calculator reads.
Property Complete(Property codec)
{
    const bool isVideo = codec.GetName() == IFormatCodecVideo::TAG_FORMAT_CODEC_VIDEO;
    if (isVideo && !codec.ChildExists(IFormatCodec::TAG_BITRATE))
    {
        codec.SetChildT(IFormatCodec::TAG_BITRATE, ProposedBitrate(codec));
    }
    if (!codec.ChildExists(IFormatCodec::TAG_QUALITY))
    {
        // The calculator asks for a quality, and this one scales nothing.
        codec.SetChildT(IFormatCodec::TAG_QUALITY, 0LL);
    }
    return codec;
}

/// FFmpeg's bounds of a bitrate have 32 bits.
std::string Bound(long long bitrate)
{
    return std::to_string(std::min<long long>(bitrate, std::numeric_limits<std::int32_t>::max()));
}

std::string Bound(const Property& codec, const std::string& key, long long otherwise)
{
    const auto child = codec.FindChild(key);
    return Bound(child == codec.end() ? otherwise : child->GetInt64());
}

CodecOptions VideoBitrate(const Property& codec, const std::string& mode)
{
    long long bitrate = codec[IFormatCodec::TAG_BITRATE].GetInt64();
    const long long quality = codec[IFormatCodec::TAG_QUALITY].GetInt64();
    if (mode == IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO)
    {
        CodecOptions options = {{"b", std::to_string(bitrate)}};
        if (codec.ChildExists(IFormatCodec::TAG_PEAK_BITRATE))
        {
            options.emplace_back("maxrate", Bound(codec, IFormatCodec::TAG_PEAK_BITRATE, 0));
            options.emplace_back("bufsize", Bound(codec, IFormatCodec::TAG_PEAK_BUFFER, 2 * bitrate));
        }
        return options;
    }
    if (mode == IFormatCodec::TAG_BITRATE_MODE_VBR && quality >= 1 && quality <= IFormatCodec::MAX_QUALITY)
    {
        bitrate = Conf::NormBitrate(bitrate, static_cast<int>(quality));
    }
    const long long peak = Conf::GetMaxBitrate(codec);
    return {{"b", std::to_string(bitrate)},
            {"minrate", std::to_string(Conf::GetMinBitrate(codec))},
            {"maxrate", Bound(codec, IFormatCodec::TAG_PEAK_BITRATE, peak)},
            {"bufsize", Bound(codec, IFormatCodec::TAG_PEAK_BUFFER, peak)}};
}

/// Encoders that cannot vary their bitrate.
bool IsConstant(const AVCodec& encoder)
{
    constexpr std::array<std::string_view, 6> kEncoders = {"ac3", "eac3", "mp2", "dca", "wmav1", "wmav2"};
    return std::find(kEncoders.begin(), kEncoders.end(), encoder.name) != kEncoders.end();
}

CodecOptions AudioBitrate(const Property& codec, const AVCodec& encoder, const std::string& mode,
                          const Place& place, FaultList& faults)
{
    const bool varies = mode == IFormatCodec::TAG_BITRATE_MODE_VBR;
    const std::string_view name = encoder.name;
    if (varies && IsConstant(encoder))
    {
        faults.Add(JobFault::Encoder, place.At(IFormatCodec::TAG_BITRATE_MODE),
                   std::string("encoder ") + encoder.name + " does not support a variable bitrate");
        return {};
    }
    CodecOptions options = {{"b", std::to_string(codec[IFormatCodec::TAG_BITRATE].GetInt64())}};
    if (name == "libopus" && mode != IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO)
    {
        options.emplace_back("vbr", varies ? "on" : "off");
    }
    else if (name == "libmp3lame" && varies)
    {
        options.emplace_back("abr", "1");
    }
    else if (name == "libvorbis" && varies)
    {
        options.emplace_back("minrate", Bound(Conf::GetMinBitrate(codec)));
        options.emplace_back("maxrate", Bound(Conf::GetMaxBitrate(codec)));
    }
    return options;
}

/// What the calculator needs may be there, and wrong; then that is said already.
void AddMissing(const std::string& mode, bool isProposed, const Place& place, FaultList& faults)
{
    const std::string* const keys[] = {&IFormatCodecVideo::TAG_WIDTH,   &IFormatCodecVideo::TAG_HEIGHT,
                                       &IFormatCodecVideo::TAG_ASPECTX, &IFormatCodecVideo::TAG_ASPECTY,
                                       &IFormatCodecVideo::TAG_FPS,     &IFormatCodec::TAG_BITRATE};
    if (std::any_of(std::begin(keys), std::end(keys),
                    [&](const std::string* key) { return faults.IsAt(place.At(*key)); }))
    {
        return;
    }
    faults.Add(JobFault::Setting,
               place.At(isProposed ? IFormatCodec::TAG_BITRATE : IFormatCodec::TAG_BITRATE_MODE),
               (isProposed ? "missing; one can be proposed" : mode + " needs bounds, which can be told") +
                   std::string(" only for a record with width, height and frameRateRatio"));
}

} // namespace

CodecOptions BitrateOptions(const Property& codec, const AVCodec& encoder, const Place& place,
                            FaultList& faults)
{
    const std::string mode = ModeOf(codec);
    if (encoder.type == AVMEDIA_TYPE_SUBTITLE || IsWithoutBitrate(encoder.id))
    {
        return {};
    }
    if (encoder.type == AVMEDIA_TYPE_AUDIO)
    {
        return codec.ChildExists(IFormatCodec::TAG_BITRATE)
                   ? AudioBitrate(Complete(codec), encoder, mode, place, faults)
                   : CodecOptions();
    }
    const bool isProposed = !codec.ChildExists(IFormatCodec::TAG_BITRATE);
    if ((isProposed || mode != IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO) && !CanCalculate(codec))
    {
        AddMissing(mode, isProposed, place, faults);
        return {};
    }
    return VideoBitrate(Complete(codec), mode);
}

} // namespace Zelnor::Media
