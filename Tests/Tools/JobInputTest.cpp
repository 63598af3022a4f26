#include "Tests/Support/ZconfTest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Testing;

/// A job whose node 5 has two members in its data, only the first of which is read.
class JobInput : public ZconfTest
{
protected:
    JobInput()
    {
        Write("job.json", R"({
            "vertices": [
                {"id": 5, "data": {"data": {"a": 1, "b": 2}}},
                {"id": 6}
            ],
            "edges": [{"from": 5, "to": 6}]
        })");
    }

    const std::string m_note =
        "zconf: note: job.json: node 5, data: more than one member; only the first one is the record\n";
};

TEST_F(JobInput, EveryCommandNotesMoreThanOneMemberOfData)
{
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"job", "show", "job.json"},
                                                      {"job", "show", "job.json", "--json"},
                                                      {"job", "check", "job.json", "--topology"},
                                                      {"job", "draw", "job.json"}})
    {
        SCOPED_TRACE(arguments[1]);
        const ProcessResult result = Zconf(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.messages, m_note);
    }
}

TEST_F(JobInput, NotesStandBeforeAFailure)
{
    const ProcessResult result = Zconf({"job", "run", "job.json"});
    EXPECT_EQ(result.exitCode, 2);
    // The failure itself is tested with `job run`.
    EXPECT_EQ(result.messages.substr(0, m_note.size()), m_note);
}

TEST_F(JobInput, BothJobsOfAComparisonAreNoted)
{
    const ProcessResult result = Zconf({"job", "diff", "job.json", "job.json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.messages, m_note + m_note);
}

TEST_F(JobInput, ANoteIsOneLineWhateverTheFileIsCalled)
{
    Write("two\nlines", Read("job.json"));
    EXPECT_EQ(
        Zconf({"job", "check", "--topology", "two\nlines"}).messages,
        "zconf: note: two\\nlines: node 5, data: more than one member; only the first one is the record\n");
}

} // namespace
