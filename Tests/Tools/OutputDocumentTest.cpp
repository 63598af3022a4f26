#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;

/// Every command writes its answer where -o says.
class OutputDocument : public MediaTest
{
protected:
    OutputDocument()
    {
        Make({"-f", "lavfi", "-i", "sine=d=0.2", "in.wav"});
        EXPECT_EQ(New("mp3", "in.wav", "out.mp3").exitCode, 0);
    }
    /// Compares the file with what the command writes to standard output.
    void ExpectSameAnswer(std::vector<std::string> command) const
    {
        const ProcessResult plain = Zconf(command);
        command.insert(command.end(), {"-o", "answer"});
        const ProcessResult written = Zconf(command);
        EXPECT_EQ(written.exitCode, plain.exitCode) << written.messages;
        EXPECT_EQ(written.output, "");
        EXPECT_NE(plain.output, "");
        EXPECT_EQ(Read("answer"), plain.output);
        std::filesystem::remove(Folder() / "answer");
    }
    std::size_t FileCount() const
    {
        const std::filesystem::directory_iterator files(Folder());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
};

TEST_F(OutputDocument, HoldsTheAnswerOfEveryCommand)
{
    ExpectSameAnswer({"list", "presets"});
    ExpectSameAnswer({"explain", "h264", "--json"});
    ExpectSameAnswer({"extensions"});
    ExpectSameAnswer({"probe", "in.wav"});
    ExpectSameAnswer({"probe", "in.wav", "--json"});
    ExpectSameAnswer({"bitrate", "--codec", "h264", "--size", "640x480", "--fps", "25"});
    ExpectSameAnswer({"job", "show", "job.json"});
    ExpectSameAnswer({"job", "check", "job.json"});
    ExpectSameAnswer({"job", "run", "job.json", "--dry-run"});
    ExpectSameAnswer({"convert", "in.wav", "other.mp3", "-p", "mp3", "--dry-run"});
}

TEST_F(OutputDocument, IsWrittenForANoAsWell)
{
    Write("other.json", Read("job.json"));
    std::string text = Read("job.json");
    Write("other.json", text.replace(text.find("out.mp3"), 7, "oot.mp3"));
    ExpectSameAnswer({"job", "diff", "job.json", "other.json"});
}

TEST_F(OutputDocument, DoesNotReplaceWhatTheCommandReads)
{
    const std::string before = Read("in.wav");
    ExpectFailure(Zconf({"probe", "in.wav", "-o", "./in.wav"}),
                  "-o would replace './in.wav', which the command was given");
    EXPECT_EQ(Read("in.wav") == before, true);
    ExpectFailure(Zconf({"convert", "in.wav", "new.mp3", "-p", "mp3", "--json", "-o", "new.mp3"}),
                  "-o would replace 'new.mp3', which the command was given");
}

TEST_F(OutputDocument, DoesNotReplaceWhatTheCommandHasMade)
{
    const ProcessResult result = RunJob({"--json", "-o", "out.mp3"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages,
                HasSubstr("'out.mp3' was written while the command ran, so it is not replaced"));
    EXPECT_EQ(Info("out.mp3").Audio().codec, "mp3");
}

TEST_F(OutputDocument, IsTriedBeforeAnythingRuns)
{
    const ProcessResult result = RunJob({"--json", "-o", "no folder/answer"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(Folder() / "out.mp3"));
}

TEST_F(OutputDocument, StaysAsItWasWhenTheCommandFails)
{
    Write("answer", "before");
    const std::size_t count = FileCount();
    EXPECT_EQ(Zconf({"probe", "no such.wav", "-o", "answer"}).exitCode, 2);
    EXPECT_EQ(Read("answer"), "before");
    EXPECT_EQ(FileCount(), count);
}

} // namespace
