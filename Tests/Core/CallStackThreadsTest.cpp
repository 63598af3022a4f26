#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Property.h"

#include "Tests/Support/Campaign.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace Zelnor::Core
{
namespace
{

constexpr int kThreads = 4;

/// Throws from a depth, so that the threads name different addresses at the same time.
std::string CallStackFrom(int depth, const Property& property)
{
    if (depth > 0)
    {
        std::string text = CallStackFrom(depth - 1, property);
        text += '\n';
        return text;
    }
    try
    {
        return property["missing"].GetName();
    }
    catch (const PropertyException& e)
    {
        return *boost::get_error_info<TagCallStack>(e);
    }
}

TEST(CallStackThreads, ExceptionsAreThrownFromSeveralThreads)
{
    const Property property("group");
    std::vector<std::string> callStacks(kThreads);
    std::vector<std::thread> threads;
    const int rounds = std::max(static_cast<int>(Testing::CampaignRuns(100'000) / 500), 1);
    for (std::size_t i = 0; i < kThreads; ++i)
    {
        threads.emplace_back([&property, rounds, &callStack = callStacks[i]] {
            for (int round = 0; round < rounds; ++round)
            {
                callStack = CallStackFrom(round % 5, property);
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (const std::string& callStack : callStacks)
    {
        EXPECT_THAT(callStack, ::testing::HasSubstr("Zelnor::Core::Property::operator[]"));
    }
}

} // namespace
} // namespace Zelnor::Core
