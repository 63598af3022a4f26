#include "Media/Running/ChildStart.h"

#include "Media/Running/Subprocess.h"
#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace
{

using namespace Zelnor::Media;
using Zelnor::Testing::RunForked;
using Zelnor::Testing::TemporaryFolder;
using Zelnor::Testing::WriteFile;

namespace fs = std::filesystem;

/// What the process does about a signal while there is one of these.
class SignalAction
{
public:
    SignalAction(int number, void (*handler)(int)) : m_number(number), m_former(::signal(number, handler)) {}
    ~SignalAction() { ::signal(m_number, m_former); }
    SignalAction(const SignalAction&) = delete;
    SignalAction& operator=(const SignalAction&) = delete;

private:
    int m_number;
    void (*m_former)(int);
};

/// The exit code of a program that sends itself the signal, which this process handles with `handler`.
int CodeAfterSignal(int number, void (*handler)(int), bool inOwnGroup = false)
{
    const SignalAction action(number, handler);
    SubprocessOptions options;
    options.inOwnGroup = inOwnGroup;
    return RunSubprocess({"bash", "-c", "kill -" + std::to_string(number) + " $$; exit 5"}, options);
}

TEST(StartedProgram, IsEndedBySignalsThatOnlyConcernThisProcess)
{
    for (const int number : {SIGPIPE, SIGXFSZ, SIGTERM})
    {
        EXPECT_EQ(CodeAfterSignal(number, SIG_IGN), 128 + number) << number;
    }
}

TEST(StartedProgram, IgnoresWhatItIsToldToIgnore)
{
    // As `nohup` wants it.
    for (const int number : {SIGINT, SIGHUP, SIGUSR1})
    {
        EXPECT_EQ(CodeAfterSignal(number, SIG_IGN), 5) << number;
    }
}

TEST(StartedProgram, OfAGroupOfItsOwnIsEndedByTheTerminal)
{
    for (const int number : {SIGINT, SIGHUP})
    {
        EXPECT_EQ(CodeAfterSignal(number, SIG_IGN, true), 128 + number) << number;
    }
    EXPECT_EQ(CodeAfterSignal(SIGUSR1, SIG_IGN, true), 5);
}

TEST(StartedProgram, IsEndedBySignalsThatThisProcessHandles)
{
    for (const int number : {SIGINT, SIGUSR1})
    {
        EXPECT_EQ(CodeAfterSignal(number, [](int) {}), 128 + number) << number;
    }
}

TEST(StartedProgram, HasItsStreamsWhicheverOfThisProcessAreClosed)
{
    for (int closed = 1; closed < 8; ++closed)
    {
        EXPECT_EQ(RunForked([closed] {
                      for (int stream = 0; stream < 3; ++stream)
                      {
                          if ((closed >> stream & 1) != 0)
                          {
                              ::close(stream);
                          }
                      }
                      const FilterResult result = RunFilter({"bash", "-c", "cat; echo message >&2"}, "text");
                      return result.output == "text" && result.messages == "message\n" ? 0 : 1;
                  }),
                  0)
            << closed;
    }
}

/// Programs in folders of which a test makes the path.
class ProgramPath : public testing::Test
{
protected:
    ProgramPath()
    {
        const char* const former = std::getenv("PATH");
        m_former = former == nullptr ? "" : former;
        fs::create_directory(m_folder / "one");
        fs::create_directory(m_folder / "two");
    }
    ~ProgramPath() override { ::setenv("PATH", m_former.c_str(), 1); }
    ProgramPath(const ProgramPath&) = delete;
    ProgramPath& operator=(const ProgramPath&) = delete;

    void MakeProgram(const std::string& name, const std::string& text, mode_t mode = 0755) const
    {
        WriteFile(m_folder / name, text);
        ASSERT_EQ(::chmod((m_folder / name).c_str(), mode), 0);
    }

    /// What the program prints, or why it does not run.
    std::string Run(const std::string& path) const
    {
        ::setenv("PATH", path.c_str(), 1);
        std::string output;
        SubprocessOptions options;
        options.onOutput = [&output](std::string_view bytes) { output += bytes; };
        try
        {
            RunSubprocess({"zelnor-test-tool"}, options);
        }
        catch (const SubprocessError& error)
        {
            return error.code().message();
        }
        return output;
    }

    std::string Folder(const std::string& name) const { return (m_folder / name).string(); }

    TemporaryFolder m_folder;
    std::string m_former;
};

constexpr const char* kOne = "#!/bin/sh\necho one\n";
constexpr const char* kTwo = "#!/bin/sh\necho two\n";

TEST_F(ProgramPath, IsSearchedInItsOrder)
{
    MakeProgram("two/zelnor-test-tool", kTwo);
    const std::string both = Folder("one") + ":" + Folder("two");
    EXPECT_EQ(Run(both), "two\n");
    MakeProgram("one/zelnor-test-tool", kOne);
    EXPECT_EQ(Run(both), "one\n");
    EXPECT_EQ(Run(Folder("two") + ":" + Folder("one")), "two\n");
}

TEST_F(ProgramPath, MayHaveItsProgramInTheMiddle)
{
    MakeProgram("two/zelnor-test-tool", kTwo);
    EXPECT_EQ(Run(Folder("one") + ":" + Folder("two") + ":" + Folder("missing")), "two\n");
}

TEST_F(ProgramPath, MayHaveAProgramThatMayNotBeRunBeforeOneThatMay)
{
    MakeProgram("one/zelnor-test-tool", kOne, 0644);
    EXPECT_EQ(Run(Folder("one")), "Permission denied");
    EXPECT_EQ(Run(Folder("one") + ":" + Folder("missing")), "Permission denied");
    MakeProgram("two/zelnor-test-tool", kTwo);
    EXPECT_EQ(Run(Folder("one") + ":" + Folder("two")), "two\n");
}

TEST_F(ProgramPath, MayHoldWhatIsNotAFolder)
{
    MakeProgram("file", "");
    EXPECT_EQ(Run(Folder("file")), "Not a directory");
    EXPECT_EQ(Run(Folder("file") + ":" + Folder("one")), "No such file or directory");
    MakeProgram("two/zelnor-test-tool", kTwo);
    EXPECT_EQ(Run(Folder("file") + ":" + Folder("two")), "two\n");
}

TEST_F(ProgramPath, EndsAtAProgramThatTheSystemCannotRun)
{
    MakeProgram("one/zelnor-test-tool", "echo one\n");
    MakeProgram("two/zelnor-test-tool", kTwo);
    EXPECT_EQ(Run(Folder("one") + ":" + Folder("two")), "Exec format error");
}

TEST_F(ProgramPath, MeansTheWorkingFolderWhereItIsEmpty)
{
    MakeProgram("two/zelnor-test-tool", kTwo);
    const fs::path former = fs::current_path();
    fs::current_path(m_folder / "two");
    EXPECT_EQ(Run(""), "two\n");
    EXPECT_EQ(Run(Folder("missing") + ":"), "two\n");
    EXPECT_EQ(Run("::" + Folder("missing")), "two\n");
    fs::current_path(former);
    EXPECT_EQ(Run(Folder("missing")), "No such file or directory");
}

TEST_F(ProgramPath, IsTheSystemsWithoutOne)
{
    ::unsetenv("PATH");
    EXPECT_EQ(RunSubprocess({"true"}, {}), 0);
}

TEST_F(ProgramPath, IsNotSearchedForAProgramWithAFolderOrWithoutAName)
{
    MakeProgram("two/zelnor-test-tool", kTwo);
    ::setenv("PATH", Folder("two").c_str(), 1);
    EXPECT_FALSE(RunFilter({"./zelnor-test-tool"}, "").started);
    EXPECT_TRUE(RunFilter({Folder("two") + "/zelnor-test-tool"}, "").started);
    EXPECT_FALSE(RunFilter({""}, "").started);
}

} // namespace
