#include "Media/Running/FilterCheck.h"

#include "Media/Planning/JobPlan.h"
#include "Media/Running/JobPreparation.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

/// Asks a program that tells its filters by these lines.
class FilterCheck : public testing::Test
{
protected:
    static Transcode Hdr()
    {
        MediaStream video = MakeVideoStream();
        video.color = {"tv", "bt2020nc", "bt2020", "smpte2084"};
        return MakeTranscode(
            MakeMediaFile({video}),
            VideoRecord(
                R"("codec_id":"CODEC_ID_MPEG4","colorTransfer":"bt709","colorPrimaries":"bt709","bitrate":100000)"));
    }
    std::vector<std::string> Faults(const Transcode& transcode, const std::string& script) const
    {
        FaultList faults;
        CheckFilters(transcode, MakeScript(m_folder, script), faults);
        return Sentences(faults.Get());
    }

    TemporaryFolder m_folder;
};

TEST_F(FilterCheck, NamesTheFiltersForHighDynamicRangeThatAreNotThere)
{
    EXPECT_THAT(
        Faults(Hdr(), "echo ' .S. scale V->V Scale'"),
        ElementsAre("link 3 -> 2, video stream 0: needs the filter 'zscale', which the installed FFmpeg "
                    "does not have",
                    "link 3 -> 2, video stream 0: needs the filter 'tonemap', which the installed "
                    "FFmpeg does not have"));
    EXPECT_THAT(Faults(Hdr(), "echo ' .S. zscale V->V Scale'; echo ' .S. tonemap V->V Map'"), IsEmpty());
}

TEST_F(FilterCheck, TakesTheInstalledProgramAsItIs)
{
    FaultList faults;
    CheckFilters(Hdr(), "ffmpeg", faults);
    EXPECT_THAT(Sentences(faults.Get()), IsEmpty());
}

TEST_F(FilterCheck, DoesNotBlameAProgramThatDoesNotTell)
{
    EXPECT_THAT(Faults(Hdr(), "exit 1"), IsEmpty());
    FaultList faults;
    CheckFilters(Hdr(), (m_folder / "no such").string(), faults);
    EXPECT_THAT(Sentences(faults.Get()), IsEmpty());
}

TEST_F(FilterCheck, AsksNothingWhereNoSuchFilterIsNeeded)
{
    const std::string mark = (m_folder / "asked").string();
    const Transcode transcode = MakeTranscode(MakeMediaFile({MakeVideoStream()}),
                                              VideoRecord(R"("codec_id":"CODEC_ID_MPEG4","bitrate":100000)"));
    EXPECT_THAT(Faults(transcode, "touch '" + mark + "'"), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(mark));
    Faults(Hdr(), "touch '" + mark + "'");
    EXPECT_TRUE(std::filesystem::exists(mark));
}

} // namespace
