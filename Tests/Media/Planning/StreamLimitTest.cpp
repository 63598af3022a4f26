#include "Media/Planning/StreamLimit.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Running/JobCheck.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(StreamLimit, IsAskedOfTheMuxer)
{
    const std::vector<std::string> two = {"CODEC_ID_MP3", "CODEC_ID_MP3"};
    EXPECT_EQ(CountHeldAudio("mp3", {}, two), 1U);
    EXPECT_EQ(CountHeldAudio("wav", {}, {"CODEC_ID_PCM_S16LE", "CODEC_ID_PCM_S16LE"}), 1U);
    EXPECT_EQ(CountHeldAudio("flac", {}, {"CODEC_ID_FLAC", "CODEC_ID_FLAC", "CODEC_ID_FLAC"}), 1U);
    EXPECT_EQ(CountHeldAudio("matroska", {"CODEC_ID_MPEG4"}, two), 2U);
    EXPECT_EQ(CountHeldAudio("mp4", {"CODEC_ID_MPEG4"}, {"CODEC_ID_AAC", "CODEC_ID_AAC"}), 2U);
    EXPECT_EQ(CountHeldAudio("no such", {}, two), 2U);
    EXPECT_EQ(CountHeldAudio("mp3", {}, {}), 0U);
}

MediaFile TwoLanguages() { return MakeMediaFile({MakeAudioStream(), MakeAudioStream()}); }

PlannedJob Plan(const StreamRequest& streams)
{
    JobRequest request;
    request.output = "out";
    request.streams = streams;
    return PlanJob(TwoLanguages(), MakePreset("mp3", R"({"audio":{"codec_id":"CODEC_ID_MP3"}})"), request);
}

TEST(StreamLimit, LeavesOutTheLastStreamsOfAllAudioAndSaysSo)
{
    StreamRequest streams;
    streams.allAudio = true;
    const PlannedJob job = Plan(streams);
    EXPECT_THAT(LinksOf(*job.graph), SizeIs(2));
    EXPECT_THAT(job.notes,
                ElementsAre("'in.mkv': container mp3 cannot hold 2 audio streams, so only 1 will be taken",
                            "in.mkv: audio stream 1: (aac) is left out; the output file has 1 audio stream"));
}

TEST(StreamLimit, RefusesStreamsThatWereNamed)
{
    StreamRequest streams;
    streams.chosen = {0, 1};
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(streams); }).description,
              "in.mkv: container mp3 cannot hold 2 audio streams");
}

TEST(StreamLimit, IsAskedByTheCheckOfAJob)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "sine=d=0.2", "-map", "0", "-map", "0", "-c:a", "pcm_s16le", "in.mkv"},
             folder.Path().string());
    JobRequest request;
    request.output = (folder / "out").string();
    request.streams.allAudio = true;
    const auto preset = MakePreset("matroska", R"({"audio":{"codec_id":"CODEC_ID_MP3"}})");
    const PlannedJob job = PlanJob(ProbeMedia(folder / "in.mkv"), preset, request);
    EXPECT_THAT(Sentences(CheckJob(*job.graph)), IsEmpty());
    std::string text = JsonOf(*job.graph);
    const std::string held = R"("container":"matroska")";
    ASSERT_NE(text.find(held), std::string::npos) << text;
    text.replace(text.find(held), held.size(), R"("container":"mp3")");
    EXPECT_THAT(Sentences(CheckJob(*Loaded(text))),
                ElementsAre("node 2: the container mp3 cannot hold 2 audio streams"));
}

TEST(StreamLimit, LeavesTheVideoBesideTheSoundThatThereIsAPlaceFor)
{
    JobRequest request;
    request.output = "out";
    request.streams.allAudio = true;
    const PlannedJob job = PlanJob(
        MakeMediaFile({MakeAudioStream(), MakeAudioStream(), MakeVideoStream()}),
        MakePreset("flv", R"({"video":{"codec_id":"CODEC_ID_H264"},"audio":{"codec_id":"CODEC_ID_MP3"}})"),
        request);
    EXPECT_THAT(LinksOf(*job.graph), SizeIs(4));
    EXPECT_THAT(job.notes,
                ElementsAre("'in.mkv': container flv cannot hold 2 audio streams, so only 1 will be taken",
                            "in.mkv: audio stream 1: (aac) is left out; the output file has 1 audio stream"));
}

} // namespace
