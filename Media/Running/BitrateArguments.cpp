#include "Media/Running/BitrateArguments.h"

#include "Media/MediaException.h"
#include "Media/Planning/EncoderCapabilities.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

constexpr const char* kUnit = "Media/Running/BitrateArguments";

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

void CheckMode(const std::string& mode)
{
    if (mode != IFormatCodec::TAG_BITRATE_MODE_CBR && mode != IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO &&
        mode != IFormatCodec::TAG_BITRATE_MODE_VBR)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("There is no bitrate mode '" + mode +
                                                    "', only CBR, CBR_AUTO and VBR"));
    }
}

std::string Number(const Property& codec, const std::string& key, long long otherwise)
{
    const auto child = codec.FindChild(key);
    return std::to_string(child == codec.end() ? otherwise : child->GetInt64());
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
            options.emplace_back("maxrate", Number(codec, IFormatCodec::TAG_PEAK_BITRATE, 0));
            options.emplace_back("bufsize", Number(codec, IFormatCodec::TAG_PEAK_BUFFER, 2 * bitrate));
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
            {"maxrate", Number(codec, IFormatCodec::TAG_PEAK_BITRATE, peak)},
            {"bufsize", Number(codec, IFormatCodec::TAG_PEAK_BUFFER, peak)}};
}

/// Encoders that cannot vary their bitrate.
bool IsConstant(const AVCodec& encoder)
{
    constexpr std::array<std::string_view, 6> kEncoders = {"ac3", "eac3", "mp2", "dca", "wmav1", "wmav2"};
    return std::find(kEncoders.begin(), kEncoders.end(), encoder.name) != kEncoders.end();
}

CodecOptions AudioBitrate(const Property& codec, const AVCodec& encoder, const std::string& mode)
{
    const bool varies = mode == IFormatCodec::TAG_BITRATE_MODE_VBR;
    const std::string_view name = encoder.name;
    if (varies && IsConstant(encoder))
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>(std::string("The encoder ") + encoder.name +
                                                    " cannot vary its bitrate"));
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
        options.emplace_back("minrate", std::to_string(Conf::GetMinBitrate(codec)));
        options.emplace_back("maxrate", std::to_string(Conf::GetMaxBitrate(codec)));
    }
    return options;
}

} // namespace

CodecOptions BitrateOptions(const Property& codec, const AVCodec& encoder)
{
    const std::string mode = ModeOf(codec);
    CheckMode(mode);
    if (encoder.type == AVMEDIA_TYPE_SUBTITLE || IsWithoutBitrate(encoder.id))
    {
        return {};
    }
    const Property complete = Complete(codec);
    if (encoder.type == AVMEDIA_TYPE_VIDEO)
    {
        return VideoBitrate(complete, mode);
    }
    return complete.ChildExists(IFormatCodec::TAG_BITRATE) ? AudioBitrate(complete, encoder, mode)
                                                           : CodecOptions();
}

} // namespace Zelnor::Media
