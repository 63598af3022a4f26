#include "Media/Pages/JobDrawing.h"

#include "Media/Pages/HtmlText.h"

#include "Core/Interfaces/Utf8.h"

#include <algorithm>
#include <cstdlib>

namespace Zelnor::Media
{

namespace
{

constexpr long long kWidth = 200;
constexpr long long kHeight = 44;
constexpr long long kMargin = 12; ///< around the drawing, and room for the marks of faults
constexpr long long kPadding = 8;
/// Characters of a line in a box. They are 7 pixels wide each; the style sheet chooses a font of that width.
constexpr std::size_t kColumns = 25;
constexpr long long kColumnWidth = 7;

bool HasBox(const JobItem& link) { return link.hasRecord || !link.faults.empty(); }

std::string NumberAttribute(const char* attribute, long long value)
{
    return std::string(" ") + attribute + "=\"" + std::to_string(value) + "\"";
}

std::size_t CharactersOf(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !Core::IsUtf8Continuation(c); }));
}

class Drawer
{
public:
    Drawer(const JobItems& items, const GraphLayout& layout) : m_items(items), m_layout(layout) {}

    std::string Draw()
    {
        const long long width = m_layout.width + 2 * kMargin;
        const long long height = m_layout.height + 2 * kMargin;
        m_svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"group\" aria-label=\"The job as a graph\"" +
                NumberAttribute("width", width) + NumberAttribute("height", height) + " viewBox=\"0 0 " +
                std::to_string(width) + " " + std::to_string(height) +
                "\">\n<defs><marker id=\"arrow\" viewBox=\"0 0 8 8\" refX=\"8\" refY=\"4\" "
                "markerWidth=\"10\" markerHeight=\"10\" markerUnits=\"userSpaceOnUse\" orient=\"auto\"><path "
                "d=\"M0 0L8 4L0 8Z\"/></marker>"
                "</defs>\n";
        std::size_t box = m_items.nodes.size();
        for (std::size_t i = 0; i < m_items.links.size(); ++i)
        {
            const JobItem& link = m_items.links[i];
            const auto [from, to] = m_items.ends[i];
            m_svg += Opening(link, HasBox(link) ? "link" : "link bare");
            if (HasBox(link))
            {
                Line(from, box, "");
                Line(box, to, " marker-end=\"url(#arrow)\"");
                Box(link, m_layout.boxes[box]);
                ++box;
            }
            else
            {
                Line(from, to, " marker-end=\"url(#arrow)\"");
            }
            m_svg += "</a>\n";
        }
        for (std::size_t i = 0; i < m_items.nodes.size(); ++i)
        {
            m_svg += Opening(m_items.nodes[i], "node");
            Box(m_items.nodes[i], m_layout.boxes[i]);
            m_svg += "</a>\n";
        }
        return std::move(m_svg) + "</svg>\n";
    }

private:
    static std::string Opening(const JobItem& item, const std::string& kind)
    {
        std::string label = item.title;
        for (const std::string& part : {item.name, item.detail})
        {
            label += part.empty() ? "" : ", " + part;
        }
        const std::size_t faults = item.faults.size();
        label += faults == 0 ? "" : ", " + std::to_string(faults) + (faults == 1 ? " fault" : " faults");
        std::string html = "<a href=\"#" + item.anchor + "\" class=\"" + kind +
                           (faults == 0 ? "" : " faulty") + "\" aria-label=\"";
        AppendHtml(label, html);
        html += "\"><title>";
        AppendHtml(label, html);
        return html + "</title>";
    }

    /// A curve from the right side of one box to the left side of another.
    void Line(std::size_t from, std::size_t to, const std::string& end)
    {
        constexpr long long kLeastBend = 24;
        const BoxPosition& one = m_layout.boxes[from];
        const BoxPosition& other = m_layout.boxes[to];
        const long long left = one.x + kWidth / 2 + kMargin;
        const long long right = other.x - kWidth / 2 + kMargin;
        const long long bend = std::max(kLeastBend, std::abs(right - left) / 2);
        const auto point = [](long long x, long long y) {
            return std::to_string(x) + " " + std::to_string(y + kMargin);
        };
        const std::string path = "M" + point(left, one.y) + "C" + point(left + bend, one.y) + " " +
                                 point(right - bend, other.y) + " " + point(right, other.y);
        // A thin line is hard to hit.
        m_svg +=
            "<path class=\"reach\" d=\"" + path + "\"/><path class=\"line\" d=\"" + path + "\"" + end + "/>";
    }

    void Box(const JobItem& item, const BoxPosition& middle)
    {
        const long long x = middle.x - kWidth / 2 + kMargin;
        const long long y = middle.y - kHeight / 2 + kMargin;
        m_svg += "<rect" + NumberAttribute("x", x) + NumberAttribute("y", y) +
                 NumberAttribute("width", kWidth) + NumberAttribute("height", kHeight) + " rx=\"6\"/>";
        const std::size_t room = kColumns - std::min(kColumns / 2, item.number.size() + 1);
        Text(item.name, "name", room, x + kPadding, y + 18);
        m_svg += "<text class=\"number\" text-anchor=\"end\"" + NumberAttribute("x", x + kWidth - kPadding) +
                 NumberAttribute("y", y + 18) + ">";
        AppendHtml(Shortened(item.number, kColumns / 2), m_svg);
        m_svg += "</text>";
        Text(item.detail, "detail", kColumns, x + kPadding, y + 35);
        if (!item.faults.empty())
        {
            m_svg += "<circle" + NumberAttribute("cx", x + kWidth) + NumberAttribute("cy", y) +
                     " r=\"9\"/><text class=\"mark\"" + " text-anchor=\"middle\"" +
                     NumberAttribute("x", x + kWidth) + NumberAttribute("y", y + 4) + ">!</text>";
        }
    }

    void Text(const std::string& text, const char* kind, std::size_t columns, long long x, long long y)
    {
        if (text.empty())
        {
            return;
        }
        const std::string shown = Shortened(text, columns);
        const std::size_t characters = CharactersOf(shown);
        m_svg +=
            std::string("<text class=\"") + kind + "\"" + NumberAttribute("x", x) + NumberAttribute("y", y);
        if (characters != shown.size())
        {
            // Some characters are wider than others.
            m_svg += NumberAttribute("textLength", kColumnWidth * static_cast<long long>(characters)) +
                     " lengthAdjust=\"spacingAndGlyphs\"";
        }
        m_svg += ">";
        AppendHtml(shown, m_svg);
        m_svg += "</text>";
    }

    const JobItems& m_items;
    const GraphLayout& m_layout;
    std::string m_svg;
};

} // namespace

BoxGraph BoxesOf(const JobItems& items)
{
    BoxGraph graph;
    graph.width = kWidth;
    graph.height = kHeight;
    graph.boxes = items.nodes.size();
    for (std::size_t i = 0; i < items.links.size(); ++i)
    {
        const auto [from, to] = items.ends[i];
        if (HasBox(items.links[i]))
        {
            graph.arrows.emplace_back(from, graph.boxes);
            graph.arrows.emplace_back(graph.boxes, to);
            ++graph.boxes;
        }
        else
        {
            graph.arrows.emplace_back(from, to);
        }
    }
    return graph;
}

std::string JobDrawingSvg(const JobItems& items, const GraphLayout& layout)
{
    return Drawer(items, layout).Draw();
}

} // namespace Zelnor::Media
