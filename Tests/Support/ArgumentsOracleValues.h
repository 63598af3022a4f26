#pragma once

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <optional>
#include <regex>
#include <set>
#include <string>

/// \file
/// What the oracle of ffmpeg's arguments takes for the values and options of an encoder.

namespace Zelnor::Testing
{

namespace details
{

inline bool Matches(const std::string& text, const char* pattern)
{
    static std::map<const char*, std::regex> s_patterns;
    const auto known =
        s_patterns.try_emplace(pattern, pattern, std::regex::ECMAScript | std::regex::optimize);
    return std::regex_match(text, known.first->second);
}

/// "x264" for "libx264" and "libx264rgb".
inline bool IsOf(const std::string& encoder, const char* library)
{
    return encoder.compare(0, std::string(library).size(), library) == 0;
}

/// Whether a text among an encoder's options may be one: what is not listed may not.
inline bool MayBeText(const std::string& encoder, const std::string& option, const std::string& value)
{
    if (option == "x264opts" || Matches(option, ".*-params"))
    {
        // Pairs of a name and a word. No name speaks of files, logs or passes, and no word is a path.
        return Matches(value, R"([a-z0-9_-]+=[A-Za-z0-9.,()+-]+(:[a-z0-9_-]+=[A-Za-z0-9.,()+-]+)*)") &&
               !std::regex_search(value,
                                  std::regex("(^|:)[^=]*(file|stat|dump|log|csv|recon|opencl|clbin|path|"
                                             "table|zone|save|load|input|output|plugin)|(^|:)pass="));
    }
    static const std::set<std::string> s_x26x = {"preset", "tune",   "profile", "level",
                                                 "wpredp", "psy-rd", "deblock", "partitions"};
    return (s_x26x.count(option) != 0 && (IsOf(encoder, "libx264") || IsOf(encoder, "libx265")) &&
            Matches(value, "[a-z0-9.,:-]+")) ||
           (option == "gop_timecode" && Matches(value, "[0-9:;.]+"));
}

/// What ffmpeg's libraries say an option is, of the codec or of all codecs.
inline const AVOption* OptionOf(const AVCodec& codec, const std::string& name)
{
    for (const AVClass* owner : {codec.priv_class, avcodec_get_class()})
    {
        const AVOption* each = nullptr;
        while (owner != nullptr && (each = av_opt_next(&owner, each)) != nullptr)
        {
            if (each->type != AV_OPT_TYPE_CONST && name == each->name)
            {
                return each;
            }
        }
    }
    return nullptr;
}

/// Options of the program ffmpeg with the name of a codec's option, which it takes for itself.
inline bool IsOfTheProgram(const std::string& name)
{
    static const std::set<std::string> s_names = {"ab",
                                                  "ac",
                                                  "ar",
                                                  "aspect",
                                                  "bits_per_raw_sample",
                                                  "ch_layout",
                                                  "channel_layout",
                                                  "passlogfile",
                                                  "stats",
                                                  "time_base",
                                                  "top",
                                                  "s",
                                                  "r",
                                                  "pix_fmt",
                                                  "sample_fmt",
                                                  "pass",
                                                  "vstats",
                                                  "progress",
                                                  "report",
                                                  "psnr"};
    return s_names.count(name) != 0;
}

/// A number, or a few words: never an expression or a path.
inline bool IsPlain(const std::string& value)
{
    return Matches(value, R"([A-Za-z0-9_+.()-]+(/[0-9]+)?)") && value.find("pass") == std::string::npos &&
           value.find("..") == std::string::npos && std::count(value.begin(), value.end(), '(') < 2;
}

inline std::string TextOf(const Core::Property& value)
{
    switch (value.GetType())
    {
    case PROPERTY_TYPE_INT64:
        return std::to_string(value.GetInt64());
    case PROPERTY_TYPE_STRING:
        return value.GetString();
    case PROPERTY_TYPE_RATIO: {
        const std::string denominator = std::to_string(value.GetRatio().denominator());
        return std::to_string(value.GetRatio().numerator()) + (denominator == "1" ? "" : "/" + denominator);
    }
    default:
        return "";
    }
}

inline std::optional<std::string> TextUnder(const Core::Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    return child == record.end() ? std::nullopt : std::optional(TextOf(*child));
}

inline std::optional<std::string> TextUnder(const Core::Property& record, const std::string& group,
                                            const std::string& key)
{
    const auto child = record.FindChild(group);
    return child == record.end() || child->GetType() != PROPERTY_TYPE_GROUP ? std::nullopt
                                                                            : TextUnder(*child, key);
}

} // namespace details

} // namespace Zelnor::Testing
