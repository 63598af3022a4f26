#include "Media/Jobs/JobFault.h"

#include "Media/ErrorText.h"
#include "Tests/Support/Graphs.h"

#include "Conf/Interfaces/ConfException.h"
#include "Core/Interfaces/Property.h"

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// What the action that fails has to say.
template <class Action>
std::string TextOf(Action&& action)
{
    try
    {
        action();
    }
    catch (...)
    {
        return ErrorText(std::current_exception());
    }
    return "no error";
}

TEST(JobFault, HasANameForScripts)
{
    const std::vector<std::pair<JobFault::Kind, std::string>> names = {
        {JobFault::TooFewNodes, "too_few_nodes"},
        {JobFault::RepeatedIds, "repeated_ids"},
        {JobFault::UnlinkedNodes, "unlinked_nodes"},
        {JobFault::Cycle, "cycle"},
        {JobFault::SeveralParts, "several_parts"},
        {JobFault::Structure, "structure"},
        {JobFault::Input, "input"},
        {JobFault::Setting, "setting"},
        {JobFault::Encoder, "encoder"},
        {JobFault::Container, "container"},
        {JobFault::Output, "output"},
        {JobFault::Loss, "loss"},
    };
    for (const auto& [kind, name] : names)
    {
        EXPECT_EQ(JobFault{kind}.Name(), name);
    }
}

TEST(JobFault, OfTheTopologyNamesItsNodes)
{
    EXPECT_EQ((JobFault{JobFault::TooFewNodes, {{7}}}.Sentence()), "There is 1 node; a job has at least 2.");
    EXPECT_EQ((JobFault{JobFault::TooFewNodes}.Sentence()), "There are 0 nodes; a job has at least 2.");
    EXPECT_EQ((JobFault{JobFault::RepeatedIds, {{1, 2}}}.Sentence()),
              "More than one node has the id 1, 2; links reach the first one only.");
    EXPECT_EQ((JobFault{JobFault::UnlinkedNodes, {{1, 2}}}.Sentence()), "2 nodes without links: 1, 2");
    EXPECT_EQ((JobFault{JobFault::Cycle, {{1, 2}}}.Sentence()), "There is a cycle: 1 -> 2 -> 1");
    EXPECT_EQ((JobFault{JobFault::SeveralParts, {{1, 2}, {3, 4}}}.Sentence()),
              "The nodes form 2 separate components: {1, 2}, {3, 4}");
}

TEST(ErrorText, OfAGraphNamesTheNodeOrTheLink)
{
    const GraphPtr graph = GraphWithNodes(2);
    EXPECT_EQ(TextOf([&] { graph->RemoveNode(7); }), "There is no node 7");
    Link(*graph, {{1, 2}});
    EXPECT_EQ(TextOf([&] { Link(*graph, {{1, 2}}); }), "There is already a link from node 1 to node 2");
    EXPECT_EQ(TextOf([&] { graph->RemoveLink(2, 1); }), "There is no link from node 2 to node 1");
}

TEST(ErrorText, OfARecordSaysWhatCannotBeDone)
{
    Core::Property number("number", 1LL);
    EXPECT_EQ(TextOf([&] { number.SetChild("child"); }),
              "'number' is not a group, so it cannot have children");
    EXPECT_EQ(TextOf([&] { number.CreateChildT("child", 1LL); }),
              "'number' is not a group, so it cannot have children");
}

TEST(ErrorText, OfARecordWithoutANameIsStillASentence)
{
    EXPECT_EQ(TextOf([] { throw Core::MethodIsNotApplicable(); }),
              "'' is not a group, so it cannot have children");
}

TEST(ErrorText, IsTheDescriptionWhereThereIsOne)
{
    EXPECT_EQ(TextOf([] {
                  Core::CoreException exception;
                  exception << TagDescription("described");
                  throw exception;
              }),
              "described");
    EXPECT_EQ(TextOf([] {
                  Core::MethodIsNotApplicable exception;
                  exception << TagDescription("described");
                  throw exception;
              }),
              "described");
}

TEST(ErrorText, IsTheNameOfAnExceptionThatSaysNothing)
{
    EXPECT_EQ(TextOf([] { throw Core::CoreException(); }).substr(0, 12), "Failed with ");
    EXPECT_EQ(TextOf([] { throw Conf::ProfileException(); }).substr(0, 12), "Failed with ");
    EXPECT_EQ(TextOf([] { throw std::runtime_error(""); }).substr(0, 12), "Failed with ");
}

TEST(ErrorText, OfAnyOtherExceptionIsItsFirstLine)
{
    EXPECT_EQ(TextOf([] { throw std::runtime_error("one\ntwo"); }), "one");
    EXPECT_EQ(TextOf([] { throw std::bad_alloc(); }), "Not enough memory");
    EXPECT_EQ(TextOf([] { throw 5; }), "Failed for an unknown reason");
}

TEST(TopologyFaults, OfAGraphAreOfTheirKinds)
{
    const auto kinds = [](const GraphPtr& graph) {
        std::vector<JobFault::Kind> found;
        for (const JobFault& fault : FindTopologyFaults(*graph))
        {
            found.push_back(fault.kind);
        }
        return found;
    };
    using Kinds = std::vector<JobFault::Kind>;
    EXPECT_EQ(kinds(GraphWithNodes(0)), Kinds{JobFault::TooFewNodes});
    EXPECT_EQ(kinds(GraphWithNodes(2)), Kinds{JobFault::UnlinkedNodes});
    const GraphPtr cycle = GraphWithNodes(3);
    Link(*cycle, {{1, 2}, {2, 3}, {3, 1}});
    EXPECT_EQ(kinds(cycle), Kinds{JobFault::Cycle});
    const GraphPtr parts = GraphWithNodes(4);
    Link(*parts, {{1, 2}, {3, 4}});
    EXPECT_EQ(kinds(parts), Kinds{JobFault::SeveralParts});
    EXPECT_EQ(FindTopologyFaults(*parts).at(0).Sentence(),
              "The nodes form 2 separate components: {1, 2}, {3, 4}");
    EXPECT_EQ(kinds(Loaded(R"({"vertices":[{"id":1},{"id":2},{"id":2}],"edges":[{"from":1,"to":2}]})")).at(0),
              JobFault::RepeatedIds);
}

TEST(JobFault, WithoutAPlaceIsItsReason)
{
    JobFault fault{JobFault::Output};
    fault.reason = "the reason";
    EXPECT_EQ(fault.Sentence(), "the reason");
}

} // namespace
