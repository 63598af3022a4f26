#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// `zconf batch run` in a terminal of its own, whose keys signal all that runs in it.
class BatchTerminal : public ZconfTest
{
protected:
    BatchTerminal()
    {
        Write("wav.json", kWavPreset);
        fs::create_directory(Folder() / "in");
        for (const char* const name : {"in/a.wav", "in/b.wav", "in/c.wav"})
        {
            Write(name, SilentWav());
        }
        // What ffmpeg would be, which has made a half of its output when the keys are pressed.
        Write("engine", "#!/bin/bash\ntarget=${!#}; echo half > \"${target#file:}\"; echo $$ > running.new\n"
                        "mv running.new running; exec sleep 60\n");
        fs::permissions(Folder() / "engine", fs::perms::owner_all);
        EXPECT_EQ(Zconf({"batch", "new", "-p", "wav.json", "--output-dir", "out", "-o", "b", "in"}).exitCode,
                  0);
    }

    /// Runs the batch, and presses the keys, as `printf` writes them, when the first job is being made.
    ProcessResult RunAndPress(const std::string& keys) const
    {
        return Shell("{ while [[ ! -e running ]]; do sleep 0.01; done; printf '" + keys +
                     "'; sleep 0.2; } | "
                     "script -qec '\"$ZCONF\" batch run b --ffmpeg ./engine' /dev/null");
    }
    /// Whether the process that the script was ends soon.
    bool EngineEnds() const
    {
        return Shell("for i in {1..200}; do kill -0 $(< running) || exit 0; sleep 0.01; done; exit 1")
                   .exitCode == 0;
    }
};

TEST_F(BatchTerminal, CtrlCStopsAllAndLeavesNoHalfFile)
{
    EXPECT_EQ(RunAndPress("\\003").exitCode, 128 + SIGINT);
    EXPECT_TRUE(EngineEnds());
    EXPECT_TRUE(fs::is_empty(Folder() / "out"));
    EXPECT_THAT(Zconf({"batch", "status", "b"}).output, HasSubstr("b: 3 jobs: 1 cancelled, 2 waiting\n"));
    ExpectQuietSuccess(Zconf({"batch", "run", "b"}));
    EXPECT_EQ(Zconf({"batch", "status", "b"}).exitCode, 0);
}

TEST_F(BatchTerminal, CtrlCCountsAsNoFailureThatWouldBeTriedAgain)
{
    const ProcessResult stopped = RunAndPress("\\003");
    EXPECT_THAT(stopped.output, testing::Not(HasSubstr("failed")));
    EXPECT_THAT(Read("b/results/000001.json"), HasSubstr("\"state\": \"cancelled\""));
    EXPECT_FALSE(Exists("b/results/000002.json"));
}

} // namespace
