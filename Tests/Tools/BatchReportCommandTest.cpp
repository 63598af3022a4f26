#include "Tests/Support/Html.h"
#include "Tests/Support/MediaTest.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

#include <boost/algorithm/string/replace.hpp>

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <utility>

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
        Write("wav.json", kWavPreset);
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

/// The commands that the page shows, as a reader copies them.
std::string CommandsOf(const std::string& html)
{
    std::string commands;
    for (const std::string& escaped : AllMatches(html, "<pre>([^<]*)</pre>"))
    {
        std::string text = escaped;
        for (const auto& [entity, character] :
             {std::pair("&lt;", "<"), std::pair("&gt;", ">"), std::pair("&quot;", "\""),
              std::pair("&#39;", "'"), std::pair("&amp;", "&")})
        {
            boost::replace_all(text, entity, character);
        }
        commands += text + "\n";
    }
    return commands;
}

TEST_F(BatchReportCommand, ShowsTheCommandOfAFailureAsADryRunDoes)
{
    Write("engine", "#!/bin/sh\nexit 5\n");
    ::chmod((Folder() / "engine").c_str(), 0755);
    const std::string input = (fs::canonical(Folder()) / "in").string();
    const std::string output = (fs::canonical(Folder()) / "out").string();
    EXPECT_EQ(Zconf({"batch", "new", "-p", "wav.json", "--output-dir", output, "-o", "c", input}).exitCode,
              0);
    EXPECT_EQ(Zconf({"batch", "run", "c", "--ffmpeg", "./engine", "--overwrite"}).exitCode, 3);
    ExpectQuietSuccess(Zconf({"batch", "report", "c", "-o", "report.html"}));
    const ProcessResult told =
        Zconf({"job", "run", "--dry-run", "--overwrite", "--ffmpeg", "./engine", "c/jobs/000001.json"});
    EXPECT_THAT(told.output, HasSubstr("./engine "));
    EXPECT_EQ(CommandsOf(Read("report.html")), told.output);
    // In the scratch folder of a cluster's node, the last line of the task is the same.
    EXPECT_EQ(
        Zconf({"batch", "run", "c", "--only", "1", "--ffmpeg", "./engine", "--overwrite", "--scratch", "."})
            .exitCode,
        3);
    ExpectQuietSuccess(Zconf({"batch", "report", "c", "-o", "report.html"}));
    EXPECT_EQ(CommandsOf(Read("report.html")), told.output);
}

TEST_F(BatchReportCommand, ShowsCommandsThatAShellTakesApartAsTheyWere)
{
    const std::string name = "x$(touch pwned)`touch pwned`'\";touch pwned;#\n<b>&amp;\\ \xff\xe2\x80\xae.wav";
    Write(name, SilentWav());
    Write("engine", "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$OUT\"\nexit 5\n");
    ::chmod((Folder() / "engine").c_str(), 0755);
    ASSERT_EQ(
        Zconf({"batch", "new", "-p", "wav.json", "--output-dir", "out", "-o", "c", "./" + name}).exitCode, 0);
    EXPECT_EQ(Shell("OUT=first \"$ZCONF\" batch run c --ffmpeg ./engine").exitCode, 3);
    ExpectQuietSuccess(Zconf({"batch", "report", "c", "-o", "report.html"}));
    ExpectGoodPage(Read("report.html"));
    Write("commands", CommandsOf(Read("report.html")));
    EXPECT_EQ(Shell("OUT=second sh commands").exitCode, 5);
    const std::string input = "-i\nfile:" + (fs::canonical(Folder()) / name).string() + "\n";
    EXPECT_THAT(Read("first"), HasSubstr(input));
    EXPECT_THAT(Read("second"), HasSubstr(input));
    EXPECT_FALSE(Exists("pwned"));
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
