#include "Media/Planning/OutputContents.h"

#include "Tests/Support/JobFixtures.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

/// An output of one or two sources, whose records are made by hand.
class KeptTags : public testing::Test
{
protected:
    /// The first stream of a source becomes a stream of that record.
    void Add(const MediaFile& source, Property codec, bool isCopied = false)
    {
        m_sources.push_back(source);
        m_codecs.push_back(std::move(codec));
        m_isCopied.push_back(isCopied);
    }
    OutputFile Output()
    {
        OutputFile output = {{}, m_container, &m_target, {}};
        for (std::size_t i = 0; i < m_sources.size(); ++i)
        {
            output.inputs.push_back(&m_sources[i]);
            output.streams.push_back({i, 0, {}, &m_codecs[i], m_isCopied[i]});
        }
        return output;
    }
    /// What of the sources gets lost, without the names of the files.
    std::vector<std::string> Losses()
    {
        std::vector<std::string> reasons;
        for (const Loss& loss : PlanContents(Output()).losses)
        {
            reasons.push_back(loss.reason);
        }
        return reasons;
    }
    /// What the records get.
    void Fill()
    {
        std::vector<Property*> codecs;
        for (Property& codec : m_codecs)
        {
            codecs.push_back(&codec);
        }
        FillRecords(Output(), m_target, codecs);
    }

    std::string m_container = "matroska";
    Property m_target = Property("target");
    std::vector<MediaFile> m_sources;
    std::vector<Property> m_codecs;
    std::vector<bool> m_isCopied;
};

const std::string kMpeg4 = R"("codec_id":"CODEC_ID_MPEG4","frameRateRatio":[25,1])";

MediaFile Timecoded()
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.timecode = "01:02:03:04";
    return source;
}

TEST_F(KeptTags, OfManyAreNamedUpToThirtyTwo)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    for (int i = 0; i < 40; ++i)
    {
        SetTag(*source.descriptor, "own_key_" + std::to_string(i), "x");
    }
    m_container = "mp4";
    Add(source, VideoRecord(kMpeg4));
    ASSERT_EQ(Losses().size(), 1U);
    EXPECT_THAT(Losses().front(), testing::StartsWith("container mp4 cannot hold the tags 'own_key_0', "));
    EXPECT_THAT(Losses().front(), testing::EndsWith("' and 8 more"));
}

TEST_F(KeptTags, AreTriedOneByOneSoOftenAlone)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    for (int i = 0; i < 70; ++i)
    {
        SetTag(*source.descriptor, "own_key_" + std::to_string(i), "x");
    }
    SetTag(*source.descriptor, "title", "T");
    m_container = "mp4";
    Add(source, VideoRecord(kMpeg4));
    Fill();
    EXPECT_EQ(m_target["metadata"], RecordOf(R"({"metadata":{"title":"T"}})"));
}

TEST_F(KeptTags, OfARecordThatIsNotAGroupAreNone)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    SetTag(*source.descriptor, "title", "T");
    m_target.SetChildT("metadata", 1LL);
    Add(source, VideoRecord(kMpeg4));
    EXPECT_THAT(Losses(), ElementsAre("the job leaves out the tags 'title'"));
}

TEST_F(KeptTags, OfALanguageThatTheJobLeavesOutAreNamed)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream()});
    SetTag(*source.streams[0].descriptor, "language", "deu");
    Add(source, AudioRecord(R"("codec_id":"CODEC_ID_MP2")"));
    EXPECT_THAT(Losses(), ElementsAre("the job leaves out its language, deu"));
    m_codecs[0] = AudioRecord(R"("codec_id":"CODEC_ID_MP2","metadata":{"language":"deu"})");
    EXPECT_THAT(Losses(), IsEmpty());
}

TEST_F(KeptTags, OfALaterStartOrAnotherRateLackTheTimecode)
{
    const auto timecode = [this](Property codec, bool isCopied) {
        m_sources.clear();
        m_codecs.clear();
        m_isCopied.clear();
        Add(Timecoded(), std::move(codec), isCopied);
        Fill();
        const Property& metadata = m_codecs[0]["metadata"];
        return metadata.ChildExists("timecode") ? metadata["timecode"].GetString() : "";
    };
    m_container = "mov";
    EXPECT_EQ(timecode(VideoRecord(kMpeg4), false), "01:02:03:04");
    EXPECT_EQ(timecode(VideoRecord(R"("codec_id":"CODEC_ID_MPEG4","frameRateRatio":[50,1])"), false), "");
    EXPECT_EQ(timecode(VideoRecord(R"("codec_id":"CODEC_ID_MPEG4")"), false), "");
    EXPECT_EQ(timecode(VideoRecord(R"("codec_id":"CODEC_ID_H264")"), true), "01:02:03:04");
    m_target.SetChildT("start", 1000000LL);
    EXPECT_EQ(timecode(VideoRecord(kMpeg4), false), "");
}

TEST_F(KeptTags, OfAVideoOfUnknownRateLackTheTimecode)
{
    m_container = "mov";
    const MediaFile source = Timecoded();
    RemoveValue(source.streams[0], "frameRateRatio");
    Add(source, VideoRecord(kMpeg4));
    Fill();
    EXPECT_FALSE(m_codecs[0]["metadata"].ChildExists("timecode"));
}

TEST_F(KeptTags, AreWithoutATimecodeThatIsNoText)
{
    m_container = "mov";
    MediaFile source = Timecoded();
    source.timecode = "01:02\n03:04";
    Add(source, VideoRecord(kMpeg4));
    Fill();
    EXPECT_FALSE(m_codecs[0]["metadata"].ChildExists("timecode"));
}

TEST_F(KeptTags, OfTwoSourcesAreTheFilesOfBoth)
{
    const MediaFile first = MakeMediaFile({MakeVideoStream()});
    const MediaFile second = MakeMediaFile({MakeAudioStream(), MakeAttachedPicture()}, "second.mkv");
    SetTag(*second.descriptor, "title", "T");
    Add(first, VideoRecord(kMpeg4));
    Add(second, AudioRecord(R"("codec_id":"CODEC_ID_MP2")"));
    EXPECT_THAT(Losses(), ElementsAre("the job leaves out the tags 'title'"));
    m_container = "avi";
    EXPECT_THAT(Losses(),
                testing::Contains("(cover, png) is left out; container avi cannot hold such a cover"));
}

TEST_F(KeptTags, OfChaptersThatTheJobAddsMayFindNoPlace)
{
    m_target = RecordOf(R"({"target":{"chapters":[{"":{"start":0,"end":1000000,"title":"One"}}]}})");
    m_container = "avi";
    Add(MakeMediaFile({MakeVideoStream()}), VideoRecord(kMpeg4));
    EXPECT_THAT(Losses(), ElementsAre("container avi cannot hold chapters"));
}

TEST(IsSoundChanged, WhereOtherChannelsOrOtherSoundComeIn)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream(Conf::CH_LAYOUT_STEREO)});
    const auto isChanged = [](MediaFile file, const std::string& layout, bool isCopied,
                              std::vector<unsigned int> merged, unsigned int channels = 2) {
        file.streams[0].channels = channels;
        const Property codec = AudioRecord(R"("codec_id":"CODEC_ID_MP2","layout":")" + layout + '"');
        const Property target("target");
        return IsSoundChanged({{&file}, "matroska", &target, {{0, 0, std::move(merged), &codec, isCopied}}});
    };
    EXPECT_FALSE(isChanged(source, "STEREO", false, {}));
    EXPECT_TRUE(isChanged(source, "MONO", false, {}));
    EXPECT_TRUE(isChanged(source, "STEREO", false, {1}));
    EXPECT_FALSE(isChanged(source, "MONO", true, {}));
    EXPECT_FALSE(isChanged(source, "no layout", false, {}));
    EXPECT_FALSE(isChanged(source, "MONO", false, {}, 0));
    EXPECT_FALSE(isChanged(MakeMediaFile({MakeVideoStream()}), "MONO", false, {}));
}

} // namespace
