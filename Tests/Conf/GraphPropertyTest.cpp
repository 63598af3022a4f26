#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/Dot.h"
#include "Tests/Support/GraphBesideModel.h"
#include "Tests/Support/GraphGenerators.h"
#include "Tests/Support/GraphRoundTrip.h"
#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;

constexpr int kMost = 9;

rc::Gen<std::vector<std::tuple<int, int, int>>> Steps(int kinds)
{
    return rc::gen::container<std::vector<std::tuple<int, int, int>>>(rc::gen::tuple(
        rc::gen::map(rc::gen::inRange(0, kinds), [](int kind) { return kind < 4 ? kind : kind + 1; }),
        rc::gen::inRange(-1, kMost), rc::gen::inRange(-1, kMost)));
}

RC_GTEST_PROP(GraphProperty, EditsDoWhatTheRulesSay, ())
{
    GraphBesideModel pair;
    for (const auto& step : *Steps(9))
    {
        const auto& [kind, a, b] = step;
        pair.Take(kind, a, b);
        pair.Compare(kMost);
    }
}

RC_GTEST_PROP(GraphProperty, EditsAndDocumentsInAnyOrderDoWhatTheRulesSay, ())
{
    GraphBesideModel pair;
    for (const auto& [kind, a, b] :
         *rc::gen::container<std::vector<std::tuple<int, int, int>>>(rc::gen::tuple(
             rc::gen::inRange(0, 9), rc::gen::inRange(-1, kMost), rc::gen::inRange(-1, kMost))))
    {
        pair.Take(kind, a, b);
        pair.Compare(kMost);
    }
}

RC_GTEST_PROP(GraphProperty, SavingAndLoadingKeepsEverything, ())
{
    RC_ASSERT(GraphRoundTrip(*AnyGraph(AnyRecord())).FindDifference() == "");
}

RC_GTEST_PROP(GraphProperty, SavingAndLoadingKeepsDeepRecords, ())
{
    RC_ASSERT(GraphRoundTrip(*AnyGraph(rc::gen::resize(10, DeepRecord(500)))).FindDifference() == "");
}

RC_GTEST_PROP(GraphProperty, GraphvizAcceptsEveryDrawing, ())
{
    if (!Dot::IsInstalled())
    {
        return;
    }
    const std::string drawing = DotOf(*AnyGraph(rc::gen::resize(30, AnyRecord(2))));
    const std::string canonical = Dot::Run(drawing, "canon");
    RC_ASSERT(!canonical.empty());
    RC_ASSERT(!::testing::Test::HasFailure());
}

} // namespace

} // namespace Zelnor::Conf
