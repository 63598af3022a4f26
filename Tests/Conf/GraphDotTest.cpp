#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Dot.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/GroupedNumbers.h"
#include "Tests/Support/TestStreams.h"

#include <boost/algorithm/string/erase.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

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

TEST(GraphDot, DrawsReferencesToSurrogatesSoThatGraphvizAcceptsThem)
{
    if (!Dot::IsInstalled())
    {
        GTEST_SKIP() << "no dot";
    }
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(Property("&#xD800;", "&#57343;"s));
    EXPECT_NE(Dot::Run(DotOf(*graph), "svg").find("&amp;#xD800;: &amp;#57343;"), std::string::npos);
}

/// The label of the one node of a graph, whose record is `record`, without "Node Id: 1".
std::string LabelOf(const Property& record)
{
    const GraphPtr graph = ITranscodingMetaGraph::Create();
    graph->AddNode(record);
    const std::string drawing = DotOf(*graph);
    const std::string begin = "digraph G {\n0[label=\"Node Id: 1\n";
    const std::string end = "\"];\n}\n";
    EXPECT_EQ(drawing.substr(0, begin.size()), begin);
    EXPECT_EQ(drawing.substr(drawing.size() - end.size()), end);
    return drawing.substr(begin.size(), drawing.size() - begin.size() - end.size());
}

std::string Times(std::size_t count, const std::string& text)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

/// With "k: " in front, each draws a line of 2,700 characters.
constexpr std::size_t kRestOfLine = 2700 - 3;

TEST(GraphDot, BreaksNoLineOf2700Characters)
{
    for (const std::string& character : {"x"s, "\xC3\xA9"s, "\xE6\x98\xA0"s, "\xF0\x9F\x8E\xAC"s})
    {
        const std::string text = Times(kRestOfLine, character);
        EXPECT_EQ(LabelOf(Property("k", text)), "k: " + text + "\n");
    }
    // An escape is drawn as one character.
    EXPECT_EQ(LabelOf(Property("k", Times(kRestOfLine, "\""))), "k: " + Times(kRestOfLine, "\\\"") + "\n");
    EXPECT_EQ(LabelOf(Property("k", Times(kRestOfLine, "\\"))), "k: " + Times(kRestOfLine, "\\\\") + "\n");
    EXPECT_EQ(LabelOf(Property("k", Times(kRestOfLine, "\x01"))), "k: " + Times(kRestOfLine, "\\001") + "\n");
}

TEST(GraphDot, ContinuesALongerLineOnTheNext)
{
    EXPECT_EQ(LabelOf(Property("k", std::string(kRestOfLine + 1, 'x'))),
              "k: " + std::string(kRestOfLine, 'x') + "\\nx\n");
    EXPECT_EQ(LabelOf(Property("k", std::string(kRestOfLine + 2701, 'x'))),
              "k: " + std::string(kRestOfLine, 'x') + "\\n" + std::string(2700, 'x') + "\\nx\n");
    EXPECT_EQ(LabelOf(Property("k", Times(kRestOfLine + 1, "\x01"))),
              "k: " + Times(kRestOfLine, "\\001") + "\\n\\001\n");
    EXPECT_EQ(LabelOf(Property("k", Times(kRestOfLine + 1, "\\"))),
              "k: " + Times(kRestOfLine, "\\\\") + "\\n\\\\\n");
}

TEST(GraphDot, StartsALineAnewAtEveryLineBreak)
{
    const std::string line(2700, 'x');
    EXPECT_EQ(LabelOf(Property("k", std::string(kRestOfLine, 'x') + "\n" + line + "\n" + line)),
              "k: " + std::string(kRestOfLine, 'x') + "\\n" + line + "\\n" + line + "\n");
    Property list("r");
    list.Add(Property(std::string(2700 - 3, 'a')));
    list.Add(Property(std::string(2700 - 3, 'b')));
    EXPECT_EQ(LabelOf(list), "r:\n  " + std::string(2697, 'a') + ":\n  " + std::string(2697, 'b') + ":\n");
    // A backslash and an "n" of the text are no line break.
    EXPECT_EQ(LabelOf(Property("k", "\\n" + std::string(kRestOfLine - 1, 'x'))),
              "k: \\\\n" + std::string(kRestOfLine - 2, 'x') + "\\nx\n");
}

TEST(GraphDot, ShowsReferencesThatGraphvizDrawsBadlyAsTheyAreWritten)
{
    const auto text = [](const std::string& value) { return LabelOf(Property("k", value)); };
    for (const char* const reference : {"&#0;", "&#1;", "&#x1F;", "&#X0;", "&#55296;", "&#xDFFF;", "&#65534;",
                                        "&#xffff;", "&#127;", "&#x7FF;", "&#x10000;", "&#x10FFFF;",
                                        "&#1114112;", "&#99999999999999999999;", "&#xFFFFFFFFFFFFFFFFF;"})
    {
        EXPECT_EQ(text(reference), "k: &amp;" + std::string(reference + 1) + "\n");
    }
    for (const char* const kept :
         {"&#9;",    "&#10;",    "&#13;",    "&#32;",        "&#xD7FF;", "&#126;", "&#128;", "&#x7FE;",
          "&#x800;", "&#xE000;", "&#65533;", "&#x0000FFFD;", "&#;",      "&#x;",   "&#-1;",  "&#1",
          "&#1 ;",   "&#xG;",    "&",        "&amp;",        "&#",       "&#x"})
    {
        EXPECT_EQ(text(kept), "k: " + std::string(kept) + "\n");
    }
}

TEST(GraphDot, ShowsCharactersThatXmlMayNotHoldAsBytes)
{
    EXPECT_EQ(LabelOf(Property("k", "a\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xBF\xBD"s)),
              "k: a\\357\\277\\276\\357\\277\\277\xEF\xBF\xBD\n");
}

TEST(GraphDot, BreaksNoLineInsideAnAmpersand)
{
    EXPECT_EQ(LabelOf(Property("k", std::string(kRestOfLine - 1, 'x') + "&#0;")),
              "k: " + std::string(kRestOfLine - 1, 'x') + "&amp;\\n#0;\n");
}

/// A record whose print is `bytes` long, in short lines without a backslash, and that print.
std::pair<Property, std::string> ShortLines(std::size_t bytes)
{
    const std::string line = "  child: " + std::string(90, 'x') + "\n";
    Property record("r");
    std::string print = "r:\n";
    while (print.size() + 2 * line.size() < bytes)
    {
        record.Add(Property("child", std::string(90, 'x')));
        print += line;
    }
    const std::string name(bytes - print.size() - 4, 'y');
    record.Add(Property(name));
    return {record, print + "  " + name + ":\n"};
}

TEST(GraphDot, BreaksNoStretchOf16000Bytes)
{
    const auto [record, print] = ShortLines(16'000);
    ASSERT_EQ(print.size(), 16'000u);
    EXPECT_EQ(LabelOf(record), print);
}

TEST(GraphDot, BreaksALongerStretchWhereGraphvizDropsIt)
{
    const auto [record, print] = ShortLines(32'000);
    ASSERT_EQ(print.size(), 32'000u);
    EXPECT_EQ(LabelOf(record), print.substr(0, 16'000) + "\\\n" + print.substr(16'000, 15'999) + "\\\n" +
                                   print.substr(31'999));
}

TEST(GraphDot, CountsAStretchFromTheLastBackslash)
{
    Property record("a\\");
    const auto [lines, print] = ShortLines(15'000);
    record.Add(lines);
    const std::string label = LabelOf(record);
    EXPECT_EQ(label.find("\\\n"), std::string::npos);
    EXPECT_GT(label.size(), 15'000u);
}

TEST(GraphDot, BreaksNoStretchInFrontOfABackslash)
{
    auto [record, print] = ShortLines(15'000);
    const std::string rest(16'000 - 15'000 - 2, 'y');
    record.Add(Property(rest + "\\"));
    EXPECT_EQ(LabelOf(record), print + "  " + rest + "\\\\:\n");
}

TEST(GraphDot, DrawsTheLongestLinesAndStretchesSoThatGraphvizAcceptsThem)
{
    if (!Dot::IsInstalled())
    {
        GTEST_SKIP() << "no dot";
    }
    const std::string wide(kRestOfLine, 'W');
    for (const Property& record : {Property("k", wide), Property("k", wide + wide), ShortLines(16'000).first,
                                   ShortLines(50'000).first})
    {
        const GraphPtr graph = ITranscodingMetaGraph::Create();
        graph->AddNode(record);
        graph->AddNode(record);
        EXPECT_NE(Dot::Run(DotOf(*graph), "svg").find("</svg>"), std::string::npos) << "neighbours";
        graph->AddLink(1, 2, record);
        EXPECT_NE(Dot::Run(DotOf(*graph), "svg").find("</svg>"), std::string::npos) << "a labelled link";
    }
    // Graphviz draws the digits of an octal escape.
    const GraphPtr lone = ITranscodingMetaGraph::Create();
    lone->AddNode(Property("k", Times(9'000, "\x01")));
    EXPECT_NE(Dot::Run(DotOf(*lone), "svg").find("</svg>"), std::string::npos);
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
    EXPECT_EQ(breaks, 20'004u / 2700);
}

} // namespace

} // namespace Zelnor::Conf
