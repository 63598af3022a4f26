#include "Media/Pages/GraphLayout.h"

#include "Media/Pages/Graphviz.h"
#include "Media/Pages/GraphvizProcess.h"

#include <cmath>
#include <locale>
#include <sstream>
#include <string>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// Graphviz counts in inches; a page has 72 pixels for each.
constexpr double kPixels = 72;

std::string Inches(double pixels)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << pixels / kPixels;
    return text.str();
}

/// The limits keep dense graphs from taking minutes. Arrows are left out of the drawing, which saves most of
/// the time; they still decide where the boxes stand.
std::string DotOf(const BoxGraph& graph)
{
    std::string dot = "digraph G {\nrankdir=LR; nslimit=0.5; nslimit1=0.5; mclimit=0.1; splines=false;\n"
                      "nodesep=0.2; ranksep=0.6; node [shape=box, fixedsize=true, label=\"\", width=" +
                      Inches(graph.width) + ", height=" + Inches(graph.height) + "];\n";
    for (std::size_t box = 0; box < graph.boxes; ++box)
    {
        dot += std::to_string(box) + ";\n";
    }
    for (const auto& [from, to] : graph.arrows)
    {
        dot += std::to_string(from) + "->" + std::to_string(to) + ";\n";
    }
    return dot + "}\n";
}

/// Reads Graphviz's format "plain": lines of a word and numbers.
class PlainReader
{
public:
    explicit PlainReader(const std::string& text) : m_lines(text) {}

    GraphLayout Read(std::size_t boxes)
    {
        m_layout.boxes.resize(boxes);
        std::vector<bool> isPlaced(boxes, false);
        std::string text;
        while (std::getline(m_lines, text))
        {
            std::istringstream line(text);
            line.imbue(std::locale::classic());
            std::string word;
            line >> word;
            if (word == "graph")
            {
                Number(line); // the scale, which is 1
                m_layout.width = Pixels(line);
                m_layout.height = Pixels(line);
            }
            else if (word == "node")
            {
                const double box = Number(line);
                Require(box < static_cast<double>(boxes) && box == std::floor(box));
                const auto index = static_cast<std::size_t>(box);
                Require(!isPlaced[index]);
                isPlaced[index] = true;
                const long long x = Pixels(line);
                // Graphviz counts from below.
                m_layout.boxes[index] = {x, m_layout.height - Pixels(line)};
            }
        }
        for (const bool placed : isPlaced)
        {
            Require(placed);
        }
        return std::move(m_layout);
    }

private:
    static void Require(bool holds)
    {
        if (!holds)
        {
            ZELNOR_THROW("Media/Pages/GraphLayout",
                         MakeError<DrawingException>("Graphviz answers something else than a layout"));
        }
    }

    static double Number(std::istringstream& line)
    {
        constexpr double kMost = 1e6;
        double number = -1;
        line >> number;
        Require(!line.fail() && number >= 0 && number < kMost);
        return number;
    }

    static long long Pixels(std::istringstream& line) { return std::llround(kPixels * Number(line)); }

    std::istringstream m_lines;
    GraphLayout m_layout;
};

} // namespace

std::optional<GraphLayout> LayOut(const BoxGraph& graph, std::chrono::seconds limit)
{
    if (graph.boxes + graph.arrows.size() > kMostBoxesAndArrows)
    {
        return std::nullopt;
    }
    if (graph.boxes == 0)
    {
        return GraphLayout();
    }
    return PlainReader(RunGraphviz(DotOf(graph), "plain", "html", limit)).Read(graph.boxes);
}

} // namespace Zelnor::Media
