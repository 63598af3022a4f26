#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Tests/Support/FailingAllocation.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <utility>

namespace Zelnor::Testing
{

thread_local long long g_allocationsLeft = -1;

} // namespace Zelnor::Testing

namespace
{

using Zelnor::Testing::g_allocationsLeft;

void* Allocate(std::size_t size)
{
    if (g_allocationsLeft == 0)
    {
        // Only one fails: what is done about it may need memory.
        g_allocationsLeft = -1;
        throw std::bad_alloc();
    }
    if (g_allocationsLeft > 0)
    {
        --g_allocationsLeft;
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
    {
        return memory;
    }
    throw std::bad_alloc();
}

} // namespace

// For the whole test program, the libraries included.
void* operator new(std::size_t size) { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using Core::Property;

/// Runs `action` with its first, second, ... allocation failing, until it succeeds. Expects that `graph` is
/// unchanged by each failure. Returns the number of failures.
template <class Action, class Check>
int FailEveryAllocation(const ITranscodingMetaGraph& graph, Action&& action, Check&& checkAfterFailure)
{
    const std::string before = JsonOf(graph);
    const NodeId counter = graph.GetNodesCount();
    for (int failures = 0;; ++failures)
    {
        if (RunWithFailure(failures, action))
        {
            return failures;
        }
        EXPECT_EQ(JsonOf(graph), before);
        EXPECT_EQ(graph.GetNodesCount(), counter);
        checkAfterFailure();
    }
}

template <class Action>
int FailEveryAllocation(const ITranscodingMetaGraph& graph, Action&& action)
{
    return FailEveryAllocation(graph, std::forward<Action>(action), [] {});
}

Property BigRecord()
{
    Property record("a name that is too long to be held in place");
    record.SetChildT("a key that is too long to be held in place", std::string(100, 'x'));
    record.SetChild("group").SetChildT("number", 1LL);
    return record;
}

TEST(GraphMemory, ANodeIsAddedAsAWholeOrNotAtAll)
{
    const GraphPtr graph = GraphWithNodes(4);
    EXPECT_GT(FailEveryAllocation(*graph, [&] { EXPECT_EQ(graph->AddNode(BigRecord()), 5); }), 5);
    EXPECT_EQ((*graph)[5], BigRecord());
    EXPECT_EQ(graph->GetNodesCount(), 5);
}

TEST(GraphMemory, ANodeThatBreaksTheOrderIsAddedAsAWholeOrNotAtAll)
{
    const GraphPtr graph = GraphWithNodes(4);
    LoadInto(*graph, R"({"vertices":[],"edges":[]})");
    // The counter begins anew, so this node's identifier is there already.
    EXPECT_GT(FailEveryAllocation(*graph, [&] { EXPECT_EQ(graph->AddNode(BigRecord()), 1); }), 5);
    EXPECT_EQ((*graph)[1], Property("n", 1LL));
    EXPECT_GT(FailEveryAllocation(*graph, [&] { EXPECT_EQ(graph->AddNode(BigRecord()), 2); }), 5);
    EXPECT_EQ((*graph)[2], Property("n", 2LL));
    for (const NodeId id : {1, 2, 3, 4, 1})
    {
        graph->RemoveNode(id);
    }
    EXPECT_EQ((*graph)[2], BigRecord());
    ExpectNodeNotFound(1, [&] { (*graph)[1]; });
}

TEST(GraphMemory, ANodeThatWasNotAddedIsNotFoundWhileTheOrderIsBroken)
{
    const GraphPtr graph = Loaded(R"({"vertices":[{"id":2},{"id":1}],"edges":[]})");
    for (const NodeId id : {3, 4, 5})
    {
        FailEveryAllocation(
            *graph, [&] { graph->AddNode(BigRecord()); },
            [&] { ExpectNodeNotFound(id, [&] { (*graph)[id]; }); });
        EXPECT_EQ((*graph)[id], BigRecord());
    }
}

TEST(GraphMemory, ALinkIsAddedAsAWholeOrNotAtAll)
{
    const GraphPtr graph = GraphWithNodes(3);
    Link(*graph, {{1, 2}});
    EXPECT_GT(FailEveryAllocation(*graph, [&] { EXPECT_EQ(graph->AddLink(1, 3, BigRecord()), 2); }), 5);
    EXPECT_GT(FailEveryAllocation(*graph, [&] { EXPECT_EQ(graph->AddLink(3, 3, BigRecord()), 3); }), 5);
    EXPECT_EQ(OutputsOf(*graph, 1), (Ids{2, 3}));
    EXPECT_EQ(InputsOf(*graph, 3), (Ids{1, 3}));
    EXPECT_EQ(graph->GetLink(1, 3), BigRecord());
}

TEST(GraphMemory, ASlaveStreamIsAddedAsAWholeOrNotAtAll)
{
    Property target("stream");
    for (int call = 0; call < 2; ++call)
    {
        const Property before = target;
        const Property settings = BigRecord();
        int failures = 0;
        for (bool done = false; !done; ++failures)
        {
            g_allocationsLeft = failures;
            try
            {
                ITranscodingMetaGraph::AddSlaveStreamIndex(target, settings, 7);
                g_allocationsLeft = -1;
                done = true;
            }
            catch (const std::bad_alloc&)
            {
                EXPECT_EQ(target, before);
            }
        }
        EXPECT_GT(failures, 5);
    }
    EXPECT_EQ(target["$$MERGE_WITH$$"].Count(), 2u);
}

TEST(GraphMemory, ADrawingIsWrittenAsAWholeOrNotAtAll)
{
    const GraphPtr graph = GraphWithNodes(2);
    Property record = BigRecord();
    for (int i = 0; i < 200; ++i)
    {
        record.Add(BigRecord());
    }
    graph->AddNode(record);
    graph->AddLink(1, 3, record);
    const std::string drawing = DotOf(*graph);
    for (int failures = 0;; ++failures)
    {
        TestOutput out;
        if (RunWithFailure(failures, [&] { graph->SaveInToDot(&out); }))
        {
            EXPECT_GT(failures, 10);
            EXPECT_EQ(out.GetBytes(), drawing);
            break;
        }
        EXPECT_EQ(out.GetBytes(), "") << "after failure of allocation " << failures;
    }
}

} // namespace

} // namespace Zelnor::Conf
