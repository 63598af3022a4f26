#include "Media/Pages/GraphLayout.h"

#include "Media/Pages/Graphviz.h"
#include "Tests/Support/Expect.h"

#include <set>

namespace Zelnor::Media
{
namespace
{

BoxGraph Boxes(std::size_t count, std::vector<std::pair<std::size_t, std::size_t>> arrows)
{
    BoxGraph graph;
    graph.boxes = count;
    graph.arrows = std::move(arrows);
    graph.width = 144;
    graph.height = 36;
    return graph;
}

TEST(GraphLayout, GoesFromLeftToRightAlongTheArrows)
{
    const auto layout = LayOut(Boxes(3, {{2, 0}, {0, 1}}));
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->boxes.size(), 3U);
    EXPECT_LT(layout->boxes[2].x + 144, layout->boxes[0].x);
    EXPECT_LT(layout->boxes[0].x + 144, layout->boxes[1].x);
    EXPECT_GE(layout->width, 3 * 144);
}

TEST(GraphLayout, PlacesBoxesBesideEachOther)
{
    const auto layout = LayOut(Boxes(40, {{0, 0}, {0, 1}, {1, 0}, {5, 6}, {5, 7}}));
    ASSERT_TRUE(layout);
    std::set<std::pair<long long, long long>> places;
    for (const BoxPosition& box : layout->boxes)
    {
        EXPECT_TRUE(places.insert({box.x, box.y}).second);
        EXPECT_GE(box.x, 71);
        EXPECT_LE(box.x, layout->width - 71);
        EXPECT_GE(box.y, 17);
        EXPECT_LE(box.y, layout->height - 17);
    }
}

TEST(GraphLayout, OfNothingIsEmpty)
{
    const auto layout = LayOut(Boxes(0, {}));
    ASSERT_TRUE(layout);
    EXPECT_TRUE(layout->boxes.empty());
}

TEST(GraphLayout, IsNotMadeForMoreThanAThousandBoxesAndArrows)
{
    EXPECT_FALSE(LayOut(Boxes(kMostBoxesAndArrows + 1, {})));
    EXPECT_FALSE(LayOut(Boxes(kMostBoxesAndArrows, {{0, 1}})));
    EXPECT_TRUE(LayOut(Boxes(kMostBoxesAndArrows, {})));
}

TEST(GraphLayout, OfADenseGraphIsMadeInTimeOrRefused)
{
    std::vector<std::pair<std::size_t, std::size_t>> arrows;
    for (std::size_t i = 0; i < 40; ++i)
    {
        for (std::size_t j = i + 1; j < 40; ++j)
        {
            arrows.emplace_back(i, j);
        }
    }
    EXPECT_TRUE(LayOut(Boxes(40, arrows)));
    const Testing::Thrown thrown =
        Testing::ExpectThrow<DrawingException>([&] { LayOut(Boxes(40, arrows), std::chrono::seconds(-1)); });
    EXPECT_EQ(thrown.description, "Graphviz took longer than -1 s");
}

TEST(Graphviz, SaysWhatGraphvizSays)
{
    const Testing::Thrown thrown =
        Testing::ExpectThrow<DrawingException>([] { DrawWithGraphviz("no graph", "svg"); });
    EXPECT_EQ(thrown.description,
              "Graphviz failed with exit code 1: Error: <stdin>: syntax error in line 1 near 'no'");
}

} // namespace
} // namespace Zelnor::Media
