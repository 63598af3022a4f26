// The constants and the tables of the library, in this order, because tables copy constants and some
// constants copy others. Nothing here may read a dynamically initialised object of another source.

#include "Conf/Interfaces/IFormat.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/IPropertyConstraint.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Core/Interfaces/Exception.h"

#include <stdexcept>

namespace Zelnor::Conf
{

#define ZELNOR_TEXT(name, text) const std::string IFormat::name(text);
#include "Conf/Interfaces/Vocabulary/IFormat.def"

#define ZELNOR_TEXT(name, text) const std::string IFormatFile::name(text);
#define ZELNOR_SELF(name) const std::string IFormatFile::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"

#define ZELNOR_TEXT(name, text) const std::string IFormatCodec::name(text);
#define ZELNOR_SELF(name) const std::string IFormatCodec::name(#name);
#define ZELNOR_CODEC(name) const std::string IFormatCodec::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"

#define ZELNOR_TEXT(name, text) const std::string IFormatCodecVideo::name(text);
#define ZELNOR_SELF(name) const std::string IFormatCodecVideo::name(#name);
#define ZELNOR_CODEC(name) const std::string IFormatCodecVideo::name(#name);
#define ZELNOR_CODEC_AS(name, enumerator) const std::string IFormatCodecVideo::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"

#define ZELNOR_TEXT(name, text) const std::string IFormatCodecAudio::name(text);
#define ZELNOR_SELF(name) const std::string IFormatCodecAudio::name(#name);
#define ZELNOR_CODEC(name) const std::string IFormatCodecAudio::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"

#define ZELNOR_TEXT(name, text) const std::string IFormatCodecSubtitle::name(text);
#define ZELNOR_CODEC(name) const std::string IFormatCodecSubtitle::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"

#define ZELNOR_TEXT(name, text) const std::string IPreset::name(text);
#include "Conf/Interfaces/Vocabulary/IPreset.def"

#define ZELNOR_TEXT(name, text) const std::string IPropertyConstraint::name(text);
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"

#define ZELNOR_TEXT(name, text) const std::string ITranscodingMetaGraph::name(text);
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"

IPreset::~IPreset() = default;

namespace
{

struct StreamType
{
    const std::string* text;
    MediaType mediaType;
};

/// The order decides which text a media type is given.
constexpr StreamType mapStringToMediaType[] = {
    {&IPreset::STREAM_TYPE_AUDIO, MEDIA_TYPE_AUDIO},
    {&IPreset::STREAM_TYPE_VIDEO, MEDIA_TYPE_VIDEO},
    {&IPreset::STREAM_TYPE_SUBTITLES_VIDEO, MEDIA_TYPE_SUBTITLE},
    {&IPreset::STREAM_TYPE_SUBTITLES_TEXT, MEDIA_TYPE_SUBTITLE},
};

} // namespace

MediaType IPreset::MediaTypeFromPresetStreamType(const std::string& streamType)
{
    for (const StreamType& row : mapStringToMediaType)
    {
        if (*row.text == streamType)
        {
            return row.mediaType;
        }
    }
    ZELNOR_THROW(std::logic_error("Unknown preset stream type"));
}

std::string IPreset::PresetStreamTypeFormMediaType(MediaType mediaType)
{
    for (const StreamType& row : mapStringToMediaType)
    {
        if (row.mediaType == mediaType)
        {
            return *row.text;
        }
    }
    ZELNOR_THROW(std::logic_error("Unknown media type"));
}

bool IsAudioOnlyPreset(const boost::intrusive_ptr<const IPreset>& preset)
{
    if (preset == nullptr)
    {
        ZELNOR_THROW(std::invalid_argument("preset is NULL"));
    }
    std::vector<int> audioStreams;
    preset->GetStreamIndexes(IPreset::STREAM_TYPE_AUDIO, audioStreams);
    return !audioStreams.empty() && audioStreams.size() == preset->GetStreamCount();
}

} // namespace Zelnor::Conf
