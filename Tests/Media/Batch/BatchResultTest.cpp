#include "Media/Batch/BatchResult.h"

#include "Media/Batch/BatchRecord.h"
#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor::Media;
using Zelnor::Testing::ExpectThrow;

BatchResult Full()
{
    BatchResult result;
    result.state = BatchResult::State::Failed;
    result.failure = BatchResult::Failure::FFmpeg;
    result.reason = "ffmpeg failed";
    result.exitCode = 69;
    result.messages = {"one", "two \"quoted\""};
    result.commands = {{"ffmpeg", "-pass", "1"}, {"ffmpeg", "$(rm \xff)"}};
    result.notes = {"a note"};
    result.verification = "quick";
    result.attempts = 3;
    result.host = "node-1";
    result.process = 4711;
    result.started = "2026-11-22T11:03:07Z";
    result.ended = "2026-11-22T11:04:08Z";
    result.elapsed = 61'000'000;
    result.duration = 122'000'000;
    result.sizeBefore = 10;
    result.sizeAfter = 5;
    result.replaced = FileStamp{0xFFFFFFFFFFFFFFFFULL, 7, -1};
    return result;
}

void ExpectRefused(const std::string& from, const std::string& to, const std::string& reason)
{
    std::string text = ResultText(Full());
    const std::size_t place = text.find(from);
    ASSERT_NE(place, std::string::npos) << text;
    text.replace(place, from.size(), to);
    const auto thrown = ExpectThrow<JobException>([&] { ParseResult(text, "r.json"); });
    EXPECT_EQ(thrown.description, "r.json: " + reason);
}

TEST(BatchResult, IsReadAsItWasWritten)
{
    const BatchResult read = ParseResult(ResultText(Full()), "r.json");
    EXPECT_EQ(ResultText(read), ResultText(Full()));
    EXPECT_EQ(read.exitCode, 69);
    EXPECT_EQ(read.messages, Full().messages);
    EXPECT_EQ(read.commands, Full().commands);
    EXPECT_TRUE(*read.replaced == *Full().replaced);
    EXPECT_DOUBLE_EQ(read.Speed(), 2);
}

TEST(BatchResult, OfARunThatGoesOnHasNoEnd)
{
    BatchResult running;
    running.started = "2026-11-22T11:03:07Z";
    const BatchResult read = ParseResult(ResultText(running), "r.json");
    EXPECT_EQ(read.state, BatchResult::State::Running);
    EXPECT_EQ(read.ended, "");
    EXPECT_FALSE(read.duration.has_value());
    EXPECT_FALSE(read.replaced.has_value());
    EXPECT_EQ(read.Speed(), 0);
}

TEST(BatchResult, IsNotTakenOnTrust)
{
    ExpectRefused("\"failed\"", "\"done!\"",
                  "state: expected one of 'running', 'done', 'failed', 'cancelled', found 'done!'");
    ExpectRefused("\"version\": 1", "\"version\": 2", "version: expected an integer from 1 to 1, found 2");
    ExpectRefused("\"host\"", "\"hots\"", "hots: unknown member; did you mean 'host' or 'notes'?");
    ExpectRefused("2026-11-22T11:03:07Z", "yesterday",
                  "started: expected a time in UTC, such as 2026-11-22T11:03:07Z, found 'yesterday'");
    for (const char* const time : {"2026/11-22T11:03:07Z", "2026-11-22T1l:03:07Z", "2026-11-22T1/:03:07Z"})
    {
        ExpectRefused("2026-11-22T11:03:07Z", time,
                      std::string("started: expected a time in UTC, such as 2026-11-22T11:03:07Z, found '") +
                          time + "'");
    }
    ExpectRefused("\"exitCode\": 69", "\"exitCode\": 256",
                  "exitCode: expected an integer from 0 to 255, found 256");
    ExpectRefused("\"sizeAfter\": 5", "\"sizeAfter\": -5",
                  "sizeAfter: expected an integer from 0 to 9223372036854775807, found -5");
    ExpectRefused("\"inode\"", "\"node\"", "replaced.node: unknown member; did you mean 'inode'?");
}

TEST(BatchResult, HasCommandsThatCanBeOnes)
{
    ExpectRefused("\"commands\": {\n   \"1\"", "\"commands\": {\n   \"2\"", "commands.2: stands there twice");
    ExpectRefused("\n   \"2\": {", "\n   \"3\": {", "commands.3: unknown member; did you mean '1' or '2'?");
    ExpectRefused("-pass", "-pa\\u0000ss", "commands.1: a command cannot hold a NUL byte");
    BatchResult result = Full();
    result.commands = {{}, {"ffmpeg"}};
    const auto thrown = ExpectThrow<JobException>([&] { ParseResult(ResultText(result), "r.json"); });
    EXPECT_EQ(thrown.description, "r.json: commands.1: expected the words of a command");
}

TEST(BatchResult, HasNamesForScripts)
{
    EXPECT_EQ(NameOf(BatchResult::State::Cancelled), "cancelled");
    EXPECT_EQ(NameOf(BatchResult::Failure::None), "");
    EXPECT_EQ(NameOf(BatchResult::Failure::Run), "run");
}

TEST(BatchResult, HasASpeedOnlyWhereBothTimesAreKnown)
{
    BatchResult result;
    result.elapsed = 500;
    EXPECT_EQ(result.Speed(), 0);
    result.duration = 1000;
    EXPECT_EQ(result.Speed(), 2);
    result.elapsed = 0;
    EXPECT_EQ(result.Speed(), 0);
}

TEST(BatchResult, TellsAFileFromAnyOther)
{
    const FileStamp stamp{1, 2, 3};
    EXPECT_TRUE(stamp == (FileStamp{1, 2, 3}));
    EXPECT_FALSE(stamp == (FileStamp{9, 2, 3}));
    EXPECT_FALSE(stamp == (FileStamp{1, 9, 3}));
    EXPECT_FALSE(stamp == (FileStamp{1, 2, 9}));
}

} // namespace
