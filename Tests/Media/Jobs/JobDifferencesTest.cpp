#include "Media/Jobs/JobDifferences.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using Conf::ITranscodingMetaGraph;
using Core::Property;
using Graph = boost::intrusive_ptr<ITranscodingMetaGraph>;

/// A source and a target with that width, linked.
Graph Job(long long width)
{
    Property target("target");
    target.SetChild("video").SetChildT("width", width);
    const Graph graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("source"));
    graph->AddNode(target);
    graph->AddLink(1, 2, Property("link"));
    return graph;
}

/// "place|key|one|other" for each difference.
std::vector<std::string> Differences(const Graph& one, const Graph& other)
{
    std::vector<std::string> lines;
    for (const JobDifference& difference : DiffJobs(*one, *other))
    {
        lines.push_back(difference.place + "|" + difference.key + "|" + difference.one + "|" +
                        difference.other);
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST(JobDifferences, EqualJobsHaveNone) { EXPECT_EQ(Differences(Job(640), Job(640)), Lines{}); }

TEST(JobDifferences, NameTheWayToAValueThatDiffers)
{
    EXPECT_EQ(Differences(Job(640), Job(720)), Lines{"node 2|video.width|640|720"});
}

TEST(JobDifferences, TellWhichSideLacksANodeOrALink)
{
    const Graph more = Job(640);
    more->AddNode(Property("source"));
    more->AddLink(3, 2, Property());
    EXPECT_EQ(Differences(Job(640), more), (Lines{"node 3|||there", "link 3 -> 2|||there"}));
    EXPECT_EQ(Differences(more, Job(640)), (Lines{"node 3||there|", "link 3 -> 2||there|"}));
}

TEST(JobDifferences, CompareEqualKeysInOrder)
{
    const auto withList = [](const std::vector<long long>& numbers) {
        Property record("record");
        for (const long long number : numbers)
        {
            record.CreateChildT("n", number);
        }
        const Graph graph = ITranscodingMetaGraph::Create();
        graph->AddNode(record);
        return graph;
    };
    EXPECT_EQ(Differences(withList({1, 2, 3}), withList({1, 5, 3})), Lines{"node 1|n[2]|2|5"});
}

TEST(JobDifferences, TellEqualKeysFromOneThatIsNamedLikeThem)
{
    const auto withSecond = [](long long number) {
        Property record("record");
        record.CreateChildT("n[2]", 7);
        record.CreateChildT("n", 1);
        record.CreateChildT("n", number);
        const Graph graph = ITranscodingMetaGraph::Create();
        graph->AddNode(record);
        return graph;
    };
    EXPECT_EQ(Differences(withSecond(2), withSecond(2)), Lines{});
    EXPECT_EQ(Differences(withSecond(2), withSecond(3)), Lines{"node 1|n[2]|2|3"});
}

TEST(JobDifferences, ShowEachKindOfValueAsItStandsInADocument)
{
    const auto withValue = [](const Property& value) {
        Property record("record");
        record.Add(value);
        const Graph graph = ITranscodingMetaGraph::Create();
        graph->AddNode(record);
        return graph;
    };
    const Graph text = withValue(Property("k", std::string("1")));
    EXPECT_EQ(Differences(text, withValue(Property("k", 1LL))), Lines{"node 1|k|\"1\"|1"});
    EXPECT_EQ(Differences(text, withValue(Property("k", Property::Ratio(25, 2)))),
              Lines{"node 1|k|\"1\"|[25, 2]"});
    EXPECT_EQ(Differences(text, withValue(Property::None("k"))), Lines{"node 1|k|\"1\"|null"});
    EXPECT_EQ(Differences(text, withValue(Property("k"))), Lines{"node 1|k|\"1\"|a group of 0"});
}

TEST(JobDifferences, TellAnOtherOrderOfTheSameKeys)
{
    const auto ordered = [](const char* first, const char* second) {
        Property record("record");
        record.SetChildT(first, 1LL);
        record.SetChildT(second, 1LL);
        const Graph graph = ITranscodingMetaGraph::Create();
        graph->AddNode(record);
        return graph;
    };
    EXPECT_EQ(Differences(ordered("a", "b"), ordered("b", "a")), Lines{"node 1|order of the keys|a, b|b, a"});
}

/// A job of one node with this record.
Graph OneNode(const Property& record)
{
    const Graph graph = ITranscodingMetaGraph::Create();
    graph->AddNode(record);
    return graph;
}

TEST(JobDifferences, NameTheKeysThatOnlyOneSideHas)
{
    Property one("record");
    one.SetChildT("both", 1LL);
    Property other = one;
    other.SetChild("group").SetChildT("key", std::string("text"));
    other["group"].SetChild("list").SetChildT("inner", 1LL);
    EXPECT_EQ(Differences(OneNode(one), OneNode(other)), Lines{"node 1|group||a group of 2"});
    EXPECT_EQ(Differences(OneNode(other), OneNode(one)), Lines{"node 1|group|a group of 2|"});
}

TEST(JobDifferences, TellOtherNamesAndKindsOfRecords)
{
    EXPECT_EQ(Differences(OneNode(Property("one")), OneNode(Property("other"))),
              Lines{"node 1|name of the record|\"one\"|\"other\""});
    EXPECT_EQ(Differences(OneNode(Property("record", 1LL)), OneNode(Property("record", 2LL))),
              Lines{"node 1|value of the record|1|2"});
    EXPECT_EQ(Differences(OneNode(Property("record", 1LL)), OneNode(Property("record"))),
              Lines{"node 1|value of the record|1|a group of 0"});
    EXPECT_EQ(Differences(OneNode(Property("record")), OneNode(Property("record", 1LL))),
              Lines{"node 1|value of the record|a group of 0|1"});
}

TEST(JobDifferences, TellTheOrderOfAnInnerGroup)
{
    const auto ordered = [](const char* first, const char* second) {
        Property record("record");
        Property& inner = record.SetChild("inner");
        inner.SetChildT(first, 1LL);
        inner.SetChildT(second, 1LL);
        return OneNode(record);
    };
    EXPECT_EQ(Differences(ordered("a", "b"), ordered("b", "a")),
              Lines{"node 1|inner, order of its keys|a, b|b, a"});
}

} // namespace
