#include "Conf/Interfaces/ServiceRecords.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/Tsv.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bitset>
#include <limits>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
}

namespace Zelnor::Conf
{
namespace
{

using Testing::ExpectThrow;
using Testing::ReadTsv;
using Testing::Thrown;

using Row = std::vector<std::string>;

static_assert(std::is_same_v<std::underlying_type_t<SampleFormats>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<ChannelLayout>, std::int32_t>);
static_assert(CH_LAYOUT_UNKNOWN == 0 && CH_LAYOUT_MONO == 1 && CH_LAYOUT_STEREO == 2 &&
              CH_LAYOUT_STEREO_DOWNMIX == 27);
static_assert(std::is_trivially_copyable_v<SampleInfo>);

// Our numbers of the sample formats are FFmpeg's.
#define ZELNOR_SAMPLE_FORMAT(name, value, bitsPerSample, planar, counterpart)                                \
    static_assert(static_cast<int>(name) == static_cast<int>(AV_##name));
#include "Conf/Interfaces/Vocabulary/SampleFormats.def"

void ExpectMiss(const Thrown& thrown, const std::string& message)
{
    EXPECT_EQ(thrown.description, message);
    EXPECT_NE(thrown.callStack.value_or(""), "");
    EXPECT_EQ(thrown.file, "Conf/Interfaces/ServiceRecords");
    EXPECT_EQ(thrown.line, 68);
    EXPECT_NE(thrown.function.value_or("").find("Zelnor::Conf::details::FindRecord("), std::string::npos)
        << thrown.function.value_or("");
}

TEST(SampleFmtRecord, TheTableIsTheListedOne)
{
    std::vector<Row> rows;
    for (int format = -1; format <= 9; ++format)
    {
        const SampleFmtRecord& record = *SampleFmtRecord::Find(static_cast<SampleFormats>(format));
        rows.push_back({std::to_string(record.format), std::to_string(record.bitsPerSample), record.textId,
                        record.planar ? "yes" : "no", std::to_string(record.counterpart)});
    }
    EXPECT_EQ(rows, ReadTsv("Tests/Conf/Data/sampleFormats.tsv"));
}

TEST(SampleFmtRecord, ValueAndTextFindTheSameRecord)
{
    for (int format = -1; format <= 9; ++format)
    {
        const SampleFmtRecord* const record = SampleFmtRecord::Find(static_cast<SampleFormats>(format));
        EXPECT_EQ(record->format, format);
        EXPECT_EQ(SampleFmtRecord::Find(record->textId), record);
    }
}

TEST(SampleFmtRecord, RecordsStandInTheTableInTheOrderOfTheirValues)
{
    for (int format = 0; format <= 9; ++format)
    {
        EXPECT_EQ(SampleFmtRecord::Find(static_cast<SampleFormats>(format)),
                  SampleFmtRecord::Find(SAMPLE_FMT_NONE) + format + 1);
    }
}

TEST(SampleFmtRecord, TheCounterpartOfTheCounterpartIsTheFormatItself)
{
    for (int format = -1; format <= 9; ++format)
    {
        const SampleFmtRecord& record = *SampleFmtRecord::Find(static_cast<SampleFormats>(format));
        const SampleFmtRecord& other = *SampleFmtRecord::Find(record.counterpart);
        EXPECT_EQ(other.counterpart, record.format);
        EXPECT_EQ(other.bitsPerSample, record.bitsPerSample);
        EXPECT_EQ(other.planar == record.planar, record.format == SAMPLE_FMT_NONE);
    }
}

TEST(SampleFmtRecord, FFmpegSaysTheSameOfEveryFormat)
{
    for (int format = 0; format <= 9; ++format)
    {
        const SampleFmtRecord& record = *SampleFmtRecord::Find(static_cast<SampleFormats>(format));
        const auto theirs = static_cast<AVSampleFormat>(format);
        EXPECT_EQ(record.bitsPerSample, 8 * av_get_bytes_per_sample(theirs)) << record.textId;
        EXPECT_EQ(record.planar, av_sample_fmt_is_planar(theirs) == 1) << record.textId;
        EXPECT_EQ(static_cast<int>(record.counterpart),
                  static_cast<int>(av_get_alt_sample_fmt(theirs, record.planar ? 0 : 1)));
    }
}

TEST(SampleFmtRecord, NoneIsARecordAndNoMiss)
{
    const SampleFmtRecord& none = *SampleFmtRecord::Find(static_cast<SampleFormats>(-1));
    EXPECT_EQ(none.textId, "SAMPLE_FMT_NONE");
    EXPECT_EQ(none.bitsPerSample, 0);
}

TEST(SampleFmtRecord, TheTextOfS16FindsItsRecord)
{
    const SampleFmtRecord& record = *SampleFmtRecord::Find("SAMPLE_FMT_S16");
    EXPECT_EQ(record.bitsPerSample, 16);
    EXPECT_FALSE(record.planar);
    EXPECT_EQ(record.counterpart, 6);
}

TEST(SampleFmtRecord, AnUnknownValueIsAMiss)
{
    for (const int value : {10, -2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
    {
        ExpectMiss(ExpectThrow<FormatException>(
                       [value] { SampleFmtRecord::Find(static_cast<SampleFormats>(value)); }),
                   "Provided sample format is not found in list");
    }
}

TEST(SampleFmtRecord, TextsAreComparedByteForByte)
{
    using namespace std::string_literals;
    for (const std::string& text :
         {"SAMPLE_FMT_s16"s, "SAMPLE_FMT_S1"s, "SAMPLE_FMT_S16 "s, ""s, "SAMPLE_FMT_S16\0"s})
    {
        ExpectMiss(ExpectThrow<FormatException>([&text] { SampleFmtRecord::Find(text); }),
                   "Provided sample textId is not found in list");
    }
}

TEST(LayoutRecord, TheTableIsTheListedOne)
{
    std::vector<Row> rows;
    for (int layout = 0; layout <= 27; ++layout)
    {
        const LayoutRecord& record = *LayoutRecord::Find(static_cast<ChannelLayout>(layout));
        rows.push_back({std::to_string(record.layout), std::to_string(record.channels), *record.textId});
    }
    EXPECT_EQ(rows, ReadTsv("Tests/Conf/Data/channelLayouts.tsv"));
}

TEST(LayoutRecord, TextIdsAreTheVeryConstantsOfTheAudioDescriptor)
{
#define ZELNOR_LAYOUT(name, enumerator, text, channels)                                                      \
    EXPECT_EQ(LayoutRecord::Find(enumerator)->textId, &IFormatCodecAudio::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
}

TEST(LayoutRecord, ValueAndTextFindTheSameRecord)
{
    for (int layout = 0; layout <= 27; ++layout)
    {
        const LayoutRecord* const record = LayoutRecord::Find(static_cast<ChannelLayout>(layout));
        EXPECT_EQ(record, LayoutRecord::Find(CH_LAYOUT_UNKNOWN) + layout);
        EXPECT_EQ(LayoutRecord::Find(*record->textId), record);
    }
}

TEST(LayoutRecord, ANumberOfChannelsFindsTheFirstLayoutOfThatManyInTheTable)
{
    const char* const texts[] = {"UNKNOWN", "MONO",    "STEREO",  "2POINT1", "3POINT1",
                                 "4POINT1", "5POINT1", "6POINT1", "7POINT1"};
    for (int channels = 0; channels <= 8; ++channels)
    {
        EXPECT_EQ(*LayoutRecord::Find(channels)->textId, texts[channels]);
    }
    EXPECT_EQ(LayoutRecord::Find(4)->layout, 6);
    EXPECT_EQ(LayoutRecord::Find(2)->layout, CH_LAYOUT_STEREO);
}

TEST(LayoutRecord, NoLayoutHasAnyOtherNumberOfChannels)
{
    for (const int channels : {9, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
    {
        ExpectMiss(ExpectThrow<FormatException>([channels] { LayoutRecord::Find(channels); }),
                   "Provided number of channels is not found in list");
    }
}

TEST(LayoutRecord, AnUnknownValueIsAMiss)
{
    for (const int value : {28, -1})
    {
        ExpectMiss(
            ExpectThrow<FormatException>([value] { LayoutRecord::Find(static_cast<ChannelLayout>(value)); }),
            "Provided ChannelLayout is not found in list");
    }
}

TEST(LayoutRecord, TextsAreComparedByteForByte)
{
    for (const std::string text : {"stereo", "STEREO_", "STERE", ""})
    {
        ExpectMiss(ExpectThrow<FormatException>([&text] { LayoutRecord::Find(text); }),
                   "Provided Channel TextID is not found in list");
    }
}

// Each layout is FFmpeg's of the same constant name, whose text is another.
TEST(LayoutRecord, FFmpegHasEveryLayoutWithAsManyChannels)
{
    const std::map<std::string, const char*> names = {
        {"MONO", "mono"},
        {"STEREO", "stereo"},
        {"2POINT1", "2.1"},
        {"2_1", "3.0(back)"},
        {"SURROUND", "3.0"},
        {"3POINT1", "3.1"},
        {"4POINT0", "4.0"},
        {"4POINT1", "4.1"},
        {"2_2", "quad(side)"},
        {"QUAD", "quad"},
        {"5POINT0", "5.0(side)"},
        {"5POINT1", "5.1(side)"},
        {"5POINT0_BACK", "5.0"},
        {"5POINT1_BACK", "5.1"},
        {"6POINT0", "6.0"},
        {"6POINT0_FRONT", "6.0(front)"},
        {"HEXAGONAL", "hexagonal"},
        {"6POINT1", "6.1"},
        {"6POINT1_BACK", "6.1(back)"},
        {"6POINT1_FRONT", "6.1(front)"},
        {"7POINT0", "7.0"},
        {"7POINT0_FRONT", "7.0(front)"},
        {"7POINT1", "7.1"},
        {"7POINT1_WIDE", "7.1(wide-side)"},
        {"7POINT1_WIDE_BACK", "7.1(wide)"},
        {"OCTAGONAL", "octagonal"},
        {"STEREO_DOWNMIX", "downmix"},
    };
    ASSERT_EQ(names.size(), 27u);
    constexpr unsigned long long AV_CH_LAYOUT_UNKNOWN = 0;
    int checked = 0;
    const auto check = [&names, &checked](const LayoutRecord& record, unsigned long long mask) {
        EXPECT_EQ(std::bitset<64>(mask).count(), static_cast<std::size_t>(record.channels)) << *record.textId;
        if (record.layout == CH_LAYOUT_UNKNOWN)
        {
            return;
        }
        AVChannelLayout layout{};
        ASSERT_EQ(av_channel_layout_from_string(&layout, names.at(*record.textId)), 0) << *record.textId;
        EXPECT_EQ(layout.nb_channels, record.channels) << *record.textId;
        EXPECT_EQ(layout.u.mask, mask) << *record.textId;
        av_channel_layout_uninit(&layout);
        ++checked;
    };
#define ZELNOR_LAYOUT(name, enumerator, text, channels)                                                      \
    check(*LayoutRecord::Find(enumerator), AV_##enumerator);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    EXPECT_EQ(checked, 27);
}

void ExpectInfo(const SampleInfo& info, SampleFormats format, int rate, ChannelLayout layout)
{
    EXPECT_EQ(info.sampleFormat, SampleFmtRecord::Find(format));
    EXPECT_EQ(info.sampleRate, rate);
    EXPECT_EQ(info.channelLayout, LayoutRecord::Find(layout));
}

SampleInfo MakeSampleInfo(SampleFormats format, int rate, ChannelLayout layout)
{
    SampleInfo info;
    info.Init(format, rate, layout);
    return info;
}

// Made before the first test runs, as a caller's own constants are.
const SampleInfo g_earlyInfo;

TEST(SampleInfo, NothingIsSetAtFirst)
{
    ExpectInfo(SampleInfo(), SAMPLE_FMT_NONE, -1, CH_LAYOUT_UNKNOWN);
    ExpectInfo(g_earlyInfo, SAMPLE_FMT_NONE, -1, CH_LAYOUT_UNKNOWN);
}

TEST(SampleInfo, InitSetsAllThreeAndChecksNoRate)
{
    ExpectInfo(MakeSampleInfo(SAMPLE_FMT_FLTP, -7, CH_LAYOUT_QUAD), SAMPLE_FMT_FLTP, -7, CH_LAYOUT_QUAD);
}

TEST(SampleInfo, InitChangesNothingWhenALookUpFails)
{
    SampleInfo info = MakeSampleInfo(SAMPLE_FMT_S16, 48000, CH_LAYOUT_STEREO);
    const auto badLayout = static_cast<ChannelLayout>(28);
    ExpectMiss(ExpectThrow<FormatException>([&] { info.Init(SAMPLE_FMT_U8, 8000, badLayout); }),
               "Provided ChannelLayout is not found in list");
    ExpectInfo(info, SAMPLE_FMT_S16, 48000, CH_LAYOUT_STEREO);
}

TEST(SampleInfo, InitLooksTheSampleFormatUpFirst)
{
    SampleInfo info;
    const auto badFormat = static_cast<SampleFormats>(10);
    const auto badLayout = static_cast<ChannelLayout>(28);
    ExpectMiss(ExpectThrow<FormatException>([&] { info.Init(badFormat, 1, badLayout); }),
               "Provided sample format is not found in list");
    ExpectInfo(info, SAMPLE_FMT_NONE, -1, CH_LAYOUT_UNKNOWN);
}

TEST(SampleInfo, DefaultsFillInWhatIsNotSet)
{
    SampleInfo info = MakeSampleInfo(SAMPLE_FMT_NONE, -1, CH_LAYOUT_UNKNOWN);
    info.ReplaceDefaultsForm(MakeSampleInfo(SAMPLE_FMT_S16, 48000, CH_LAYOUT_STEREO));
    ExpectInfo(info, SAMPLE_FMT_S16, 48000, CH_LAYOUT_STEREO);
}

TEST(SampleInfo, ARateOfZeroIsSet)
{
    SampleInfo info = MakeSampleInfo(SAMPLE_FMT_NONE, 0, CH_LAYOUT_UNKNOWN);
    info.ReplaceDefaultsForm(MakeSampleInfo(SAMPLE_FMT_S16, 48000, CH_LAYOUT_STEREO));
    ExpectInfo(info, SAMPLE_FMT_S16, 0, CH_LAYOUT_STEREO);
}

RC_GTEST_PROP(SampleInfo, DefaultsReplaceEachOfTheThreeByItself, ())
{
    const auto format =
        rc::gen::map(rc::gen::inRange(-1, 10), [](int i) { return static_cast<SampleFormats>(i); });
    const auto layout =
        rc::gen::map(rc::gen::inRange(0, 28), [](int i) { return static_cast<ChannelLayout>(i); });
    const auto rate = rc::gen::element(-2, -1, 0, 1, 44100);
    const SampleInfo before = MakeSampleInfo(*format, *rate, *layout);
    const SampleInfo defaults = MakeSampleInfo(*format, *rate, *layout);
    SampleInfo after = before;
    after.ReplaceDefaultsForm(defaults);
    const SampleInfo unset;
    RC_ASSERT(after.sampleRate == (before.sampleRate == unset.sampleRate ? defaults : before).sampleRate);
    RC_ASSERT(after.sampleFormat ==
              (before.sampleFormat == unset.sampleFormat ? defaults : before).sampleFormat);
    RC_ASSERT(after.channelLayout ==
              (before.channelLayout == unset.channelLayout ? defaults : before).channelLayout);
}

} // namespace
} // namespace Zelnor::Conf
