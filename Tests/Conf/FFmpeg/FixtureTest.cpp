#include "Conf/Interfaces/CodecMaps.h"

#include "Tests/Support/Tsv.h"

#include <gtest/gtest.h>

#include <iterator>

// The tables as they are with headers that have a number for every codec.

namespace Zelnor::Conf
{
namespace
{

TEST(CodecTablesOfAFullHeader, HaveAllRows)
{
    EXPECT_EQ(std::size(videoCodecs), 187U);
    EXPECT_EQ(std::size(audioCodecs), 134U);
    EXPECT_EQ(std::size(subtitleCodecs), 21U);
    EXPECT_EQ(std::size(unknownCodecs), 9U);
}

TEST(CodecMapsOfAFullHeader, HaveAllEntries)
{
    EXPECT_EQ(mapVideoCodecs.size(), 187U);
    EXPECT_EQ(mapAudioCodecs.size(), 134U);
    EXPECT_EQ(mapSubtitleCodecs.size(), 21U);
    EXPECT_EQ(mapUnknownCodecs.size(), 9U);
    EXPECT_EQ(mapCodecs.size(), 349U);
}

TEST(CodecMapsOfAFullHeader, HaveTheListedNumbers)
{
    for (const auto& row : Testing::ReadTsv("Tests/Conf/Data/codecs.tsv"))
    {
        if (row[2] != "-")
        {
            EXPECT_EQ(static_cast<int>(CodecIDFromTextID(row[1])), std::stoi(row[3])) << row[1];
        }
    }
}

TEST(CodecMapsOfAFullHeader, HaveTheNumbersOfTheirGeneration)
{
    const std::pair<const char*, int> expected[] = {
        {"CODEC_ID_H264", 28},           {"CODEC_ID_VP8", 141},
        {"CODEC_ID_VP9", 169},           {"CODEC_ID_AIC", 170},
        {"CODEC_ID_PCM_S16LE", 0x10000}, {"CODEC_ID_ADPCM_IMA_QT", 0x11000},
        {"CODEC_ID_MP2", 0x15000},       {"CODEC_ID_DVD_SUBTITLE", 0x17000},
        {"CODEC_ID_TTF", 0x18000},       {"CODEC_ID_PROBE", 0x19000},
        {"CODEC_ID_MPEG2TS", 0x20000},   {"CODEC_ID_FFMETADATA", 0x21000},
        {"CODEC_ID_H265", 0x48323635},   {"CODEC_ID_ASS", 0x41535320},
        {"CODEC_ID_G2M", 0x0047324D},    {"CODEC_ID_IDF", 0x00494446},
    };
    for (const auto& [text, number] : expected)
    {
        EXPECT_EQ(static_cast<int>(CodecIDFromTextID(text)), number) << text;
        EXPECT_EQ(CodecIDToTextID(static_cast<AVCodecID>(number)), text);
    }
}

} // namespace
} // namespace Zelnor::Conf
