#include "Tests/Support/Campaign.h"

#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

namespace Zelnor::Testing
{

namespace
{

/// Leaves the variables as they were, since a campaign may be running.
class CampaignTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Keep(m_runs, "ZELNOR_CAMPAIGN_RUNS");
        Keep(m_seed, "ZELNOR_CAMPAIGN_SEED");
    }
    void TearDown() override
    {
        Restore(m_runs, "ZELNOR_CAMPAIGN_RUNS");
        Restore(m_seed, "ZELNOR_CAMPAIGN_SEED");
    }

private:
    static void Keep(std::optional<std::string>& value, const char* name)
    {
        if (const char* const text = std::getenv(name))
        {
            value = text;
            ::unsetenv(name);
        }
    }

    static void Restore(const std::optional<std::string>& value, const char* name)
    {
        value ? ::setenv(name, value->c_str(), 1) : ::unsetenv(name);
    }

    std::optional<std::string> m_runs;
    std::optional<std::string> m_seed;
};

TEST_F(CampaignTest, IsQuickUnlessTheEnvironmentSaysHowLong)
{
    EXPECT_EQ(CampaignRuns(10), 10u);
    EXPECT_EQ(CampaignSeed(0), 0u);
    ::setenv("ZELNOR_CAMPAIGN_RUNS", "1000000", 1);
    ::setenv("ZELNOR_CAMPAIGN_SEED", "18446744073709551615", 1);
    EXPECT_EQ(CampaignRuns(10), 1'000'000u);
    EXPECT_EQ(CampaignSeed(0), std::numeric_limits<std::uint64_t>::max());
}

TEST_F(CampaignTest, RefusesASizeThatIsNotANumber)
{
    for (const char* const text : {"", "1e6", "-1", " 1", "0x10", "18446744073709551616"})
    {
        ::setenv("ZELNOR_CAMPAIGN_RUNS", text, 1);
        EXPECT_EQ(ExpectThrow<std::invalid_argument>([] { CampaignRuns(1); }).what,
                  "ZELNOR_CAMPAIGN_RUNS: expected a number, found '" + std::string(text) + "'");
    }
    ::setenv("ZELNOR_CAMPAIGN_RUNS", "0", 1);
    EXPECT_EQ(ExpectThrow<std::invalid_argument>([] { CampaignRuns(1); }).what,
              "ZELNOR_CAMPAIGN_RUNS: expected at least 1");
}

TEST_F(CampaignTest, TriesSomethingHoweverSmallTheShareIs)
{
    EXPECT_EQ(QuickRuns(1), 1u);
    EXPECT_GE(QuickRuns(100), 20u);
    EXPECT_LE(QuickRuns(100), 100u);
}

} // namespace

} // namespace Zelnor::Testing
