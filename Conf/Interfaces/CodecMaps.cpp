#include "Conf/Interfaces/CodecMaps.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Private/Registry.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Zelnor::Conf
{

const MapCodecs& GetFFVideoCodecsMap() { return mapVideoCodecs; }
const MapCodecs& GetFFAudioCodecsMap() { return mapAudioCodecs; }
const MapCodecs& GetFFSubtitleCodecsMap() { return mapSubtitleCodecs; }
const MapCodecs& GetFFCodecsMap() { return mapCodecs; }

const std::string& AVCodecIDToTextID(AVCodecID id, const MapCodecs& map)
{
    const auto found = map.find(id);
    if (found == map.end())
    {
        const std::string number = std::to_string(static_cast<int>(id));
        ZELNOR_THROW(kStubUnit, FormatException() << TagDescription("Provided codec id (#" + number +
                                                                    ") is not found in list"));
    }
    return found->second;
}

AVCodecID AVCodecIDFromTextID(const std::string& textId, const MapCodecs& map)
{
    const auto found =
        std::find_if(map.begin(), map.end(), [&](const auto& entry) { return entry.second == textId; });
    if (found == map.end())
    {
        ZELNOR_THROW(kStubUnit, FormatException() << TagDescription("Provided codec textID ('" + textId +
                                                                    "') is not found in list"));
    }
    return found->first;
}

const std::string& CodecIDToTextID(AVCodecID id) { return AVCodecIDToTextID(id, mapCodecs); }

AVCodecID CodecIDFromTextID(const std::string& textId) { return AVCodecIDFromTextID(textId, mapCodecs); }

std::optional<MediaType> GetCodecMediaType(const std::string& textId)
{
    // Names of implementations stand beside the codecs as constants that are their own text.
    constexpr std::string_view kCodecPrefix = "CODEC_ID_";
    if (textId.compare(0, kCodecPrefix.size(), kCodecPrefix) != 0)
    {
        return std::nullopt;
    }
    const auto found = std::find_if(std::begin(codecMediaTypes), std::end(codecMediaTypes),
                                    [&](const TypedText& row) { return *row.text == textId; });
    return found == std::end(codecMediaTypes) ? std::nullopt : std::optional(found->mediaType);
}

bool IsAudioBitrateRequired(const std::string& textId)
{
    if (std::find(std::begin(PCMCodecs), std::end(PCMCodecs), textId) != std::end(PCMCodecs) ||
        textId == IFormatCodecAudio::CODEC_ID_FLAC || textId == IFormatCodecAudio::CODEC_ID_ALAC)
    {
        return false;
    }
    if (std::none_of(std::begin(audioCodecs), std::end(audioCodecs),
                     [&](const auto& codec) { return codec.second == textId; }))
    {
        ZELNOR_THROW(kStubUnit, FormatException() << TagDescription(
                                    "Provided audio codec id is not found in list: " + textId));
    }
    return true;
}

MapCodecs concat(const MapCodecs& a, const MapCodecs& b)
{
    MapCodecs both = a;
    both.insert(b.begin(), b.end());
    return both;
}

} // namespace Zelnor::Conf
