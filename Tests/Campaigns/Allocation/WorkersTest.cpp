// Threads that cannot be started, which no public operation shows.

#include "Media/Batch/Workers.h"

#include "Tests/Campaigns/Allocation/FailingMalloc.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <new>

namespace Zelnor::Testing
{

namespace
{

TEST(Workers, DoTheWorkOfThoseForWhichMemoryIsMissing)
{
    constexpr int kSteps = 50;
    std::size_t refusals = 0;
    for (std::size_t failing = 0;; ++failing)
    {
        std::atomic<int> steps{0};
        bool hasWorked = true;
        FailingMalloc memory(failing, Shortage::Moment, Whose::Ours);
        try
        {
            Media::RunWorkers(4, [&steps] { return ++steps < kSteps; });
        }
        catch (const std::bad_alloc&)
        {
            hasWorked = false;
        }
        memory.Stop();
        if (memory.Failed() == 0)
        {
            EXPECT_GE(failing, 4U);
            break;
        }
        refusals += hasWorked ? 0U : 1U;
        EXPECT_EQ(hasWorked, steps >= kSteps) << failing;
    }
    // Only the list of the threads is needed.
    EXPECT_LE(refusals, 2U);
}

} // namespace

} // namespace Zelnor::Testing
