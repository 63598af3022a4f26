#include "Tests/Support/Html.h"
#include "Tests/Support/MediaTest.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <filesystem>

namespace
{

using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// `zconf batch report`
class BatchReportCommand : public MediaTest
{
protected:
    BatchReportCommand()
    {
        Write("wav.json", R"({"wav":{"container":"wav","$$STREAMS$$":{"audio":{"codec_id":)"
                          R"("CODEC_ID_PCM_S16LE"}}}})");
        fs::create_directory(Folder() / "in");
        Write("in/a<b>.wav", SilentWav());
        Write("in/c.wav", "not media");
        EXPECT_EQ(Zconf({"batch", "new", "-p", "wav.json", "--output-dir", "out", "-o", "b", "in"}).exitCode,
                  0);
    }
};

TEST_F(BatchReportCommand, WritesAPageOfABatchThatHasNotBegun)
{
    ExpectQuietSuccess(Zconf({"batch", "report", "b", "-o", "report.html"}));
    const std::string html = Read("report.html");
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("2 jobs: 1 waiting, 1 refused."));
    EXPECT_THAT(html, HasSubstr("<td>../in/a&lt;b&gt;.wav</td>"));
    EXPECT_THAT(html, HasSubstr("in/c.wav: cannot be read: "));
    EXPECT_EQ(Zconf({"batch", "report", "b"}).output, html);
}

TEST_F(BatchReportCommand, ShowsWhatFFmpegSaidLast)
{
    Write("engine", "#!/bin/sh\necho 'disk <on> fire' >&2\nexit 5\n");
    ::chmod((Folder() / "engine").c_str(), 0755);
    EXPECT_EQ(Zconf({"batch", "run", "b", "--ffmpeg", "./engine"}).exitCode, 3);
    ExpectQuietSuccess(Zconf({"batch", "report", "b", "-o", "report.html"}));
    EXPECT_THAT(Read("report.html"), HasSubstr("<li class=\"value\">disk &lt;on&gt; fire</li>"));
    EXPECT_THAT(Read("report.html"), HasSubstr("<p class=\"neighbours\">exit code 5, 1 attempt, "));
}

TEST_F(BatchReportCommand, NamesACommandThatTellsWhatFFmpegIsGiven)
{
    // The first run makes it.
    fs::create_directory(Folder() / "out");
    const ProcessResult told = Shell("cd b && \"$ZCONF\" job run --dry-run --overwrite jobs/000001.json");
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_THAT(told.output, HasSubstr("ffmpeg "));
}

TEST_F(BatchReportCommand, OfWhatIsNotABatchLeavesThePreviousPage)
{
    Write("report.html", "previous");
    ExpectFailure(Zconf({"batch", "report", "in", "-o", "report.html"}),
                  "Cannot open 'in/jobs': No such file or directory");
    EXPECT_EQ(Read("report.html"), "previous");
    EXPECT_THAT(Files(), ElementsAre("b", "in", "report.html", "wav.json"));
}

} // namespace
