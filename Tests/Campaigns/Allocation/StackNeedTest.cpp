// How much of a thread's stack the operations use: programs start threads with small ones.

#include "Tests/Support/Graphs.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/PropertySerializer.h"
#if ZELNOR_HAS_MEDIA
#include "Media/Jobs/JobFile.h"
#include "Media/Probe/MediaProbe.h"
#include "Media/Running/JobCheck.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/TemporaryFolder.h"
#endif

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <sstream>
#include <string>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZELNOR_STACK_OF_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZELNOR_STACK_OF_SANITIZER 1
#endif
#endif

namespace Zelnor::Testing
{

namespace
{

using Core::Property;

/// Runs `action` in a thread. \returns how many bytes of its stack were written to, those of the start
/// included
std::size_t StackUsedBy(const std::function<void()>& action)
{
    constexpr std::size_t kSize = std::size_t{8} << 20U;
    constexpr unsigned char kUntouched = 0xA5;
    auto* const stack = static_cast<unsigned char*>(
        ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    std::memset(stack, kUntouched, kSize);
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstack(&attributes, stack, kSize);
    const auto run = [](void* started) -> void* {
        (*static_cast<const std::function<void()>*>(started))();
        return nullptr;
    };
    pthread_t thread = {};
    EXPECT_EQ(::pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&action)), 0);
    ::pthread_join(thread, nullptr);
    ::pthread_attr_destroy(&attributes);
    const auto* const deepest =
        std::find_if(stack, stack + kSize, [](unsigned char byte) { return byte != kUntouched; });
    const auto used = static_cast<std::size_t>(stack + kSize - deepest);
    ::munmap(stack, kSize);
    return used;
}

/// Expects that `action` needs at most that many KiB, and prints what it needs.
void ExpectStack(const char* name, std::size_t kibibytes, const std::function<void()>& action)
{
    const std::size_t used = (StackUsedBy(action) + 1023) / 1024;
    std::printf("%s: %zu KiB\n", name, used);
    EXPECT_LE(used, kibibytes) << name;
}

Property Nested(int depth)
{
    Property record("g");
    Property* innermost = &record;
    for (int i = 1; i < depth; ++i)
    {
        innermost = &innermost->SetChild("g");
    }
    return record;
}

GraphPtr GraphWith(const Property& record)
{
    GraphPtr graph = GraphWithNodes(3);
    graph->AddNode(record);
    Link(*graph, {{1, 2}, {2, 3}, {3, 4}});
    return graph;
}

/// Everything that can be done with a graph, with these limits in KiB.
void ExpectStacks(const GraphPtr& graph, std::size_t loading, std::size_t saving)
{
    const std::string json = JsonOf(*graph);
    ExpectStack("load", loading, [&] { Loaded(json); });
    ExpectStack("save", saving, [&] { JsonOf(*graph); });
    ExpectStack("draw", 64, [&] { DotOf(*graph); });
    ExpectStack("topology", 64, [&] { Conf::GetTopologyFaults(*graph); });
    ExpectStack("compare", 64, [&] { EXPECT_EQ((*graph)[4], (*graph)[4]); });
    ExpectStack("print", 64, [&] {
        std::ostringstream text;
        PrintPropertyValue((*graph)[4], 0, text, true, true);
    });
}

TEST(StackNeed, AnythingWithEverydayRecordsFitsInto64KiB)
{
#ifdef ZELNOR_STACK_OF_SANITIZER
    GTEST_SKIP() << "a sanitizer needs more";
#endif
    ExpectStacks(GraphWith(Nested(4)), 64, 64);
    ExpectStack("throw", 64, [] { EXPECT_THROW(GraphWithNodes(1)->RemoveNode(7), Exception); });
}

TEST(StackNeed, TheDeepestRecordsNeedMoreToBeSavedAlone)
{
#ifdef ZELNOR_STACK_OF_SANITIZER
    GTEST_SKIP() << "a sanitizer needs more";
#endif
    ExpectStacks(GraphWith(Nested(Core::PropertySerializer::kMaxDepth - 1)), 64, 512);
}

#if ZELNOR_HAS_MEDIA
TEST(StackNeed, ProbingAndCheckingFitInto512KiB)
{
#ifdef ZELNOR_STACK_OF_SANITIZER
    GTEST_SKIP() << "a sanitizer needs more";
#endif
    const TemporaryFolder folder;
    const std::string source = (folder / "in.wav").string();
    WriteFile(source, SilentWav());
    const GraphPtr job = WavJob(source, {(folder / "out.wav").string()});
    const std::string json = JsonOf(*job);
    ExpectStack("probe", 512, [&] { Media::ProbeMedia(ioPath(source)); });
    ExpectStack("check", 512, [&] { EXPECT_TRUE(Media::CheckJob(*job).empty()); });
    ExpectStack("read", 512, [&] { Media::ReadJob(*Core::MemoryDataInput::Create(json), "job.json"); });
}
#endif

} // namespace

} // namespace Zelnor::Testing
