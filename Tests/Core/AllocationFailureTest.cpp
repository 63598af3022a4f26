// What happens to an object when memory runs out in the middle of an operation. This source replaces the test
// program's `operator new`.

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace
{

constexpr long kUnlimited = std::numeric_limits<long>::max();

std::atomic<long> g_allocationsLeft{kUnlimited};

} // namespace

// Not inlined: the compiler would see an object made by `new` go to `free`, and warn.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    if (g_allocationsLeft != kUnlimited && g_allocationsLeft-- <= 0)
    {
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
    {
        return memory;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace Zelnor::Core
{

namespace
{

const std::string kLong = "a text that is too long to be kept in the string itself";

/// Runs `action` with `allocations` of them succeeding.
/// \returns whether it came to its end
template <class Action>
bool RunWith(long allocations, Action&& action)
{
    g_allocationsLeft = allocations;
    try
    {
        action();
    }
    catch (const std::bad_alloc&)
    {
        g_allocationsLeft = kUnlimited;
        return false;
    }
    catch (...)
    {
        g_allocationsLeft = kUnlimited;
        throw;
    }
    g_allocationsLeft = kUnlimited;
    return true;
}

Property LongSample()
{
    Property group(kLong + " group");
    group.CreateChildT("number", 5LL);
    group.CreateChildT(kLong, kLong);
    group.SetChild("inner").CreateChildT(kLong, Property::Ratio(1, 2));
    group["inner"].CreateChildT("text", kLong);
    return group;
}

/// Lets the first, second, ... allocation of `operation` fail until it succeeds, each time on a fresh record,
/// and expects that a failure leaves no trace.
/// \returns how many times it failed
long ExpectAllOrNothing(const std::function<void(Property&)>& operation)
{
    const Property before = LongSample();
    Property after = LongSample();
    operation(after);
    for (long n = 0; n < 1000; ++n)
    {
        Property property = LongSample();
        if (RunWith(n, [&] { operation(property); }))
        {
            EXPECT_EQ(property, after);
            return n;
        }
        EXPECT_EQ(property, before) << "after failure of allocation " << n;
    }
    ADD_FAILURE() << "never succeeded";
    return 0;
}

} // namespace

TEST(AllocationFailure, LeavesThePropertyAsItWas)
{
    const Property other = [] {
        Property made = LongSample();
        made.Add(LongSample());
        return made;
    }();
    EXPECT_GT(ExpectAllOrNothing([&](Property& p) { p = other; }), 8);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p = p["inner"]; }), 2);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p["inner"] = p; }), 5);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p = kLong; }), 0);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p["inner"] = p[kLong].GetString(); }), 0);
    EXPECT_GT(ExpectAllOrNothing([&](Property& p) { p.Add(other); }), 8);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p.Add(p); }), 5);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p.SetChild(kLong + "!"); }), 1);
    EXPECT_EQ(ExpectAllOrNothing([](Property& p) { p.SetChild(kLong); }), 0); // it needs no memory
    EXPECT_GT(ExpectAllOrNothing([&](Property& p) { p.SetChild(kLong, other); }), 8);
    EXPECT_GT(ExpectAllOrNothing([&](Property& p) { p.SetChild(kLong + "!", other); }), 8);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p.SetChild("inner", p); }), 5);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p.CreateChildT(kLong, kLong); }), 1);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p.SetChildT(kLong + "!", kLong); }), 2);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p.SetChildT(kLong, kLong); }), 0);
    EXPECT_GT(ExpectAllOrNothing([](Property& p) { p.SetChildT("number", Property::Ratio(1, 3)); }), -1);
}

TEST(AllocationFailure, MovingASubtreeInIsAllOrNothingForBoth)
{
    for (long n = 0;; ++n)
    {
        ASSERT_LT(n, 100);
        Property target = LongSample();
        Property value = LongSample();
        if (RunWith(n, [&] { target.SetChild(kLong + " new", std::move(value)); }))
        {
            EXPECT_EQ(target.Count(), 4u);
            EXPECT_EQ(value.Count(), 0u);
            EXPECT_GT(n, 0);
            break;
        }
        EXPECT_EQ(target, LongSample());
        EXPECT_EQ(LongSample(), value);
    }
}

TEST(AllocationFailure, NeedsNoMemoryToMoveAssignAndDestroy)
{
    Property target = LongSample();
    Property source = LongSample();
    EXPECT_TRUE(RunWith(0, [&] {
        target = std::move(source);
        const Property taken(std::move(target));
        EXPECT_TRUE(taken.ChildExists(kLong));
    }));
}

TEST(AllocationFailure, ComparesAndReadsEverydayRecordsWithoutMemory)
{
    const Property one = LongSample();
    const Property two = LongSample();
    bool equal = false;
    EXPECT_TRUE(
        RunWith(0, [&] { equal = one == two && one["inner"].Count() == 2 && one.ChildExists(kLong); }));
    EXPECT_TRUE(equal);
}

TEST(AllocationFailure, OfACopyOfADeepTreeIsClearedUpWithoutRecursion)
{
    constexpr int kDepth = 200000;
    Property chain("g");
    Property* innermost = &chain;
    for (int i = 1; i < kDepth; ++i)
    {
        innermost = &innermost->SetChild("g");
    }
    EXPECT_FALSE(RunWith(kDepth - 10, [&] { const Property copy(chain); }));
    Property target("target", 1);
    EXPECT_FALSE(RunWith(kDepth - 10, [&] { target = chain; }));
    EXPECT_EQ(target, Property("target", 1));
}

TEST(AllocationFailure, OfLoadLeavesTheTargetAsItWas)
{
    rapidjson::Document document;
    const Property record = LongSample();
    PropertySerializer::Save(record, document, document.GetAllocator());
    for (long n = 0;; ++n)
    {
        ASSERT_LT(n, 1000);
        Property target("target", 1);
        if (RunWith(n, [&] { PropertySerializer::Load(target, document); }))
        {
            EXPECT_EQ(target, record);
            EXPECT_GT(n, 5);
            break;
        }
        EXPECT_EQ(target, Property("target", 1));
    }
}

TEST(AllocationFailure, OfSaveLeavesTheValueAsItWas)
{
    Property record = LongSample();
    for (int i = 0; i < 20; ++i)
    {
        record.CreateChildT("child " + std::to_string(i), 1LL);
    }
    rapidjson::Document document;
    document.SetInt(7);
    // The table of names of a large group.
    ASSERT_FALSE(RunWith(0, [&] { PropertySerializer::Save(record, document, document.GetAllocator()); }));
    EXPECT_EQ(document.GetInt(), 7);
}

} // namespace Zelnor::Core
