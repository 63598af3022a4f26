// Drawings of graphs whose names and texts hold any bytes, entities and long lines: Graphviz accepts them,
// what it draws is well-formed XML, and it has as many nodes and links as the graph.

#include "Core/Interfaces/Property.h"

#include "Tests/Support/Campaign.h"
#include "Tests/Support/Dot.h"
#include "Tests/Support/Drawing.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor
{

namespace
{

using namespace Zelnor::Testing;

class AnyDrawing
{
public:
    explicit AnyDrawing(std::uint64_t seed) : m_random(seed) {}

    /// The graph number `index`; each byte value is in one of 256 in a row.
    GraphPtr Next(std::size_t index)
    {
        m_hasLongLine = false;
        const GraphPtr graph = Conf::ITranscodingMetaGraph::Create();
        const std::string byte(1, static_cast<char>(index));
        Core::Property first("a" + byte + "b");
        first.SetChildT(byte, byte + byte);
        first.SetChildT("text", Text());
        graph->AddNode(first);
        for (std::size_t more = Below(3); more != 0; --more)
        {
            graph->AddNode(Core::Property(Text(), Text()));
        }
        for (std::size_t links = Below(4); links != 0; --links)
        {
            AddLink(*graph);
        }
        return graph;
    }

private:
    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    void AddLink(Conf::ITranscodingMetaGraph& graph)
    {
        const auto nodes = static_cast<std::size_t>(graph.GetNodesCount());
        const auto from = static_cast<Conf::NodeId>(1 + Below(nodes));
        const auto to = static_cast<Conf::NodeId>(1 + Below(nodes));
        const Ids outputs = OutputsOf(graph, from);
        if (std::find(outputs.begin(), outputs.end(), to) == outputs.end())
        {
            graph.AddLink(from, to, Below(3) == 0 ? Core::Property("data") : Core::Property(Text(), Text()));
        }
    }

    std::string Text()
    {
        std::string text;
        for (std::size_t pieces = Below(6); pieces != 0; --pieces)
        {
            text += Piece();
        }
        return text;
    }

    std::string Piece()
    {
        static const std::string kPieces[] = {"\"",
                                              "\\",
                                              "\"]; evil [label=\"",
                                              "\\N\\G\\l\\r\\E",
                                              "&amp;",
                                              "&nosuch;",
                                              "&#x;",
                                              "<b>",
                                              "]]>",
                                              "--",
                                              "\xC3\x9F",
                                              "\xE6\x98\xA0",
                                              "\xC2\x85",
                                              "\xE2\x80\xAE",
                                              "\xEF\xBF\xBE",
                                              "\xEF\xBB\xBF",
                                              "\xED\xA0\x80",
                                              "%s",
                                              "/* */",
                                              "# 1"};
        switch (Below(40))
        {
        case 0:
            return LongLine();
        case 1:
            return std::string(Below(100), '\n');
        case 2:
        case 3:
        case 4:
            return "&#" + std::to_string(m_random() >> Below(64)) + ";";
        default:
            return Below(2) == 0 ? std::string(1, static_cast<char>(Below(256)))
                                 : kPieces[Below(std::size(kPieces))];
        }
    }

    /// One in a graph: Graphviz refuses a drawing in which several such nodes and labels are neighbours.
    std::string LongLine()
    {
        const bool isFirst = !m_hasLongLine;
        m_hasLongLine = true;
        return isFirst ? std::string(2'000 + Below(4'000), Below(2) == 0 ? 'W' : '\\') : "";
    }

    std::mt19937_64 m_random;
    bool m_hasLongLine = false;
};

std::size_t CountOf(const std::string& what, const std::string& text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
    {
        ++count;
    }
    return count;
}

/// Many graphs for one run of each program, since starting them takes longer than what they do.
class Batch
{
public:
    void Add(const Conf::ITranscodingMetaGraph& graph)
    {
        m_drawings.push_back(DotOf(graph));
        const Drawing drawing(m_drawings.back());
        EXPECT_EQ(drawing.nodes, NodesOf(graph).size());
        EXPECT_EQ(drawing.links.size(), LinksOf(graph).size());
        m_counts.emplace_back(drawing.nodes, drawing.links.size());
    }

    void Draw() const
    {
        std::string all;
        for (const std::string& drawing : m_drawings)
        {
            all += drawing;
        }
        const std::string svg = Dot::Run(all, "svg");
        const TemporaryFolder folder;
        std::size_t begin = 0;
        for (std::size_t i = 0; i < m_drawings.size(); ++i)
        {
            const std::string last = "</svg>\n";
            const std::size_t end = svg.find(last, begin);
            ASSERT_NE(end, std::string::npos) << "graph " << i << ": " << m_drawings[i];
            const std::string one = svg.substr(begin, end + last.size() - begin);
            EXPECT_EQ(CountOf("class=\"node\"", one), m_counts[i].first) << m_drawings[i];
            EXPECT_EQ(CountOf("class=\"edge\"", one), m_counts[i].second) << m_drawings[i];
            WriteFile(folder / (std::to_string(i) + ".svg"), one);
            begin = end + last.size();
        }
        EXPECT_EQ(svg.substr(begin), "");
        const std::string command = "cd '" + folder.Path().string() + "' && xmllint --noout --nonet *.svg";
        EXPECT_EQ(std::system(command.c_str()), 0) << all;
    }

private:
    std::vector<std::string> m_drawings;
    std::vector<std::pair<std::size_t, std::size_t>> m_counts;
};

TEST(Drawings, AreAcceptedByGraphvizAndWellFormed)
{
    if (!Dot::IsInstalled() || std::system("xmllint --version 2>/dev/null") != 0)
    {
        GTEST_SKIP() << "no dot or no xmllint";
    }
    constexpr std::size_t kBatch = 100;
    const std::size_t runs = CampaignRuns(QuickRuns(500));
    const std::uint64_t seed = CampaignSeed(1);
    AnyDrawing graphs(seed);
    for (std::size_t done = 0; done < runs && !HasFailure();)
    {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", graphs from " + std::to_string(done));
        Batch batch;
        for (std::size_t i = 0; i < kBatch && done < runs; ++i, ++done)
        {
            batch.Add(*graphs.Next(done));
        }
        batch.Draw();
    }
    ReportFigures(std::to_string(runs) + " drawings, " + (HasFailure() ? "with" : "0") + " findings");
}

} // namespace

} // namespace Zelnor
