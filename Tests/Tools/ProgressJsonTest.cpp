#include "Tools/zconf/Console/ProgressJson.h"

#include "Tests/Support/GroupedNumbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Tool;

Media::RunProgress Progress()
{
    Media::RunProgress progress;
    progress.file = "it's \"out\"\n.mp4";
    progress.targetCount = 2;
    progress.passCount = 2;
    progress.pass = 1;
    progress.done = 1500000;
    return progress;
}

TEST(ProgressJson, IsOneObjectALine)
{
    Media::RunProgress progress = Progress();
    progress.duration = 3000000;
    progress.speed = 2.5;
    progress.part = 0.75;
    EXPECT_EQ(ProgressJson(progress),
              R"({"event":"progress","target":0,"targets":2,"file":"it's \"out\"\n.mp4","pass":1,"passes":2,)"
              R"("done":1.5,"duration":3.0,"speed":2.5,"part":0.75})"
              "\n");
}

TEST(ProgressJson, LeavesOutWhatIsUnknown)
{
    EXPECT_EQ(ProgressJson(Progress()),
              R"({"event":"progress","target":0,"targets":2,"file":"it's \"out\"\n.mp4","pass":1,"passes":2,)"
              R"("done":1.5})"
              "\n");
    Media::RunProgress progress = Progress();
    progress.speed = std::numeric_limits<double>::infinity();
    EXPECT_EQ(ProgressJson(progress), ProgressJson(Progress()));
}

TEST(ProgressJson, SaysThatATargetIsVerified)
{
    Media::RunProgress progress = Progress();
    progress.isVerifying = true;
    EXPECT_EQ(ProgressJson(progress),
              R"({"event":"progress","target":0,"targets":2,"file":"it's \"out\"\n.mp4","pass":1,"passes":2,)"
              R"("done":1.5,"verifying":true})"
              "\n");
}

TEST(ProgressJson, DoesNotDependOnTheLocale)
{
    const std::string text = ProgressJson(Progress());
    const Testing::GroupedNumbers locale;
    EXPECT_EQ(ProgressJson(Progress()), text);
}

TEST(ProgressJson, TellsWhatBecameOfATarget)
{
    Media::TargetResult target;
    target.file = "out.mp4";
    target.seconds = 2.5;
    target.size = 12345678901;
    target.warnings = {"a \"b\"", ""};
    EXPECT_EQ(DoneJson(target), R"({"event":"done","file":"out.mp4","seconds":2.5,"size":12345678901,)"
                                R"("warnings":["a \"b\"",""]})"
                                "\n");
    EXPECT_EQ(CancelledJson(target), "{\"event\":\"cancelled\",\"file\":\"out.mp4\"}\n");
    EXPECT_EQ(FailedJson("out.mp4", {"no"}),
              "{\"event\":\"failed\",\"file\":\"out.mp4\",\"messages\":[\"no\"]}\n");
}

} // namespace
