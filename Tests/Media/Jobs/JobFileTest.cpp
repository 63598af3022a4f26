#include "Media/Jobs/JobFile.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TestStreams.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

JobFile Read(const std::string& document)
{
    return ReadJob(*Core::MemoryDataInput::Create(document), "job.json");
}

void ExpectRefused(const std::string& document, const std::string& description)
{
    SCOPED_TRACE(document);
    const Thrown thrown = ExpectThrow<JobException>([&] { Read(document); });
    EXPECT_EQ(thrown.description, "job.json: " + description);
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "job.json");
}

TEST(JobFile, HoldsTheNameAndTheGraph)
{
    const JobFile job = Read(R"({"vertices":[{"id":5},{"id":2}],"edges":[{"from":5,"to":2}]})");
    EXPECT_EQ(job.name, "job.json");
    std::vector<Conf::NodeId> nodes;
    job.graph->Nodes(nodes);
    EXPECT_THAT(nodes, ElementsAre(5, 2));
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(JobFile, NotesDataOfWhichOnlyAPartIsTheRecord)
{
    const JobFile job = Read(R"({"vertices":[{"id":5,"data":{"data":{"source":{},"other":{}}}},{"id":2}],
        "edges":[{"from":5,"to":2,"data":{"data":{"a":{},"b":{}}}}]})");
    EXPECT_EQ((*job.graph)[5].GetName(), "source");
    EXPECT_THAT(
        job.notes,
        ElementsAre("job.json: node 5, data: more than one member; only the first one is the record",
                    "job.json: link 5 -> 2, data: more than one member; only the first one is the record"));
}

TEST(JobFile, OfAStreamThatClaimsTooMuchIsRefused)
{
    LyingInput input('[');
    EXPECT_EQ(ExpectThrow<Core::CoreException>([&] { ReadJob(input, "job.json"); }).description,
              "The input claims to have read 65537 bytes, expected at most 65536");
}

TEST(JobFile, ErrorsNameTheElement)
{
    ExpectRefused(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"from":1,"to":2},{"from":2,"to":7}]})",
                  "edges[1]: There is no node 7");
    ExpectRefused(
        R"({"vertices":[{"id":1},{"data":{"a":{"b":0.5}}}],"edges":[]})",
        "vertices[1]: a.b: expected an integer, a string, a rational, null or a group, found a number "
        "that is not a 64-bit integer");
    ExpectRefused("{\n[",
                  "The root node must be an object. (line 2, column 1: Missing a name for object member.)");
}

TEST(JobFile, ThatCannotBeOpenedIsAnErrorOfTheStream)
{
    const Thrown thrown = ExpectThrow<Core::CoreException>([] { ReadJob(ioPath("gone.json")); });
    EXPECT_EQ(thrown.description, "Cannot open 'gone.json': No such file or directory");
}

TEST(JobFile, AnIdThatIsNoIntegerCountsAsNull)
{
    ExpectRefused(R"({"vertices":[{"id":1},{}],"edges":[{"from":1,"to":0},{"from":"x","to":1},{"to":2}]})",
                  "edges[2]: There is no node 2");
}

TEST(JobFile, ALinkThatIsThereTwiceIsNamed)
{
    ExpectRefused(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"from":1,"to":2},{"from":1,"to":2}]})",
                  "edges[1]: There is already a link from node 1 to node 2");
}

TEST(JobFile, ARecordOfALinkIsNamedWhenTheOnesOfTheNodesAreGood)
{
    ExpectRefused(R"({"vertices":[{"id":1,"data":{"data":{"a":1}}},{"id":2}],
                      "edges":[{"from":1,"to":2},{"from":2,"to":1,"data":{"data":{"a":true}}}]})",
                  "edges[1]: data.a: expected an integer, a string, a rational, null or a group, found true");
}

TEST(JobFile, OfAnotherFormIsRefusedByTheGraph)
{
    ExpectRefused("[]", "The root node must be an object.");
    EXPECT_THROW(Read("{}"), JobException);
    EXPECT_THROW(Read(R"({"vertices":{},"edges":[]})"), JobException);
    EXPECT_THROW(Read(R"({"vertices":[],"edges":1})"), JobException);
    EXPECT_THROW(Read(R"({"vertices":[1],"edges":[]})"), JobException);
}

} // namespace
