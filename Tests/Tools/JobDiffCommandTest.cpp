#include "Tests/Support/ZconfTest.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor::Testing;

class JobDiff : public ZconfTest
{
protected:
    /// A job of two linked nodes, the first of which holds `record`.
    static std::string Job(const std::string& record)
    {
        return R"({"vertices":[{"id":1,"data":{"data":)" + record +
               R"(}},{"id":2}],"edges":[{"id":1,"from":1,"to":2,"data":{"data":{"l":{"x":1}}}}]})";
    }
    ProcessResult Diff(const std::string& one, const std::string& other,
                       const std::vector<std::string>& more = {}) const
    {
        Write("a", one);
        Write("b", other);
        std::vector<std::string> words = {"job", "diff", "a", "b"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words);
    }
    void ExpectDifference(const std::string& one, const std::string& other, const std::string& text) const
    {
        const ProcessResult result = Diff(one, other);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.messages, "");
        EXPECT_EQ(result.output, text);
    }
};

TEST_F(JobDiff, EqualJobsGiveNothingAndSuccess)
{
    const ProcessResult result = Diff(Job(R"({"r":{"x":1}})"), Job(R"({ "r" : {"x":1} })"));
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "");
}

TEST_F(JobDiff, TellsValuesByKey)
{
    ExpectDifference(Job(R"({"r":{"x":1,"g":{"t":"a"},"q":[30000,1001]}})"),
                     Job(R"({"r":{"x":"1","g":{"t":"b"},"q":[25,1]}})"),
                     "node 1\n  x\n    - 1\n    + \"1\"\n  g.t\n    - \"a\"\n    + \"b\"\n  q\n"
                     "    - [30000, 1001]\n    + [25, 1]\n");
}

TEST_F(JobDiff, ShowsKeysThatOneSideLacks)
{
    ExpectDifference(Job(R"({"r":{"x":null}})"), Job(R"({"r":{"y":{"a":1}}})"),
                     "node 1\n  x\n    - null\n  y\n    + a group of 1\n");
}

TEST_F(JobDiff, TellsRecordsOfOtherNamesAndKinds)
{
    ExpectDifference(Job(R"({"r":{"x":1}})"), Job(R"({"s":{"x":1}})"),
                     "node 1\n  name of the record\n    - \"r\"\n    + \"s\"\n");
    ExpectDifference(Job(R"({"r":1})"), Job(R"({"r":{}})"),
                     "node 1\n  value of the record\n    - 1\n    + a group of 0\n");
}

TEST_F(JobDiff, EqualKeysAreNumbered)
{
    ExpectDifference(Job(R"({"r":[{"m":1},{"m":2}]})"), Job(R"({"r":[{"m":1},{"m":3},{"m":4}]})"),
                     "node 1\n  m[2]\n    - 2\n    + 3\n  m[3]\n    + 4\n");
}

TEST_F(JobDiff, TheOrderOfKeysCounts)
{
    ExpectDifference(Job(R"({"r":{"g":{"x":1,"y":2}}})"), Job(R"({"r":{"g":{"y":2,"x":1}}})"),
                     "node 1\n  g, order of its keys\n    - x, y\n    + y, x\n");
}

TEST_F(JobDiff, TellsNodesAndLinks)
{
    ExpectDifference(R"({"vertices":[{"id":1},{"id":2},{"id":3}],"edges":[{"from":1,"to":2}]})",
                     R"({"vertices":[{"id":1},{"id":2},{"id":9},{"id":9}],"edges":[{"from":2,"to":1}]})",
                     "node 3\n  - there\nnode 9\n  + there 2 times\nlink 1 -> 2\n  - there\nlink 2 -> 1\n"
                     "  + there\n");
}

TEST_F(JobDiff, ComparesTheRecordsOfLinks)
{
    std::string other = Job(R"({"r":{}})");
    other.replace(other.find(R"("x":1)"), 5, R"("x":2)");
    ExpectDifference(Job(R"({"r":{}})"), other, "link 1 -> 2\n  x\n    - 1\n    + 2\n");
}

TEST_F(JobDiff, TheOrderOfNodesAndLinksDoesNotCount)
{
    const ProcessResult result = Diff(R"({"vertices":[{"id":1},{"id":2}],"edges":[]})",
                                      R"({"vertices":[{"id":2},{"id":1}],"edges":[]})");
    ExpectQuietSuccess(result);
}

TEST_F(JobDiff, WritesJsonForScripts)
{
    const ProcessResult result =
        Diff(Job(R"({"r":{"x":"\n","y":1,"z":{"q":[1,2]}}})"), Job(R"({"r":{"y":"1"}})"), {"--json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, R"({
  "equal": false,
  "differences": [{
      "place": "node 1",
      "key": "x",
      "first": "\n",
      "second": null
    }, {
      "place": "node 1",
      "key": "y",
      "first": 1,
      "second": "1"
    }, {
      "place": "node 1",
      "key": "z",
      "first": {
        "q": [1, 2]
      },
      "second": null
    }]
}
)");
    EXPECT_EQ(Diff(kValid, kValid, {"--json"}).output, R"({
  "equal": true,
  "differences": []
}
)");
}

TEST_F(JobDiff, OneOfThemMayBeReadFromStandardInput)
{
    Write("a", kValid);
    ProcessOptions options;
    options.input = kValid;
    ExpectQuietSuccess(Zconf({"job", "diff", "a", "-"}, options));
    ExpectFailure(Zconf({"job", "diff", "-", "-"}, options),
                  "Only one of the two jobs can be read from standard input");
}

TEST_F(JobDiff, AJobThatCannotBeReadIsAFailure)
{
    Write("a", kValid);
    ExpectFailure(Zconf({"job", "diff", "a", "gone"}), "Cannot open 'gone': No such file or directory");
}

TEST_F(JobDiff, DeepRecordsAreCompared)
{
    const auto deep = [](const std::string& value) {
        std::string record = value;
        for (int i = 0; i < 500; ++i)
        {
            record = R"({"g":)" + record + "}";
        }
        return Job(record);
    };
    EXPECT_EQ(Diff(deep("1"), deep("2")).exitCode, 1);
    EXPECT_EQ(Diff(deep("1"), deep("1")).exitCode, 0);
}

} // namespace
