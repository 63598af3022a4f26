#include "Tests/Support/Clip.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;

class StandardStreams : public ZconfTest
{
protected:
    StandardStreams()
    {
        Write("job.json", kValid);
        Write("in.mp4", TinySound());
    }
};

/// Commands that write a document to standard output.
const std::vector<std::string> kWriters = {
    "job show job.json",
    "job show job.json --json",
    "job check --topology job.json",
    "job check --topology job.json --json",
    "job draw job.json",
    "job draw job.json -f svg",
    "job new -p mp3 -i in.mp4 -t o",
    "--help",
    "--version",
};

TEST_F(StandardStreams, CommandsWorkInAPipeline)
{
    const ProcessResult result = Shell("\"$ZCONF\" job new -p mp3 -i in.mp4 -t o | \"$ZCONF\" job check -");
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "standard input: valid, 3 nodes and 2 links\n");
}

TEST_F(StandardStreams, AClosedPipeEndsQuietly)
{
    for (const std::string& command : kWriters)
    {
        SCOPED_TRACE(command);
        const ProcessResult result = Shell("set +o pipefail; (sleep 0.05; exec \"$ZCONF\" " + command +
                                           ") | true; echo ${PIPESTATUS[0]}");
        EXPECT_EQ(result.messages, "");
        EXPECT_EQ(result.output, "141\n");
    }
}

TEST_F(StandardStreams, AClosedPipeEndsQuietlyAlsoWhenItsSignalIsIgnored)
{
    const ProcessResult result =
        Shell("trap '' PIPE; (sleep 0.05; \"$ZCONF\" job show job.json; echo $? >&2) | true");
    EXPECT_EQ(result.messages, "141\n");
}

TEST_F(StandardStreams, AFullDiskIsAFailure)
{
    for (const std::string& command : kWriters)
    {
        SCOPED_TRACE(command);
        const ProcessResult result = Shell("exec \"$ZCONF\" " + command + " > /dev/full");
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.messages, "zconf: Cannot write standard output: No space left on device\n");
    }
}

TEST_F(StandardStreams, AClosedStandardOutputIsAFailure)
{
    for (const std::string& command : kWriters)
    {
        SCOPED_TRACE(command);
        const ProcessResult result = Shell("exec \"$ZCONF\" " + command + " >&-");
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.messages, "zconf: Cannot write standard output: Bad file descriptor\n");
    }
}

TEST_F(StandardStreams, AClosedStandardInputIsAFailure)
{
    const ProcessResult result = Shell("exec \"$ZCONF\" job check - <&-");
    ExpectFailure(result, "Cannot read standard input: Bad file descriptor");
}

TEST_F(StandardStreams, MessagesNeverEndUpInADocument)
{
    const ProcessResult result =
        Shell("exec \"$ZCONF\" job new -p mp3 -i in.mp4 -t o --lossless-dvd -o new.json 0<&- 1>&- 2>&-");
    EXPECT_EQ(result.exitCode, 0);
    // A message before or inside the document would make it unreadable.
    EXPECT_THAT(Read("new.json"), testing::StartsWith("{\"vertices\":[{"));
    EXPECT_EQ(Zconf({"job", "check", "new.json"}).exitCode, 0);
}

TEST_F(StandardStreams, ARedirectedFileIsAppendedToAndReadFromWhereItStands)
{
    const ProcessResult result = Shell(
        "echo first > out; \"$ZCONF\" job check --topology job.json >> out; cat out;"
        "(printf 'skipped\\n'; cat job.json) > in; (read -r line; \"$ZCONF\" job check --topology -) < in");
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "first\njob.json: valid, 2 nodes and 1 link\n"
                             "standard input: valid, 2 nodes and 1 link\n");
}

TEST_F(StandardStreams, APipeTakesADocumentToo)
{
    const ProcessResult result = Shell(
        "mkfifo pipe; cat pipe & \"$ZCONF\" job draw job.json -f dot -o pipe; code=$?; wait; exit $code");
    ExpectQuietSuccess(result);
    // The drawing itself is compared in the tests of `job draw`.
    EXPECT_THAT(result.output, HasSubstr("digraph G {\n"));
    EXPECT_THAT(Files(), ElementsAre("in.mp4", "job.json", "pipe"));
}

TEST_F(StandardStreams, AFileNamedDashIsReachedByAPath)
{
    ExpectQuietSuccess(Zconf({"job", "draw", "job.json", "-f", "dot", "-o", "./-"}));
    EXPECT_THAT(Read("-"), testing::StartsWith("digraph G {\n"));
}

} // namespace
