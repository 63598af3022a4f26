#include "Media/Planning/WorkTags.h"

#include "Media/Options/SettingRules.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatFile;
using Core::Property;

/// The vocabulary's names of tags about the work.
const std::array<const std::string*, 14>& KnownNames()
{
    static const std::array<const std::string*, 14> s_names = {
        &IFormatFile::TAG_TITLE,        &IFormatFile::TAG_ARTIST,    &IFormatFile::TAG_ALBUM,
        &IFormatFile::TAG_ALBUM_ARTIST, &IFormatFile::TAG_COMPOSER,  &IFormatFile::TAG_PERFORMER,
        &IFormatFile::TAG_PUBLISHER,    &IFormatFile::TAG_COPYRIGHT, &IFormatFile::TAG_COMMENT,
        &IFormatFile::TAG_GENRE,        &IFormatFile::TAG_DATE,      &IFormatFile::TAG_YEAR,
        &IFormatFile::TAG_DISC,         &IFormatFile::TAG_TRACK};
    return s_names;
}

/// In lower case: what muxers and demuxers say of a file, its brands, its programs, its sizes and times.
constexpr std::array<std::string_view, 55> kAboutFile = {
    "alpha_mode",
    "application_platform",
    "bps",
    "canseektoend",
    "com.android.version",
    "company_name",
    "compatible_brands",
    "creation_time",
    "data_type",
    "datasize",
    "deviceconformancetemplate",
    "duration",
    "encoder",
    "encoder_options",
    "encoding params",
    "file_package_name",
    "file_package_umid",
    "filename",
    "filesize",
    "generation_uid",
    "handler_name",
    "hasaudio",
    "hascuepoints",
    "haskeyframes",
    "hasmetadata",
    "hasvideo",
    "isvbr",
    "itunsmpb",
    "lastkeyframelocation",
    "lastkeyframetimestamp",
    "lasttimestamp",
    "major_brand",
    "material_package_name",
    "material_package_umid",
    "metadatacreator",
    "mimetype",
    "minor_version",
    "modification_date",
    "number_of_bytes",
    "number_of_frames",
    "operational_pattern_ul",
    "product_name",
    "product_uid",
    "product_version",
    "product_version_num",
    "reel_umid",
    "rotate",
    "software",
    "timecode",
    "toolkit_version",
    "toolkit_version_num",
    "track_name",
    "uid",
    "variant_bitrate",
    "vendor_id",
};

bool BeginsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

bool IsAboutFile(const std::string& name)
{
    const std::string lower = LowerCase(name);
    // Matroska's statistics may carry a language: "BPS-eng".
    const std::string plain = lower.substr(0, lower.find("-eng"));
    return BeginsWith(lower, "_statistics_") || BeginsWith(lower, "wmfsdk") ||
           std::find(kAboutFile.begin(), kAboutFile.end(), plain) != kAboutFile.end();
}

std::string SpellingOf(const std::string& name)
{
    for (const std::string* const known : KnownNames())
    {
        if (LowerCase(name) == LowerCase(*known))
        {
            return *known;
        }
    }
    return name;
}

/// "location-eng" says what "location" says.
bool IsRepeated(const Property& metadata, const Property& tag)
{
    const std::string& name = tag.GetName();
    constexpr std::size_t kSuffix = 4;
    if (name.size() <= kSuffix || name[name.size() - kSuffix] != '-')
    {
        return false;
    }
    const auto plain = metadata.FindChild(name.substr(0, name.size() - kSuffix));
    return plain != metadata.end() && plain->GetType() == PROPERTY_TYPE_STRING &&
           plain->GetString() == tag.GetString();
}

TagList TagsIn(const Property& metadata)
{
    TagList tags;
    for (const Property& tag : metadata)
    {
        if (tag.GetType() == PROPERTY_TYPE_STRING && !tag.GetString().empty() &&
            !IsAboutFile(tag.GetName()) && !IsRepeated(metadata, tag) &&
            FindTag(tags, tag.GetName()) == nullptr)
        {
            tags.emplace_back(SpellingOf(tag.GetName()), tag.GetString());
        }
    }
    return tags;
}

/// The one stream of an Ogg file, whose tags are all that the file has; null for other files.
const MediaStream* FindSpeakingStream(const MediaFile& source)
{
    const MediaStream* only = nullptr;
    for (const MediaStream& stream : source.streams)
    {
        if (!stream.isAttachedPicture && stream.kind == StreamKind::Audio)
        {
            if (only != nullptr)
            {
                return nullptr;
            }
            only = &stream;
        }
        else if (stream.kind == StreamKind::Video && !stream.isAttachedPicture)
        {
            return nullptr;
        }
    }
    return source.demuxer == "ogg" ? only : nullptr;
}

} // namespace

TagList WorkTagsOf(const MediaFile& source)
{
    TagList tags = TagsIn(source.descriptor->GetMetadata());
    if (const MediaStream* const stream = FindSpeakingStream(source))
    {
        for (const auto& tag : TagsIn(stream->descriptor->GetMetadata()))
        {
            if (FindTag(tags, tag.first) == nullptr)
            {
                tags.push_back(tag);
            }
        }
    }
    return tags;
}

TagList WorkTagsOf(const MediaFile& source, const MediaStream& stream)
{
    if (&stream == FindSpeakingStream(source))
    {
        return {};
    }
    TagList tags = TagsIn(stream.descriptor->GetMetadata());
    tags.erase(std::remove_if(
                   tags.begin(), tags.end(),
                   [](const auto& tag) { return LowerCase(tag.first) == Conf::IFormatCodec::TAG_LANGUAGE; }),
               tags.end());
    return tags;
}

bool IsAboutLoudness(const std::string& name)
{
    const std::string lower = LowerCase(name);
    return BeginsWith(lower, "replaygain_") || BeginsWith(lower, "r128_") || lower == "itunnorm";
}

std::string FindTagFault(const std::string& name, const std::string& text)
{
    // An argument of a program has at most 128 KiB on Linux.
    constexpr std::size_t kLongest = 65536;
    Property group(IFormat::TAG_METADATA);
    group.SetChildT(name, text);
    const auto faults = FindChildFaults(group);
    return !faults.empty()                        ? faults.front().reason
           : name.size() + text.size() > kLongest ? "is longer than 65536 bytes"
                                                  : "";
}

} // namespace Zelnor::Media
