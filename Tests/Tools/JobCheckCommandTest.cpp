#include "Tests/Support/ZconfTest.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <gmock/gmock.h>

#include <random>
#include <set>
#include <sstream>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;

using Link = std::pair<int, int>;

std::string Document(const std::vector<std::string>& nodes, const std::vector<Link>& links)
{
    std::ostringstream text;
    text << "{\"vertices\":[";
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        text << (i == 0 ? "" : ",") << "{\"id\":" << nodes[i] << "}";
    }
    text << "],\"edges\":[";
    for (std::size_t i = 0; i < links.size(); ++i)
    {
        text << (i == 0 ? "" : ",") << "{\"from\":" << links[i].first << ",\"to\":" << links[i].second << "}";
    }
    text << "]}";
    return text.str();
}

/// Asks about nodes and links only.
class JobCheck : public ZconfTest
{
protected:
    ProcessResult Check(const std::string& document, const std::vector<std::string>& more = {}) const
    {
        ProcessOptions options;
        options.input = document;
        std::vector<std::string> words = {"job", "check", "--topology", "-"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words, options);
    }

    void ExpectNo(const std::string& document, const std::string& answer) const
    {
        const ProcessResult result = Check(document);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.messages, "");
        EXPECT_EQ(result.output, "standard input: not valid, " + answer);
    }
};

TEST_F(JobCheck, AValidJobIsAnsweredWithZero)
{
    const ProcessResult result = Check(kValid);
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "standard input: valid, 2 nodes and 1 link\n");
}

TEST_F(JobCheck, AJobHasAtLeastTwoNodes)
{
    ExpectNo(Document({}, {}), "0 nodes and 0 links\n  There are 0 nodes; a job has at least 2.\n");
    ExpectNo(Document({"5"}, {}), "1 node and 0 links\n  There is 1 node; a job has at least 2.\n");
}

TEST_F(JobCheck, NodesWithoutLinksAreNamed)
{
    ExpectNo(Document({"1", "2", "30", "4"}, {{1, 2}}),
             "4 nodes and 1 link\n  2 nodes without links: 30, 4\n");
}

TEST_F(JobCheck, ACycleIsShownAsItsPath)
{
    ExpectNo(Document({"1", "2", "3", "4"}, {{1, 2}, {2, 3}, {3, 4}, {4, 2}}),
             "4 nodes and 4 links\n  There is a cycle: 2 -> 3 -> 4 -> 2\n");
}

TEST_F(JobCheck, ALinkFromANodeToItselfIsACycle)
{
    ExpectNo(Document({"1", "2"}, {{1, 2}, {2, 2}}), "2 nodes and 2 links\n  There is a cycle: 2 -> 2\n");
}

TEST_F(JobCheck, CyclesThatHaveNothingInCommonAreAllShown)
{
    ExpectNo(Document({"1", "2", "3", "4", "5"}, {{1, 2}, {2, 1}, {2, 3}, {3, 4}, {4, 5}, {5, 4}, {4, 4}}),
             "5 nodes and 7 links\n"
             "  There is a cycle: 1 -> 2 -> 1\n"
             "  There is a cycle: 4 -> 5 -> 4\n");
}

TEST_F(JobCheck, EveryReasonIsGiven)
{
    ExpectNo(Document({"1", "2", "3", "4", "9", "3"}, {{1, 2}, {2, 1}, {4, 3}}),
             "6 nodes and 3 links\n"
             "  More than one node has the id 3; links reach the first one only.\n"
             "  2 nodes without links: 9, 3\n"
             "  There is a cycle: 1 -> 2 -> 1\n"
             "  The nodes form 2 separate components: {1, 2}, {3, 4}\n");
}

TEST_F(JobCheck, IdsMayBeAnyNumbers)
{
    ExpectNo(Document({"9223372036854775807", "-9223372036854775808", "1.5"}, {}),
             "3 nodes and 0 links\n  3 nodes without links: 9223372036854775807, -9223372036854775808, 0\n");
}

TEST_F(JobCheck, AnswersScriptsInJson)
{
    const ProcessResult good = Check(kValid, {"--json"});
    ExpectQuietSuccess(good);
    EXPECT_EQ(good.output, "{\n  \"valid\": true,\n  \"faults\": []\n}\n");
    const ProcessResult bad = Check(Document({"1", "2", "3", "4"}, {{1, 2}, {3, 4}}), {"--json"});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.output,
              "{\n  \"valid\": false,\n  \"faults\": [{\n"
              "      \"fault\": \"several_parts\",\n      \"nodes\": [[1, 2], [3, 4]]\n    }]\n}\n");
}

TEST_F(JobCheck, ALongChainIsCheckedInLinearTimeWithoutRecursion)
{
    constexpr int kNodes = 200000;
    std::vector<std::string> nodes;
    std::vector<Link> links;
    for (int i = 1; i <= kNodes; ++i)
    {
        nodes.push_back(std::to_string(i));
        links.emplace_back(i, i % kNodes + 1);
    }
    const ProcessResult cycle = Check(Document(nodes, links));
    EXPECT_EQ(cycle.exitCode, 1);
    EXPECT_THAT(cycle.output, testing::HasSubstr("There is a cycle: 1 -> 2 -> 3 ->"));
    links.pop_back();
    EXPECT_EQ(Check(Document(nodes, links)).exitCode, 0);
}

/// The ids behind "There is a cycle: "; empty when there is no such line.
std::vector<int> CycleIn(const std::string& output)
{
    const std::string mark = "There is a cycle: ";
    std::vector<int> ids;
    const std::size_t begin = output.find(mark);
    if (begin == std::string::npos)
    {
        return ids;
    }
    std::istringstream line(
        output.substr(begin + mark.size(), output.find('\n', begin) - begin - mark.size()));
    std::string arrow;
    for (int id = 0; line >> id; line >> arrow)
    {
        ids.push_back(id);
    }
    return ids;
}

struct RandomJob
{
    explicit RandomJob(std::mt19937& random)
    {
        const unsigned count = 2 + static_cast<unsigned>(random() % 6);
        for (unsigned i = 1; i <= count; ++i)
        {
            nodes.push_back(std::to_string(i));
        }
        for (auto i = random() % 10; i > 0; --i)
        {
            int from = 1 + static_cast<int>(random() % count);
            int to = 1 + static_cast<int>(random() % count);
            // Mostly forward, so that valid jobs occur too.
            if (from > to && random() % 8 != 0)
            {
                std::swap(from, to);
            }
            if (from != to || random() % 8 == 0)
            {
                links.emplace(from, to);
            }
        }
    }

    std::vector<std::string> nodes;
    std::set<Link> links;
};

bool IsCycleOf(const std::set<Link>& links, const std::vector<int>& path)
{
    for (std::size_t i = 1; i < path.size(); ++i)
    {
        if (links.count({path[i - 1], path[i]}) == 0)
        {
            return false;
        }
    }
    return path.size() > 1 && path.front() == path.back();
}

TEST_F(JobCheck, AgreesWithTheLibraryAboutRandomJobs)
{
    std::mt19937 random(20240607);
    int valid = 0;
    int cyclic = 0;
    for (int round = 0; round < 150; ++round)
    {
        const RandomJob job(random);
        const std::string document = Document(job.nodes, {job.links.begin(), job.links.end()});
        SCOPED_TRACE(document);
        const auto graph = Conf::ITranscodingMetaGraph::Create();
        graph->Load(Core::MemoryDataInput::Create(document));
        const ProcessResult result = Check(document);
        EXPECT_EQ(result.exitCode, graph->TopologyIsValid() ? 0 : 1);
        valid += graph->TopologyIsValid() ? 1 : 0;
        const std::vector<int> cycle = CycleIn(result.output);
        if (!cycle.empty())
        {
            ++cyclic;
            EXPECT_TRUE(IsCycleOf(job.links, cycle));
        }
    }
    EXPECT_GT(valid, 10);
    EXPECT_GT(cyclic, 10);
}

} // namespace
