#include "Media/Running/CodecArguments.h"

#include "Media/Options/OptionRules.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Planning/VideoSettings.h"
#include "Media/Running/BitrateArguments.h"
#include "Media/Running/EncoderProfiles.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Core::Property;

/// What a handler reads and writes.
struct Context
{
    const AVCodec& encoder;
    const Place& place; ///< of the stream
    CodecOptions& options;
    FaultList& faults;
};

void AddOption(const Context& context, const std::string& key, const std::string& name,
               const Property& setting)
{
    const CheckedOption checked = CheckEncoderOption(context.encoder, name, setting);
    if (checked.fault.empty())
    {
        context.options.emplace_back(name, checked.value);
    }
    else
    {
        context.faults.Add(JobFault::Encoder, context.place.At(key), checked.fault);
    }
}

constexpr const char* kGlobalHeader = "+global_header";

using Handler = void (*)(const Context& context, const Property& setting);

void HandleProfile(const Context& context, const Property& setting)
{
    AddProfile(context.encoder, setting, context.options, context.place, context.faults);
}

void HandlePreset(const Context& context, const Property& setting)
{
    AddPreset(context.encoder, setting, context.options, context.place, context.faults);
}

void HandleTune(const Context& context, const Property& setting)
{
    AddTune(context.encoder, setting, context.options, context.place, context.faults);
}

/// As the number that four characters are: ffmpeg would take "1234" for another one.
void AddTag(const Context& context, const Property& setting)
{
    long long number = setting.GetType() == PROPERTY_TYPE_INT64 ? setting.GetInt64() : 0;
    if (setting.GetType() == PROPERTY_TYPE_STRING)
    {
        const std::string& text = setting.GetString();
        std::for_each(text.rbegin(), text.rend(),
                      [&number](char c) { number = number * 256 + static_cast<unsigned char>(c); });
    }
    context.options.emplace_back("tag", std::to_string(number));
}

void AddThreads(const Context& context, const Property& setting)
{
    context.options.emplace_back("threads", setting.GetType() == PROPERTY_TYPE_INT64
                                                ? std::to_string(setting.GetInt64())
                                                : setting.GetString());
}

void UseAllProcessors(const Context& context, const Property& setting)
{
    if (setting.GetInt64() != 0)
    {
        context.options.emplace_back("threads", "0");
    }
}

void AddGlobalHeader(const Context& context, const Property& setting)
{
    if (setting.GetInt64() != 0)
    {
        context.options.emplace_back("flags", kGlobalHeader);
    }
}

void AddMainStream(const Context& context, const Property& setting)
{
    context.options.emplace_back("disposition", setting.GetInt64() != 0 ? "default" : "0");
}

void AddKeyOnly(const Context& context, const Property& setting)
{
    if (setting.GetInt64() != 0)
    {
        context.options.emplace_back("g", "1");
    }
}

void AddGroupOfOptions(const Context& context, const Property& setting)
{
    for (const Property& option : setting)
    {
        AddOption(context, setting.GetName() + "." + option.GetName(), option.GetName(), option);
    }
}

template <const char* const& Name>
void AddNamed(const Context& context, const Property& setting)
{
    AddOption(context, setting.GetName(), Name, setting);
}

constexpr const char* kBFrames = "bf";
constexpr const char* kGroupLength = "g";
constexpr const char* kMotionRange = "me_range";
constexpr const char* kSliceSize = "slice-max-size";
constexpr const char* kX264Options = "x264opts";
constexpr const char* kDpi = "dpi";

struct OptionRow
{
    const std::string* key;
    Handler handler;
};

/// libvpx refuses transparency beside the frames that it makes of others, which it does by default.
void AllowTransparency(const Property& codec, const AVCodec& encoder, CodecOptions& options)
{
    constexpr const char* kOption = "auto-alt-ref";
    const bool isSet = std::any_of(options.begin(), options.end(),
                                   [](const auto& option) { return option.first == kOption; });
    if (encoder.name == std::string_view("libvpx") && HasAlpha(PixelFormatIn(codec)) && !isSet)
    {
        options.emplace_back(kOption, "0");
    }
}

/// What the encoder is told. The other settings describe the stream, or filters, bitrates and passes read
/// them.
const OptionRow* FindRow(const std::string& key)
{
    static const OptionRow s_rows[] = {
        {&IFormatCodec::TAG_PROFILE, HandleProfile},
        {&IFormatCodec::TAG_PRESET, HandlePreset},
        {&IFormatCodecVideo::TAG_X264_TUNE, HandleTune},
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
                                           [&key](const OptionRow& row) { return *row.key == key; });
    return found == std::end(s_rows) ? nullptr : found;
}

/// The flags of the group, and the one that a setting gives; empty when they contradict each other.
std::string UnitedFlags(const std::string& one, const std::string& other)
{
    const std::string& free = one == kGlobalHeader ? other : one;
    return free.find("-global_header") == std::string::npos ? free + kGlobalHeader : "";
}

/// ffmpeg takes the last value of an option. Where another setting gives the encoder an option of the group,
/// one of the two would be lost without a word.
void UniteOptions(const Property& group, const Context& context)
{
    for (const Property& option : group)
    {
        const std::string& name = option.GetName();
        const auto isNamed = [&name](const auto& known) { return known.first == name; };
        const auto first = std::find_if(context.options.begin(), context.options.end(), isNamed);
        while (first != context.options.end())
        {
            const auto second = std::find_if(first + 1, context.options.end(), isNamed);
            if (second == context.options.end())
            {
                break;
            }
            const std::string united = first->second == second->second ? first->second
                                       : name == "flags" ? UnitedFlags(first->second, second->second)
                                                         : "";
            if (united.empty())
            {
                context.faults.Add(JobFault::Encoder, context.place.At(group.GetName() + "." + name),
                                   "another setting gives the encoder '" + name + "' another value");
            }
            first->second = united;
            context.options.erase(second);
        }
    }
}

} // namespace

bool WantsTwoPasses(const Property& codec)
{
    const auto passes = codec.FindChild(IFormatCodec::TAG_MULTIPASS_ENCODING);
    if (passes == codec.end())
    {
        return false;
    }
    return passes->GetType() == PROPERTY_TYPE_INT64 ? passes->GetInt64() != 0
                                                    : passes->GetString() == IFormatCodec::TAG_TWO_PASS_MODE;
}

const AVCodec* EncoderFor(const Property& codec, const std::string& container, const Place& place,
                          FaultList& faults)
{
    const EncoderChoice choice = ChooseEncoderFor(codec, container);
    if (choice.encoder == nullptr)
    {
        faults.Add(JobFault::Encoder, place.At(choice.key), choice.fault);
    }
    return choice.encoder;
}

void AddInterlacedFlags(CodecOptions& options)
{
    constexpr const char* kFlags = "+ildct+ilme";
    const auto flags = std::find_if(options.begin(), options.end(),
                                    [](const auto& option) { return option.first == "flags"; });
    if (flags == options.end())
    {
        options.emplace_back("flags", kFlags);
    }
    else
    {
        // What the record says by FFmpeg's names comes after it and wins.
        flags->second =
            kFlags + (flags->second.front() == '+' || flags->second.front() == '-' ? flags->second
                                                                                   : "+" + flags->second);
    }
}

CodecOptions EncodingOptions(const Property& codec, const AVCodec& encoder, const Place& place,
                             FaultList& faults)
{
    CodecOptions options = {{"c", encoder.name}};
    for (const auto& option : BitrateOptions(codec, encoder, place, faults))
    {
        options.push_back(option);
    }
    const Context context = {encoder, place, options, faults};
    for (const Property& setting : codec)
    {
        if (const OptionRow* const row = FindRow(setting.GetName()))
        {
            row->handler(context, setting);
        }
    }
    const auto group = codec.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE);
    if (group != codec.end())
    {
        UniteOptions(*group, context);
    }
    AllowTransparency(codec, encoder, options);
    if (WantsTwoPasses(codec) && !HasTwoPasses(encoder))
    {
        faults.Add(JobFault::Encoder, place.At(IFormatCodec::TAG_MULTIPASS_ENCODING),
                   std::string("encoder ") + encoder.name + " does not support two passes");
    }
    return options;
}

} // namespace Zelnor::Media
