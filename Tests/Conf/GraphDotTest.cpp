#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Dot.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/GroupedNumbers.h"
#include "Tests/Support/TestStreams.h"

#include <boost/algorithm/string/erase.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using namespace std::string_literals;
using Core::Property;

TEST(GraphDot, DrawsAnEmptyGraphInTwoLines)
{
    EXPECT_EQ(DotOf(*ITranscodingMetaGraph::Create()), "digraph G {\n}\n");
}

TEST(GraphDot, DrawsAJobByteForByte)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(ITranscodingMetaGraph::MakeInFileDescription("/media/in.mp4"));
    graph->AddNode(ITranscodingMetaGraph::MakeRawStreamDescription(12345));
    Property output("preset");
    output.SetChildT("frameRate", Property::Ratio(30000, 1001));
    output.Add(Property::None("title"));
    output.SetChild("empty");
    output.SetChildT("quoted", "a \"b\" \\N\tc"s);
    graph->AddNode(output);
    graph->AddNode(Property());
    graph->AddLink(1, 2, Property("link", -1LL));
    graph->AddLink(2, 3, Property("data"));
    graph->AddLink(3, 4, Property());
    EXPECT_EQ(DotOf(*graph), R"(digraph G {
0[label="Node Id: 1
source:
  $$TYPE_ID$$: sourceFile
  filePath: /media/in.mp4
"];
1[label="Node Id: 2
streamRaw:
  id: 12345
"];
2[label="Node Id: 3
preset:
  frameRate: 30000/1001
  title: null
  empty:
  quoted: a \"b\" \\N\tc
"];
3[label="Node Id: 4
:
"];
0->1 [label="link: -1
"];
1->2 ;
2->3 [label=":
"];
}
)");
}

TEST(GraphDot, NamesNodesByTheirPositionsAfterARemoval)
{
    const GraphPtr graph = GraphWithNodes(3);
    Link(*graph, {{3, 2}});
    graph->RemoveNode(1);
    EXPECT_EQ(DotOf(*graph), R"(digraph G {
0[label="Node Id: 2
n: 2
"];
1[label="Node Id: 3
n: 3
"];
1->0 [label=":
"];
}
)");
}

TEST(GraphDot, LabelsEveryLinkButTheEmptyGroupNamedData)
{
    const auto lastLines = [](const Property& record) {
        const GraphPtr graph = GraphWithNodes(2);
        graph->AddLink(1, 2, record);
        const std::string text = DotOf(*graph);
        return text.substr(text.find("0->1"));
    };
    Property full("data");
    full.SetChildT("x", 1LL);
    EXPECT_EQ(lastLines(Property("data")), "0->1 ;\n}\n");
    EXPECT_EQ(lastLines(Property("Data")), "0->1 [label=\"Data:\n\"];\n}\n");
    EXPECT_EQ(lastLines(Property()), "0->1 [label=\":\n\"];\n}\n");
    EXPECT_EQ(lastLines(Property::None("data")), "0->1 [label=\"data: null\n\"];\n}\n");
    EXPECT_EQ(lastLines(Property("data", 0LL)), "0->1 [label=\"data: 0\n\"];\n}\n");
    EXPECT_EQ(lastLines(Property("data", ""s)), "0->1 [label=\"data: \n\"];\n}\n");
    EXPECT_EQ(lastLines(full), "0->1 [label=\"data:\n  x: 1\n\"];\n}\n");
}

TEST(GraphDot, LeavesTheLabelOfALinkOutThatWasLoadedWithoutARecord)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"from":1,"to":2}]})");
    EXPECT_EQ(DotOf(*graph),
              "digraph G {\n0[label=\"Node Id: 1\ndata:\n\"];\n1[label=\"Node Id: 2\ndata:\n\"];\n"
              "0->1 ;\n}\n");
}

TEST(GraphDot, IsNotChangedByTheGlobalLocale)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":1234567,"data":{"n":7654321}}],"edges":[]})");
    const GroupedNumbers locale;
    EXPECT_EQ(DotOf(*graph), "digraph G {\n0[label=\"Node Id: 1234567\nn: 7654321\n\"];\n}\n");
}

TEST(GraphDot, KeepsPositionsOfFourDigitsPlainInEveryLocale)
{
    const GraphPtr graph = GraphWithNodes(1001);
    Link(*graph, {{1001, 1}});
    const GroupedNumbers locale;
    EXPECT_NE(DotOf(*graph).find("\n1000[label=\"Node Id: 1001\n"), std::string::npos);
    EXPECT_NE(DotOf(*graph).find("\n1000->0 ["), std::string::npos);
}

TEST(GraphDot, IsWrittenInOneCall)
{
    const GraphPtr graph = GraphWithNodes(10'000);
    TestOutput out;
    graph->SaveInToDot(&out);
    EXPECT_EQ(out.GetCalls(), 1u);
    EXPECT_EQ(out.GetBytes(), DotOf(*graph));
}

TEST(GraphDot, PassesAFailureOfTheOutputOn)
{
    TestOutput out(1);
    const Thrown thrown = ExpectThrow<Core::CoreException>([&] { GraphWithNodes(1)->SaveInToDot(&out); });
    EXPECT_EQ(thrown.description, "test stream: no more");
}

TEST(GraphDot, NeedsAStream)
{
    const Thrown thrown = ExpectGraphThrow<ProfileException>("ITranscodingMetaGraph::SaveInToDot(",
                                                             [] { GraphWithNodes(1)->SaveInToDot(nullptr); });
    EXPECT_EQ(thrown.description, "No stream is given");
}

const std::string kHostile[] = {
    "\"",
    "\\",
    "ends in a backslash\\",
    "\\\"",
    "\"]; evil [label=\"",
    "\\N \\G \\l \\r \\n \\E \\T \\H \\L \\0",
    "a\0b"s,
    "\0"s,
    "&#0;",
    "&#1;&#x0;&#1114112;&#99999999999;&#-1;",
    "&amp; &lt;b&gt; &quot; &nosuch; & &; &#; &#x;",
    "<b>bold</b>",
    "<<table>>",
    "\xFF\xFE",
    "cut off \xC3",
    "cut off \xE2\x82",
    "cut off \xF0\x9F\x8E",
    "surrogate \xED\xA0\x80 overlong \xC0\x80 \xE0\x80\x80 beyond \xF4\x90\x80\x80",
    "\xC3\x9F \xE6\x98\xA0 \xF0\x9F\x8E\xAC \xF4\x8F\xBF\xBF",
    "\xEF\xBB\xBF byte order mark",
    "\x01\x02\x1B\x7F\x80\x9F",
    "line\nline\r\nline\ttab\vtab\f",
    "/* no comment */ // # none",
    "# line 5 \"x\"",
    "\n# line 5 \"x\"",
    "{a|b|<p>c}",
    "%s %n %d",
    "$(rm) `rm`",
};

GraphPtr HostileGraph()
{
    GraphPtr graph = ITranscodingMetaGraph::Create();
    for (const std::string& text : kHostile)
    {
        Property record(text);
        record.SetChildT(text, text);
        record.SetChild(text + "group").SetChildT("after", text);
        const NodeId node = graph->AddNode(record);
        graph->AddLink(node, node, record);
    }
    return graph;
}

TEST(GraphDot, DrawsHostileTextsSoThatGraphvizAcceptsThem)
{
    if (!Dot::IsInstalled())
    {
        GTEST_SKIP() << "no dot";
    }
    const std::string text = DotOf(*HostileGraph());
    const std::string canonical = Dot::Run(text, "canon");
    EXPECT_EQ(canonical.find("evil ["), canonical.find("evil [label=\\\""));
    const std::string plain = Dot::Run(text, "plain");
    // One line for each node: no text broke out of its label.
    std::size_t nodes = 0;
    for (std::size_t at = plain.find("\nnode "); at != std::string::npos; at = plain.find("\nnode ", at + 1))
    {
        ++nodes;
    }
    EXPECT_EQ(nodes, std::size(kHostile));
    EXPECT_NE(Dot::Run(text, "svg").find("</svg>"), std::string::npos);
}

TEST(GraphDot, ShowsTextsAsTheyAre)
{
    if (!Dot::IsInstalled())
    {
        GTEST_SKIP() << "no dot";
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("k", "C:\\New\\Gold\\l\\"s));
    const std::string svg = Dot::Run(DotOf(*graph), "svg");
    EXPECT_NE(svg.find(">k: C:\\New\\Gold\\l\\<"), std::string::npos) << svg;
}

/// The font library warns of these when they are drawn, but they are no error.
TEST(GraphDot, DrawsReferencesToSurrogatesSoThatGraphvizAcceptsThem)
{
    if (!Dot::IsInstalled())
    {
        GTEST_SKIP() << "no dot";
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("&#xD800;", "&#57343;"s));
    Dot::Reprint(DotOf(*graph));
}

TEST(GraphDot, BreaksNoLineOfAThousandBytes)
{
    const std::string longest(1000 - 3, 'x');
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("k", longest));
    EXPECT_NE(DotOf(*graph).find("\nk: " + longest + "\n\"];"), std::string::npos);
}

TEST(GraphDot, ContinuesALongerLineOnTheNext)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("k", std::string(2000, 'x')));
    EXPECT_NE(
        DotOf(*graph).find("\nk: " + std::string(997, 'x') + "\\n" + std::string(1000, 'x') + "\\nxxx\n\"];"),
        std::string::npos);
}

TEST(GraphDot, BreaksALongTextOfShortLinesWithoutChangingIt)
{
    if (!Dot::IsInstalled())
    {
        GTEST_SKIP() << "no dot";
    }
    Property record("r");
    std::string printed = "\nr:\n";
    for (int i = 0; i < 2'000; ++i)
    {
        record.Add(Property("child", std::string(20, 'x')));
        printed += "  child: " + std::string(20, 'x') + "\n";
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(record);
    const std::string drawing = DotOf(*graph);
    EXPECT_NE(drawing.find("\\\n"), std::string::npos);
    // Graphviz breaks what it writes in its own places.
    std::string read = Dot::Reprint(drawing);
    boost::algorithm::erase_all(read, "\\\n");
    EXPECT_NE(read.find(printed + "\"]"), std::string::npos);
}

TEST(GraphDot, DrawsVeryLongTextsSoThatGraphvizAcceptsThem)
{
    if (!Dot::IsInstalled())
    {
        GTEST_SKIP() << "no dot";
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("long", std::string(50'000, 'x')));
    graph->AddNode(Property("quotes", std::string(20'000, '"')));
    graph->AddNode(Property("backslashes", std::string(20'001, '\\')));
    graph->AddNode(Property("lines", std::string(5'000, '\n')));
    for (const NodeId to : {2, 3, 4})
    {
        graph->AddLink(1, to, Property("link", std::string(20'000, 'y')));
    }
    EXPECT_NE(Dot::Run(DotOf(*graph), "svg").find("</svg>"), std::string::npos);
}

TEST(GraphDot, BreaksLongTextsBetweenCharacters)
{
    std::string text = "x";
    for (int i = 0; i < 20'000; ++i)
    {
        text += "\xF0\x9F\x8E\xAC";
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("k", text));
    const std::string drawing = DotOf(*graph);
    std::size_t breaks = 0;
    for (std::size_t at = drawing.find('\\'); at != std::string::npos; at = drawing.find('\\', at + 1))
    {
        EXPECT_EQ(drawing[at - 1], '\xAC');
        ++breaks;
    }
    EXPECT_GE(breaks, 79u);
}

} // namespace

} // namespace Zelnor::Conf
