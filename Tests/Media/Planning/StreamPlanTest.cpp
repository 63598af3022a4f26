#include "Media/Planning/StreamPlan.h"

#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;

std::vector<unsigned int> Ranking(const std::vector<MediaStream>& streams, StreamKind kind)
{
    const MediaFile file = MakeMediaFile(streams);
    std::vector<unsigned int> indexes;
    for (const MediaStream* const stream : RankStreams(file, kind))
    {
        indexes.push_back(stream->index);
    }
    return indexes;
}

TEST(RankStreams, PutsTheLargestVideoFirst)
{
    EXPECT_THAT(Ranking({MakeVideoStream(640, 480), MakeVideoStream(1920, 1080), MakeVideoStream(1280, 720)},
                        StreamKind::Video),
                ElementsAre(1, 2, 0));
}

TEST(RankStreams, PutsADefaultStreamBeforeALargerOne)
{
    MediaStream small = MakeVideoStream(64, 48);
    small.isDefault = true;
    EXPECT_THAT(Ranking({MakeVideoStream(1920, 1080), small}, StreamKind::Video), ElementsAre(1, 0));
}

TEST(RankStreams, PutsMoreChannelsBeforeAHigherBitrate)
{
    const MediaStream fast = MakeAudioStream(Conf::CH_LAYOUT_STEREO);
    SetValue(fast, Conf::IFormatCodec::TAG_BITRATE, 320000LL);
    EXPECT_THAT(
        Ranking({MakeAudioStream(Conf::CH_LAYOUT_STEREO), fast, MakeAudioStream(Conf::CH_LAYOUT_5POINT1)},
                StreamKind::Audio),
        ElementsAre(2, 1, 0));
}

TEST(RankStreams, KeepsTheOrderOfEqualStreams)
{
    EXPECT_THAT(Ranking({MakeAudioStream(), MakeVideoStream(), MakeAudioStream()}, StreamKind::Audio),
                ElementsAre(0, 2));
}

TEST(RankStreams, LeavesAttachedPicturesOut)
{
    EXPECT_THAT(Ranking({MakeAttachedPicture(), MakeVideoStream(64, 48)}, StreamKind::Video), ElementsAre(1));
}

TEST(RankStreams, PutsSoundOfUnknownChannelsLast)
{
    const MediaStream unknown = MakeAudioStream();
    RemoveValue(unknown, Conf::IFormatCodecAudio::TAG_LAYOUT);
    SetValue(unknown, Conf::IFormatCodec::TAG_BITRATE, 320000LL);
    EXPECT_THAT(Ranking({unknown, MakeAudioStream(Conf::CH_LAYOUT_MONO)}, StreamKind::Audio),
                ElementsAre(1, 0));
}

} // namespace
