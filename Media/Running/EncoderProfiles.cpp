#include "Media/Running/EncoderProfiles.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Options/VideoWords.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecVideo;
using Core::Property;

/// Whether the encoder has a profile of that name.
bool HasProfile(const AVCodec& encoder, const std::string& name)
{
    const AVClass* common = avcodec_get_class();
    const AVOption* const profile = av_opt_find(&common, "profile", nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ);
    const AVClass* own = encoder.priv_class;
    return profile != nullptr && own != nullptr &&
           av_opt_find(&own, name.c_str(), profile->unit, 0, AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}

void AddFault(const AVCodec& encoder, const Property& setting, const Place& place, FaultList& faults)
{
    faults.Add(JobFault::Encoder, place.At(setting.GetName()),
               std::string("encoder ") + encoder.name + " does not have a " + setting.GetName() + " '" +
                   setting.GetString() + "'");
}

/// "TAG_X264" or "TAG_X265", whose texts the encoder understands as they are; empty for other encoders.
std::string WordFamily(const AVCodec& encoder)
{
    const std::string_view name = encoder.name;
    return name.substr(0, 7) == "libx264" ? "TAG_X264" : name.substr(0, 7) == "libx265" ? "TAG_X265" : "";
}

struct ProfileWord
{
    AVCodecID codec;
    const std::string* word;
    const char* name;
};

/// FFmpeg's name of a profile where it is not the vocabulary's.
std::string ProfileName(const AVCodec& encoder, const std::string& word)
{
    static const ProfileWord s_words[] = {
        {AV_CODEC_ID_MPEG4, &IFormatCodecVideo::TAG_MPEG4_PROFILE_SIMPLE, "mpeg4_sp"},
        {AV_CODEC_ID_MPEG4, &IFormatCodecVideo::TAG_MPEG4_PROFILE_CORE, "mpeg4_core"},
        {AV_CODEC_ID_MPEG4, &IFormatCodecVideo::TAG_MPEG4_PROFILE_MAIN, "mpeg4_main"},
        {AV_CODEC_ID_MPEG4, &IFormatCodecVideo::TAG_MPEG4_PROFILE_ADVANCED_SIMPLE, "mpeg4_asp"},
    };
    const auto* const found = std::find_if(std::begin(s_words), std::end(s_words), [&](const auto& row) {
        return row.codec == encoder.id && *row.word == word;
    });
    return found == std::end(s_words) ? word : found->name;
}

struct SpeedRow
{
    const std::string* word;
    const char* decision; ///< how macroblocks are decided on
    const char* trellis;
};

/// FFmpeg's encoder of MPEG-4 has no speed presets of its own; these are its settings of that effect.
const SpeedRow* FindMpeg4Speed(const std::string& word)
{
    static const SpeedRow s_rows[] = {
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_ULTRAFAST, "simple", "0"},
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_SUPERFAST, "simple", "0"},
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_VERYFAST, "simple", "0"},
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_FASTER, "bits", "0"},
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_FAST, "bits", "0"},
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_MEDIUM, "bits", "1"},
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_SLOW, "rd", "1"},
        {&IFormatCodecVideo::TAG_MPEG4_PRESET_SLOWER, "rd", "2"},
    };
    const auto* const found = std::find_if(std::begin(s_rows), std::end(s_rows),
                                           [&word](const SpeedRow& row) { return *row.word == word; });
    return found == std::end(s_rows) ? nullptr : found;
}

} // namespace

void AddProfile(const AVCodec& encoder, const Property& setting, CodecOptions& options, const Place& place,
                FaultList& faults)
{
    const std::string family = WordFamily(encoder);
    const std::string name = ProfileName(encoder, setting.GetString());
    const bool known = family.empty() ? HasProfile(encoder, name) : IsVideoWord(family + "_PROFILE_", name);
    if (!known)
    {
        AddFault(encoder, setting, place, faults);
        return;
    }
    options.emplace_back("profile", name);
}

void AddPreset(const AVCodec& encoder, const Property& setting, CodecOptions& options, const Place& place,
               FaultList& faults)
{
    const std::string family = WordFamily(encoder);
    const SpeedRow* const speed =
        encoder.id == AV_CODEC_ID_MPEG4 ? FindMpeg4Speed(setting.GetString()) : nullptr;
    if (!family.empty() && IsVideoWord(family + "_PRESET_", setting.GetString()))
    {
        options.emplace_back("preset", setting.GetString());
    }
    else if (speed != nullptr)
    {
        options.emplace_back("mbd", speed->decision);
        options.emplace_back("trellis", speed->trellis);
    }
    else
    {
        AddFault(encoder, setting, place, faults);
    }
}

void AddTune(const AVCodec& encoder, const Property& setting, CodecOptions& options, const Place& place,
             FaultList& faults)
{
    const std::string family = WordFamily(encoder);
    if (family.empty() || !IsVideoWord(family + "_TUNE_", setting.GetString()))
    {
        AddFault(encoder, setting, place, faults);
        return;
    }
    options.emplace_back("tune", setting.GetString());
}

} // namespace Zelnor::Media
