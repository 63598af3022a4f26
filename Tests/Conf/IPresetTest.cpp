#include "Conf/Interfaces/IPreset.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/FakePreset.h"
#include "Tests/Support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace Zelnor::Conf
{
namespace
{

using Testing::ExpectThrow;
using Testing::FakePreset;
using Testing::Thrown;
using Testing::VirtualSlot;

static_assert(MEDIA_TYPE_VIDEO == 1 && MEDIA_TYPE_AUDIO == 2 && MEDIA_TYPE_SUBTITLE == 3);
static_assert(std::is_same_v<std::underlying_type_t<MediaType>, std::int32_t>);
static_assert(std::is_abstract_v<IPreset>);

/// A preset whose streams are of the given types.
boost::intrusive_ptr<const IPreset> CreatePreset(const std::vector<std::string>& streams)
{
    FakePreset::StreamIndexes indexes;
    for (const std::string& type : streams)
    {
        const auto index = static_cast<int>(&type - streams.data());
        indexes[type].push_back(index);
    }
    return FakePreset::Create(Core::Property("preset"), static_cast<std::uint32_t>(streams.size()), indexes);
}

void ExpectLogicError(const Thrown& thrown, const std::string& message, const std::string& function)
{
    EXPECT_EQ(thrown.what.rfind(message + "\n", 0), 0u) << thrown.what;
    EXPECT_GT(thrown.what.size(), message.size() + 1);
    EXPECT_EQ(thrown.file, "Conf/Interfaces/Stub");
    EXPECT_GT(thrown.line.value_or(0), 0);
    EXPECT_NE(thrown.function.value_or("").find(function), std::string::npos) << thrown.function.value_or("");
}

TEST(IPreset, VirtualFunctionsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&IPreset::GetProperty), 5u);
    EXPECT_EQ(VirtualSlot(&IPreset::GetStreamCount), 6u);
    EXPECT_EQ(VirtualSlot(&IPreset::GetStreamIndexes), 7u);
}

TEST(IPreset, EveryStreamTypeHasItsMediaType)
{
    EXPECT_EQ(IPreset::MediaTypeFromPresetStreamType("audio"), 2);
    EXPECT_EQ(IPreset::MediaTypeFromPresetStreamType("video"), 1);
    EXPECT_EQ(IPreset::MediaTypeFromPresetStreamType("subtitles_video"), 3);
    EXPECT_EQ(IPreset::MediaTypeFromPresetStreamType("subtitles_text"), 3);
}

TEST(IPreset, AnUnknownStreamTypeIsALogicError)
{
    for (const std::string type : {"Audio", "", "audio ", "subtitles"})
    {
        ExpectLogicError(
            ExpectThrow<std::logic_error>([&type] { IPreset::MediaTypeFromPresetStreamType(type); }),
            "Unknown preset stream type", "MediaTypeFromPresetStreamType(");
    }
}

TEST(IPreset, EveryMediaTypeHasItsFirstStreamType)
{
    EXPECT_EQ(IPreset::PresetStreamTypeFormMediaType(MEDIA_TYPE_AUDIO), "audio");
    EXPECT_EQ(IPreset::PresetStreamTypeFormMediaType(MEDIA_TYPE_VIDEO), "video");
    EXPECT_EQ(IPreset::PresetStreamTypeFormMediaType(MEDIA_TYPE_SUBTITLE), "subtitles_video");
}

TEST(IPreset, TextSubtitlesComeBackAsVideoSubtitles)
{
    const MediaType type = IPreset::MediaTypeFromPresetStreamType(IPreset::STREAM_TYPE_SUBTITLES_TEXT);
    EXPECT_EQ(IPreset::PresetStreamTypeFormMediaType(type), IPreset::STREAM_TYPE_SUBTITLES_VIDEO);
}

TEST(IPreset, AnUnknownMediaTypeIsALogicError)
{
    for (const int type : {0, 4, -1})
    {
        const auto action = [type] { IPreset::PresetStreamTypeFormMediaType(static_cast<MediaType>(type)); };
        ExpectLogicError(ExpectThrow<std::logic_error>(action), "Unknown media type",
                         "PresetStreamTypeFormMediaType(");
    }
}

TEST(IsAudioOnlyPreset, IsTrueWhenAllStreamsAreAudio)
{
    EXPECT_TRUE(IsAudioOnlyPreset(CreatePreset({"audio", "audio"})));
    EXPECT_TRUE(IsAudioOnlyPreset(CreatePreset({"audio"})));
}

TEST(IsAudioOnlyPreset, IsFalseWhenAnyStreamIsNot)
{
    EXPECT_FALSE(IsAudioOnlyPreset(CreatePreset({"audio", "video", "audio"})));
    EXPECT_FALSE(IsAudioOnlyPreset(CreatePreset({"video", "video"})));
}

TEST(IsAudioOnlyPreset, IsFalseWithoutStreams) { EXPECT_FALSE(IsAudioOnlyPreset(CreatePreset({}))); }

TEST(IsAudioOnlyPreset, RefusesANullPointer)
{
    const Thrown thrown = ExpectThrow<std::invalid_argument>([] { IsAudioOnlyPreset(nullptr); });
    ExpectLogicError(thrown, "preset is NULL", "IsAudioOnlyPreset(");
}

} // namespace
} // namespace Zelnor::Conf
