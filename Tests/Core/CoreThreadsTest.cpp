// What several threads may do at once.

#include "Core/Interfaces/CallStack.h"
#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertySerializer.h"
#include "Core/Interfaces/RefCountImpl.h"
#include "Core/Private/RecordParser.h"

#include "Tests/Support/Campaign.h"
#include "Tests/Support/Plugin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Zelnor
{

namespace
{

constexpr int kThreads = 4;

/// Of a campaign's cheap operations; one that throws, loads or starts threads counts as five hundred.
int Rounds(int cost) { return std::max(static_cast<int>(Testing::CampaignRuns(100'000)) / cost, 1); }

/// Runs `action` with the thread's number in several threads, all beginning together.
void InThreads(const std::function<void(int)>& action)
{
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
    {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting != 0)
            {
                std::this_thread::yield();
            }
            action(i);
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

/// Throws and catches; \returns the call stack that came along.
std::string StackOfAThrow()
{
    try
    {
        Core::Property("p")["absent"];
    }
    catch (const Core::PropertyException& e)
    {
        const std::string* const stack = boost::get_error_info<TagCallStack>(e);
        return stack == nullptr ? "" : *stack;
    }
    return "";
}

/// Writes to itself without any lock, so that a missing order between the last holder and the others shows.
class Written : public Counted<IRefCountable>
{
public:
    explicit Written(std::atomic<int>& destroyed, int& sum) : m_destroyed(destroyed), m_sum(sum) {}

    int slots[kThreads] = {};

private:
    ~Written() override
    {
        for (const int slot : slots)
        {
            m_sum += slot;
        }
        ++m_destroyed;
    }

    std::atomic<int>& m_destroyed;
    int& m_sum;
};

} // namespace

TEST(CoreThreads, CountReferencesTogether)
{
    const RefCountImpl count;
    const int rounds = Rounds(10);
    InThreads([&](int) {
        for (int i = 0; i < rounds; ++i)
        {
            count.AddRefImpl();
            count.AddRefImpl();
            count.ReleaseImpl();
        }
    });
    EXPECT_EQ(count.GetRefCountImpl(), kThreads * rounds);
}

TEST(CoreThreads, TheLastHolderDestroysOnceAndSeesWhatTheOthersWrote)
{
    for (int round = Rounds(500); round != 0; --round)
    {
        std::atomic<int> destroyed{0};
        int sum = 0;
        boost::intrusive_ptr<Written> object(new Written(destroyed, sum));
        std::vector<boost::intrusive_ptr<Written>> holders(kThreads, object);
        object.reset();
        InThreads([&](int i) {
            const auto index = static_cast<std::size_t>(i);
            boost::intrusive_ptr<Written> mine = std::move(holders[index]);
            mine->slots[index] = 1;
            mine.reset();
        });
        EXPECT_EQ(destroyed, 1);
        EXPECT_EQ(sum, kThreads);
    }
}

TEST(CoreThreads, GetTheirCallStacksAndThrowAtOnce)
{
    std::atomic<int> wrong{0};
    const int rounds = Rounds(500);
    InThreads([&](int) {
        for (int i = 0; i < rounds; ++i)
        {
            wrong += GetCallStack().empty() ? 1 : 0;
            wrong += StackOfAThrow().find("Property::operator[]") == std::string::npos ? 1 : 0;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(CoreThreads, ThrowWhileALibraryThatThrowsIsLoadedAndUnloaded)
{
    std::atomic<int> wrong{0};
    std::atomic<int> loading{1};
    const int rounds = Rounds(500);
    InThreads([&](int thread) {
        if (thread == 0)
        {
            for (int i = 0; i < rounds; ++i)
            {
                const bool first = i % 2 == 0;
                const Testing::Plugin plugin(first ? ZELNOR_PLUGIN_FIRST : ZELNOR_PLUGIN_SECOND);
                const char* const name = first ? "First::StackOfPlugin" : "Second::StackOfPlugin";
                wrong += plugin.Stack().find(name) == std::string::npos ? 1 : 0;
            }
            loading = 0;
        }
        while (loading != 0)
        {
            wrong += StackOfAThrow().find("Property::operator[]") == std::string::npos ? 1 : 0;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(CoreThreads, ReadOnePropertyAtOnce)
{
    Core::Property record("record");
    for (long long i = 0; i < 20; ++i)
    {
        record.SetChild("child " + std::to_string(i)).CreateChildT("value", i);
    }
    const Core::Property& shared = record;
    std::atomic<int> wrong{0};
    const int rounds = Rounds(1'000);
    InThreads([&](int) {
        for (int round = 0; round < rounds; ++round)
        {
            const Core::Property copy(shared);
            for (long long i = 0; i < 20; ++i)
            {
                wrong += shared["child " + std::to_string(i)]["value"].GetInt64() == i ? 0 : 1;
            }
            wrong += copy == shared ? 0 : 1;
            wrong += shared["child 0"]["value"].begin() == shared["child 0"]["value"].end() ? 0 : 1;
        }
    });
    EXPECT_EQ(wrong, 0);
}

// Their groups share memory, which is freed with the last of them.
TEST(CoreThreads, DestroyRecordsOfOneDocument)
{
    std::string document;
    for (int i = 0; i < 32; ++i)
    {
        document += R"({"a":{"b":{"c":1,"d":{"e":"f"}},"g":[{"h":1},{"h":{"i":2}}]}})";
    }
    for (int round = Rounds(500); round != 0; --round)
    {
        std::vector<Core::Property> records(32);
        {
            const auto input = Core::MemoryDataInput::Create(document);
            Core::JsonCursor cursor(*input);
            Core::PropertyReader reader;
            for (Core::Property& record : records)
            {
                ASSERT_TRUE(ParseRecord(cursor, reader));
                Core::PropertySerializer::Load(record, reader);
            }
        }
        InThreads([&](int thread) {
            for (auto i = static_cast<std::size_t>(thread); i < records.size(); i += kThreads)
            {
                records[i].SetChildT("text", std::string(100, 'x'));
                records[i] = Core::Property("gone");
            }
        });
        EXPECT_EQ(records.back(), Core::Property("gone"));
    }
}

} // namespace Zelnor
