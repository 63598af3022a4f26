// Documents that are read piece by piece, since they are too large to be read at once.

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Graphs.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using namespace std::string_literals;
using Core::Property;

constexpr int kLargeNodes = 12'000;

/// Several MiB, with everything that may stand at the border of two pieces.
GraphPtr MakeLarge()
{
    GraphPtr graph = ITranscodingMetaGraph::Create();
    for (long long i = 1; i <= kLargeNodes; ++i)
    {
        Property record("record " + std::to_string(i));
        record.SetChildT("number", i * 1'000'003'000'007LL);
        record.SetChildT("negative", -i);
        record.SetChildT("ratio", Property::Ratio(i, 1001));
        record.SetChildT("text", "a text of \"ordinary\" length \xC3\x9F \n\x01\0\\"s + std::to_string(i));
        record.Add(Property::None("nothing"));
        record.SetChild("group").SetChild("group").SetChildT("a", "b"s);
        graph->AddNode(record);
        if (i > 1)
        {
            graph->AddLink(i - 1, i, Property("link", i));
        }
    }
    return graph;
}

const std::string& Document()
{
    static const std::string document = JsonOf(*MakeLarge());
    return document;
}

} // namespace

TEST(GraphLargeDocument, IsReadAsItWasWrittenWhateverThePieces)
{
    ASSERT_GT(Document().size(), 2u << 20);
    for (const std::size_t piece : {std::size_t{16384}, std::size_t{16383}, std::size_t{4099}})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        TestInput in(Document(), piece);
        graph->Load(&in);
        EXPECT_TRUE(graph->TopologyIsValid());
        EXPECT_EQ((*graph)[kLargeNodes], (*MakeLarge())[kLargeNodes]);
        // The links are counted from 2, as in every document.
        EXPECT_EQ(JsonOf(*graph).size(), JsonOf(*Loaded(Document())).size());
        EXPECT_TRUE(JsonOf(*graph) == JsonOf(*Loaded(Document())));
    }
}

TEST(GraphLargeDocument, MayHaveATextThatIsLargerThanAPiece)
{
    const std::string text(5u << 20, 'x');
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("record", text));
    EXPECT_TRUE((*Loaded(JsonOf(*graph)))[1].GetString() == text);
}

TEST(GraphLargeDocument, IsRefusedWhenSomethingFollows)
{
    for (const std::string& behind : {"x"s, "\0"s, "\0 "s, "{}"s, "]"s})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        TestInput in(Document() + behind);
        ExpectThrow<BadJson>([&] { graph->Load(&in); });
        EXPECT_EQ(EntriesOf(*graph), Ids{});
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    TestInput blanks(Document() + std::string(40'000, ' '));
    graph->Load(&blanks);
    EXPECT_EQ(graph->GetNodesCount(), kLargeNodes);
}

TEST(GraphLargeDocument, IsRefusedWhenItIsCutOff)
{
    for (const std::size_t size : {Document().size() - 1, Document().size() / 2, (std::size_t{1} << 20) + 1})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        TestInput in(Document().substr(0, size));
        ExpectThrow<BadJson>([&] { graph->Load(&in); });
        EXPECT_EQ(EntriesOf(*graph), Ids{});
    }
}

TEST(GraphLargeDocument, PassesALateFailureOfTheInputOnAndAddsNothing)
{
    for (const std::size_t failAt : {std::size_t{64}, std::size_t{65}, std::size_t{66}, std::size_t{100}})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        TestInput in(Document(), 16384, failAt);
        EXPECT_EQ(ExpectThrow<Core::CoreException>([&] { graph->Load(&in); }).description,
                  "test stream: no more");
        EXPECT_EQ(EntriesOf(*graph), Ids{});
    }
}

TEST(GraphLargeDocument, AFaultComesBeforeALaterFailureOfTheInput)
{
    TestInput small("{\"vertices\":x", 16384, 2);
    ExpectThrow<BadJson>([&] { ITranscodingMetaGraph::Create()->Load(&small); });
    TestInput large("x" + Document(), 16384, 70);
    ExpectThrow<BadJson>([&] { ITranscodingMetaGraph::Create()->Load(&large); });
}

TEST(GraphLargeDocument, AFaultAtItsEndComesBeforeThoseOfItsRecords)
{
    const std::string begin =
        R"({"vertices":[{"id":1},{"id":2,"data":{"data":{"a":true}}},{"id":3}],"edges":[])";
    for (const char* const end : {"", "}}", ",}"})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        TestInput in(begin + end);
        ExpectThrow<BadJson>([&] { graph->Load(&in); });
        EXPECT_EQ(EntriesOf(*graph), Ids{});
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    TestInput in(begin + "}");
    EXPECT_EQ(ExpectThrow<Core::PropertyException>([&] { graph->Load(&in); }).description,
              "data.a: expected an integer, a string, a rational, null or a group, found true");
    EXPECT_EQ(EntriesOf(*graph), Ids{1});
}

TEST(GraphLargeDocument, ArraysMayStandInAnyOrderAmongOtherMembers)
{
    const GraphPtr graph =
        Loaded(R"({"a":[{"id":9},[[]]],"edges":[{"to":2,"x":{"from":7},"from":1,"from":5}],)"
               R"("b":{"vertices":1},"vertices":[{"id":1},{"id":{"id":4}, "id":8},{"id":2}]})");
    EXPECT_EQ(EntriesOf(*graph), (Ids{1, 0}));
    std::vector<std::pair<NodeId, NodeId>> links;
    graph->Links(links);
    EXPECT_EQ(links, (std::vector<std::pair<NodeId, NodeId>>{{1, 2}}));
}

TEST(GraphSave, IsPossibleAgainWhenWhatWasTooDeepIsRemoved)
{
    Property deep("g");
    Property* innermost = &deep;
    for (int i = 0; i < 600; ++i)
    {
        innermost = &innermost->SetChild("g");
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("a"));
    graph->AddNode(deep);
    graph->AddNode(Property("b"));
    graph->AddLink(1, 3, deep);
    ExpectThrow<Core::PropertyException>([&] { JsonOf(*graph); });
    graph->RemoveNode(2);
    ExpectThrow<Core::PropertyException>([&] { JsonOf(*graph); });
    graph->RemoveLink(1, 3);
    EXPECT_EQ(JsonOf(*graph),
              R"({"vertices":[{"id":1,"data":{"data":{"a":{}}}},{"id":3,"data":{"data":{"b":{}}}}],)"
              R"("edges":[]})");
}

} // namespace Zelnor::Conf
