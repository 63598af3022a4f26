#include "Conf/Interfaces/IPreset.h"

#include "Core/Interfaces/RefCountImpl.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelnor::Conf
{
namespace
{

using Testing::ExpectThrow;
using Testing::Thrown;
using Testing::VirtualSlot;

static_assert(MEDIA_TYPE_VIDEO == 1 && MEDIA_TYPE_AUDIO == 2 && MEDIA_TYPE_SUBTITLE == 3);
static_assert(std::is_same_v<std::underlying_type_t<MediaType>, std::int32_t>);
static_assert(std::is_abstract_v<IPreset>);

/// A preset of nothing but streams.
class StreamsPreset : public IPreset
{
public:
    static boost::intrusive_ptr<const IPreset> Create(std::vector<std::string> streams)
    {
        return new StreamsPreset(std::move(streams));
    }

    int AddRef() const override { return m_references.AddRefImpl(); }
    int GetRefCount() const override { return m_references.GetRefCountImpl(); }
    int Release() const override
    {
        const int count = m_references.ReleaseImpl();
        if (count == 0)
        {
            delete this;
        }
        return count;
    }

    const Core::Property& GetProperty() const override { return m_property; }
    std::uint32_t GetStreamCount() const override { return static_cast<std::uint32_t>(m_streams.size()); }
    void GetStreamIndexes(const std::string& streamType, std::vector<int>& out) const override
    {
        for (std::size_t i = 0; i < m_streams.size(); ++i)
        {
            if (m_streams[i] == streamType)
            {
                out.push_back(static_cast<int>(i));
            }
        }
    }

private:
    explicit StreamsPreset(std::vector<std::string> streams)
        : m_property("preset"), m_streams(std::move(streams))
    {}

    RefCountImpl m_references;
    Core::Property m_property;
    std::vector<std::string> m_streams;
};

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
    EXPECT_TRUE(IsAudioOnlyPreset(StreamsPreset::Create({"audio", "audio"})));
    EXPECT_TRUE(IsAudioOnlyPreset(StreamsPreset::Create({"audio"})));
}

TEST(IsAudioOnlyPreset, IsFalseWhenAnyStreamIsNot)
{
    EXPECT_FALSE(IsAudioOnlyPreset(StreamsPreset::Create({"audio", "video", "audio"})));
    EXPECT_FALSE(IsAudioOnlyPreset(StreamsPreset::Create({"video", "video"})));
}

TEST(IsAudioOnlyPreset, IsFalseWithoutStreams) { EXPECT_FALSE(IsAudioOnlyPreset(StreamsPreset::Create({}))); }

TEST(IsAudioOnlyPreset, RefusesANullPointer)
{
    const Thrown thrown = ExpectThrow<std::invalid_argument>([] { IsAudioOnlyPreset(nullptr); });
    ExpectLogicError(thrown, "preset is NULL", "IsAudioOnlyPreset(");
}

} // namespace
} // namespace Zelnor::Conf
