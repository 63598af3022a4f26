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

using Step = std::tuple<int, long long, long long>;

rc::Gen<std::vector<Step>> Steps(const rc::Gen<int>& kinds)
{
    const rc::Gen<long long> ids = rc::gen::inRange<long long>(-1, kMost);
    return rc::gen::container<std::vector<Step>>(rc::gen::tuple(kinds, ids, ids));
}

/// Every look-up is asked for at the end: since sequences end anywhere, each of their states is an end as
/// well.
void TakeAndCompare(const std::vector<Step>& steps)
{
    GraphBesideModel pair;
    for (const auto& [kind, a, b] : steps)
    {
        pair.Take(kind, a, b);
        pair.CompareContents();
    }
    pair.Compare(kMost);
}

RC_GTEST_PROP(GraphProperty, EditsDoWhatTheRulesSay, ())
{
    const rc::Gen<int> edits = rc::gen::element(0, 1, 2, 3, 5, 6, 7, 8);
    TakeAndCompare(*Steps(edits));
}

RC_GTEST_PROP(GraphProperty, EditsAndDocumentsInAnyOrderDoWhatTheRulesSay, ())
{
    TakeAndCompare(*Steps(rc::gen::inRange(0, GraphBesideModel::kKinds)));
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
    const std::string drawing = DotOf(*AnyGraph(rc::gen::resize(30, AnyRecord<2>())));
    const std::string canonical = Dot::Run(drawing, "canon");
    RC_ASSERT(!canonical.empty());
    RC_ASSERT(!::testing::Test::HasFailure());
}

} // namespace

} // namespace Zelnor::Conf
