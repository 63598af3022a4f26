#include "Tests/Support/ZconfTest.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;

class JobShow : public ZconfTest
{
protected:
    /// Two files and a stream, with a record of every kind of value.
    void WriteJob() const
    {
        Write("job.json", R"({
            "vertices": [
                {"id": 1, "data": {"data": {"source": {"filePath": "a\nb"}}}},
                {"id": 20, "data": {"data": {"target": {
                    "n": -7,
                    "rate": [30000, 1001],
                    "nothing": null,
                    "longer name": {"inner": "x", "empty": {}}
                }}}},
                {"id": 3}
            ],
            "edges": [
                {"from": 1, "to": 3},
                {"from": 3, "to": 20, "data": {"data": {"quality": 5}}}
            ]
        })");
    }
};

TEST_F(JobShow, ShowsNodesAndLinksWithNeighboursAndRecords)
{
    WriteJob();
    const ProcessResult result = Zconf({"job", "show", "job.json"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "job.json: 3 nodes, 2 links, valid\n"
                             "\n"
                             "Node 1: source\n"
                             "  to    3\n"
                             "    filePath  a\\nb\n"
                             "\n"
                             "Node 20: target\n"
                             "  from  3\n"
                             "    n        -7\n"
                             "    rate     30000/1001\n"
                             "    nothing  (none)\n"
                             "    longer name\n"
                             "      inner  x\n"
                             "      empty  (empty)\n"
                             "\n"
                             "Node 3\n"
                             "  from  1\n"
                             "  to    20\n"
                             "\n"
                             "Link 1 -> 3\n"
                             "\n"
                             "Link 3 -> 20: quality 5\n");
}

TEST_F(JobShow, ShowsAnInvalidJobToo)
{
    Write("job.json", kUnlinked);
    const ProcessResult result = Zconf({"job", "show", "job.json"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "job.json: 2 nodes, 0 links, not valid\n\nNode 1\n\nNode 2\n");
}

TEST_F(JobShow, ANodeHiddenByAnotherOneWithItsIdIsSaidToBe)
{
    Write("job.json", R"({"vertices":[{"id":1},{"id":1}],"edges":[]})");
    EXPECT_EQ(Zconf({"job", "show", "job.json"}).output,
              "job.json: 2 nodes, 0 links, not valid\n\nNode 1\n\n"
              "Node 1: an earlier node has this id, and hides this one\n");
    EXPECT_EQ(Zconf({"job", "show", "--json", "job.json"}).output, R"({
  "valid": false,
  "nodes": [{
      "id": 1,
      "inputs": [],
      "outputs": []
    }, {
      "id": 1,
      "hidden": true
    }],
  "links": []
}
)");
}

TEST_F(JobShow, WritesJson)
{
    WriteJob();
    const ProcessResult result = Zconf({"job", "show", "job.json", "--json"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, R"({
  "valid": true,
  "nodes": [{
      "id": 1,
      "inputs": [],
      "outputs": [3],
      "record": {
        "source": {
          "filePath": "a\nb"
        }
      }
    }, {
      "id": 20,
      "inputs": [3],
      "outputs": [],
      "record": {
        "target": {
          "n": -7,
          "rate": [30000, 1001],
          "nothing": null,
          "longer name": {
            "inner": "x",
            "empty": {}
          }
        }
      }
    }, {
      "id": 3,
      "inputs": [1],
      "outputs": [20]
    }],
  "links": [{
      "from": 1,
      "to": 3
    }, {
      "from": 3,
      "to": 20,
      "record": {
        "quality": 5
      }
    }]
}
)");
}

TEST_F(JobShow, ReadsStandardInput)
{
    ProcessOptions options;
    options.input = kValid;
    const ProcessResult result = Zconf({"job", "show", "-"}, options);
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "standard input: 2 nodes, 1 link, valid\n\nNode 1\n  to    2\n\n"
                             "Node 2\n  from  1\n\nLink 1 -> 2\n");
}

TEST_F(JobShow, ARecordCannotSteerTheTerminal)
{
    Write("job.json", "{\"vertices\":[{\"id\":1,\"data\":{\"data\":{\"a\\u001b[31m\":{\"k\\u0007\":"
                      "\"\\u0000\\u009b\xff\xe6\x97\xa5\"}}}}],\"edges\":[]}");
    EXPECT_EQ(Zconf({"job", "show", "job.json"}).output,
              "job.json: 1 node, 0 links, not valid\n\nNode 1: a\\x1b[31m\n"
              "    k\\x07  \\x00\\xc2\\x9b\\xff\xe6\x97\xa5\n");
}

TEST_F(JobShow, WritesRecordsThatAreNotUtf8AsJsonThatIs)
{
    Write("job.json", "{\"vertices\":[{\"id\":1,\"data\":{\"data\":{\"a\":{\"k\xff\":\"v\xfe\\n\"}}}}],"
                      "\"edges\":[]}");
    const ProcessResult result = Zconf({"job", "show", "--json", "job.json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, testing::HasSubstr(R"("k\\xff": "v\\xfe\\n")"));
}

TEST_F(JobShow, AHubWithManyLinksIsShownInLinearTime)
{
    std::string nodes = R"({"id":1})";
    std::string links;
    constexpr int kNodes = 50000;
    for (int i = 2; i <= kNodes; ++i)
    {
        nodes += ",{\"id\":" + std::to_string(i) + "}";
        links += (i == 2 ? "" : ",") + ("{\"from\":1,\"to\":" + std::to_string(i) + "}");
    }
    Write("job.json", "{\"vertices\":[" + nodes + "],\"edges\":[" + links + "]}");
    const ProcessResult result = Zconf({"job", "show", "job.json"});
    ExpectQuietSuccess(result);
    // What matters is that it ends in time; the form of each line is compared above.
    EXPECT_THAT(result.output, testing::StartsWith("job.json: 50000 nodes, 49999 links, valid\n"));
}

} // namespace
