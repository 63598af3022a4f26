#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/CompactJson.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/GroupedNumbers.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using namespace std::string_literals;
using Core::Property;
using Core::PropertyException;

constexpr const char* kNoObject = "The root node must be an object.";
constexpr const char* kNoArrays = "The root object must have two nested arrays named vertices and edges";

/// A job with every kind of value, and its document.
GraphPtr Sample()
{
    GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(ITranscodingMetaGraph::MakeInFileDescription("/media/in.mp4"));
    graph->AddNode(Property());
    Property output("preset");
    output.SetChildT("frameRate", Property::Ratio(30000, 1001));
    output.SetChildT("bitrate", std::numeric_limits<long long>::min());
    output.Add(Property::None("title"));
    output.SetChild("empty");
    output.SetChildT("text", "\"\\/\b\f\n\r\t\x01\0\x7F\xC3\x9F\xFF"s);
    ITranscodingMetaGraph::AddSlaveStreamIndex(output, Property(), 2);
    ITranscodingMetaGraph::AddSlaveStreamIndex(output, Property(), 5);
    graph->AddNode(output);
    graph->AddLink(1, 3, Property("link", 12345LL));
    graph->AddLink(1, 2, Property());
    graph->AddLink(2, 3, Property("data"));
    return graph;
}

const std::string kSampleJson = CompactJson(R"({
    "vertices": [
        {"id": 1, "data": {"data": {"source": {"$$TYPE_ID$$": "sourceFile", "filePath": "/media/in.mp4"}}}},
        {"id": 2},
        {"id": 3, "data": {"data": {"preset": {
            "frameRate": [30000, 1001],
            "bitrate": -9223372036854775808,
            "title": null,
            "empty": {},
            "text": "\"\\/\b\f\n\r\t\u0001\u0000)"
                                            "\x7F\xC3\x9F\xFF"
                                            R"(",
            "$$MERGE_WITH$$": [
                {"": {"$$MERGE_WITH$$": 2, "$$MERGE_SETTINGS$$": {}}},
                {"": {"$$MERGE_WITH$$": 5, "$$MERGE_SETTINGS$$": {}}}
            ]
        }}}}
    ],
    "edges": [
        {"id": 1, "from": 1, "to": 3, "data": {"data": {"link": 12345}}},
        {"id": 2, "from": 1, "to": 2},
        {"id": 3, "from": 2, "to": 3, "data": {"data": {"data": {}}}}
    ]
})");

std::string Repeated(int count, const std::string& text)
{
    std::string all;
    for (int i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

/// A record of `levels` nested groups.
Property Nested(int levels)
{
    Property record("g");
    Property* innermost = &record;
    for (int i = 1; i < levels; ++i)
    {
        innermost = &innermost->SetChild("g");
    }
    return record;
}

TEST(GraphSave, WritesAnEmptyGraph)
{
    EXPECT_EQ(JsonOf(*ITranscodingMetaGraph::Create()), R"({"vertices":[],"edges":[]})");
}

TEST(GraphSave, WritesAJobByteForByte) { EXPECT_EQ(JsonOf(*Sample()), kSampleJson); }

TEST(GraphSave, WritesNodesInTheOrderOfStorageAndLinksInTheOrderOfCreation)
{
    const GraphPtr graph = GraphWithNodes(3);
    Link(*graph, {{3, 2}, {2, 1}, {3, 1}});
    graph->RemoveLink(2, 1);
    graph->RemoveLink(3, 2);
    graph->RemoveNode(2);
    graph->AddNode(Property());
    Link(*graph, {{4, 3}});
    EXPECT_EQ(JsonOf(*graph), CompactJson(R"({
        "vertices": [
            {"id": 1, "data": {"data": {"n": 1}}},
            {"id": 3, "data": {"data": {"n": 3}}},
            {"id": 4}
        ],
        "edges": [{"id": 3, "from": 3, "to": 1}, {"id": 4, "from": 4, "to": 3}]
    })"));
}

TEST(GraphSave, EscapesEveryByteThatNeedsItAtEveryPlaceOfATextOfAnySize)
{
    const auto escaped = [](unsigned char byte) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        constexpr std::string_view kShort = "\"\\\b\f\n\r\t";
        constexpr std::string_view kLetters = "\"\\bfnrt";
        const char c = static_cast<char>(byte);
        if (const std::size_t at = kShort.find(c); at != std::string_view::npos)
        {
            return std::string("\\") + kLetters[at];
        }
        return byte < 0x20 ? std::string("\\u00") + kDigits[byte / 16] + kDigits[byte % 16]
                           : std::string(1, c);
    };
    for (std::size_t size = 1; size <= 20; ++size)
    {
        Property record("record");
        std::string expected;
        for (std::size_t place = 0; place < size; ++place)
        {
            for (unsigned byte = 0; byte < 0x80; ++byte)
            {
                std::string text(size, 'x');
                text[place] = static_cast<char>(byte);
                const std::string name = std::to_string(place) + "/" + std::to_string(byte);
                record.CreateChildT(name, text);
                expected += (expected.empty() ? "\"" : ",\"") + name + "\":\"" + std::string(place, 'x') +
                            escaped(static_cast<unsigned char>(byte)) + std::string(size - place - 1, 'x') +
                            '"';
            }
        }
        const auto graph = ITranscodingMetaGraph::Create();
        graph->AddNode(record);
        // Without a message of GoogleTest's, which would be a megabyte.
        EXPECT_TRUE(JsonOf(*graph).find(expected) != std::string::npos) << size;
    }
}

TEST(GraphSave, LeavesOutOnlyRecordsThatSayNothing)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    Property unnamed;
    unnamed.SetChildT("x", 1LL);
    for (const Property& record : {Property(), Property::None(""), Property::None("named"), Property("named"),
                                   Property("", 0LL), Property("", ""s), unnamed})
    {
        graph->AddNode(record);
    }
    EXPECT_EQ(JsonOf(*graph), CompactJson(R"({
        "vertices": [
            {"id": 1},
            {"id": 2},
            {"id": 3},
            {"id": 4, "data": {"data": {"named": {}}}},
            {"id": 5, "data": {"data": {"": 0}}},
            {"id": 6, "data": {"data": {"": ""}}},
            {"id": 7, "data": {"data": {"": {"x": 1}}}}
        ],
        "edges": []
    })"));
}

TEST(GraphSave, IsNotChangedByTheGlobalLocale)
{
    const GraphPtr graph = Sample();
    const GroupedNumbers locale;
    EXPECT_EQ(JsonOf(*graph), kSampleJson);
    EXPECT_EQ(Loaded(kSampleJson)->GetLink(1, 3).GetInt64(), 12345);
}

TEST(GraphSave, WritesNothingWhenARecordIsTooDeep)
{
    const GraphPtr node = ITranscodingMetaGraph::Create();
    node->AddNode(Property("fine"));
    node->AddNode(Nested(512));
    const GraphPtr link = GraphWithNodes(2);
    link->AddLink(1, 2, Nested(512));
    for (const GraphPtr& graph : {node, link})
    {
        TestOutput out;
        const Thrown thrown = ExpectThrow<PropertyException>([&] { graph->Save(&out); });
        EXPECT_EQ(thrown.description, "data" + Repeated(512, ".g") + ": groups are nested deeper than 512");
        EXPECT_EQ(thrown.file, "Conf/Interfaces/ITranscodingMetaGraph");
        EXPECT_NE(thrown.function.value_or("").find("GrahpImpl::Save("), std::string::npos);
        EXPECT_EQ(out.GetCalls(), 0u);
    }
}

TEST(GraphSave, WritesTheDeepestRecordThatCanBeLoaded)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Nested(511));
    EXPECT_EQ((*Loaded(JsonOf(*graph)))[1], Nested(511));
}

TEST(GraphSave, PassesFailuresOfTheOutputOn)
{
    const GraphPtr graph = Sample();
    for (int i = 0; i < 3000; ++i)
    {
        graph->AddNode(Property("filler"));
    }
    TestOutput whole;
    graph->Save(&whole);
    ASSERT_GT(whole.GetCalls(), 3u);
    for (std::size_t failAt = 1; failAt <= whole.GetCalls(); ++failAt)
    {
        TestOutput out(failAt);
        const Thrown thrown = ExpectThrow<Core::CoreException>([&] { graph->Save(&out); });
        EXPECT_EQ(thrown.description, "test stream: no more");
        EXPECT_EQ(out.GetBytes(), whole.GetBytes().substr(0, out.GetBytes().size()));
    }
    EXPECT_EQ(whole.GetBytes(), JsonOf(*graph));
}

TEST(GraphSave, NeedsAStream)
{
    const Thrown thrown =
        ExpectGraphThrow<ProfileException>("ITranscodingMetaGraph::Save(", [] { Sample()->Save(nullptr); });
    EXPECT_EQ(thrown.description, "No stream is given");
}

TEST(GraphLoad, ReadsAnEmptyGraph)
{
    const GraphPtr graph = Loaded(R"({"vertices":[],"edges":[]})");
    EXPECT_EQ(graph->GetNodesCount(), 0);
    EXPECT_EQ(EntriesOf(*graph), Ids{});
    EXPECT_EQ(JsonOf(*graph), R"({"vertices":[],"edges":[]})");
}

TEST(GraphLoad, TakesBackWhatWasSaved)
{
    const GraphPtr original = Sample();
    const GraphPtr graph = Loaded(kSampleJson);
    EXPECT_EQ(graph->GetNodesCount(), 3);
    EXPECT_EQ((*graph)[1], (*original)[1]);
    EXPECT_EQ((*graph)[3], (*original)[3]);
    EXPECT_EQ(graph->GetLink(1, 3), original->GetLink(1, 3));
    EXPECT_EQ(graph->GetLink(2, 3), original->GetLink(2, 3));
    EXPECT_EQ(OutputsOf(*graph, 1), (Ids{3, 2}));
    EXPECT_EQ(InputsOf(*graph, 3), (Ids{1, 2}));
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_EQ(graph->AddNode(Property()), 4);
}

TEST(GraphLoad, MakesAMissingRecordAnEmptyGroupNamedData)
{
    const GraphPtr graph =
        Loaded(R"({"vertices":[{"id":1},{"id":2,"data":null}],"edges":[{"from":1,"to":2}]})");
    EXPECT_EQ((*graph)[1], Property("data"));
    EXPECT_EQ((*graph)[2], Property("data"));
    EXPECT_EQ(graph->GetLink(1, 2), Property("data"));
}

TEST(GraphLoad, TakesTheFirstChildOfARecordThatHasChildren)
{
    const GraphPtr graph = Loaded(R"({
        "vertices": [
            {"id": 1, "data": {"data": {"a": 1, "b": 2}}},
            {"id": 2, "data": {"other": {"x": {"y": 3}}}},
            {"id": 3, "data": {"plain": 5}},
            {"id": 4, "data": {"childless": {}}},
            {"id": 5, "data": {"list": [{"p": 1}, {"p": 2}]}},
            {"id": 6, "data": {"childless": []}},
            {"id": 7, "data": {"nothing": null}},
            {"id": 8, "data": {"repeated": {"k": 1, "k": 2}}}
        ],
        "edges": []
    })");
    EXPECT_EQ((*graph)[1], Property("a", 1LL));
    Property x("x");
    x.SetChildT("y", 3LL);
    EXPECT_EQ((*graph)[2], x);
    EXPECT_EQ((*graph)[3], Property("plain", 5LL));
    EXPECT_EQ((*graph)[4], Property("childless"));
    EXPECT_EQ((*graph)[5], Property("p", 1LL));
    EXPECT_EQ((*graph)[6], Property("childless"));
    EXPECT_EQ((*graph)[7], Property::None("nothing"));
    EXPECT_EQ((*graph)[8], Property("k", 1LL));
}

TEST(GraphLoad, KeepsNodeIdentifiersAndGoesOnFromTheLargest)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":3},{"id":7}],"edges":[]})");
    EXPECT_EQ(EntriesOf(*graph), (Ids{3, 7}));
    EXPECT_EQ(graph->GetNodesCount(), 7);
    EXPECT_EQ(graph->AddNode(Property()), 8);
}

TEST(GraphLoad, GoesOnFromTheLargestIdentifierWhereverItStands)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":7},{"id":3},{"id":-2}],"edges":[]})");
    EXPECT_EQ(EntriesOf(*graph), (Ids{7, 3, -2}));
    EXPECT_EQ(graph->GetNodesCount(), 7);
    EXPECT_EQ(graph->AddNode(Property()), 8);
}

TEST(GraphLoad, GivesLinksTheIdentifierAfterTheLargestRead)
{
    const GraphPtr graph = Loaded(R"({
        "vertices": [{"id": 1}, {"id": 2}, {"id": 3}, {"id": 4}],
        "edges": [
            {"id": 1, "from": 1, "to": 2},
            {"id": 2, "from": 2, "to": 3},
            {"id": 3, "from": 3, "to": 4}
        ]
    })");
    EXPECT_EQ(JsonOf(*graph).substr(JsonOf(*graph).find("\"edges\"")), CompactJson(R"("edges": [
            {"id": 2, "from": 1, "to": 2, "data": {"data": {"data": {}}}},
            {"id": 3, "from": 2, "to": 3, "data": {"data": {"data": {}}}},
            {"id": 4, "from": 3, "to": 4, "data": {"data": {"data": {}}}}
        ]
    })"));
    EXPECT_EQ(graph->AddLink(1, 4, Property()), 5);
}

TEST(GraphLoad, GivesLinksIdentifiersThatFollowTheirCounterNotTheDocument)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":1},{"id":2},{"id":3}],"edges":[)"
                                  R"({"id":9,"from":1,"to":2},{"id":4,"from":2,"to":3},{"from":1,"to":3}]})");
    EXPECT_EQ(graph->AddLink(3, 1, Property()), 13);
}

TEST(GraphLoad, ReadsWhatIsNoIntegerAsZero)
{
    const GraphPtr graph =
        Loaded(R"({"vertices":[{"id":"7","data":{"a":1}},{"id":1.5},{"id":18446744073709551615},)"
               R"({"id":null},{"id":[1]},{}],"edges":[{"id":"x","from":{},"to":1e3}]})");
    EXPECT_EQ(EntriesOf(*graph), (Ids{0, 0, 0, 0, 0}));
    EXPECT_EQ(graph->GetNodesCount(), 0);
    EXPECT_EQ(graph->GetLink(0, 0), Property("data"));
    EXPECT_EQ((*graph)[0], Property("a", 1LL));
    EXPECT_EQ(graph->AddNode(Property()), 1);
}

TEST(GraphLoad, IgnoresOtherMembersAndMeansTheFirstOfEqualOnes)
{
    const GraphPtr graph =
        Loaded(R"({"version":2,"edges":[],"vertices":[{"x":[],"id":4,"id":5}],"vertices":7})");
    EXPECT_EQ(EntriesOf(*graph), Ids{4});
}

TEST(GraphLoad, MeansTheFirstOfSeveralLists)
{
    const GraphPtr graph = Loaded(R"({"edges":[{"from":1,"to":2}],"edges":[{"from":2,"to":1}],)"
                                  R"("vertices":[{"id":1},{"id":2}],"vertices":[{"id":3}]})");
    EXPECT_EQ(NodesOf(*graph), (Ids{1, 2}));
    EXPECT_EQ(OutputsOf(*graph, 1), Ids{2});
    EXPECT_EQ(OutputsOf(*graph, 2), Ids());
}

TEST(GraphLoad, TakesBlanksAroundTheDocument)
{
    EXPECT_EQ(
        Loaded(" \r\n\t{ \"vertices\" : [ { \"id\" : 1 } ] , \"edges\" : [ ] } \r\n\t")->GetNodesCount(), 1);
}

TEST(GraphLoad, AddsToWhatTheGraphHoldsAndCountsAnew)
{
    const GraphPtr graph = GraphWithNodes(3);
    Link(*graph, {{1, 2}, {2, 3}});
    LoadInto(*graph, R"({"vertices":[{"id":2,"data":{"new":2}},{"id":9}],"edges":[{"from":2,"to":9}]})");
    EXPECT_EQ(graph->GetNodesCount(), 9);
    EXPECT_EQ((*graph)[2], Property("n", 2LL));
    EXPECT_EQ(OutputsOf(*graph, 2), (Ids{3, 9}));
    EXPECT_EQ(graph->AddLink(1, 9, Property()), 2);

    LoadInto(*graph, R"({"vertices":[],"edges":[]})");
    EXPECT_EQ(graph->GetNodesCount(), 0);
    EXPECT_EQ(graph->AddNode(Property("again")), 1);
    EXPECT_EQ((*graph)[1].GetName(), "n");
    EXPECT_EQ(graph->AddLink(3, 9, Property()), 1);
}

TEST(GraphLoad, RefusesWhatIsNotOneObject)
{
    for (const std::string& json : {""s,
                                    " \t\r\n"s,
                                    "5"s,
                                    "[]"s,
                                    "null"s,
                                    "true"s,
                                    "\"text\""s,
                                    "{"s,
                                    "}"s,
                                    "{]"s,
                                    "nonsense"s,
                                    R"({"vertices":[],"edges":[]} x)"s,
                                    R"({"vertices":[],"edges":[]}{})"s,
                                    R"({"vertices":[],"edges":[],})"s,
                                    R"({"vertices":[],"edges":[]} // comment)"s,
                                    R"({'vertices':[],'edges':[]})"s,
                                    R"([{"vertices":[],"edges":[]}])"s,
                                    "\xEF\xBB\xBF{\"vertices\":[],\"edges\":[]}"s,
                                    R"({"vertices":[{"id":1,"data":{"a":"\ud800"}}],"edges":[]})"s,
                                    R"({"vertices":[{"id":NaN}],"edges":[]})"s})
    {
        SCOPED_TRACE(json);
        ExpectBadJson(kNoObject, [&] { Loaded(json); });
    }
}

TEST(GraphLoad, RefusesADocumentWithoutTheTwoArrays)
{
    for (const std::string& json :
         {"{}"s, R"({"vertices":[]})"s, R"({"edges":[]})"s, R"({"vertices":{},"edges":[]})"s,
          R"({"vertices":[],"edges":{}})"s, R"({"vertices":[{"id":1}],"edges":null})"s,
          R"({"Vertices":[],"edges":[]})"s, R"({"vertices":7,"vertices":[],"edges":[]})"s})
    {
        SCOPED_TRACE(json);
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        ExpectBadJson(kNoArrays, [&] { LoadInto(*graph, json); });
        EXPECT_EQ(EntriesOf(*graph), Ids{});
    }
}

TEST(GraphLoad, RefusesElementsThatAreNoObjects)
{
    const std::pair<const char*, const char*> kinds[] = {
        {"null", "null"},      {"false", "false"}, {"true", "true"},   {"[]", "an array"},
        {"\"x\"", "a string"}, {"5", "a number"},  {"1.5", "a number"}};
    for (const auto& [json, kind] : kinds)
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        ExpectBadJson("vertices[1] must be an object, found "s + kind, [&, text = json] {
            LoadInto(*graph, R"({"vertices":[{"id":4},)"s + text + R"(,{"id":5}],"edges":[]})");
        });
        EXPECT_EQ(EntriesOf(*graph), Ids{4});
        EXPECT_EQ(graph->GetNodesCount(), 4);
        ExpectBadJson("edges[0] must be an object, found "s + kind, [&, text = json] {
            LoadInto(*graph, R"({"vertices":[{"id":6}],"edges":[)"s + text + "]}");
        });
        EXPECT_EQ(EntriesOf(*graph), (Ids{4, 6}));
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    ExpectBadJson("vertices[0] must be an object, found a number",
                  [&] { LoadInto(*graph, R"({"vertices":[5,"x"],"edges":[]})"); });
}

TEST(GraphLoad, TakesTheFirstRecordOfANodeThatHasTwo)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    LoadInto(
        *graph,
        R"({"vertices":[{"id":1,"data":{"data":{"one":{"k":1}}},"data":{"data":{"two":{"k":2}}}}],"edges":[]})");
    EXPECT_EQ((*graph)[1].GetName(), "one");
}

TEST(GraphLoad, ResetsTheCountersBeforeItReads)
{
    const GraphPtr graph = GraphWithNodes(2);
    Link(*graph, {{1, 2}});
    ExpectBadJson(kNoObject, [&] { LoadInto(*graph, ""); });
    EXPECT_EQ(graph->GetNodesCount(), 0);
    EXPECT_EQ(OutputsOf(*graph, 1), Ids{2});
    EXPECT_EQ(graph->AddLink(2, 1, Property()), 1);
}

TEST(GraphLoad, KeepsWhatWasReadBeforeALinkFailed)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    ExpectNodeNotFound(9, [&] {
        LoadInto(*graph, R"({"vertices":[{"id":1},{"id":2}],"edges":[{"id":1,"from":1,"to":2},)"
                         R"({"id":20,"from":2,"to":9},{"from":2,"to":1}]})");
    });
    EXPECT_EQ(graph->GetNodesCount(), 2);
    EXPECT_EQ(OutputsOf(*graph, 1), Ids{2});
    EXPECT_EQ(OutputsOf(*graph, 2), Ids{});
    // The identifier of the link that failed was read.
    EXPECT_EQ(graph->AddLink(2, 1, Property()), 21);
}

TEST(GraphLoad, RefusesTheSameLinkTwice)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    ExpectLinkFailure<LinkExists>("GrahpImpl::AddLink(", {1, 2}, [&] {
        LoadInto(*graph,
                 R"({"vertices":[{"id":1},{"id":2}],"edges":[{"id":1,"from":1,"to":2,"data":{"a":1}},)"
                 R"({"id":2,"from":1,"to":2}]})");
    });
    EXPECT_EQ(graph->GetLink(1, 2), Property("a", 1LL));
}

TEST(GraphLoad, ThatFailsLeavesNoRecordToALaterLink)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    ExpectLinkFailure<LinkExists>("GrahpImpl::AddLink(", {1, 2}, [&] {
        LoadInto(*graph,
                 R"({"vertices":[{"id":1},{"id":2}],"edges":[{"id":1,"from":1,"to":2,"data":{"a":1}},)"
                 R"({"id":2,"from":1,"to":2,"data":{"b":2}},{"id":3,"from":2,"to":1,"data":{"c":3}}]})");
    });
    graph->AddLink(2, 1, Property("d", 4LL));
    EXPECT_EQ(graph->GetLink(1, 2), Property("a", 1LL));
    EXPECT_EQ(graph->GetLink(2, 1), Property("d", 4LL));
}

TEST(GraphLoad, KeepsTheRecordsOfNodesThatWereThereBefore)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    for (long long id = 1; id <= 100; ++id)
    {
        graph->AddNode(Property("added", id));
    }
    LoadInto(*graph,
             R"({"vertices":[{"id":101,"data":{"read":101}},{"id":102,"data":{"read":102}}],"edges":[]})");
    EXPECT_EQ((*graph)[1], Property("added", 1LL));
    EXPECT_EQ((*graph)[100], Property("added", 100LL));
    EXPECT_EQ((*graph)[101], Property("read", 101LL));
    EXPECT_EQ((*graph)[102], Property("read", 102LL));
}

TEST(GraphLoad, RefusesALinkWhoseIdentifierIsTheLast)
{
    const Thrown thrown = ExpectGraphThrow<ProfileException>("GrahpImpl::AddLink(", [] {
        Loaded(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"id":9223372036854775807,"from":1,"to":2}]})");
    });
    EXPECT_EQ(thrown.description, "No identifier is left");
}

TEST(GraphLoad, PassesARefusedRecordOnAndDoesNotCountItsNode)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    const Thrown thrown = ExpectThrow<PropertyException>([&] {
        LoadInto(*graph,
                 R"({"vertices":[{"id":3},{"id":9,"data":{"data":{"source":{"bitrate":1.5}}}}],"edges":[]})");
    });
    EXPECT_EQ(thrown.description, "data.source.bitrate: expected an integer, a string, a rational, null or a "
                                  "group, found a number that is not a 64-bit integer");
    EXPECT_EQ(thrown.file, "Core/Interfaces/PropertySerializer");
    EXPECT_EQ(graph->GetNodesCount(), 3);
    EXPECT_EQ(EntriesOf(*graph), Ids{3});
}

TEST(GraphLoad, PassesARefusedRecordOnAndDoesNotCountItsLink)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    ExpectThrow<PropertyException>([&] {
        LoadInto(*graph, R"({"vertices":[{"id":1},{"id":2}],"edges":[{"id":9,"from":1,"to":2,"data":7}]})");
    });
    EXPECT_EQ(graph->AddLink(1, 2, Property()), 1);
}

TEST(GraphLoad, RefusesARecordThatIsTooDeep)
{
    const auto document = [](int groups) {
        return R"({"vertices":[{"id":1,"data":)" + Repeated(groups, R"({"g":)") + "1" +
               Repeated(groups, "}") + R"(}],"edges":[]})";
    };
    EXPECT_EQ(Loaded(document(513))->GetNodesCount(), 1);
    const Thrown thrown = ExpectThrow<PropertyException>([&] { Loaded(document(514)); });
    EXPECT_EQ(thrown.description, Repeated(512, "g.") + "g: groups are nested deeper than 512");
}

TEST(GraphLoad, IsNotFooledByANulByte)
{
    for (const std::string& tail : {"\0"s, "\0garbage"s, " \0 "s, "\0{\"vertices\":[],\"edges\":[]}"s})
    {
        ExpectBadJson(kNoObject, [&] { Loaded(R"({"vertices":[],"edges":[]})" + tail); });
    }
    ExpectBadJson(kNoObject, [] { Loaded("\0"s); });
    ExpectBadJson(kNoObject, [] { Loaded("{\"vertices\":[],\0\"edges\":[]}"s); });
    // Beyond the first piece that is read, too.
    ExpectBadJson(kNoObject,
                  [] { Loaded(R"({"vertices":[],"edges":[]})" + std::string(100'000, ' ') + "\0"s); });
    EXPECT_EQ(Loaded(R"({"vertices":[],"edges":[]})" + std::string(100'000, ' '))->GetNodesCount(), 0);
}

TEST(GraphLoad, SurvivesAMillionOpenBrackets)
{
    constexpr int kCount = 1'000'000;
    const std::string openings[] = {"[", "{\"a\":", "[{\"a\":"};
    for (const std::string& opening : openings)
    {
        const std::string brackets = Repeated(kCount, opening);
        ExpectBadJson(kNoObject, [&] { Loaded(brackets); });
        ExpectBadJson(kNoObject, [&] { Loaded(R"({"vertices":[{"id":1,"data":)" + brackets); });
    }
}

TEST(GraphLoad, SurvivesAMillionClosedBrackets)
{
    constexpr int kCount = 1'000'000;
    const std::string arrays = std::string(kCount, '[') + std::string(kCount, ']');
    const std::string objects = Repeated(kCount, "{\"a\":") + "1" + std::string(kCount, '}');
    ExpectBadJson(kNoObject, [&] { Loaded(arrays); });
    ExpectBadJson(kNoArrays, [&] { Loaded(objects); });
    for (const std::string& data : {arrays, objects})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        ExpectThrow<PropertyException>(
            [&] { LoadInto(*graph, R"({"vertices":[{"id":1,"data":)" + data + R"(}],"edges":[]})"); });
        EXPECT_EQ(graph->GetNodesCount(), 0);
    }
}

TEST(GraphLoad, RefusesEveryDocumentThatWasCutOff)
{
    for (std::size_t length = 0; length < kSampleJson.size(); ++length)
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        SCOPED_TRACE(length);
        ExpectBadJson(kNoObject, [&] { LoadInto(*graph, kSampleJson.substr(0, length)); });
        EXPECT_EQ(JsonOf(*graph), R"({"vertices":[],"edges":[]})");
        EXPECT_EQ(graph->GetNodesCount(), 0);
    }
}

TEST(GraphLoad, TakesAnInputThatComesInSmallPieces)
{
    const std::string whole = JsonOf(*Loaded(kSampleJson));
    for (const std::size_t piece : {1u, 2u, 7u, 100u})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        TestInput in(kSampleJson, piece);
        graph->Load(&in);
        EXPECT_EQ(JsonOf(*graph), whole);
    }
}

TEST(GraphLoad, PassesFailuresOfTheInputOn)
{
    constexpr std::size_t kPiece = 10;
    TestInput whole(kSampleJson, kPiece);
    ITranscodingMetaGraph::Create()->Load(&whole);
    ASSERT_GT(whole.GetCalls(), kSampleJson.size() / kPiece);
    for (std::size_t failAt = 1; failAt <= whole.GetCalls(); ++failAt)
    {
        const GraphPtr graph = GraphWithNodes(1);
        TestInput in(kSampleJson, kPiece, failAt);
        const Thrown thrown = ExpectThrow<Core::CoreException>([&] { graph->Load(&in); });
        EXPECT_EQ(thrown.description, "test stream: no more");
        EXPECT_EQ(EntriesOf(*graph), Ids{1});
        EXPECT_EQ(graph->GetNodesCount(), 0);
    }
}

TEST(GraphLoad, NeedsAStreamAndLeavesTheCountersAloneWithoutOne)
{
    const GraphPtr graph = GraphWithNodes(2);
    const Thrown thrown =
        ExpectGraphThrow<ProfileException>("ITranscodingMetaGraph::Load(", [&] { graph->Load(nullptr); });
    EXPECT_EQ(thrown.description, "No stream is given");
    EXPECT_EQ(graph->GetNodesCount(), 2);
}

TEST(GraphLoad, ReadsALargeJobWithRecords)
{
    constexpr int kNodes = 100'000;
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    for (int i = 0; i < kNodes; ++i)
    {
        graph->AddNode(ITranscodingMetaGraph::MakeRawStreamDescription(static_cast<unsigned int>(i)));
    }
    for (NodeId id = 2; id <= kNodes; ++id)
    {
        graph->AddLink(id / 2, id, Property("tree", id));
        if (id >= 8 && id % 2 == 0)
        {
            graph->AddLink(id / 4, id, Property());
        }
    }
    const std::string json = JsonOf(*graph);
    const GraphPtr loaded = Loaded(json);
    EXPECT_TRUE(loaded->TopologyIsValid());
    EXPECT_EQ(loaded->GetNodesCount(), kNodes);
    EXPECT_EQ((*loaded)[kNodes]["id"].GetInt64(), kNodes - 1);
    EXPECT_EQ(loaded->GetLink(kNodes / 2, kNodes), Property("tree", kNodes));
}

} // namespace

} // namespace Zelnor::Conf
