#include "Conf/Interfaces/CodecMaps.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Private/CodecIndex.h"
#include "Conf/Private/Registry.h"

#include <algorithm>
#include <iterator>

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
    const std::optional<AVCodecID> id = FindCodecID(textId, map);
    if (!id)
    {
        ZELNOR_THROW(kStubUnit, FormatException() << TagDescription("Provided codec textID ('" + textId +
                                                                    "') is not found in list"));
    }
    return *id;
}

AVCodecID CodecIDFromTextID(const std::string& textId) { return AVCodecIDFromTextID(textId, mapCodecs); }

std::optional<MediaType> GetCodecMediaType(const std::string& textId)
{
    return GetCodecFacts(textId).mediaType;
}

bool IsAudioBitrateRequired(const std::string& textId)
{
    if (std::find(std::begin(PCMCodecs), std::end(PCMCodecs), textId) != std::end(PCMCodecs) ||
        textId == IFormatCodecAudio::CODEC_ID_FLAC || textId == IFormatCodecAudio::CODEC_ID_ALAC)
    {
        return false;
    }
    if (!GetCodecFacts(textId).isAudioRow)
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
