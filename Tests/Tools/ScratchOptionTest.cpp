#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// `--scratch`, with a folder in another file system, in memory, where there is one.
class ScratchOption : public ZconfTest
{
protected:
    ScratchOption()
    {
        std::string name = "/dev/shm/zelnor-test-XXXXXX";
        m_scratch = ::mkdtemp(name.data()) == nullptr ? (Folder() / "scratch").string() : name;
        fs::create_directories(m_scratch);
        Write("wav.json", kWavPreset);
        fs::create_directory(Folder() / "in");
        fs::create_directory(Folder() / "out");
        Write("in/a.wav", SilentWav());
        Write("in/b.wav", SilentWav());
        EXPECT_EQ(Zconf({"batch", "new", "-p", "wav.json", "--output-dir", "out", "-o", "b", "in"}).exitCode,
                  0);
    }
    ~ScratchOption() override
    {
        std::error_code ignored;
        fs::remove_all(m_scratch, ignored);
    }

    void Script(const std::string& name, const std::string& lines) const
    {
        Write(name, "#!/bin/bash\ntarget=${!#}; target=${target#file:}\n" + lines + "\n");
        ::chmod((Folder() / name).c_str(), 0755);
    }
    /// How many files and folders there are, hidden ones, too.
    static std::ptrdiff_t CountIn(const fs::path& folder)
    {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    }

    std::string m_scratch;
};

TEST_F(ScratchOption, OfABatchIsWhereFFmpegWrites)
{
    Script("engine", "readlink -f \"$target\" >> seen; cp in/a.wav \"$target\"; echo progress=end");
    ExpectQuietSuccess(Zconf({"batch", "run", "b", "--ffmpeg", "./engine", "--scratch", m_scratch}));
    EXPECT_THAT(Read("seen"), testing::StartsWith(fs::canonical(m_scratch).string() + "/.zelnor-"));
    EXPECT_EQ(Read("out/a.wav"), SilentWav());
    EXPECT_EQ(Read("out/b.wav"), SilentWav());
    EXPECT_EQ(CountIn(m_scratch), 0);
    EXPECT_EQ(CountIn(Folder() / "out"), 2);
}

TEST_F(ScratchOption, OfARunThatWasKilledHoldsNothingAfterTheNext)
{
    Script("slow", "echo half > \"$target\"; touch begun; sleep 60");
    Shell("\"$ZCONF\" batch run b --ffmpeg ./slow --scratch " + m_scratch +
          " & while [ ! -e begun ]; do sleep 0.02; done; kill -9 $!; wait");
    EXPECT_EQ(CountIn(m_scratch), 1);
    EXPECT_EQ(CountIn(Folder() / "out"), 1);
    EXPECT_FALSE(Exists("out/a.wav"));
    ExpectQuietSuccess(Zconf({"batch", "run", "b", "--scratch", m_scratch}));
    EXPECT_EQ(CountIn(m_scratch), 0);
    EXPECT_EQ(CountIn(Folder() / "out"), 2);
    EXPECT_EQ(Zconf({"batch", "status", "b"}).exitCode, 0);
}

TEST_F(ScratchOption, OfAJobIsWhereFFmpegWrites)
{
    Script("engine", "readlink -f \"$target\" > seen; cp ../in/a.wav \"$target\"; echo progress=end");
    const ProcessResult run =
        Shell("cd b && \"$ZCONF\" job run jobs/000001.json --ffmpeg ../engine --scratch " + m_scratch);
    EXPECT_EQ(run.exitCode, 0) << run.messages;
    EXPECT_THAT(Read("b/seen"), testing::StartsWith(fs::canonical(m_scratch).string() + "/.zelnor-"));
    EXPECT_EQ(Read("out/a.wav"), SilentWav());
    EXPECT_EQ(CountIn(m_scratch), 0);
}

TEST_F(ScratchOption, IsPassedOnToTheTasksOfACluster)
{
    fs::create_directory(Folder() / "bin");
    Script("bin/scontrol", "echo 'MaxArraySize = 100'");
    Script("bin/squeue", "");
    Script("bin/sbatch", "printf '%s\\n' \"$@\" > '" + (Folder() / "given").string() + "'; echo 1234");
    ProcessOptions options;
    options.environment = {"PATH=" + (Folder() / "bin").string() + ":/usr/bin:/bin"};
    const ProcessResult run =
        Zconf({"batch", "run", "b", "--engine", "slurm", "--scratch", "local"}, options);
    EXPECT_EQ(run.exitCode, 0) << run.messages;
    // A task has another working folder.
    EXPECT_THAT(Read("given"),
                HasSubstr("\n--scratch\n" + (fs::canonical(Folder()) / "local").string() + "\n"));
}

TEST_F(ScratchOption, ThatIsNotThereIsToldAndNothingIsMade)
{
    const ProcessResult run = Zconf({"batch", "run", "b", "--only", "1", "--scratch", "none"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.messages,
                HasSubstr("Cannot write in the scratch folder 'none': No such file or directory"));
    EXPECT_EQ(CountIn(Folder() / "out"), 0);
}

} // namespace
