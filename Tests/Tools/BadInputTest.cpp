#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;

/// Whatever a job's document is, each command that reads one fails with the same one line.
class BadInput : public ZconfTest
{
protected:
    void ExpectRefused(const std::string& document, const std::string& sentence) const
    {
        Write("job.json", document);
        for (const char* const command : {"show", "check", "draw"})
        {
            SCOPED_TRACE(command);
            ExpectFailure(Zconf({"job", command, "job.json"}), "job.json: " + sentence);
        }
    }
};

const std::string kRoot = "The root node must be an object.";

TEST_F(BadInput, AMissingFile)
{
    ExpectFailure(Zconf({"job", "show", "gone.json"}), "Cannot open 'gone.json': No such file or directory");
}

TEST_F(BadInput, AFolder) { ExpectFailure(Zconf({"job", "check", "."}), "Cannot read '.': Is a directory"); }

TEST_F(BadInput, AnEmptyName)
{
    ExpectFailure(Zconf({"job", "check", ""}), "Cannot open '': No such file or directory");
}

TEST_F(BadInput, AnEmptyFile)
{
    ExpectRefused("", kRoot + " (line 1, column 1: The document is empty.)");
    ExpectRefused(" \n\t\n", kRoot + " (line 3, column 1: The document is empty.)");
}

TEST_F(BadInput, TextThatIsNotJson)
{
    ExpectRefused("\x89PNG\r\n", kRoot + " (line 1, column 1: Invalid value.)");
    ExpectRefused("{\n\"vertices\": [,]}", kRoot + " (line 2, column 14: Invalid value.)");
    ExpectRefused(std::string(kValid) + " {}",
                  kRoot + " (line 1, column 69: The document root must not be followed by other values.)");
}

TEST_F(BadInput, ADocumentCutAnywhere)
{
    const std::string whole = kValid;
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        Write("job.json", whole.substr(0, length));
        const ProcessResult result = Zconf({"job", "check", "job.json"});
        EXPECT_EQ(result.exitCode, 2) << length;
        // The column and the reason depend on the cut.
        EXPECT_THAT(result.messages, HasSubstr("zconf: job.json: " + kRoot + " (line 1, column ")) << length;
    }
}

TEST_F(BadInput, ANulByte)
{
    ExpectRefused(std::string(kValid) + std::string(1, '\0') + "rest",
                  kRoot + " (line 1, column 68: A NUL byte follows the document.)");
    ExpectRefused(std::string(1, '\0') + kValid, kRoot + " (line 1, column 1: The document is empty.)");
}

TEST_F(BadInput, AMillionBrackets)
{
    for (const std::string& opening :
         {std::string("["), std::string("{\"a\":"), std::string("{\"vertices\":["),
          std::string("{\"vertices\":[{\"data\":")})
    {
        std::string document;
        while (document.size() < 1000000)
        {
            document += opening;
        }
        Write("job.json", document);
        const ProcessResult result = Zconf({"job", "show", "job.json"});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.signal, 0);
        // What matters is that the process ends with a message instead of a crash.
        EXPECT_THAT(result.messages, HasSubstr(kRoot));
    }
}

TEST_F(BadInput, ARecordNestedTooDeep)
{
    std::string document = R"({"vertices":[{"id":1},{"data":)";
    const int depth = 600;
    for (int i = 0; i < depth; ++i)
    {
        document += R"({"a":)";
    }
    document += "1" + std::string(depth, '}') + "}],\"edges\":[]}";
    Write("job.json", document);
    const ProcessResult result = Zconf({"job", "show", "job.json"});
    EXPECT_EQ(result.exitCode, 2);
    // In between stands the path, 512 names long.
    EXPECT_THAT(result.messages, testing::StartsWith("zconf: job.json: vertices[1]: a.a.a."));
    EXPECT_THAT(result.messages, testing::EndsWith(".a: groups are nested deeper than 512\n"));
}

TEST_F(BadInput, JsonThatIsNotAJob)
{
    const std::string arrays = "The root object must have two nested arrays named vertices and edges";
    ExpectRefused("[]", kRoot);
    ExpectRefused("null", kRoot);
    ExpectRefused("{}", arrays);
    ExpectRefused(R"({"vertices":[]})", arrays);
    ExpectRefused(R"({"vertices":{},"edges":[]})", arrays);
}

TEST_F(BadInput, AnElementThatIsNotAnObject)
{
    ExpectRefused(R"({"vertices":[{"id":1},"x"],"edges":[]})",
                  "vertices[1] must be an object, found a string");
    ExpectRefused(R"({"vertices":[],"edges":[null]})", "edges[0] must be an object, found null");
}

TEST_F(BadInput, ALinkToAnUnknownNode)
{
    ExpectRefused(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"from":1,"to":2},{"from":2,"to":7}]})",
                  "edges[1]: There is no node 7");
}

TEST_F(BadInput, ALinkThatIsThereTwice)
{
    ExpectRefused(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"from":1,"to":2},{"from":1,"to":2}]})",
                  "edges[1]: There is already a link from node 1 to node 2");
}

TEST_F(BadInput, ARecordThatIsNone)
{
    ExpectRefused(
        R"({"vertices":[{"id":1},{"id":2,"data":{"data":{"s":{"bitrate":1.5}}}}],"edges":[]})",
        "vertices[1]: data.s.bitrate: expected an integer, a string, a rational, null or a group, found "
        "a number that is not a 64-bit integer");
    ExpectRefused(
        R"({"vertices":[{"id":1},{"id":2}],"edges":[{"from":1,"to":2,"data":{"data":{"r":[1,0]}}}]})",
        "edges[0]: data.r: a rational with the denominator 0");
}

TEST_F(BadInput, ATextLargerThanTheMemory)
{
    const ProcessResult result = Shell("ulimit -v 300000; truncate -s 8G big; exec \"$ZCONF\" job check big");
    if (result.messages.find("Sanitizer") != std::string::npos)
    {
        GTEST_SKIP() << "a sanitizer needs more address space than this test leaves";
    }
    ExpectFailure(result, "big: Not enough memory");
}

TEST_F(BadInput, AJobLargerThanTheMemory)
{
    std::string nodes;
    for (int id = 1; id <= 600000; ++id)
    {
        nodes += (id == 1 ? "" : ",") + (R"({"id":)" + std::to_string(id)) +
                 R"(,"data":{"data":{"n":{"key":"a value of some length"}}}})";
    }
    Write("big", R"({"vertices":[)" + nodes + R"(],"edges":[]})");
    const ProcessResult result = Shell("ulimit -v 300000; exec \"$ZCONF\" job check big");
    if (result.messages.find("Sanitizer") != std::string::npos)
    {
        GTEST_SKIP() << "a sanitizer needs more address space than this test leaves";
    }
    ExpectFailure(result, "big: Not enough memory");
}

TEST_F(BadInput, ANameWithALineBreakIsOneLine)
{
    Write("two\nlines\x1b[0m", "[]");
    ExpectFailure(Zconf({"job", "check", "two\nlines\x1b[0m"}), "two\\nlines\\x1b[0m: " + kRoot);
}

} // namespace
