#include "Conf/Interfaces/CodecMaps.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <iterator>
#include <map>
#include <optional>

// The tables against the FFmpeg that they were built with.

namespace Zelnor::Conf
{
namespace
{

/// Codecs that FFmpeg sees otherwise than our tables: of another kind, or a number without a description.
const std::map<std::string, std::optional<AVMediaType>> kDeviations = {
    // Text art, which FFmpeg renders as pictures.
    {"CODEC_ID_BINTEXT", AVMEDIA_TYPE_VIDEO},
    {"CODEC_ID_XBIN", AVMEDIA_TYPE_VIDEO},
    {"CODEC_ID_IDF", AVMEDIA_TYPE_VIDEO},
    // Marks of FFmpeg's own that stand for no codec.
    {"CODEC_ID_NONE", std::nullopt},
    {"CODEC_ID_PROBE", std::nullopt},
    {"CODEC_ID_MPEG4SYSTEMS", std::nullopt},
    {"CODEC_ID_FFMETADATA", std::nullopt},
    // FFmpeg numbers it and has nothing that reads or writes it.
    {"CODEC_ID_PCM_ZORK", std::nullopt},
};

void ExpectKind(const MapCodecs& map, AVMediaType kind)
{
    for (const auto& [id, text] : map)
    {
        const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(id);
        const auto deviation = kDeviations.find(text);
        const std::optional<AVMediaType> expected = deviation == kDeviations.end() ? kind : deviation->second;
        EXPECT_EQ(descriptor == nullptr ? std::nullopt : std::optional(descriptor->type), expected) << text;
    }
}

TEST(CodecMapsOfTheInstalledFFmpeg, HaveCodecsOfTheirKind)
{
    ExpectKind(mapVideoCodecs, AVMEDIA_TYPE_VIDEO);
    ExpectKind(mapAudioCodecs, AVMEDIA_TYPE_AUDIO);
    ExpectKind(mapSubtitleCodecs, AVMEDIA_TYPE_SUBTITLE);
    ExpectKind(mapUnknownCodecs, AVMEDIA_TYPE_DATA);
}

#if LIBAVCODEC_VERSION_MAJOR == 59
TEST(CodecTablesOfTheInstalledFFmpeg, LackTheThreeCodecsThatItDropped)
{
    EXPECT_EQ(std::size(videoCodecs), 186U);
    EXPECT_EQ(std::size(audioCodecs), 132U);
    EXPECT_EQ(std::size(subtitleCodecs), 21U);
    EXPECT_EQ(std::size(unknownCodecs), 9U);
    for (const char* const text : {"CODEC_ID_MPEG2VIDEO_XVMC", "CODEC_ID_VIMA", "CODEC_ID_VOXWARE"})
    {
        EXPECT_ANY_THROW(CodecIDFromTextID(text)) << text;
    }
}

TEST(CodecMapsOfTheInstalledFFmpeg, KnowTheFirstOfTwoTextsForOneNumber)
{
    EXPECT_EQ(AV_CODEC_ID_IFF_BYTERUN1, AV_CODEC_ID_IFF_ILBM);
    EXPECT_EQ(CodecIDToTextID(AV_CODEC_ID_IFF_BYTERUN1), "CODEC_ID_IFF_ILBM");
    EXPECT_ANY_THROW(CodecIDFromTextID("CODEC_ID_IFF_BYTERUN1"));
    EXPECT_EQ(mapVideoCodecs.size(), 185U);
    EXPECT_EQ(mapAudioCodecs.size(), 132U);
    EXPECT_EQ(mapSubtitleCodecs.size(), 21U);
    EXPECT_EQ(mapUnknownCodecs.size(), 9U);
    EXPECT_EQ(mapCodecs.size(), 345U);
}
#endif

} // namespace
} // namespace Zelnor::Conf
