#include "Conf/Interfaces/CodecMaps.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/Tsv.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <locale>
#include <map>
#include <set>

// Built a second time against a header that has a number for every codec; see Tests/Conf/Fixtures.

namespace Zelnor::Conf
{
namespace
{

using ::testing::ElementsAre;
using Testing::ExpectThrow;
using ::testing::HasSubstr;
using Testing::ReadTsv;
using Testing::Thrown;

/// Which of FFmpeg's numbers the headers of this build offer.
const std::map<std::string, bool>& Offered()
{
    static const std::map<std::string, bool> offered = {
        {"AV_CODEC_ID_NONE", true},
#define ZELNOR_CODEC(name) {"AV_" #name, ZELNOR_HAS_AV_##name == 1},
#define ZELNOR_CODEC_AS(name, enumerator) {#enumerator, ZELNOR_HAS_##enumerator == 1},
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_CODEC(name) {"AV_" #name, ZELNOR_HAS_AV_##name == 1},
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_CODEC(name) {"AV_" #name, ZELNOR_HAS_AV_##name == 1},
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
#define ZELNOR_CODEC(name) {"AV_" #name, ZELNOR_HAS_AV_##name == 1},
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    };
    return offered;
}

/// The texts that a table is to hold, in order; without those whose number the headers lack.
std::vector<std::string> ExpectedTexts(const std::string& table)
{
    std::vector<std::string> texts;
    for (const auto& row : ReadTsv("Tests/Conf/Data/codecs.tsv"))
    {
        if (row[0] == table && (row[2] == "-" || Offered().at(row[2])))
        {
            texts.push_back(row[1]);
        }
    }
    return texts;
}

template <std::size_t N>
std::vector<std::string> TextsOf(const std::pair<AVCodecID, std::string> (&table)[N])
{
    std::vector<std::string> texts;
    std::transform(std::begin(table), std::end(table), std::back_inserter(texts),
                   [](const auto& row) { return row.second; });
    return texts;
}

template <std::size_t N>
MapCodecs FirstOfEach(const std::pair<AVCodecID, std::string> (&table)[N])
{
    return MapCodecs(std::begin(table), std::end(table));
}

void ExpectFormatException(const Thrown& thrown, const std::string& description, const std::string& function)
{
    EXPECT_EQ(thrown.description, description);
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
    EXPECT_EQ(thrown.file, "Conf/Interfaces/Stub");
    EXPECT_THAT(thrown.function.value_or(""), HasSubstr("Zelnor::Conf::" + function + "("));
    EXPECT_GT(thrown.line.value_or(0), 0);
    EXPECT_EQ(thrown.what.find(description), std::string::npos);
}

TEST(CodecTables, HoldTheListedTextsInTheirOrder)
{
    EXPECT_EQ(TextsOf(videoCodecs), ExpectedTexts("video"));
    EXPECT_EQ(TextsOf(audioCodecs), ExpectedTexts("audio"));
    EXPECT_EQ(TextsOf(subtitleCodecs), ExpectedTexts("subtitle"));
    EXPECT_EQ(TextsOf(unknownCodecs), ExpectedTexts("unknown"));
    EXPECT_EQ(std::vector<std::string>(std::begin(PCMCodecs), std::end(PCMCodecs)), ExpectedTexts("pcm"));
}

TEST(CodecTables, EndWithNoneExceptTheSubtitles)
{
    const auto none = std::make_pair(AV_CODEC_ID_NONE, std::string("CODEC_ID_NONE"));
    EXPECT_EQ(videoCodecs[std::size(videoCodecs) - 1], none);
    EXPECT_EQ(audioCodecs[std::size(audioCodecs) - 1], none);
    EXPECT_EQ(unknownCodecs[std::size(unknownCodecs) - 1], none);
    EXPECT_EQ(std::count(std::begin(subtitleCodecs), std::end(subtitleCodecs), none), 0);
}

TEST(CodecTables, NameEachCodecOnce)
{
    std::set<std::string> texts;
    std::size_t rows = 0;
    const auto add = [&](const auto& table) {
        for (const auto& row : table)
        {
            texts.insert(row.second);
            ++rows;
        }
    };
    add(videoCodecs);
    add(audioCodecs);
    add(subtitleCodecs);
    add(unknownCodecs);
    EXPECT_EQ(texts.size() + 2, rows) << "only CODEC_ID_NONE stands three times";
}

TEST(CodecTables, LeavePcmU16BeOutOfThePcmCodecs)
{
    EXPECT_EQ(std::size(PCMCodecs), 13U);
    EXPECT_EQ(std::count(std::begin(PCMCodecs), std::end(PCMCodecs), "CODEC_ID_PCM_U16BE"), 0);
    EXPECT_EQ(std::count(std::begin(PCMCodecs), std::end(PCMCodecs), "CODEC_ID_PCM_U16LE"), 1);
}

TEST(CodecMaps, AreMadeOfTheirTablesWithTheFirstTextOfEachNumber)
{
    EXPECT_EQ(mapVideoCodecs, FirstOfEach(videoCodecs));
    EXPECT_EQ(mapAudioCodecs, FirstOfEach(audioCodecs));
    EXPECT_EQ(mapSubtitleCodecs, FirstOfEach(subtitleCodecs));
    EXPECT_EQ(mapUnknownCodecs, FirstOfEach(unknownCodecs));
}

TEST(CodecMaps, AreJoinedInOneMapWithOneNone)
{
    EXPECT_EQ(mapCodecs,
              concat(concat(mapVideoCodecs, mapAudioCodecs), concat(mapSubtitleCodecs, mapUnknownCodecs)));
    EXPECT_EQ(mapCodecs.size(), mapVideoCodecs.size() + mapAudioCodecs.size() + mapSubtitleCodecs.size() +
                                    mapUnknownCodecs.size() - 2);
}

TEST(CodecMaps, AreHandedOutWithoutACopy)
{
    EXPECT_EQ(&GetFFVideoCodecsMap(), &mapVideoCodecs);
    EXPECT_EQ(&GetFFAudioCodecsMap(), &mapAudioCodecs);
    EXPECT_EQ(&GetFFSubtitleCodecsMap(), &mapSubtitleCodecs);
    EXPECT_EQ(&GetFFCodecsMap(), &mapCodecs);
}

TEST(CodecId, OfEveryEntryConvertsBothWays)
{
    for (const auto& [id, text] : mapCodecs)
    {
        EXPECT_EQ(&CodecIDToTextID(id), &mapCodecs.at(id));
        EXPECT_EQ(CodecIDFromTextID(text), id) << text;
    }
}

TEST(CodecId, WithoutATextIsRefused)
{
    // Beyond all of FFmpeg's, and its WRAPPED_AVFRAME, which is in no table and not in each FFmpeg.
    EXPECT_THROW(CodecIDToTextID(static_cast<AVCodecID>(0x3ffff)), FormatException);
    EXPECT_THROW(CodecIDToTextID(static_cast<AVCodecID>(0x21001)), FormatException);
}

TEST(CodecId, NoneConvertsBothWays)
{
    EXPECT_EQ(CodecIDToTextID(AV_CODEC_ID_NONE), "CODEC_ID_NONE");
    EXPECT_EQ(CodecIDFromTextID("CODEC_ID_NONE"), AV_CODEC_ID_NONE);
}

TEST(CodecId, H265IsHevcOfFFmpeg)
{
    EXPECT_EQ(CodecIDFromTextID("CODEC_ID_H265"), AV_CODEC_ID_HEVC);
    EXPECT_EQ(CodecIDToTextID(AV_CODEC_ID_HEVC), "CODEC_ID_H265");
}

TEST(CodecId, NoneIsNoSubtitle)
{
    ExpectFormatException(
        ExpectThrow<FormatException>([] { AVCodecIDToTextID(AV_CODEC_ID_NONE, mapSubtitleCodecs); }),
        "Provided codec id (#0) is not found in list", "AVCodecIDToTextID");
}

TEST(CodecId, WithoutATextIsReportedInDecimalWhateverTheLocale)
{
    struct Grouped : std::numpunct<char>
    {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouped));
    ExpectFormatException(
        ExpectThrow<FormatException>([] { AVCodecIDToTextID(static_cast<AVCodecID>(77), MapCodecs()); }),
        "Provided codec id (#77) is not found in list", "AVCodecIDToTextID");
    ExpectFormatException(
        ExpectThrow<FormatException>([] { CodecIDToTextID(static_cast<AVCodecID>(0x1ffff)); }),
        "Provided codec id (#131071) is not found in list", "AVCodecIDToTextID");
    std::locale::global(before);
}

TEST(CodecText, ThatIsInNoTableConvertsInNeitherDirection)
{
    for (const char* const text : {"CODEC_ID_JPEG", "CODEC_ID_8SVX_RAW", "CODEC_ID_AUTO", ""})
    {
        ExpectFormatException(ExpectThrow<FormatException>([&] { CodecIDFromTextID(text); }),
                              std::string("Provided codec textID ('") + text + "') is not found in list",
                              "AVCodecIDFromTextID");
        EXPECT_TRUE(std::none_of(mapCodecs.begin(), mapCodecs.end(),
                                 [&](const auto& entry) { return entry.second == text; }));
    }
}

TEST(CodecText, OfAnotherKindIsNotFound)
{
    EXPECT_EQ(CodecIDFromTextID("CODEC_ID_H264"), AV_CODEC_ID_H264);
    ExpectFormatException(
        ExpectThrow<FormatException>([] { AVCodecIDFromTextID("CODEC_ID_H264", mapAudioCodecs); }),
        "Provided codec textID ('CODEC_ID_H264') is not found in list", "AVCodecIDFromTextID");
}

TEST(CodecText, IsCaseSensitive)
{
    ExpectFormatException(ExpectThrow<FormatException>([] { CodecIDFromTextID("codec_id_h264"); }),
                          "Provided codec textID ('codec_id_h264') is not found in list",
                          "AVCodecIDFromTextID");
}

TEST(CodecText, IsReportedAsItIsWithPercentSignsAndNul)
{
    const std::string text("%s%n\0x", 6);
    ExpectFormatException(ExpectThrow<FormatException>([&] { CodecIDFromTextID(text); }),
                          "Provided codec textID ('" + text + "') is not found in list",
                          "AVCodecIDFromTextID");
}

TEST(CodecText, OfSeveralEntriesGivesTheLowestNumber)
{
    const MapCodecs map = {{AV_CODEC_ID_MP3, "x"}, {AV_CODEC_ID_H264, "x"}, {AV_CODEC_ID_MPEG1VIDEO, "y"}};
    EXPECT_EQ(AVCodecIDFromTextID("x", map), AV_CODEC_ID_H264);
}

TEST(CodecMediaType, IsThatOfTheClassThatNamesTheCodecWhateverFFmpegKnows)
{
    const auto expect = [](const std::string& textId, std::optional<MediaType> expected) {
        const bool isCodec = textId.rfind("CODEC_ID_", 0) == 0;
        EXPECT_EQ(GetCodecMediaType(textId), isCodec ? expected : std::nullopt) << textId;
    };
#define ZELNOR_SELF(name) expect(#name, MEDIA_TYPE_VIDEO);
#define ZELNOR_CODEC(name) expect(#name, MEDIA_TYPE_VIDEO);
#define ZELNOR_CODEC_AS(name, enumerator) expect(#name, MEDIA_TYPE_VIDEO);
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_SELF(name) expect(#name, MEDIA_TYPE_AUDIO);
#define ZELNOR_CODEC(name) expect(#name, MEDIA_TYPE_AUDIO);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_CODEC(name) expect(#name, MEDIA_TYPE_SUBTITLE);
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
#define ZELNOR_SELF(name) expect(#name, std::nullopt);
#define ZELNOR_CODEC(name) expect(#name, std::nullopt);
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
}

TEST(CodecMediaType, IsGivenForCodecsThatFFmpegDoesNotKnow)
{
    EXPECT_EQ(GetCodecMediaType("CODEC_ID_JPEG"), MEDIA_TYPE_VIDEO);
    EXPECT_EQ(GetCodecMediaType("CODEC_ID_8SVX_RAW"), MEDIA_TYPE_AUDIO);
}

TEST(CodecMediaType, IsNothingForWhatIsNotACodecOfAStream)
{
    for (const char* const text : {"", "CODEC_ID_", "CODEC_ID_NONE", "CODEC_ID_AUTO", "CODEC_ID_TTF",
                                   "codec_id_h264", "CODEC_ID_H264 ", "H264", "ENCODER_NVENC_H264_IMPL"})
    {
        EXPECT_EQ(GetCodecMediaType(text), std::nullopt) << text;
    }
}

TEST(Concat, PrefersTheFirstMap)
{
    const MapCodecs a = {{AV_CODEC_ID_H264, "a"}, {AV_CODEC_ID_MP3, "a"}};
    const MapCodecs b = {{AV_CODEC_ID_NONE, "b"}, {AV_CODEC_ID_H264, "b"}, {AV_CODEC_ID_AAC, "b"}};
    EXPECT_EQ(concat(a, b), MapCodecs({{AV_CODEC_ID_NONE, "b"},
                                       {AV_CODEC_ID_H264, "a"},
                                       {AV_CODEC_ID_MP3, "a"},
                                       {AV_CODEC_ID_AAC, "b"}}));
    EXPECT_EQ(concat(a, MapCodecs()), a);
    EXPECT_EQ(concat(MapCodecs(), b), b);
}

TEST(AudioBitrate, IsNotRequiredForThePcmCodecsFlacAndAlac)
{
    for (const std::string& codec : PCMCodecs)
    {
        EXPECT_FALSE(IsAudioBitrateRequired(codec)) << codec;
    }
    for (const char* const codec :
         {"CODEC_ID_PCM_S16LE", "CODEC_ID_PCM_U8", "CODEC_ID_FLAC", "CODEC_ID_ALAC"})
    {
        EXPECT_FALSE(IsAudioBitrateRequired(codec)) << codec;
    }
}

TEST(AudioBitrate, IsRequiredForAllOtherAudioCodecsAndNone)
{
    for (const char* const codec : {"CODEC_ID_PCM_U16BE", "CODEC_ID_PCM_F32LE", "CODEC_ID_PCM_MULAW",
                                    "CODEC_ID_AAC", "CODEC_ID_MP3", "CODEC_ID_WMALOSSLESS", "CODEC_ID_NONE"})
    {
        EXPECT_TRUE(IsAudioBitrateRequired(codec)) << codec;
    }
    const auto required =
        std::count_if(std::begin(audioCodecs), std::end(audioCodecs),
                      [](const auto& codec) { return IsAudioBitrateRequired(codec.second); });
    EXPECT_EQ(static_cast<std::size_t>(required), std::size(audioCodecs) - 15);
}

TEST(AudioBitrate, OfWhatIsNoAudioCodecThrows)
{
    for (const char* const codec :
         {"CODEC_ID_H264", "", "CODEC_ID_8SVX_RAW", "CODEC_ID_AUTO", "codec_id_aac", "CODEC_ID_SRT"})
    {
        ExpectFormatException(ExpectThrow<FormatException>([&] { IsAudioBitrateRequired(codec); }),
                              std::string("Provided audio codec id is not found in list: ") + codec,
                              "IsAudioBitrateRequired");
    }
}

} // namespace
} // namespace Zelnor::Conf
