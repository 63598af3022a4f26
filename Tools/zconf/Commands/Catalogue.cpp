#include "Tools/zconf/Commands/Catalogue.h"

#include "Media/Presets/PresetStore.h"
#include "Tools/zconf/Console/Names.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/MediaTypeUtils.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>

namespace Zelnor::Tool
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Accelerator = IFormatCodecVideo::AcceleratorType;

constexpr const char* kCodecPrefix = "CODEC_ID_";

void AddUnlessKnown(std::vector<std::string>& names, const std::vector<std::string>& more)
{
    for (const std::string& name : more)
    {
        if (std::find(names.begin(), names.end(), name) == names.end())
        {
            names.push_back(name);
        }
    }
}

const char* KindOf(const std::string& codecId)
{
    const std::optional<MediaType> mediaType = Conf::GetCodecMediaType(codecId);
    if (!mediaType)
    {
        return "other";
    }
    switch (*mediaType)
    {
    case MEDIA_TYPE_VIDEO:
        return "video";
    case MEDIA_TYPE_AUDIO:
        return "audio";
    case MEDIA_TYPE_SUBTITLE:
        return "subtitle";
    }
    return "other";
}

std::vector<CodecEntry> ReadCodecs()
{
    std::vector<CodecEntry> codecs;
    const auto add = [&](const char* id, const char* ffmpegName) {
        // Not every constant whose text is its name is a codec.
        if (std::string(id).rfind(kCodecPrefix, 0) == 0)
        {
            codecs.push_back({id, KindOf(id), ffmpegName});
        }
    };
#define ZELNOR_SELF(name) add(#name, "");
#define ZELNOR_CODEC(name) add(#name, "AV_" #name);
#define ZELNOR_CODEC_AS(name, enumerator) add(#name, #enumerator);
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_SELF(name) add(#name, "");
#define ZELNOR_CODEC(name) add(#name, "AV_" #name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_CODEC(name) add(#name, "AV_" #name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
#define ZELNOR_SELF(name) add(#name, "");
#define ZELNOR_CODEC(name) add(#name, "AV_" #name);
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    for (CodecEntry& codec : codecs)
    {
        if (codec.id == IFormatCodec::CODEC_ID_NONE)
        {
            codec.ffmpegName = "AV_" + codec.id; // in the tables, though not as a row of the vocabulary
        }
    }
    return codecs;
}

/// The implementations of an accelerator by codec.
using Implementations = std::map<std::string, std::string>;

Implementations EncodersOf(Accelerator accelerator)
{
    std::vector<std::string> codecs;
    Implementations implementations;
    IFormatCodecVideo::GetAcceleratedEncoderCodecs(accelerator, codecs);
    for (const std::string& codec : codecs)
    {
        implementations[codec] = IFormatCodecVideo::GetAcceleratedEncoder(accelerator, codec);
    }
    return implementations;
}

Implementations DecodersOf(Accelerator accelerator)
{
    std::vector<std::string> codecs;
    Implementations implementations;
    IFormatCodecVideo::GetAcceleratedDecoderCodecs(accelerator, codecs);
    for (const std::string& codec : codecs)
    {
        implementations[codec] = IFormatCodecVideo::GetAcceleratedDecoder(accelerator, codec);
    }
    return implementations;
}

using Query = Implementations (*)(Accelerator);

std::vector<std::string> AcceleratedOf(const std::string& codecId, Query query)
{
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < AcceleratorNames().size(); ++i)
    {
        const Implementations implementations = query(static_cast<Accelerator>(i));
        const auto found = implementations.find(codecId);
        if (found != implementations.end())
        {
            lines.push_back(AcceleratorNames()[i] + " " + found->second);
        }
    }
    return lines;
}

std::vector<std::string> CodecsOf(const Implementations& implementations)
{
    std::vector<std::string> codecs;
    for (const auto& [codec, implementation] : implementations)
    {
        codecs.push_back(codec);
    }
    return codecs;
}

/// Implementations, with their accelerator and codec where they belong to one.
std::vector<Description> ListImplementations(const std::vector<std::string>& names, Query query)
{
    std::vector<Description> descriptions;
    for (const std::string& name : names)
    {
        std::string accelerator;
        std::string codecId;
        for (std::size_t i = 0; i < AcceleratorNames().size(); ++i)
        {
            for (const auto& [codec, implementation] : query(static_cast<Accelerator>(i)))
            {
                if (implementation == name)
                {
                    accelerator = AcceleratorNames()[i];
                    codecId = codec;
                }
            }
        }
        descriptions.push_back({{"name", name}, {"accelerator", accelerator}, {"codec", codecId}});
    }
    return descriptions;
}

/// Whether a job can name the encoder as its preferred one: the others belong to applications that bring
/// them along.
bool IsEncoderUsable(const std::string& name)
{
    return name == IFormatCodec::ENCODER_FFMPEG_IMPL || name == IFormatCodecVideo::ENCODER_LOSSLESS ||
           name == Conf::IFormatCodecAudio::ENCODER_LOSSLESS;
}

} // namespace

const std::vector<CodecEntry>& AllCodecs()
{
    static const std::vector<CodecEntry> codecs = ReadCodecs();
    return codecs;
}

const CodecEntry* FindCodec(const std::string& name)
{
    const std::string bare = BareName(name);
    const auto found = std::find_if(AllCodecs().begin(), AllCodecs().end(),
                                    [&](const CodecEntry& codec) { return BareName(codec.id) == bare; });
    return found == AllCodecs().end() ? nullptr : &*found;
}

std::vector<std::string> CodecNames()
{
    std::vector<std::string> names;
    for (const CodecEntry& codec : AllCodecs())
    {
        names.push_back(codec.id);
    }
    return names;
}

std::vector<std::string> ContainerNames()
{
    std::vector<std::string> names;
    AddUnlessKnown(names, Conf::GetFormatList());
    AddUnlessKnown(names, Conf::GetContainerList());
    return names;
}

std::string ContainerKind(const std::string& format)
{
    if (Conf::IsImageContainer(format))
    {
        return "image";
    }
    return Conf::IsAudioContainer(format) ? "audio" : "other";
}

std::string DefaultExtension(const std::string& format)
{
    try
    {
        return Conf::GetDefaultFileExtensionForContainer(format);
    }
    catch (const std::invalid_argument&)
    {
        return "";
    }
}

std::vector<std::string> SampleFormatNames()
{
    return {
#define ZELNOR_SAMPLE_FORMAT(name, value, bitsPerSample, planar, counterpart) #name,
#include "Conf/Interfaces/Vocabulary/SampleFormats.def"
    };
}

std::vector<std::string> LayoutNames()
{
    return {
#define ZELNOR_LAYOUT(name, enumerator, text, channels) text,
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    };
}

std::vector<std::string> PixelFormatNames()
{
    std::vector<std::string> names;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        names.push_back(record.name);
    }
    return names;
}

std::vector<std::string> AllNames()
{
    std::vector<std::string> names;
    for (const auto& some :
         {CodecNames(), ContainerNames(), PixelFormatNames(), SampleFormatNames(), LayoutNames()})
    {
        names.insert(names.end(), some.begin(), some.end());
    }
    return names;
}

std::vector<std::string> FileGroupNames()
{
    std::vector<std::string> names;
    for (const auto& [mediaType, group] : Conf::GetSupportedFormats())
    {
        names.push_back(group);
    }
    names.push_back(Conf::IFormatFile::GROUP_OTHER);
    return names;
}

std::vector<std::string> PixelFormatFlags(int flags)
{
    const std::pair<int, const char*> flagNames[] = {{PIX_FMT_FLAG_YUV, "yuv"},
                                                     {PIX_FMT_FLAG_RGB, "rgb"},
                                                     {PIX_FMT_FLAG_ALPHA, "alpha"},
                                                     {PIX_FMT_FLAG_PLANAR, "planar"}};
    std::vector<std::string> names;
    for (const auto& [flag, name] : flagNames)
    {
        if ((flags & flag) != 0)
        {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string ColorRangeName(int colorRange)
{
    switch (static_cast<PixFmtDescription::PixFmtColorRange>(colorRange))
    {
    case PixFmtDescription::COLOR_RANGE_LIMITED:
        return "limited";
    case PixFmtDescription::COLOR_RANGE_FULL:
        return "full";
    case PixFmtDescription::COLOR_RANGE_UNSPECIFIED:
        break;
    }
    return "unspecified";
}

const std::vector<std::string>& AcceleratorNames()
{
    static const std::vector<std::string> names = {"nvenc", "cuda", "im-hw", "im-sw"};
    return names;
}

std::vector<std::string> AcceleratedEncodersOf(const std::string& codecId)
{
    return AcceleratedOf(codecId, EncodersOf);
}

std::vector<std::string> AcceleratedDecodersOf(const std::string& codecId)
{
    return AcceleratedOf(codecId, DecodersOf);
}

std::vector<Description> ListCodecs()
{
    std::map<std::string, long long> numbers;
    for (const auto& [id, text] : Conf::GetFFCodecsMap())
    {
        numbers[text] = id;
    }
    std::vector<Description> descriptions;
    for (const CodecEntry& codec : AllCodecs())
    {
        descriptions.push_back({{"name", codec.id}, {"kind", codec.kind}, {"ffmpeg", codec.ffmpegName}});
        const auto number = numbers.find(codec.id);
        if (number != numbers.end())
        {
            descriptions.back().push_back({"number", number->second});
        }
    }
    return descriptions;
}

std::vector<Description> ListContainers()
{
    std::vector<Description> descriptions;
    for (const std::string& name : ContainerNames())
    {
        descriptions.push_back(
            {{"name", name}, {"kind", ContainerKind(name)}, {"extension", DefaultExtension(name)}});
    }
    return descriptions;
}

std::vector<Description> ListMuxers()
{
    std::vector<Description> descriptions;
    for (const std::string& name : Conf::GetMuxerImplList())
    {
        descriptions.push_back({{"name", name}, {"role", std::string("muxer")}});
    }
    for (const std::string& name : Conf::GetParserImplList())
    {
        descriptions.push_back({{"name", name}, {"role", std::string("parser")}});
    }
    return descriptions;
}

std::vector<Description> ListDecoders()
{
    return ListImplementations(Conf::GetDecoderImplList(), DecodersOf);
}

std::vector<Description> ListEncoders()
{
    std::vector<Description> descriptions = ListImplementations(Conf::GetEncoderImplList(), EncodersOf);
    for (Description& description : descriptions)
    {
        description.push_back({"usable", IsEncoderUsable(std::get<std::string>(description.front().value))});
    }
    return descriptions;
}

std::vector<Description> ListAccelerators()
{
    std::vector<Description> descriptions;
    for (std::size_t i = 0; i < AcceleratorNames().size(); ++i)
    {
        const auto accelerator = static_cast<Accelerator>(i);
        descriptions.push_back({{"name", AcceleratorNames()[i]},
                                {"encodes", CodecsOf(EncodersOf(accelerator))},
                                {"decodes", CodecsOf(DecodersOf(accelerator))}});
    }
    return descriptions;
}

std::vector<Description> ListPresetsByName()
{
    std::vector<Description> descriptions;
    for (const Media::StoredPreset& preset : Media::ListStoredPresets())
    {
        descriptions.push_back(
            {{"name", preset.name},
             {"container", preset.container},
             {"title", preset.fault.empty() ? preset.title : "cannot be used: " + preset.fault}});
    }
    return descriptions;
}

std::vector<Description> ListPixelFormats()
{
    std::vector<Description> descriptions;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        descriptions.push_back({{"name", record.name},
                                {"value", static_cast<long long>(record.pixFmt)},
                                {"components", static_cast<long long>(record.components)},
                                {"range", ColorRangeName(record.colorRange)},
                                {"flags", PixelFormatFlags(record.flags)}});
    }
    return descriptions;
}

std::vector<Description> ListSampleFormats()
{
    std::vector<Description> descriptions;
    for (const std::string& name : SampleFormatNames())
    {
        const Conf::SampleFmtRecord* const record = Conf::SampleFmtRecord::Find(name);
        descriptions.push_back({{"name", name},
                                {"value", static_cast<long long>(record->format)},
                                {"bits", static_cast<long long>(record->bitsPerSample)},
                                {"order", std::string(record->planar ? "planar" : "packed")}});
    }
    return descriptions;
}

std::vector<Description> ListLayouts()
{
    std::vector<Description> descriptions;
    for (const std::string& name : LayoutNames())
    {
        const Conf::LayoutRecord* const record = Conf::LayoutRecord::Find(name);
        descriptions.push_back({{"name", name},
                                {"value", static_cast<long long>(record->layout)},
                                {"channels", static_cast<long long>(record->channels)}});
    }
    return descriptions;
}

} // namespace Zelnor::Tool
