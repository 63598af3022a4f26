#include "Media/Options/OptionRules.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Options/OptionTables.h"
#include "Media/Options/OptionValue.h"

#include <string_view>

namespace Zelnor::Media
{

namespace
{

/// Streams of which kind an option is for, in FFmpeg's flags.
int KindFlag(AVMediaType type)
{
    switch (type)
    {
    case AVMEDIA_TYPE_VIDEO:
        return AV_OPT_FLAG_VIDEO_PARAM;
    case AVMEDIA_TYPE_AUDIO:
        return AV_OPT_FLAG_AUDIO_PARAM;
    case AVMEDIA_TYPE_SUBTITLE:
        return AV_OPT_FLAG_SUBTITLE_PARAM;
    default:
        return 0;
    }
}

/// The option of the codec, or of every codec; without an option when there is none, or FFmpeg sets it only
/// by itself. Not found by a prefix, nor with the name of a stream after it.
FoundOption FindOption(const AVCodec& codec, int direction, const std::string& name)
{
    const AVClass* const owners[] = {codec.priv_class, avcodec_get_class()};
    for (const AVClass* const owner : owners)
    {
        const AVClass* object = owner;
        const AVOption* const option =
            owner == nullptr || name.find('\0') != std::string::npos
                ? nullptr
                : av_opt_find(&object, name.c_str(), nullptr, direction | KindFlag(codec.type),
                              AV_OPT_SEARCH_FAKE_OBJ);
        if (option != nullptr && (option->flags & (AV_OPT_FLAG_READONLY | AV_OPT_FLAG_EXPORT)) == 0)
        {
            return {owner, codec.priv_class, option};
        }
    }
    return {};
}

bool IsText(const AVOption& option)
{
    return option.type == AV_OPT_TYPE_STRING || option.type == AV_OPT_TYPE_DICT ||
           option.type == AV_OPT_TYPE_BINARY;
}

CheckedOption Fault(const std::string& reason) { return {"", reason}; }

CheckedOption NoSuchOption(const char* what, const AVCodec& codec, const std::string& name)
{
    return Fault(std::string(what) + " " + codec.name + " does not have an option '" + name + "'");
}

CheckedOption NotAllowed(const std::string& codec, const std::string& name)
{
    return Fault("the option '" + name + "' of " + codec + " cannot be set by a job or a preset");
}

} // namespace

CheckedOption CheckEncoderOption(const AVCodec& encoder, const std::string& name, const Core::Property& value)
{
    const FoundOption found = FindOption(encoder, AV_OPT_FLAG_ENCODING_PARAM, name);
    if (found.option == nullptr)
    {
        return NoSuchOption("encoder", encoder, name);
    }
    if (!IsText(*found.option))
    {
        return IsAllowedForEncoders(name) ? CheckOptionValue(found, value)
                                          : NotAllowed(std::string("encoder ") + encoder.name, name);
    }
    if (const TextRule* const rule = FindTextRule(encoder.name, name))
    {
        return CheckText(*rule, value);
    }
    if (const ParametersRule* const rule = FindParametersRule(encoder.name, name))
    {
        return CheckParameters(*rule, value);
    }
    return NotAllowed(std::string("encoder ") + encoder.name, name);
}

CheckedOption CheckDecoderOption(const AVCodec* decoder, const std::string& name, const Core::Property& value)
{
    if (decoder == nullptr)
    {
        return IsAllowedForDecoders(name) ? CheckedOption() : NotAllowed("decoders", name);
    }
    const FoundOption found = FindOption(*decoder, AV_OPT_FLAG_DECODING_PARAM, name);
    if (found.option == nullptr)
    {
        return NoSuchOption("decoder", *decoder, name);
    }
    return IsAllowedForDecoders(name) && !IsText(*found.option)
               ? CheckOptionValue(found, value)
               : NotAllowed(std::string("decoder ") + decoder->name, name);
}

} // namespace Zelnor::Media
