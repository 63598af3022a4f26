#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/IPropertyConstraint.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Tsv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <string_view>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

namespace Zelnor::Conf
{
namespace
{

using Testing::ReadTsv;
using Row = std::vector<std::string>;

// The names of each class's list, in order.

#define ZELNOR_TEXT(name, text) #name,
#define ZELNOR_SELF(name) #name,
constexpr std::string_view kFileNames[] = {
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
};

#define ZELNOR_TEXT(name, text) #name,
#define ZELNOR_SELF(name) #name,
#define ZELNOR_CODEC(name) #name,
constexpr std::string_view kCodecNames[] = {
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
};

#define ZELNOR_TEXT(name, text) #name,
#define ZELNOR_SELF(name) #name,
#define ZELNOR_CODEC(name) #name,
#define ZELNOR_CODEC_AS(name, enumerator) #name,
constexpr std::string_view kVideoNames[] = {
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
};

#define ZELNOR_TEXT(name, text) #name,
#define ZELNOR_SELF(name) #name,
#define ZELNOR_CODEC(name) #name,
constexpr std::string_view kAudioNames[] = {
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
};

#define ZELNOR_TEXT(name, text) #name,
#define ZELNOR_CODEC(name) #name,
constexpr std::string_view kSubtitleNames[] = {
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
};

template <std::size_t N>
constexpr int CountOf(const std::string_view (&names)[N], std::string_view prefix)
{
    int count = 0;
    for (const std::string_view name : names)
    {
        count += name.substr(0, prefix.size()) == prefix ? 1 : 0;
    }
    return count;
}

static_assert(CountOf(kFileNames, "FORMAT_") == 159);
static_assert(CountOf(kFileNames, "GROUP_") == 27);
static_assert(CountOf(kFileNames, "TAG_") == 46);
static_assert(CountOf(kCodecNames, "CODEC_ID_") == 10);
static_assert(CountOf(kVideoNames, "CODEC_ID_") == 187);
static_assert(CountOf(kVideoNames, "TAG_X264_PRESET_") == 10);
static_assert(CountOf(kVideoNames, "TAG_X265_PRESET_") == 10);
static_assert(CountOf(kVideoNames, "TAG_MPEG4_PRESET_") == 8);
static_assert(CountOf(kVideoNames, "TAG_X264_TUNE_") == 8);
static_assert(CountOf(kVideoNames, "TAG_X265_TUNE_") == 4);
static_assert(CountOf(kVideoNames, "TAG_MPEG4_PROFILE_") == 16);
static_assert(CountOf(kAudioNames, "CODEC_ID_") == 134);
static_assert(CountOf(kAudioNames, "TAG_CH_LAYOUT_") == 28);
static_assert(CountOf(kSubtitleNames, "CODEC_ID_") == 21);

/// A row of the listing as the library has it: the value is the constant's, not the list's.
Row MakeRow(const char* owner, const char* name, const std::string& text)
{
    return {owner, name, '"' + text + '"'};
}

std::vector<Row> GetFileRows()
{
    return {
#define ZELNOR_TEXT(name, text) MakeRow("IFormat", #name, IFormat::name),
#include "Conf/Interfaces/Vocabulary/IFormat.def"
#define ZELNOR_TEXT(name, text) MakeRow("IFormatFile", #name, IFormatFile::name),
#define ZELNOR_SELF(name) MakeRow("IFormatFile", #name, IFormatFile::name),
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
    };
}

std::vector<Row> GetCodecRows()
{
    return {
#define ZELNOR_TEXT(name, text) MakeRow("IFormatCodec", #name, IFormatCodec::name),
#define ZELNOR_SELF(name) MakeRow("IFormatCodec", #name, IFormatCodec::name),
#define ZELNOR_CODEC(name) MakeRow("IFormatCodec", #name, IFormatCodec::name),
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
#define ZELNOR_TEXT(name, text) MakeRow("IFormatCodecVideo", #name, IFormatCodecVideo::name),
#define ZELNOR_SELF(name) MakeRow("IFormatCodecVideo", #name, IFormatCodecVideo::name),
#define ZELNOR_CODEC(name) MakeRow("IFormatCodecVideo", #name, IFormatCodecVideo::name),
#define ZELNOR_CODEC_AS(name, enumerator) MakeRow("IFormatCodecVideo", #name, IFormatCodecVideo::name),
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_TEXT(name, text) MakeRow("IFormatCodecAudio", #name, IFormatCodecAudio::name),
#define ZELNOR_SELF(name) MakeRow("IFormatCodecAudio", #name, IFormatCodecAudio::name),
#define ZELNOR_CODEC(name) MakeRow("IFormatCodecAudio", #name, IFormatCodecAudio::name),
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_TEXT(name, text) MakeRow("IFormatCodecSubtitle", #name, IFormatCodecSubtitle::name),
#define ZELNOR_CODEC(name) MakeRow("IFormatCodecSubtitle", #name, IFormatCodecSubtitle::name),
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
    };
}

std::vector<Row> GetPresetAndGraphRows()
{
    return {
#define ZELNOR_TEXT(name, text) MakeRow("IPreset", #name, IPreset::name),
#include "Conf/Interfaces/Vocabulary/IPreset.def"
#define ZELNOR_TEXT(name, text) MakeRow("IPropertyConstraint", #name, IPropertyConstraint::name),
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"
#define ZELNOR_TEXT(name, text) MakeRow("ITranscodingMetaGraph", #name, ITranscodingMetaGraph::name),
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"
    };
}

/// The rows of the listing that belong to the given classes.
std::vector<Row> GetListed(const std::set<std::string>& owners)
{
    std::vector<Row> rows = ReadTsv("Tests/Conf/Data/vocabulary.tsv");
    rows.erase(std::remove_if(rows.begin(), rows.end(),
                              [&owners](const Row& row) { return owners.count(row.front()) == 0; }),
               rows.end());
    return rows;
}

TEST(Vocabulary, FileConstantsAreTheListedOnesInTheirOrder)
{
    EXPECT_EQ(GetFileRows(), GetListed({"IFormat", "IFormatFile"}));
}

TEST(Vocabulary, CodecConstantsAreTheListedOnesInTheirOrder)
{
    EXPECT_EQ(GetCodecRows(),
              GetListed({"IFormatCodec", "IFormatCodecVideo", "IFormatCodecAudio", "IFormatCodecSubtitle"}));
}

TEST(Vocabulary, PresetAndGraphConstantsAreTheListedOnesInTheirOrder)
{
    EXPECT_EQ(GetPresetAndGraphRows(),
              GetListed({"IPreset", "IPropertyConstraint", "ITranscodingMetaGraph"}));
}

TEST(Vocabulary, NothingIsListedThatNoClassHas)
{
    EXPECT_EQ(GetFileRows().size() + GetCodecRows().size() + GetPresetAndGraphRows().size(),
              ReadTsv("Tests/Conf/Data/vocabulary.tsv").size());
    EXPECT_EQ(ReadTsv("Tests/Conf/Data/vocabulary.tsv").size(), 811u);
}

TEST(Vocabulary, TheObjectKeyIsAConstantOfTheNamespace) { EXPECT_EQ(TAG_OBJECT, "object_name"); }

TEST(Vocabulary, TheKeyOfThePixelFormatIsAConstantOfTheNamespace) { EXPECT_EQ(TAG_PIX_FMT, "PIXELFORMAT"); }

TEST(Vocabulary, TheContainersAreTheConstantsThatAreNamedFormats)
{
    const std::vector<std::string> containers = {
#define ZELNOR_CONTAINER(name, text) #name,
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
    };
    std::vector<std::string> formats;
    for (const Row& row : GetListed({"IFormatFile"}))
    {
        if (row[1].rfind("FORMAT_", 0) == 0)
        {
            formats.push_back(row[1]);
        }
    }
    EXPECT_EQ(containers, formats);
}

TEST(Vocabulary, EveryCodecIsNamedAfterItsConstant)
{
    int codecs = 0;
    for (const Row& row : GetCodecRows())
    {
        if (row[1].rfind("CODEC_ID_", 0) == 0)
        {
            EXPECT_EQ(row[2], '"' + row[1] + '"');
            ++codecs;
        }
    }
    EXPECT_EQ(codecs, 10 + 187 + 134 + 21);
}

TEST(Vocabulary, EveryContainerButAacIsNamedAfterItsConstant)
{
    for (const Row& row : GetFileRows())
    {
        if (row[1].rfind("FORMAT_", 0) != 0 || row[1] == "FORMAT_AAC")
        {
            continue;
        }
        std::string name = row[1].substr(7);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_EQ(row[2], '"' + name + '"');
    }
    EXPECT_EQ(IFormatFile::FORMAT_AAC, IFormatFile::FORMAT_ADTS);
}

TEST(Vocabulary, DefaultImplementationsAreCopiesOfTheirOwn)
{
    EXPECT_EQ(IFormatFile::MUXER_DEFAULT_IMPL, IFormatFile::MUXER_FFMPEG_IMPL);
    EXPECT_EQ(IFormatFile::PARSER_DEFAULT_IMPL, IFormatFile::PARSER_FFMPEG_IMPL);
    EXPECT_NE(&IFormatFile::MUXER_DEFAULT_IMPL, &IFormatFile::MUXER_FFMPEG_IMPL);
}

/// Every name of every muxer and demuxer of the FFmpeg at hand.
std::set<std::string> GetFFmpegFormatNames()
{
    std::set<std::string> names;
    const auto add = [&names](std::string list) {
        for (list += ','; !list.empty(); list.erase(0, list.find(',') + 1))
        {
            names.insert(list.substr(0, list.find(',')));
        }
    };
    void* state = nullptr;
    while (const AVOutputFormat* const muxer = av_muxer_iterate(&state))
    {
        add(muxer->name);
    }
    state = nullptr;
    while (const AVInputFormat* const demuxer = av_demuxer_iterate(&state))
    {
        add(demuxer->name);
    }
    return names;
}

// A misspelt container would be one that no FFmpeg ever had.
TEST(Vocabulary, FFmpegKnowsAlmostAllContainers)
{
    const std::set<std::string> known = GetFFmpegFormatNames();
    int muxers = 0;
    std::set<std::string> unknown;
    for (const Row& row : GetFileRows())
    {
        if (row[1].rfind("FORMAT_", 0) != 0)
        {
            continue;
        }
        const std::string name = row[2].substr(1, row[2].size() - 2);
        muxers += av_guess_format(name.c_str(), nullptr, nullptr) != nullptr ? 1 : 0;
        if (known.count(name) == 0)
        {
            unknown.insert(name);
        }
    }
    RecordProperty("containers_with_a_muxer", muxers);
    // Single pictures, which FFmpeg calls by their codecs; what it has given up; our own names.
    const std::set<std::string> elsewhere = {
        "bmp",    "dpx", "exr",    "jpeg2000", "jpegls", "pam",  "pbm", "pcx", "pgm",
        "pgmyuv", "png", "ppm",    "ptx",      "sgi",    "tiff", "xbm", "xwd", "ffm",
        "sdl",    "rcv", "libnut", "mpeg2ts",  "targa",  "tif",  "wma", "wmv"};
    EXPECT_TRUE(std::includes(elsewhere.begin(), elsewhere.end(), unknown.begin(), unknown.end()))
        << ::testing::PrintToString(unknown);
    EXPECT_GE(muxers, 100);
}

} // namespace
} // namespace Zelnor::Conf
