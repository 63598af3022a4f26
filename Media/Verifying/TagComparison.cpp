#include "Media/Verifying/TagComparison.h"

#include "Media/Planning/Containers.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

extern "C" {
#include <libavutil/avstring.h>
}

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatFile;
using Core::Property;

/// Muxers of FFmpeg, and what of a file's tags, a stream's language and its title comes back from what they
/// write. Measured: each one was given every tag of the vocabulary. Of a muxer that is not here, nothing is
/// known.
struct HeldTags
{
    const char* muxers;
    const char* file; ///< names of tags; "*": all; empty: none
    bool language;
    bool title;
};
constexpr const char* kAllTags = "*";
constexpr std::array<HeldTags, 8> kHeldTags = {{
    {"matroska,webm,nut", kAllTags, true, true},
    {"mp4,ipod",
     "title,artist,album,album_artist,composer,comment,genre,date,copyright,description,synopsis,lyrics",
     true, false},
    {"3gp,3g2,psp", "", true, false},
    {"mov", "title,artist,album,comment,genre,date,copyright", false, false},
    {"ogg,oga,ogv,opus,spx", kAllTags, true, false},
    {"asf,asf_stream", kAllTags, true, false},
    {"flac,mp3,caf,wv,tta,flv", kAllTags, false, false},
    {"avi,wav", "title,artist,comment,copyright,genre,date", false, false},
}};

const HeldTags* FindHeldTags(const std::string& container)
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    const auto* const found = std::find_if(kHeldTags.begin(), kHeldTags.end(), [muxer](const HeldTags& row) {
        return muxer != nullptr && av_match_list(muxer->name, row.muxers, ',') != 0;
    });
    return found == kHeldTags.end() ? nullptr : found;
}

std::pair<std::string, std::string> Split(const std::string& tag)
{
    const std::size_t equals = tag.find('=');
    return {LowerCase(tag.substr(0, equals)), equals == std::string::npos ? "" : tag.substr(equals + 1)};
}

/// Some formats have one field for both.
bool IsRemark(const std::string& name) { return name == IFormatFile::TAG_COMMENT || name == "description"; }

/// FFmpeg's muxers write these themselves.
bool IsOfMuxer(const std::string& name)
{
    return name == IFormatFile::TAG_ENCODER || name == IFormatFile::TAG_CREATION_TIME;
}

/// The value of a tag; if there are several, `wanted` when it is among them.
std::optional<std::string> ValueOf(const Property& metadata, const std::string& name,
                                   const std::string& wanted)
{
    std::optional<std::string> value;
    for (const Property& tag : metadata)
    {
        const std::string known = LowerCase(tag.GetName());
        if (tag.GetType() == PROPERTY_TYPE_STRING && (known == name || (IsRemark(known) && IsRemark(name))) &&
            value != wanted)
        {
            value = tag.GetString();
        }
    }
    return value;
}

/// The tag in the file or, as in Ogg, in one of its streams.
std::optional<std::string> ValueIn(const MediaFile& file, const std::string& name, const std::string& wanted)
{
    std::optional<std::string> value = ValueOf(file.descriptor->GetMetadata(), name, wanted);
    for (const MediaStream& stream : file.streams)
    {
        value = value ? value : ValueOf(stream.descriptor->GetMetadata(), name, wanted);
    }
    return value;
}

std::string Shown(const std::optional<std::string>& value) { return value ? "'" + *value + "'" : "none"; }

bool IsLanguageCode(const std::string& text)
{
    constexpr std::size_t kLetters = 3;
    return text.size() == kLetters && text != "und" &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

/// Twenty languages of ISO 639-2 have two codes each: a bibliographic and a terminological one.
std::string Terminological(const std::string& code)
{
    using Pair = std::pair<std::string_view, std::string_view>;
    constexpr std::array<Pair, 20> kPairs = {
        {{"alb", "sqi"}, {"arm", "hye"}, {"baq", "eus"}, {"bur", "mya"}, {"chi", "zho"},
         {"cze", "ces"}, {"dut", "nld"}, {"fre", "fra"}, {"geo", "kat"}, {"ger", "deu"},
         {"gre", "ell"}, {"ice", "isl"}, {"mac", "mkd"}, {"mao", "mri"}, {"may", "msa"},
         {"per", "fas"}, {"rum", "ron"}, {"slo", "slk"}, {"tib", "bod"}, {"wel", "cym"}}};
    const auto* const found =
        std::find_if(kPairs.begin(), kPairs.end(), [&code](const Pair& pair) { return pair.first == code; });
    return found == kPairs.end() ? code : std::string(found->second);
}

} // namespace

std::vector<TargetDifference> CompareFileTags(const ExpectedFile& wanted, const MediaFile& found)
{
    std::vector<TargetDifference> differences;
    const HeldTags* const held = FindHeldTags(wanted.container);
    for (const std::string& tag : wanted.tags)
    {
        const auto [name, value] = Split(tag);
        const bool isHeld = held != nullptr && (held->file == std::string_view(kAllTags) ||
                                                av_match_list(name.c_str(), held->file, ',') != 0);
        if (!isHeld || value.empty() || IsOfMuxer(name))
        {
            continue;
        }
        const std::optional<std::string> there = ValueIn(found, name, value);
        if (there != value)
        {
            differences.push_back({wanted.place, "tag " + name, Shown(value), Shown(there)});
        }
    }
    return differences;
}

std::vector<TargetDifference> CompareStreamTags(const ExpectedFile& file, const ExpectedStream& wanted,
                                                const MediaStream& found)
{
    std::vector<TargetDifference> differences;
    const HeldTags* const held = FindHeldTags(file.container);
    for (const std::string& tag : wanted.tags)
    {
        const auto [name, value] = Split(tag);
        const bool isLanguage = name == IFormatCodec::TAG_LANGUAGE && IsLanguageCode(value);
        const bool isTitle = name == IFormatFile::TAG_TITLE && !value.empty();
        if (held == nullptr || !((isLanguage && held->language) || (isTitle && held->title)))
        {
            continue;
        }
        const std::optional<std::string> there = ValueOf(found.descriptor->GetMetadata(), name, value);
        const bool isSame =
            there == value || (isLanguage && there && Terminological(*there) == Terminological(value));
        if (!isSame)
        {
            differences.push_back({wanted.place, name, Shown(value), Shown(there)});
        }
    }
    return differences;
}

} // namespace Zelnor::Media
