#include "Media/Batch/SlurmPrograms.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelnor::Media
{
namespace
{

std::string FaultOf(const std::string& option)
{
    return Testing::ExpectThrow<RunException>([&option] {
               CheckOptions({"--partition=long", option});
           })
        .description.value_or("");
}

} // namespace

TEST(SlurmOptions, ThatSbatchHasPass)
{
    EXPECT_NO_THROW(CheckOptions({}));
    EXPECT_NO_THROW(
        CheckOptions({"--partition=long", "--no-requeue", "--time=1:00", "--ntasks=4", "--comment=x"}));
}

TEST(SlurmOptions, ThatAreSetForTheBatchAreRefused)
{
    for (const char* const option :
         {"--array=1-3", "--job-name=x", "--output=x", "--chdir=/", "--wrap=rm", "--parsable", "--wait",
          "--test-only", "--help", "--version", "--clusters=all"})
    {
        EXPECT_EQ(FaultOf(option), std::string(option) + ": this option of sbatch is set for the batch");
    }
}

TEST(SlurmOptions, ThatAreSetForTheBatchAreRefusedInAnySpellingThatSbatchTakes)
{
    for (const char* const option : {"--wra=rm", "--w=rm", "--arr", "--job=x", "--tes"})
    {
        EXPECT_EQ(FaultOf(option), std::string(option) + ": this option of sbatch is set for the batch");
    }
}

TEST(SlurmOptions, ThatAreOtherWordsAreRefused)
{
    for (const char* const option : {"", "long", "-", "--", "/bin/sh", "-plong", "-HW"})
    {
        EXPECT_EQ(FaultOf(option), "'" + std::string(option) +
                                       "' is not a long option of sbatch; give it and its value as one word, "
                                       "as in --partition=long");
    }
}

} // namespace Zelnor::Media
