#pragma once

// Private to the library, not installed.

#include <chrono>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// Boxes of one size, and which of them are connected by an arrow.
struct BoxGraph
{
    std::size_t boxes = 0;
    std::vector<std::pair<std::size_t, std::size_t>> arrows;
    double width = 0; ///< of a box, in pixels
    double height = 0;
};

/// The middle of a box in pixels, from the left upper corner of the drawing.
struct BoxPosition
{
    long long x = 0;
    long long y = 0;
};

/// Where the boxes stand.
struct GraphLayout
{
    long long width = 0; ///< of the drawing, in pixels
    long long height = 0;
    std::vector<BoxPosition> boxes;
};

/// Graphs of more boxes and arrows than that are not laid out: Graphviz may take minutes for them, and a
/// person does not see anything in them.
constexpr std::size_t kMostBoxesAndArrows = 1000;

/// Places the boxes from left to right along the arrows, by Graphviz. It is told numbers and answers with
/// numbers, so no text of a job reaches it, and none of its own reaches a page.
/// \returns nothing for a graph that is too large
/// \throw DrawingException when Graphviz is missing, fails, takes longer than `limit`, or answers something
///        else than a layout of these boxes
std::optional<GraphLayout> LayOut(const BoxGraph& graph,
                                  std::chrono::seconds limit = std::chrono::seconds(30));

} // namespace Zelnor::Media
