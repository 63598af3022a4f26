#include "Media/Planning/JobPlan.h"
#include "Media/Running/JobRun.h"
#include "Media/Running/JobVerification.h"
#include "Tests/Support/EverythingClip.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A Matroska file that has everything, made by a job, and what becomes of it when something is taken away.
class ContentsVerification : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_folder = std::make_unique<TemporaryFolder>();
        JobRequest request;
        request.output = Name("out.mkv");
        s_job = PlanJob(ProbeMedia(Name(MakeEverything(*s_folder))),
                        MakePreset("matroska", R"({"video":{"codec_id":"CODEC_ID_MPEG4"},)"
                                               R"("audio":{"codec_id":"CODEC_ID_AAC"}})"),
                        request)
                    .graph;
        RunJob(*s_job);
        std::filesystem::rename(Name("out.mkv"), Name("whole.mkv"));
    }
    static void TearDownTestSuite()
    {
        s_job.reset();
        s_folder.reset();
    }
    static std::string Name(const std::string& name) { return (*s_folder / name).string(); }

    /// What is told of a copy of the job's file that ffmpeg makes with these arguments.
    static std::vector<std::string> After(const std::vector<std::string>& changes, bool hasFont = true,
                                          bool hasCover = true)
    {
        std::vector<std::string> arguments = {
            "-i", Name("whole.mkv"), "-c", "copy", "-map", "0:v:0", "-map", "0:a", "-map", "0:s"};
        const auto add = [&arguments](const std::vector<std::string>& more) {
            arguments.insert(arguments.end(), more.begin(), more.end());
        };
        add(hasFont ? std::vector<std::string>{"-map", "0:3"} : std::vector<std::string>());
        // A cover that is copied becomes a video.
        add(hasCover
                ? std::vector<std::string>{"-attach", Name("cover.png"),
                                           hasFont ? "-metadata:s:4" : "-metadata:s:3", "mimetype=image/png"}
                : std::vector<std::string>());
        add(changes);
        add({Name("out.mkv")});
        MakeClip(arguments);
        const std::vector<TargetVerification> targets = VerifyJob(*s_job);
        EXPECT_EQ(targets.size(), 1U);
        return Told(targets.front().differences);
    }

    static std::unique_ptr<TemporaryFolder> s_folder;
    static boost::intrusive_ptr<Conf::ITranscodingMetaGraph> s_job;
};

std::unique_ptr<TemporaryFolder> ContentsVerification::s_folder;
boost::intrusive_ptr<Conf::ITranscodingMetaGraph> ContentsVerification::s_job;

TEST_F(ContentsVerification, FindsNothingInACopyOfAllOfIt) { EXPECT_THAT(After({}), IsEmpty()); }

TEST_F(ContentsVerification, TellsLostChapters)
{
    EXPECT_THAT(After({"-map_chapters", "-1"}), ElementsAre("chapters: wanted 2, found 0"));
}

TEST_F(ContentsVerification, TellsALostCoverAndALostFont)
{
    EXPECT_THAT(After({}, true, false), ElementsAre("covers: wanted png, found none"));
    EXPECT_THAT(After({}, false), ElementsAre("attachments: wanted 'a font.ttf', found none"));
}

TEST_F(ContentsVerification, TellsLostLanguagesOfSoundAndSubtitles)
{
    EXPECT_THAT(After({"-metadata:s:1", "language=", "-metadata:s:2", "language=fra"}),
                ElementsAre("language: wanted 'deu', found none", "language: wanted 'deu', found 'fra'"));
}

TEST_F(ContentsVerification, TellsLostAndChangedTags)
{
    EXPECT_THAT(After({"-metadata", "MY_OWN_KEY=", "-metadata", "title=Other"}),
                UnorderedElementsAre("tag title: wanted 'A title', found 'Other'",
                                     "tag my_own_key: wanted 'Something', found none"));
}

TEST_F(ContentsVerification, TellsALostTimecode)
{
    EXPECT_THAT(After({"-metadata:s:0", "timecode="}),
                ElementsAre("timecode: wanted 01:02:03:04, found none"));
}

} // namespace
