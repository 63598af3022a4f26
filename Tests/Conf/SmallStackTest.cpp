// Threads with little stack, as some applications make for hundreds of tasks.

#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/PropertySerializer.h"

#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <string>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZELNOR_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZELNOR_SANITIZED
#endif
#endif

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;

void* Call(void* action)
{
    (*static_cast<const std::function<void()>*>(action))();
    return nullptr;
}

/// Runs `action` in a thread with a stack of that size.
void WithStack(std::size_t kilobytes, const std::function<void()>& action)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kilobytes << 10), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, Call, const_cast<std::function<void()>*>(&action)), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
}

class SmallStack : public ::testing::Test
{
protected:
    void SetUp() override
    {
#ifdef ZELNOR_SANITIZED
        GTEST_SKIP() << "the sanitizers need more stack themselves";
#endif
    }
};

/// A job with a record of so many nested groups.
std::string DeepDocument(int depth)
{
    std::string record = "1";
    for (int i = 0; i < depth; ++i)
    {
        record = "{\"g\":" + record + "}";
    }
    return "{\"vertices\":[{\"id\":1,\"data\":{\"data\":" + record +
           "}},{\"id\":2}],\"edges\":[{\"from\":1,\"to\":2}]}";
}

void UseAGraph(const std::string& document, std::size_t kilobytes)
{
    std::string saved;
    std::string drawn;
    WithStack(kilobytes, [&] {
        const GraphPtr graph = Loaded(document);
        saved = JsonOf(*Loaded(JsonOf(*graph)));
        drawn = DotOf(*graph);
        EXPECT_TRUE(graph->TopologyIsValid());
        EXPECT_TRUE(GetTopologyFaults(*graph).empty());
        EXPECT_TRUE(PathExistInGraph(graph, 1, 2));
    });
    EXPECT_EQ(saved, JsonOf(*Loaded(JsonOf(*Loaded(document)))));
    EXPECT_NE(drawn.find("g: 1\n"), std::string::npos);
}

TEST_F(SmallStack, IsEnoughForRecordsOfAnyJob) { UseAGraph(DeepDocument(20), 64); }

/// Records are saved level by level, so the deepest ones need more.
TEST_F(SmallStack, IsEnoughWithAMebibyteForTheDeepestRecords)
{
    UseAGraph(DeepDocument(Core::PropertySerializer::kMaxDepth - 1), 1024);
}

TEST_F(SmallStack, IsEnoughToThrowAndCatchWithACallStack)
{
    std::string stack;
    WithStack(64, [&] {
        try
        {
            GraphWithNodes(1)->GetLink(1, 2);
        }
        catch (const NodeNotFound& e)
        {
            stack = *boost::get_error_info<TagCallStack>(e);
        }
    });
    EXPECT_NE(stack.find("ITranscodingMetaGraph::GetLink"), std::string::npos);
}

TEST_F(SmallStack, IsEnoughWithAMebibyteToRefuseARecordThatIsTooDeep)
{
    bool isRefused = false;
    WithStack(1024, [&] {
        try
        {
            Loaded(DeepDocument(10'000));
        }
        catch (const Core::PropertyException&)
        {
            isRefused = true;
        }
    });
    EXPECT_TRUE(isRefused);
}

} // namespace

} // namespace Zelnor::Conf
