// The constants and the tables of the library, in this order, because tables copy constants and some
// constants copy others. Nothing here may read a dynamically initialised object of another source.

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/FormatLists.h"
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

#include <algorithm>
#include <initializer_list>
#include <iterator>
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

// Accelerated encoders and decoders

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/Stub";

using Accelerator = IFormatCodecVideo::AcceleratorType;

struct Accelerated
{
    Accelerator accelerator;
    const std::string* codec;
    const std::string* implementation;
};

constexpr Accelerated acceleratedEncoders[] = {
#define ZELNOR_ENCODER(accelerator, codec, implementation)                                                   \
    {IFormatCodecVideo::accelerator, &IFormatCodecVideo::codec, &IFormatCodecVideo::implementation},
#include "Conf/Interfaces/Vocabulary/Accelerated.def"
};

constexpr Accelerated acceleratedDecoders[] = {
#define ZELNOR_DECODER(accelerator, codec, implementation)                                                   \
    {IFormatCodecVideo::accelerator, &IFormatCodecVideo::codec, &IFormatCodecVideo::implementation},
#include "Conf/Interfaces/Vocabulary/Accelerated.def"
};

/// Fills `out` with one column of the accelerator's rows. Says whether there are any; if not, `out` stays.
template <std::size_t N>
bool ListAccelerated(const Accelerated (&table)[N], Accelerator accelerator,
                     const std::string* Accelerated::*column, std::vector<std::string>& out)
{
    const auto isRow = [&](const Accelerated& row) { return row.accelerator == accelerator; };
    const auto begin = std::find_if(std::begin(table), std::end(table), isRow);
    const auto end = std::find_if_not(begin, std::end(table), isRow);
    if (begin == end)
    {
        return false;
    }
    out.clear();
    out.reserve(static_cast<std::size_t>(end - begin));
    std::transform(begin, end, std::back_inserter(out),
                   [&](const Accelerated& row) { return *(row.*column); });
    return true;
}

template <std::size_t N>
const std::string* FindAccelerated(const Accelerated (&table)[N], Accelerator accelerator,
                                   const std::string& codecId)
{
    const auto found = std::find_if(std::begin(table), std::end(table), [&](const Accelerated& row) {
        return row.accelerator == accelerator && *row.codec == codecId;
    });
    return found == std::end(table) ? nullptr : found->implementation;
}

std::out_of_range KeyNotFound() { return std::out_of_range("key not found"); }

} // namespace

void IFormatCodecVideo::GetAcceleratedEncoderCodecs(AcceleratorType accelerator,
                                                    std::vector<std::string>& out)
{
    if (!ListAccelerated(acceleratedEncoders, accelerator, &Accelerated::codec, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kUnit, KeyNotFound());
    }
}

void IFormatCodecVideo::GetAcceleratedDecoderCodecs(AcceleratorType accelerator,
                                                    std::vector<std::string>& out)
{
    if (accelerator == ACCELERATOR_NVENC)
    {
        return; // kept: nothing to decode is no error here
    }
    if (!ListAccelerated(acceleratedDecoders, accelerator, &Accelerated::codec, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kUnit, KeyNotFound());
    }
}

std::string IFormatCodecVideo::GetAcceleratedEncoder(AcceleratorType accelerator, const std::string& codecId)
{
    const std::string* const encoder = FindAccelerated(acceleratedEncoders, accelerator, codecId);
    if (encoder == nullptr)
    {
        ZELNOR_THROW_WITHOUT_STACK(kUnit, KeyNotFound());
    }
    return *encoder;
}

std::string IFormatCodecVideo::GetAcceleratedDecoder(AcceleratorType accelerator, const std::string& codecId)
{
    const std::string* const decoder = FindAccelerated(acceleratedDecoders, accelerator, codecId);
    if (decoder == nullptr)
    {
        ZELNOR_THROW_WITHOUT_STACK(kUnit, KeyNotFound());
    }
    return *decoder;
}

void IFormatCodecVideo::GetAcceleratedEncoders(AcceleratorType accelerator, std::vector<std::string>& out)
{
    if (!ListAccelerated(acceleratedEncoders, accelerator, &Accelerated::implementation, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kUnit, KeyNotFound());
    }
}

void IFormatCodecVideo::GetAcceleratedDecoders(AcceleratorType accelerator, std::vector<std::string>& out)
{
    if (!ListAccelerated(acceleratedDecoders, accelerator, &Accelerated::implementation, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kUnit, KeyNotFound());
    }
}

// Codecs

// ZELNOR_CODEC_ROW(has, key, text) is a row of a codec table when `has` expands to 1, and nothing when to 0.
#define ZELNOR_CODEC_ROW(has, key, text) ZELNOR_CODEC_ROW_IF(has, key, text)
#define ZELNOR_CODEC_ROW_IF(has, key, text) ZELNOR_CODEC_ROW_##has(key, text)
#define ZELNOR_CODEC_ROW_1(key, text) {key, text},
#define ZELNOR_CODEC_ROW_0(key, text)

// clang-format off
const std::pair<AVCodecID, std::string> videoCodecs[] = {
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, IFormatCodecVideo::name)
#define ZELNOR_CODEC_AS(name, enumerator)                                                                    \
    ZELNOR_CODEC_ROW(ZELNOR_HAS_##enumerator, enumerator, IFormatCodecVideo::name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
    {AV_CODEC_ID_NONE, IFormatCodec::CODEC_ID_NONE},
};

const std::pair<AVCodecID, std::string> audioCodecs[] = {
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, IFormatCodecAudio::name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    {AV_CODEC_ID_NONE, IFormatCodec::CODEC_ID_NONE},
};

const std::pair<AVCodecID, std::string> subtitleCodecs[] = {
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, IFormatCodecSubtitle::name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
};

const std::pair<AVCodecID, std::string> unknownCodecs[] = {
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, IFormatCodec::name)
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    {AV_CODEC_ID_NONE, IFormatCodec::CODEC_ID_NONE},
};

// The rows of the vocabulary, whatever FFmpeg has a number for.
#define ZELNOR_CODEC(name) + 1
#define ZELNOR_CODEC_AS(name, enumerator) + 1
static_assert(0
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
    == 186);
#define ZELNOR_CODEC(name) + 1
static_assert(0
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    == 133);
#define ZELNOR_CODEC(name) + 1
static_assert(0
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
    == 21);
#define ZELNOR_CODEC(name) + 1
static_assert(0
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    == 8);
// clang-format on

// kept: without PCM_U16BE, although with PCM_U16LE
const std::string PCMCodecs[] = {
    IFormatCodecAudio::CODEC_ID_PCM_U8,    IFormatCodecAudio::CODEC_ID_PCM_S8,
    IFormatCodecAudio::CODEC_ID_PCM_U16LE, IFormatCodecAudio::CODEC_ID_PCM_S16BE,
    IFormatCodecAudio::CODEC_ID_PCM_S16LE, IFormatCodecAudio::CODEC_ID_PCM_U32BE,
    IFormatCodecAudio::CODEC_ID_PCM_U32LE, IFormatCodecAudio::CODEC_ID_PCM_S24BE,
    IFormatCodecAudio::CODEC_ID_PCM_S24LE, IFormatCodecAudio::CODEC_ID_PCM_S32BE,
    IFormatCodecAudio::CODEC_ID_PCM_S32LE, IFormatCodecAudio::CODEC_ID_PCM_U24BE,
    IFormatCodecAudio::CODEC_ID_PCM_U24LE,
};

namespace
{

/// Adds the entries whose numbers `map` has not. Numbers mostly ascend, so each is first tried at the end.
template <class Rows>
void AddAbsent(MapCodecs& map, const Rows& rows)
{
    for (const auto& [id, text] : rows)
    {
        map.try_emplace(map.end(), id, text);
    }
}

template <std::size_t N>
MapCodecs MapOf(const std::pair<AVCodecID, std::string> (&rows)[N])
{
    MapCodecs map;
    AddAbsent(map, rows);
    return map;
}

MapCodecs MapOfAll()
{
    MapCodecs map = concat(mapVideoCodecs, mapAudioCodecs);
    AddAbsent(map, mapSubtitleCodecs);
    AddAbsent(map, mapUnknownCodecs);
    return map;
}

} // namespace

const MapCodecs mapVideoCodecs = MapOf(videoCodecs);
const MapCodecs mapAudioCodecs = MapOf(audioCodecs);
const MapCodecs mapSubtitleCodecs = MapOf(subtitleCodecs);
const MapCodecs mapUnknownCodecs = MapOf(unknownCodecs);
const MapCodecs mapCodecs = MapOfAll();

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
        ZELNOR_THROW(kUnit, FormatException() << TagDescription("Provided codec id (#" + number +
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
        ZELNOR_THROW(kUnit, FormatException() << TagDescription("Provided codec textID ('" + textId +
                                                                "') is not found in list"));
    }
    return found->first;
}

const std::string& CodecIDToTextID(AVCodecID id) { return AVCodecIDToTextID(id, mapCodecs); }

AVCodecID CodecIDFromTextID(const std::string& textId) { return AVCodecIDFromTextID(textId, mapCodecs); }

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
        ZELNOR_THROW(kUnit, FormatException()
                                << TagDescription("Provided audio codec id is not found in list: " + textId));
    }
    return true;
}

MapCodecs concat(const MapCodecs& a, const MapCodecs& b)
{
    MapCodecs both = a;
    AddAbsent(both, b);
    return both;
}

// Lists

namespace
{

/// Copies of constants.
std::vector<std::string> ListOf(std::initializer_list<const std::string*> constants)
{
    std::vector<std::string> list;
    list.reserve(constants.size());
    for (const std::string* const constant : constants)
    {
        list.push_back(*constant);
    }
    return list;
}

bool Contains(const std::vector<std::string>& list, const std::string& text)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

const std::vector<std::string> g_formatList = ListOf({
#define ZELNOR_FORMAT(name) &IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/FormatLists.def"
});
const std::vector<std::string> g_fileFormatParserDisabled = ListOf({&IFormatFile::FORMAT_NULL});
const std::vector<std::string> g_fileFormatMuxerDisabled = ListOf({&IFormatFile::FORMAT_NULL});
const std::vector<std::string> g_decodersDisabled = ListOf({&IFormatCodecVideo::CODEC_ID_H265});
const std::vector<std::string> g_codecExternal =
    ListOf({&IFormatCodecAudio::CODEC_ID_MP3, &IFormatCodecVideo::CODEC_ID_H264});
const std::vector<std::string> g_encodersDisabled =
    ListOf({&IFormatCodecVideo::CODEC_ID_H265, &IFormatCodecAudio::CODEC_ID_AMR_NB,
            &IFormatCodecAudio::CODEC_ID_AMR_WB});
const std::vector<std::string> g_muxerImplList = ListOf({&IFormatFile::MUXER_FFMPEG_IMPL});
const std::vector<std::string> g_parserImplList =
    ListOf({&IFormatFile::MUXER_FFMPEG_IMPL}); // kept: the list of parsers names the muxer
const std::vector<std::string> g_imageFormatList = ListOf({
#define ZELNOR_IMAGE_FORMAT(name) &IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/FormatLists.def"
});
const std::vector<std::string> g_audioFormatList = ListOf({
#define ZELNOR_AUDIO_FORMAT(name) &IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/FormatLists.def"
});
// kept: without DECODER_CUDA_MPEG2_IMPL
const std::vector<std::string> g_decoderImplList = ListOf({
    &IFormatCodec::DECODER_FFMPEG_IMPL,
    &IFormatCodecVideo::DECODER_CUDA_H264_IMPL,
    &IFormatCodecVideo::DECODER_CUDA_MPEG1_IMPL,
    &IFormatCodecVideo::DECODER_CUDA_VC1_IMPL,
    &IFormatCodecVideo::DECODER_CUDA_WMV3_IMPL,
    &IFormatCodecVideo::DECODER_IM_HW_H264_IMPL,
    &IFormatCodecVideo::DECODER_IM_HW_MPEG2_IMPL,
    &IFormatCodecVideo::DECODER_IM_SW_H264_IMPL,
    &IFormatCodecVideo::DECODER_IM_SW_MPEG1_IMPL,
    &IFormatCodecVideo::DECODER_IM_SW_MPEG2_IMPL,
});
const std::vector<std::string> g_encoderImplList = ListOf({
    &IFormatCodec::ENCODER_FFMPEG_IMPL,
    &IFormatCodecVideo::ENCODER_NVENC_H264_IMPL,
    &IFormatCodecVideo::ENCODER_CUDA_H264_IMPL,
    &IFormatCodecVideo::ENCODER_IM_HW_H264_IMPL,
    &IFormatCodecVideo::ENCODER_IM_HW_MPEG2_IMPL,
    &IFormatCodecVideo::ENCODER_IM_SW_H264_IMPL,
    &IFormatCodecVideo::ENCODER_IM_SW_MPEG2_IMPL,
});

} // namespace

const std::vector<std::string>& GetFormatList() { return g_formatList; }
const std::vector<std::string>& GetDisabledFormatParserList() { return g_fileFormatParserDisabled; }
const std::vector<std::string>& GetDisabledFormatMuxerList() { return g_fileFormatMuxerDisabled; }
const std::vector<std::string>& GetDisabledDecoderList() { return g_decodersDisabled; }
const std::vector<std::string>& GetDisabledEncoderList() { return g_encodersDisabled; }
const std::vector<std::string>& GetExternalDecoderList() { return g_codecExternal; }
const std::vector<std::string>& GetExternalEncoderList() { return g_codecExternal; } // kept: one for both
const std::vector<std::string>& GetMuxerImplList() { return g_muxerImplList; }
const std::vector<std::string>& GetParserImplList() { return g_parserImplList; }
const std::vector<std::string>& GetDecoderImplList() { return g_decoderImplList; }
const std::vector<std::string>& GetEncoderImplList() { return g_encoderImplList; }
const std::vector<std::string>& GetImageContainerList() { return g_imageFormatList; }
const std::vector<std::string>& GetAudioContainerList() { return g_audioFormatList; }

bool IsExternalDecoder(const std::string& codecId) { return Contains(g_codecExternal, codecId); }
bool IsExternalEncoder(const std::string& codecId) { return Contains(g_codecExternal, codecId); }
bool IsImageContainer(const std::string& format) { return Contains(g_imageFormatList, format); }
bool IsAudioContainer(const std::string& format) { return Contains(g_audioFormatList, format); }

bool CanReadWithEncryption(const std::string& encryption)
{
    return encryption.empty() || encryption == IFormatFile::ENCRYPTION_DVD_CSS_PROTECTION;
}

bool CanCopyWithEncryption(const std::string& encryption) { return encryption.empty(); }

std::ostream& operator<<(std::ostream& os, const std::vector<std::string>& list)
{
    for (const std::string& text : list)
    {
        os << text << ", ";
    }
    return os;
}

// Presets

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
    ZELNOR_THROW(kUnit, std::logic_error("Unknown preset stream type"));
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
    ZELNOR_THROW(kUnit, std::logic_error("Unknown media type"));
}

bool IsAudioOnlyPreset(const boost::intrusive_ptr<const IPreset>& preset)
{
    if (preset == nullptr)
    {
        ZELNOR_THROW(kUnit, std::invalid_argument("preset is NULL"));
    }
    std::vector<int> audioStreams;
    preset->GetStreamIndexes(IPreset::STREAM_TYPE_AUDIO, audioStreams);
    return !audioStreams.empty() && audioStreams.size() == preset->GetStreamCount();
}

} // namespace Zelnor::Conf
