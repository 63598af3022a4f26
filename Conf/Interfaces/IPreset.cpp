#include "Conf/Interfaces/IPreset.h"

#include "Conf/Private/Registry.h"
#include "Core/Interfaces/Exception.h"

#include <stdexcept>

namespace Zelnor::Conf
{

IPreset::~IPreset() = default;

MediaType IPreset::MediaTypeFromPresetStreamType(const std::string& streamType)
{
    for (const TypedText& row : mapStringToMediaType)
    {
        if (row.text == streamType)
        {
            return row.mediaType;
        }
    }
    ZELNOR_THROW(kStubUnit, std::logic_error("Unknown preset stream type"));
}

std::string IPreset::PresetStreamTypeFormMediaType(MediaType mediaType)
{
    for (const TypedText& row : mapStringToMediaType)
    {
        if (row.mediaType == mediaType)
        {
            return std::string(row.text);
        }
    }
    ZELNOR_THROW(kStubUnit, std::logic_error("Unknown media type"));
}

bool IsAudioOnlyPreset(const boost::intrusive_ptr<const IPreset>& preset)
{
    if (preset == nullptr)
    {
        ZELNOR_THROW(kStubUnit, std::invalid_argument("preset is NULL"));
    }
    std::vector<int> audioStreams;
    preset->GetStreamIndexes(IPreset::STREAM_TYPE_AUDIO, audioStreams);
    return !audioStreams.empty() && audioStreams.size() == preset->GetStreamCount();
}

} // namespace Zelnor::Conf
