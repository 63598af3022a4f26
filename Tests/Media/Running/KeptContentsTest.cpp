#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Probe/FFmpegLog.h"
#include "Media/Running/JobCheck.h"
#include "Media/Running/JobPreparation.h"
#include "Media/Running/JobRun.h"
#include "Media/Text.h"
#include "Tests/Support/EverythingClip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kBoth = R"({"video":{"codec_id":"CODEC_ID_MPEG4"},"audio":{"codec_id":"CODEC_ID_AAC"}})";
const std::string kSound = R"({"audio":{"codec_id":"CODEC_ID_MP3"}})";

/// Converts a file that has everything, which is made once.
class KeptContents : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        KeepFFmpegMessages();
        s_sourceFolder = std::make_unique<TemporaryFolder>();
        s_source = (*s_sourceFolder / MakeEverything(*s_sourceFolder)).string();
    }
    static void TearDownTestSuite() { s_sourceFolder.reset(); }

    PlannedJob Plan(const std::string& container, const std::string& streams) const
    {
        JobRequest request;
        request.output = (m_folder / ("out." + container)).string();
        return PlanJob(ProbeMedia(s_source), MakePreset(container, streams), request);
    }

    static MediaFile Run(const PlannedJob& job)
    {
        RunJob(*job.graph);
        return ProbeMedia(job.output);
    }

    /// The job with another text in its document.
    static GraphPtr Changed(const PlannedJob& job, const std::string& from, const std::string& to)
    {
        const auto output = Core::MemoryDataOutput::Create();
        job.graph->Save(output);
        std::string text = output->GetData();
        const std::size_t place = text.find(from);
        EXPECT_NE(place, std::string::npos) << from << " in " << text;
        return Loaded(text.replace(place, from.size(), to));
    }

    static std::string Tag(const Conf::IFormat& descriptor, const std::string& name)
    {
        for (const Core::Property& tag : descriptor.GetMetadata())
        {
            if (LowerCase(tag.GetName()) == LowerCase(name))
            {
                return tag.GetString();
            }
        }
        return "";
    }

    static std::vector<std::string> Titles(const MediaFile& file)
    {
        std::vector<std::string> titles;
        for (const MediaChapter& chapter : file.chapters)
        {
            titles.push_back(chapter.title);
        }
        return titles;
    }

    static std::unique_ptr<TemporaryFolder> s_sourceFolder;
    static std::string s_source;
    TemporaryFolder m_folder;
};

std::unique_ptr<TemporaryFolder> KeptContents::s_sourceFolder;
std::string KeptContents::s_source;

TEST_F(KeptContents, MatroskaKeepsEverythingOfMatroska)
{
    PlannedJob job = Plan("matroska", kBoth);
    EXPECT_THAT(job.notes,
                ElementsAre(s_source + ": audio stream 2: (pcm_s16le, eng) is left out; the output "
                                       "file has 1 audio stream"));
    const MediaFile made = Run(job);
    for (const auto& [name, text] : TagsOfEverything())
    {
        EXPECT_EQ(Tag(*made.descriptor, name), text) << name;
    }
    EXPECT_THAT(Titles(made), ElementsAre("The first one", "The second one"));
    EXPECT_EQ(made.chapters.at(1).start, 400000);
    EXPECT_EQ(made.timecode, "01:02:03:04");
    ASSERT_EQ(made.streams.size(), 5U);
    EXPECT_EQ(Tag(*made.streams[1].descriptor, "language"), "deu");
    EXPECT_EQ(Tag(*made.streams[2].descriptor, "language"), "deu");
    EXPECT_EQ(made.streams[3].fileName, "a font.ttf");
    EXPECT_EQ(made.streams[3].mimeType, "font/ttf");
    EXPECT_TRUE(made.streams[4].isAttachedPicture);
    EXPECT_EQ(made.streams[4].codec, "png");
}

TEST_F(KeptContents, Mp3KeepsChaptersTagsAndTheCover)
{
    const PlannedJob job = Plan("mp3", kSound);
    const MediaFile made = Run(job);
    EXPECT_THAT(Titles(made), ElementsAre("The first one", "The second one"));
    EXPECT_EQ(Tag(*made.descriptor, "MUSICBRAINZ_TRACKID"), "c1b8-7");
    EXPECT_EQ(Tag(*made.descriptor, "lyrics"), "A line\nand another");
    EXPECT_EQ(Tag(*made.descriptor, "REPLAYGAIN_TRACK_GAIN"), "-3.00 dB");
    ASSERT_EQ(made.streams.size(), 2U);
    EXPECT_TRUE(made.streams[1].isAttachedPicture);
}

TEST_F(KeptContents, ContainersOfXiphKeepTheCoverAsATag)
{
    for (const auto& [container, codec] :
         {std::pair("ogg", "CODEC_ID_VORBIS"), {"ogg", "CODEC_ID_FLAC"}, {"ogg", "CODEC_ID_OPUS"}})
    {
        SCOPED_TRACE(codec);
        const PlannedJob job = Plan(container, std::string(R"({"audio":{"codec_id":")") + codec + R"("}})");
        const MediaFile made = Run(job);
        ASSERT_EQ(made.streams.size(), 2U);
        EXPECT_TRUE(made.streams[1].isAttachedPicture);
        const auto cover = [](const MediaStream& stream) { return stream.picture; };
        EXPECT_FALSE(cover(made.streams[1]).empty());
        EXPECT_EQ(cover(made.streams[1]), cover(ProbeMedia(s_source).streams.at(5)));
        std::filesystem::remove(job.output);
    }
}

TEST_F(KeptContents, DvKeepsTheTimecode)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=720x576:r=25:d=0.2", "-f", "lavfi", "-i",
              "anullsrc=r=48000:cl=stereo", "-shortest", "-aspect", "4:3", "-timecode", "01:02:03:04", "-c:v",
              "mpeg2video", "-c:a", "pcm_s16le", "in.mov"},
             folder.Path().string());
    JobRequest request;
    request.output = (m_folder / "out").string();
    const PlannedJob job =
        PlanJob(ProbeMedia(folder / "in.mov"),
                MakePreset("dv", R"({"video":{"codec_id":"CODEC_ID_DVVIDEO","width":720,"height":576},)"
                                 R"("audio":{"codec_id":"CODEC_ID_PCM_S16LE","layout":"STEREO"}})"),
                request);
    EXPECT_EQ(Run(job).timecode, "01:02:03:04");
}

TEST_F(KeptContents, LatmIsAFileOfSound)
{
    const MediaFile made = Run(Plan("latm", R"({"audio":{"codec_id":"CODEC_ID_AAC"}})"));
    EXPECT_EQ(made.streams.at(0).codec, "aac_latm");
}

TEST_F(KeptContents, MovKeepsTheTimecodeAndTheLanguage)
{
    const MediaFile made = Run(Plan("mov", kBoth));
    EXPECT_EQ(made.timecode, "01:02:03:04");
    const auto audio = std::find_if(made.streams.begin(), made.streams.end(), [](const MediaStream& stream) {
        return stream.kind == StreamKind::Audio;
    });
    ASSERT_NE(audio, made.streams.end());
    EXPECT_EQ(Tag(*audio->descriptor, "language"), "ger");
}

TEST_F(KeptContents, AJobCanLeaveOutChaptersAndAttachments)
{
    const PlannedJob job = Plan("mp4", kBoth);
    const GraphPtr changed =
        Changed(job,
                R"("chapters":[{"":{"start":0,"end":400000,"title":"The first one"}},)"
                R"({"":{"start":400000,"end":1000000,"title":"The second one"}}],"attachments":{"":5})",
                R"("chapters":{"":{"start":0,"end":900000,"title":"Renamed"}},"attachments":{})");
    RunJob(*changed);
    const MediaFile made = ProbeMedia(job.output);
    EXPECT_THAT(Titles(made), ElementsAre("Renamed"));
    EXPECT_TRUE(std::none_of(made.streams.begin(), made.streams.end(),
                             [](const MediaStream& stream) { return stream.isAttachedPicture; }));
}

TEST_F(KeptContents, AJobWithoutTheKeysKeepsWhatTheContainerHolds)
{
    const PlannedJob job = Plan("mp4", kBoth);
    const GraphPtr changed =
        Changed(job,
                R"(,"chapters":[{"":{"start":0,"end":400000,"title":"The first one"}},)"
                R"({"":{"start":400000,"end":1000000,"title":"The second one"}}],"attachments":{"":5})",
                "");
    RunJob(*changed);
    const MediaFile made = ProbeMedia(job.output);
    EXPECT_THAT(Titles(made), ElementsAre("The first one", "The second one"));
    EXPECT_TRUE(std::any_of(made.streams.begin(), made.streams.end(),
                            [](const MediaStream& stream) { return stream.isAttachedPicture; }));
}

TEST_F(KeptContents, WrongChaptersAndAttachmentsAreFaults)
{
    const PlannedJob job = Plan("mp4", kBoth);
    const std::string chapter = "node 2, chapters: a chapter has 'start' and 'end' in microseconds, of which "
                                "'end' is not the earlier one, and may have 'title', a text";
    const std::string first = R"({"start":0,"end":400000,"title":"The first one"})";
    for (const std::string wrong :
         {R"({"start":-1,"end":1})", R"({"start":2,"end":1})", R"({"start":0})", R"({"start":"0","end":1})",
          R"({"start":0,"end":1,"title":1})", R"({"start":0,"end":1,"title":"a\u0000b"})", "3", "null"})
    {
        EXPECT_THAT(Sentences(CheckJob(*Changed(job, first, wrong))), ElementsAre(chapter)) << wrong;
    }
    const std::string attachment =
        "node 2, attachments: expected the index of a cover or attachment of the first source, found ";
    for (const auto& [wrong, found] :
         {std::pair("0", "0"), std::pair("-1", "-1"), std::pair("99", "99"),
          std::pair("4294967301", "4294967301"), std::pair("\"5\"", "'5'"), std::pair("{}", "a group")})
    {
        EXPECT_THAT(Sentences(CheckJob(*Changed(job, R"("attachments":{"":5})",
                                                std::string(R"("attachments":{"":)") + wrong + "}"))),
                    ElementsAre(attachment + found));
    }
    EXPECT_THAT(Sentences(CheckJob(*Changed(job, R"("attachments":{"":5})", R"("attachments":5)"))),
                ElementsAre("node 2, attachments: expected a group, found 5"));
    EXPECT_THAT(Sentences(CheckJob(*Changed(job, "The first one", std::string(95000, 'x')))),
                ElementsAre("node 2, chapters: their texts are too long to be given to ffmpeg"));
}

TEST_F(KeptContents, TitlesOfChaptersReachTheFileByteForByte)
{
    const PlannedJob job = Plan("matroska", kBoth);
    const auto titleOf = [&](const std::string& inJson) {
        const std::string name = job.output;
        RunOptions options;
        options.overwrite = true;
        RunJob(*Changed(job, "The first one", inJson), options);
        return Titles(ProbeMedia(name));
    };
    EXPECT_THAT(titleOf(R"(a\\)"), ElementsAre("a\\", "The second one"));
    EXPECT_THAT(titleOf(R"(a\\\\)"), ElementsAre("a\\\\", "The second one"));
    EXPECT_THAT(titleOf(R"(x\n[CHAPTER]\nSTART=5\n;#=\\\ny)"),
                ElementsAre("x\n[CHAPTER]\nSTART=5\n;#=\\\ny", "The second one"));
}

TEST_F(KeptContents, TheArgumentsHoldNothingButWhatTheJobAsksFor)
{
    const PlannedJob job = Plan("mp4", kBoth);
    const GraphPtr changed = Changed(job, "The first one", R"(-i /etc/passwd\n-f tee)");
    for (const PreparedTranscode& prepared : PrepareJob(*changed))
    {
        for (const FFmpegPass& pass : prepared.passes)
        {
            for (const std::string& argument : pass.Arguments({"out", "log", true}))
            {
                EXPECT_EQ(argument.find("passwd"), std::string::npos) << argument;
            }
        }
    }
}

TEST_F(KeptContents, ALossIsToldBeforeARunAndRefusedWhereTheRunIsStrict)
{
    const PlannedJob job = Plan("mp3", kSound);
    std::vector<std::string> told;
    RunOptions options;
    options.onLoss = [&](const JobFault& loss) {
        EXPECT_FALSE(std::filesystem::exists(job.output));
        EXPECT_EQ(loss.kind, JobFault::Loss);
        told.push_back(loss.Sentence());
    };
    options.strict = true;
    options.document = "job.json";
    const Thrown thrown = ExpectThrow<JobException>([&] { RunJob(*job.graph, options); });
    EXPECT_EQ(thrown.description,
              "job.json: node 2, video stream 0: (mpeg4) is left out; the output file has no video");
    EXPECT_EQ(thrown.Get<MediaException::TagStream>(), 0U);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(job.output));
    options.strict = false;
    RunJob(*job.graph, options);
    EXPECT_THAT(
        told, ElementsAre("node 2, video stream 0: (mpeg4) is left out; the output file has no video",
                          "node 2, audio stream 2: (pcm_s16le, eng) is left out; the output file has 1 audio "
                          "stream",
                          "node 2, subtitle stream 3: (subrip, deu) is left out; container mp3 cannot hold "
                          "text subtitles",
                          "node 2, attachment stream 4: (none, 'a font.ttf') is left out; the job does not "
                          "have it, or container mp3 cannot hold it",
                          "node 2, audio stream 1: container mp3 cannot hold its language, deu"));
    EXPECT_EQ(Sentences(ReportJob(*job.graph).losses), told);
    EXPECT_THAT(CheckJob(*job.graph), IsEmpty());
}

} // namespace
