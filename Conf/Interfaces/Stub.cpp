// The constants and the tables of the library, in this order, because some copy others. Nothing here may read
// a dynamically initialised object of another source.

#include "Conf/Interfaces/CodecMaps.h"
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
#include "Conf/Private/CodecIndex.h"
#include "Conf/Private/Registry.h"
#include "Conf/Private/Texts.h"
#include "Core/Private/Early.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <string_view>

namespace Zelnor::Conf
{

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IFormat::name(text);
#include "Conf/Interfaces/Vocabulary/IFormat.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IFormatFile::name(text);
#define ZELNOR_SELF(name) ZELNOR_EARLY const std::string IFormatFile::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IFormatCodec::name(text);
#define ZELNOR_SELF(name) ZELNOR_EARLY const std::string IFormatCodec::name(#name);
#define ZELNOR_CODEC(name) ZELNOR_EARLY const std::string IFormatCodec::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IFormatCodecVideo::name(text);
#define ZELNOR_SELF(name) ZELNOR_EARLY const std::string IFormatCodecVideo::name(#name);
#define ZELNOR_CODEC(name) ZELNOR_EARLY const std::string IFormatCodecVideo::name(#name);
#define ZELNOR_CODEC_AS(name, enumerator) ZELNOR_EARLY const std::string IFormatCodecVideo::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IFormatCodecAudio::name(text);
#define ZELNOR_SELF(name) ZELNOR_EARLY const std::string IFormatCodecAudio::name(#name);
#define ZELNOR_CODEC(name) ZELNOR_EARLY const std::string IFormatCodecAudio::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IFormatCodecSubtitle::name(text);
#define ZELNOR_CODEC(name) ZELNOR_EARLY const std::string IFormatCodecSubtitle::name(#name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IPreset::name(text);
#include "Conf/Interfaces/Vocabulary/IPreset.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string IPropertyConstraint::name(text);
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"

#define ZELNOR_TEXT(name, text) ZELNOR_EARLY const std::string ITranscodingMetaGraph::name(text);
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"

// kept: without PCM_U16BE, although with PCM_U16LE
ZELNOR_EARLY const std::string PCMCodecs[] = {
    IFormatCodecAudio::CODEC_ID_PCM_U8,    IFormatCodecAudio::CODEC_ID_PCM_S8,
    IFormatCodecAudio::CODEC_ID_PCM_U16LE, IFormatCodecAudio::CODEC_ID_PCM_S16BE,
    IFormatCodecAudio::CODEC_ID_PCM_S16LE, IFormatCodecAudio::CODEC_ID_PCM_U32BE,
    IFormatCodecAudio::CODEC_ID_PCM_U32LE, IFormatCodecAudio::CODEC_ID_PCM_S24BE,
    IFormatCodecAudio::CODEC_ID_PCM_S24LE, IFormatCodecAudio::CODEC_ID_PCM_S32BE,
    IFormatCodecAudio::CODEC_ID_PCM_S32LE, IFormatCodecAudio::CODEC_ID_PCM_U24BE,
    IFormatCodecAudio::CODEC_ID_PCM_U24LE,
};

// Accelerated encoders and decoders

constexpr Accelerated acceleratedEncoders[] = {
#define ZELNOR_ENCODER(accelerator, codec, implementation)                                                   \
    {IFormatCodecVideo::accelerator, Texts::IFormatCodecVideo::codec,                                        \
     Texts::IFormatCodecVideo::implementation},
#include "Conf/Interfaces/Vocabulary/Accelerated.def"
};

constexpr Accelerated acceleratedDecoders[] = {
#define ZELNOR_DECODER(accelerator, codec, implementation)                                                   \
    {IFormatCodecVideo::accelerator, Texts::IFormatCodecVideo::codec,                                        \
     Texts::IFormatCodecVideo::implementation},
#include "Conf/Interfaces/Vocabulary/Accelerated.def"
};

// Codecs

// ZELNOR_CODEC_ROW(has, key, text) is a row of a codec table when `has` expands to 1, and nothing when to 0.
#define ZELNOR_CODEC_ROW(has, key, text) ZELNOR_CODEC_ROW_IF(has, key, text)
#define ZELNOR_CODEC_ROW_IF(has, key, text) ZELNOR_CODEC_ROW_##has(key, text)
#define ZELNOR_CODEC_ROW_1(key, text) {key, text},
#define ZELNOR_CODEC_ROW_0(key, text)

const char details::ZELNOR_CODEC_NUMBERS = 0;

// clang-format off
ZELNOR_EARLY decltype(details::videoCodecTable) details::videoCodecTable = {{
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, #name)
#define ZELNOR_CODEC_AS(name, enumerator)                                                                    \
    ZELNOR_CODEC_ROW(ZELNOR_HAS_##enumerator, enumerator, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
    {AV_CODEC_ID_NONE, std::string(Texts::IFormatCodec::CODEC_ID_NONE)},
}, {}};

ZELNOR_EARLY decltype(details::audioCodecTable) details::audioCodecTable = {{
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    {AV_CODEC_ID_NONE, std::string(Texts::IFormatCodec::CODEC_ID_NONE)},
}, {}};

ZELNOR_EARLY decltype(details::subtitleCodecTable) details::subtitleCodecTable = {{
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
}, {}};

ZELNOR_EARLY decltype(details::unknownCodecTable) details::unknownCodecTable = {{
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    {AV_CODEC_ID_NONE, std::string(Texts::IFormatCodec::CODEC_ID_NONE)},
}, {}};

// clang-format on

static_assert(details::kAllVideoCodecs == 187);
static_assert(details::kAllAudioCodecs == 134);
static_assert(details::kAllSubtitleCodecs == 21);
static_assert(details::kAllUnknownCodecs == 9);

namespace
{

/// If several rows have the same codec ID, the first is used. IDs mostly ascend, so the end is tried first.
template <std::size_t N>
MapCodecs MapOf(const std::pair<AVCodecID, std::string> (&rows)[N])
{
    MapCodecs map;
    for (const auto& [id, text] : rows)
    {
        map.try_emplace(map.end(), id, text);
    }
    return map;
}

/// The same of maps, of which each one's IDs mostly follow those of the one before.
MapCodecs Join(std::initializer_list<const MapCodecs*> maps)
{
    MapCodecs all;
    for (const MapCodecs* const map : maps)
    {
        for (const auto& [id, text] : *map)
        {
            all.try_emplace(all.end(), id, text);
        }
    }
    return all;
}

} // namespace

ZELNOR_EARLY const MapCodecs mapVideoCodecs = MapOf(videoCodecs);
ZELNOR_EARLY const MapCodecs mapAudioCodecs = MapOf(audioCodecs);
ZELNOR_EARLY const MapCodecs mapSubtitleCodecs = MapOf(subtitleCodecs);
ZELNOR_EARLY const MapCodecs mapUnknownCodecs = MapOf(unknownCodecs);
ZELNOR_EARLY const MapCodecs mapCodecs =
    Join({&mapVideoCodecs, &mapAudioCodecs, &mapSubtitleCodecs, &mapUnknownCodecs});

namespace
{

/// An object, as only those can be made early.
const struct CodecTexts
{
    CodecTexts() { RememberCodecTexts(); }
} codecTexts ZELNOR_EARLY;

} // namespace

// Lists

namespace
{

constexpr std::string_view kContainerTexts[] = {
#define ZELNOR_CONTAINER(name, text) Texts::IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
};

/// Which containers' texts no row before has.
constexpr std::array<bool, std::size(kContainerTexts)> FindNewContainers()
{
    std::array<bool, std::size(kContainerTexts)> isNew = {};
    for (std::size_t row = 0; row < isNew.size(); ++row)
    {
        isNew[row] = true;
        for (std::size_t before = 0; before < row; ++before)
        {
            isNew[row] = isNew[row] && kContainerTexts[before] != kContainerTexts[row];
        }
    }
    return isNew;
}

std::vector<std::string> ListContainers()
{
    constexpr std::array<bool, std::size(kContainerTexts)> kIsNew = FindNewContainers();
    std::vector<std::string> list;
    list.reserve(kIsNew.size());
    for (std::size_t row = 0; row < kIsNew.size(); ++row)
    {
        if (kIsNew[row])
        {
            list.emplace_back(kContainerTexts[row]);
        }
    }
    return list;
}

std::vector<std::string> ListOf(std::initializer_list<std::string_view> texts)
{
    return {texts.begin(), texts.end()};
}

} // namespace

ZELNOR_EARLY const std::vector<std::string> g_containerList = ListContainers();
ZELNOR_EARLY const std::vector<std::string> g_formatList = ListOf({
#define ZELNOR_FORMAT(name) Texts::IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/FormatLists.def"
});
ZELNOR_EARLY const std::vector<std::string> g_fileFormatParserDisabled =
    ListOf({Texts::IFormatFile::FORMAT_NULL});
ZELNOR_EARLY const std::vector<std::string> g_fileFormatMuxerDisabled =
    ListOf({Texts::IFormatFile::FORMAT_NULL});
ZELNOR_EARLY const std::vector<std::string> g_decodersDisabled =
    ListOf({Texts::IFormatCodecVideo::CODEC_ID_H265});
ZELNOR_EARLY const std::vector<std::string> g_codecExternal =
    ListOf({Texts::IFormatCodecAudio::CODEC_ID_MP3, Texts::IFormatCodecVideo::CODEC_ID_H264});
ZELNOR_EARLY const std::vector<std::string> g_encodersDisabled =
    ListOf({Texts::IFormatCodecVideo::CODEC_ID_H265, Texts::IFormatCodecAudio::CODEC_ID_AMR_NB,
            Texts::IFormatCodecAudio::CODEC_ID_AMR_WB});
ZELNOR_EARLY const std::vector<std::string> g_muxerImplList = ListOf({Texts::IFormatFile::MUXER_FFMPEG_IMPL});
ZELNOR_EARLY const std::vector<std::string> g_parserImplList =
    ListOf({Texts::IFormatFile::MUXER_FFMPEG_IMPL}); // kept: the list of parsers names the muxer
ZELNOR_EARLY const std::vector<std::string> g_imageFormatList = ListOf({
#define ZELNOR_IMAGE_FORMAT(name) Texts::IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/FormatLists.def"
});
ZELNOR_EARLY const std::vector<std::string> g_audioFormatList = ListOf({
#define ZELNOR_AUDIO_FORMAT(name) Texts::IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/FormatLists.def"
});
// kept: without DECODER_CUDA_MPEG2_IMPL
ZELNOR_EARLY const std::vector<std::string> g_decoderImplList = ListOf({
    Texts::IFormatCodec::DECODER_FFMPEG_IMPL,
    Texts::IFormatCodecVideo::DECODER_CUDA_H264_IMPL,
    Texts::IFormatCodecVideo::DECODER_CUDA_MPEG1_IMPL,
    Texts::IFormatCodecVideo::DECODER_CUDA_VC1_IMPL,
    Texts::IFormatCodecVideo::DECODER_CUDA_WMV3_IMPL,
    Texts::IFormatCodecVideo::DECODER_IM_HW_H264_IMPL,
    Texts::IFormatCodecVideo::DECODER_IM_HW_MPEG2_IMPL,
    Texts::IFormatCodecVideo::DECODER_IM_SW_H264_IMPL,
    Texts::IFormatCodecVideo::DECODER_IM_SW_MPEG1_IMPL,
    Texts::IFormatCodecVideo::DECODER_IM_SW_MPEG2_IMPL,
});
ZELNOR_EARLY const std::vector<std::string> g_encoderImplList = ListOf({
    Texts::IFormatCodec::ENCODER_FFMPEG_IMPL,
    Texts::IFormatCodecVideo::ENCODER_NVENC_H264_IMPL,
    Texts::IFormatCodecVideo::ENCODER_CUDA_H264_IMPL,
    Texts::IFormatCodecVideo::ENCODER_IM_HW_H264_IMPL,
    Texts::IFormatCodecVideo::ENCODER_IM_HW_MPEG2_IMPL,
    Texts::IFormatCodecVideo::ENCODER_IM_SW_H264_IMPL,
    Texts::IFormatCodecVideo::ENCODER_IM_SW_MPEG2_IMPL,
});

// Presets

constexpr TypedText mapStringToMediaType[] = {
    {Texts::IPreset::STREAM_TYPE_AUDIO, MEDIA_TYPE_AUDIO},
    {Texts::IPreset::STREAM_TYPE_VIDEO, MEDIA_TYPE_VIDEO},
    {Texts::IPreset::STREAM_TYPE_SUBTITLES_VIDEO, MEDIA_TYPE_SUBTITLE},
    {Texts::IPreset::STREAM_TYPE_SUBTITLES_TEXT, MEDIA_TYPE_SUBTITLE},
};

} // namespace Zelnor::Conf
