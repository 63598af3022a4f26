#pragma once

#include "Conf/Interfaces/Vocabulary/FFmpegCodecs.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/MediaType.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>

/// \file
/// \code
/// assert(CodecIDToTextID(AV_CODEC_ID_H264) == "CODEC_ID_H264");
/// assert(CodecIDFromTextID("CODEC_ID_MP3") == AV_CODEC_ID_MP3);
/// assert(GetFFVideoCodecsMap().count(AV_CODEC_ID_H264) == 1);
/// assert(GetFFAudioCodecsMap().count(AV_CODEC_ID_H264) == 0);
/// assert(IsAudioBitrateRequired("CODEC_ID_MP3"));
/// assert(!IsAudioBitrateRequired("CODEC_ID_FLAC"));
/// \endcode
///
/// Translation between our names of codecs, the `CODEC_ID_` texts, and FFmpeg's codec IDs. A codec for which
/// the FFmpeg headers of this build have no ID is in none of the tables. If they have one ID for two of our
/// names, the maps contain the first name. All tables are constant and may be read from any thread.

namespace Zelnor::Conf
{

namespace details
{

// Sizes of the tables: one for each codec of the vocabulary that FFmpeg has an ID for, and one for
// CODEC_ID_NONE. Then the sizes they would have if FFmpeg had an ID for each.
// clang-format off
constexpr std::size_t kVideoCodecs = 1
#define ZELNOR_CODEC(name) + ZELNOR_HAS_AV_##name
#define ZELNOR_CODEC_AS(name, enumerator) + ZELNOR_HAS_##enumerator
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
;
constexpr std::size_t kAudioCodecs = 1
#define ZELNOR_CODEC(name) + ZELNOR_HAS_AV_##name
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
;
constexpr std::size_t kSubtitleCodecs = 0 // kept: without CODEC_ID_NONE
#define ZELNOR_CODEC(name) + ZELNOR_HAS_AV_##name
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
;
constexpr std::size_t kUnknownCodecs = 1
#define ZELNOR_CODEC(name) + ZELNOR_HAS_AV_##name
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
;
constexpr std::size_t kAllVideoCodecs = 1
#define ZELNOR_CODEC(name) + 1
#define ZELNOR_CODEC_AS(name, enumerator) + 1
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
;
constexpr std::size_t kAllAudioCodecs = 1
#define ZELNOR_CODEC(name) + 1
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
;
constexpr std::size_t kAllSubtitleCodecs = 0
#define ZELNOR_CODEC(name) + 1
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
;
constexpr std::size_t kAllUnknownCodecs = 1
#define ZELNOR_CODEC(name) + 1
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
;
// clang-format on

/// A table of codecs, filled up: what a library exports has one size, whatever FFmpeg it was made with, since
/// programs may hold copies of it.
template <std::size_t Rows, std::size_t AllRows>
struct CodecTable
{
    std::pair<AVCodecID, std::string> rows[Rows];
    std::pair<AVCodecID, std::string> padding[AllRows + 1 - Rows];
};

extern ZELNOR_API const CodecTable<kVideoCodecs, kAllVideoCodecs> videoCodecTable;
extern ZELNOR_API const CodecTable<kAudioCodecs, kAllAudioCodecs> audioCodecTable;
extern ZELNOR_API const CodecTable<kSubtitleCodecs, kAllSubtitleCodecs> subtitleCodecTable;
extern ZELNOR_API const CodecTable<kUnknownCodecs, kAllUnknownCodecs> unknownCodecTable;

/// Has another name for each list of codec IDs. Whatever includes this header asks for it, so that a program
/// does not start with a library that means other codecs by the same numbers.
extern ZELNOR_API const char ZELNOR_CODEC_NUMBERS;
[[gnu::used]] static const char* const kCodecNumbers = &ZELNOR_CODEC_NUMBERS;

} // namespace details

/// FFmpeg's codec IDs and our texts, in ascending order of the IDs.
using MapCodecs = std::map<AVCodecID, std::string>;

/// The codecs of each kind, in the order of the vocabulary. All tables except that of the subtitles end with
/// "CODEC_ID_NONE".
[[maybe_unused]] static constexpr const auto& videoCodecs = details::videoCodecTable.rows;
[[maybe_unused]] static constexpr const auto& audioCodecs = details::audioCodecTable.rows;
[[maybe_unused]] static constexpr const auto& subtitleCodecs = details::subtitleCodecTable.rows;
/// Codecs of attachments, data streams and other streams of none of the three kinds.
[[maybe_unused]] static constexpr const auto& unknownCodecs = details::unknownCodecTable.rows;
/// The PCM codecs, which do not need a bitrate.
extern ZELNOR_API const std::string PCMCodecs[13];

extern ZELNOR_API const MapCodecs mapVideoCodecs;    ///< of `videoCodecs`
extern ZELNOR_API const MapCodecs mapAudioCodecs;    ///< of `audioCodecs`
extern ZELNOR_API const MapCodecs mapSubtitleCodecs; ///< of `subtitleCodecs`
extern ZELNOR_API const MapCodecs mapUnknownCodecs;  ///< of `unknownCodecs`
/// The four maps above combined.
extern ZELNOR_API const MapCodecs mapCodecs;

ZELNOR_API const MapCodecs& GetFFVideoCodecsMap();    ///< `mapVideoCodecs`
ZELNOR_API const MapCodecs& GetFFAudioCodecsMap();    ///< `mapAudioCodecs`
ZELNOR_API const MapCodecs& GetFFSubtitleCodecsMap(); ///< `mapSubtitleCodecs`
/// `mapCodecs`
ZELNOR_API const MapCodecs& GetFFCodecsMap();

/// Our text for FFmpeg's codec ID; valid as long as `map`.
/// \throw FormatException "Provided codec id (#77) is not found in list"
ZELNOR_API const std::string& AVCodecIDToTextID(AVCodecID id, const MapCodecs& map);
/// FFmpeg's codec ID for our text: the first in `map`. Texts are case-sensitive.
/// \throw FormatException "Provided codec textID ('text') is not found in list"
ZELNOR_API AVCodecID AVCodecIDFromTextID(const std::string& textId, const MapCodecs& map);
/// The same with `mapCodecs`.
ZELNOR_API const std::string& CodecIDToTextID(AVCodecID id);
ZELNOR_API AVCodecID CodecIDFromTextID(const std::string& textId);

/// The kind of codec that a `CODEC_ID_` text names, whether or not FFmpeg has an ID for it. Nothing for
/// codecs that belong to no kind of stream ("CODEC_ID_NONE", attachments, data) and for what is not a codec.
ZELNOR_API std::optional<MediaType> GetCodecMediaType(const std::string& textId);

/// Whether an encoder for the audio codec `textId` needs a bitrate. All do, except for FLAC, ALAC and
/// `PCMCodecs`.
/// \throw FormatException "Provided audio codec id is not found in list: text" when it is not in
/// `audioCodecs`
ZELNOR_API bool IsAudioBitrateRequired(const std::string& textId);

/// The entries of both maps. If both have an ID, the entry of `a` is used.
ZELNOR_API MapCodecs concat(const MapCodecs& a, const MapCodecs& b);

} // namespace Zelnor::Conf
