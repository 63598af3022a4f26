#pragma once

#include "Conf/Interfaces/Vocabulary/FFmpegCodecs.h"
#include "Core/Interfaces/Export.h"

#include <cstddef>
#include <map>
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
/// The bridge between our names of codecs, the `CODEC_ID_` texts, and FFmpeg's numbers. A codec that the
/// FFmpeg headers of this build have no number for is in none of the tables; where they have one number for
/// two of our names, the maps know the first. All tables are constant and may be read from any thread.

namespace Zelnor::Conf
{

namespace details
{

// Table sizes: one for each row of the vocabulary that FFmpeg has a number for, and one for CODEC_ID_NONE.
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
// clang-format on

} // namespace details

/// FFmpeg's numbers and our texts, ascending by number.
using MapCodecs = std::map<AVCodecID, std::string>;

/// The codecs by kind, in the order of the vocabulary. All but the subtitles' end with "CODEC_ID_NONE".
extern ZELNOR_API const std::pair<AVCodecID, std::string> videoCodecs[details::kVideoCodecs];
extern ZELNOR_API const std::pair<AVCodecID, std::string> audioCodecs[details::kAudioCodecs];
extern ZELNOR_API const std::pair<AVCodecID, std::string> subtitleCodecs[details::kSubtitleCodecs];
/// Attachments, data streams and other things that are none of the three kinds.
extern ZELNOR_API const std::pair<AVCodecID, std::string> unknownCodecs[details::kUnknownCodecs];
/// The PCM codecs that need no bitrate.
extern ZELNOR_API const std::string PCMCodecs[13];

extern ZELNOR_API const MapCodecs mapVideoCodecs;
extern ZELNOR_API const MapCodecs mapAudioCodecs;
extern ZELNOR_API const MapCodecs mapSubtitleCodecs;
extern ZELNOR_API const MapCodecs mapUnknownCodecs;
/// The four above in one.
extern ZELNOR_API const MapCodecs mapCodecs;

ZELNOR_API const MapCodecs& GetFFVideoCodecsMap();
ZELNOR_API const MapCodecs& GetFFAudioCodecsMap();
ZELNOR_API const MapCodecs& GetFFSubtitleCodecsMap();
/// `mapCodecs`
ZELNOR_API const MapCodecs& GetFFCodecsMap();

/// Our text for FFmpeg's number; valid as long as `map`.
/// \throw FormatException "Provided codec id (#77) is not found in list"
ZELNOR_API const std::string& AVCodecIDToTextID(AVCodecID id, const MapCodecs& map);
/// FFmpeg's number for our text, which is compared case-sensitively: the first in `map`.
/// \throw FormatException "Provided codec textID ('text') is not found in list"
ZELNOR_API AVCodecID AVCodecIDFromTextID(const std::string& textId, const MapCodecs& map);
/// The same two in `mapCodecs`.
ZELNOR_API const std::string& CodecIDToTextID(AVCodecID id);
ZELNOR_API AVCodecID CodecIDFromTextID(const std::string& textId);

/// Whether an encoder for the audio codec `textId` needs a bitrate: all do but FLAC, ALAC and `PCMCodecs`.
/// \throw FormatException "Provided audio codec id is not found in list: text" for what is not in
/// `audioCodecs`
ZELNOR_API bool IsAudioBitrateRequired(const std::string& textId);

/// The entries of both maps; where both have a number, that of `a`.
ZELNOR_API MapCodecs concat(const MapCodecs& a, const MapCodecs& b);

} // namespace Zelnor::Conf
