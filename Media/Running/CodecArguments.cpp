#include "Media/Running/CodecArguments.h"

#include "Media/MediaException.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Running/BitrateArguments.h"
#include "Media/Running/EncoderProfiles.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <iterator>

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

constexpr const char* kUnit = "Media/Running/CodecArguments";

/// The text or number of a setting.
std::string ValueOf(const Property& setting)
{
    switch (setting.GetType())
    {
    case PROPERTY_TYPE_INT64:
        return std::to_string(setting.GetInt64());
    case PROPERTY_TYPE_STRING:
        return setting.GetString();
    case PROPERTY_TYPE_RATIO:
        return std::to_string(setting.GetRatio().numerator()) + "/" +
               std::to_string(setting.GetRatio().denominator());
    case PROPERTY_TYPE_NONE:
    case PROPERTY_TYPE_GROUP:
        break;
    }
    ZELNOR_THROW(kUnit, MakeError<RunException>("The setting '" + setting.GetName() + "' has no value"));
}

void AddOption(const AVCodec& encoder, const std::string& name, const Property& setting,
               CodecOptions& options)
{
    if (!HasOption(encoder, name))
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>(std::string("The encoder ") + encoder.name +
                                                    " has no option for '" + setting.GetName() + "'"));
    }
    options.emplace_back(name, ValueOf(setting));
}

using Handler = void (*)(const AVCodec& encoder, const Property& setting, CodecOptions& options);

/// Facts about the stream that other places read or that describe it.
void Ignore(const AVCodec&, const Property&, CodecOptions&) {}

void AddTag(const AVCodec&, const Property& setting, CodecOptions& options)
{
    options.emplace_back("tag", ValueOf(setting));
}

void AddThreads(const AVCodec&, const Property& setting, CodecOptions& options)
{
    options.emplace_back("threads", ValueOf(setting));
}

void UseAllProcessors(const AVCodec&, const Property& setting, CodecOptions& options)
{
    if (setting.GetInt64() != 0)
    {
        options.emplace_back("threads", "0");
    }
}

void AddGlobalHeader(const AVCodec&, const Property& setting, CodecOptions& options)
{
    if (setting.GetInt64() != 0)
    {
        options.emplace_back("flags", "+global_header");
    }
}

void AddMainStream(const AVCodec&, const Property& setting, CodecOptions& options)
{
    options.emplace_back("disposition", setting.GetInt64() != 0 ? "default" : "0");
}

void AddKeyOnly(const AVCodec&, const Property& setting, CodecOptions& options)
{
    if (setting.GetInt64() != 0)
    {
        options.emplace_back("g", "1");
    }
}

void AddGroupOfOptions(const AVCodec& encoder, const Property& setting, CodecOptions& options)
{
    for (const Property& option : setting)
    {
        AddOption(encoder, option.GetName(), option, options);
    }
}

template <const char* const& Name>
void AddNamed(const AVCodec& encoder, const Property& setting, CodecOptions& options)
{
    AddOption(encoder, Name, setting, options);
}

constexpr const char* kBFrames = "bf";
constexpr const char* kGroupLength = "g";
constexpr const char* kMotionRange = "me_range";
constexpr const char* kSliceSize = "slice-max-size";
constexpr const char* kX264Options = "x264opts";
constexpr const char* kDpi = "dpi";

struct Row
{
    const std::string* key;
    Handler handler;
};

const Row* FindRow(const std::string& key)
{
    static const Row s_rows[] = {
        // What describes the stream, and what filters, bitrates and passes read.
        {&IFormat::TAG_METADATA, Ignore},
        {&IFormatCodec::TAG_NAME, Ignore},
        {&IFormatCodec::TAG_CODEC_ID, Ignore},
        {&IFormatCodec::TAG_LANGUAGE, Ignore},
        {&IFormatCodec::TAG_LOSSLESS, Ignore},
        {&IFormatCodec::TAG_PREFERREDIMPL, Ignore},
        {&IFormatCodec::TAG_MULTIPASS_ENCODING, Ignore},
        {&IFormatCodec::TAG_BITRATE, Ignore},
        {&IFormatCodec::TAG_BITRATE_MODE, Ignore},
        {&IFormatCodec::TAG_PEAK_BITRATE, Ignore},
        {&IFormatCodec::TAG_PEAK_BUFFER, Ignore},
        {&IFormatCodec::TAG_QUALITY, Ignore},
        {&IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE, Ignore},
        {&IFormatCodecVideo::TAG_WIDTH, Ignore},
        {&IFormatCodecVideo::TAG_HEIGHT, Ignore},
        {&IFormatCodecVideo::TAG_ASPECTX, Ignore},
        {&IFormatCodecVideo::TAG_ASPECTY, Ignore},
        {&IFormatCodecVideo::TAG_FRAME_ASPECTX, Ignore},
        {&IFormatCodecVideo::TAG_FRAME_ASPECTY, Ignore},
        {&IFormatCodecVideo::TAG_FPS, Ignore},
        {&IFormatCodecVideo::TAG_IMAGE_FLAG, Ignore},
        {&IFormatCodecAudio::TAG_SAMPLE_RATE, Ignore},
        {&IFormatCodecAudio::TAG_SAMPLE_FORMAT, Ignore},
        {&IFormatCodecAudio::TAG_LAYOUT, Ignore},
        {&IFormatCodecAudio::TAG_FRAME_SIZE, Ignore},
        {&IFormatCodecSubtitle::TAG_CHARSET_ENCODING, Ignore},
        // What the encoder is told.
        {&IFormatCodec::TAG_PROFILE, AddProfile},
        {&IFormatCodec::TAG_PRESET, AddPreset},
        {&IFormatCodecVideo::TAG_X264_TUNE, AddTune},
        {&IFormatCodec::TAG_CODEC_OPTIONS_ENCODE, AddGroupOfOptions},
        {&IFormatCodec::TAG_FOURCC, AddTag},
        {&IFormatCodec::TAG_THREAD_NUMBER, AddThreads},
        {&IFormatCodec::TAG_UTILIZE_ALL_RESOURCES, UseAllProcessors},
        {&IFormatCodec::TAG_GLOBAL_HEADER, AddGlobalHeader},
        {&IFormatCodec::TAG_MAIN_STREAM, AddMainStream},
        {&IFormatCodecVideo::TAG_KEY_ONLY, AddKeyOnly},
        {&IFormatCodecVideo::TAG_MAX_B_FRAME_SEQUENCE, AddNamed<kBFrames>},
        {&IFormatCodecVideo::TAG_MAX_I_FRAME_INTERVAL, AddNamed<kGroupLength>},
        {&IFormatCodecVideo::TAG_MOTION_SRCH_RNG, AddNamed<kMotionRange>},
        {&IFormatCodecVideo::TAG_X264_SLICE_MAX_SIZE, AddNamed<kSliceSize>},
        {&IFormatCodecVideo::TAG_X264_OPTS, AddNamed<kX264Options>},
        {&IFormatCodecVideo::TAG_DPI, AddNamed<kDpi>},
    };
    const auto* const found = std::find_if(std::begin(s_rows), std::end(s_rows),
                                           [&key](const Row& row) { return *row.key == key; });
    return found == std::end(s_rows) ? nullptr : found;
}

bool IsLosslessWord(const std::string& implementation)
{
    return implementation == IFormatCodecVideo::ENCODER_LOSSLESS ||
           implementation == IFormatCodecAudio::ENCODER_LOSSLESS;
}

std::string TextUnder(const Property& codec, const std::string& key)
{
    const auto child = codec.FindChild(key);
    return child != codec.end() && child->GetType() == PROPERTY_TYPE_STRING ? child->GetString() : "";
}

void CheckEnabled(const std::string& codecId)
{
    const std::vector<std::string>& disabled = Conf::GetDisabledEncoderList();
    if (std::find(disabled.begin(), disabled.end(), codecId) != disabled.end())
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("Encoding " + codecId + " is disabled"));
    }
}

} // namespace

bool IsCopied(const Property& codec)
{
    const auto lossless = codec.FindChild(IFormatCodec::TAG_LOSSLESS);
    const bool flagged =
        lossless != codec.end() && lossless->GetType() == PROPERTY_TYPE_INT64 && lossless->GetInt64() != 0;
    return flagged || IsLosslessWord(TextUnder(codec, IFormatCodec::TAG_PREFERREDIMPL));
}

bool WantsTwoPasses(const Property& codec)
{
    const auto passes = codec.FindChild(IFormatCodec::TAG_MULTIPASS_ENCODING);
    if (passes == codec.end() || IsCopied(codec))
    {
        return false;
    }
    return passes->GetType() == PROPERTY_TYPE_INT64 ? passes->GetInt64() != 0
                                                    : passes->GetString() == IFormatCodec::TAG_TWO_PASS_MODE;
}

const AVCodec& EncoderFor(const Property& codec)
{
    const std::string codecId = TextUnder(codec, IFormatCodec::TAG_CODEC_ID);
    if (codecId.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("The record '" + codec.GetName() + "' names no codec"));
    }
    CheckEnabled(codecId);
    const AVCodec* const usual = FindEncoder(codecId);
    if (usual == nullptr)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("The installed FFmpeg has no encoder for " + codecId));
    }
    const std::string wanted = TextUnder(codec, IFormatCodec::TAG_PREFERREDIMPL);
    if (wanted.empty() || wanted == IFormatCodec::ENCODER_FFMPEG_IMPL)
    {
        return *usual;
    }
    const AVCodec* const named = avcodec_find_encoder_by_name(wanted.c_str());
    if (named == nullptr || named->id != usual->id)
    {
        ZELNOR_THROW(
            kUnit, MakeError<RunException>("There is no encoder '" + wanted + "' for " + codecId + " here"));
    }
    return *named;
}

CodecOptions EncodingOptions(const Property& codec, const AVCodec& encoder)
{
    CodecOptions options = {{"c", encoder.name}};
    for (const auto& option : BitrateOptions(codec, encoder))
    {
        options.push_back(option);
    }
    for (const Property& setting : codec)
    {
        const Row* const row = FindRow(setting.GetName());
        if (row == nullptr && setting.GetName() != kPixelFormatKey)
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>("The setting '" + setting.GetName() +
                                                        "' of a stream is not known here"));
        }
        if (row != nullptr)
        {
            row->handler(encoder, setting, options);
        }
    }
    if (WantsTwoPasses(codec) && !HasTwoPasses(encoder))
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>(std::string("The encoder ") + encoder.name +
                                                    " does not encode in two passes"));
    }
    return options;
}

} // namespace Zelnor::Media
