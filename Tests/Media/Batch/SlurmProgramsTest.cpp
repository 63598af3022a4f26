#include "Media/Batch/SlurmPrograms.h"

#include "Media/MediaException.h"
#include "Media/Running/Subprocess.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
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

bool IsRefused(const std::string& option)
{
    try
    {
        CheckOptions({option});
        return false;
    }
    catch (const RunException&)
    {
        return true;
    }
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
          "--test-only", "--help", "--version", "--clusters=all", "--quiet"})
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

TEST(SlurmOptions, OfTheInstalledSbatchAreRefusedOnlyWhereTheBatchSetsThem)
{
    const Testing::TemporaryFolder folder;
    const std::string settings = (folder / "slurm.conf").string();
    Testing::WriteFile(settings, "ClusterName=x\nSlurmctldHost=localhost\nNodeName=x\n");
    const FilterResult help = RunFilter({"env", "SLURM_CONF=" + settings, "sbatch", "--help"}, "");
    if (help.exitCode != 0)
    {
        GTEST_SKIP() << "sbatch does not tell its options: " << help.messages;
    }
    const std::regex pattern("--[a-z][-a-z0-9]*");
    std::set<std::string> accepted;
    std::set<std::string> refused;
    for (std::sregex_iterator option(help.output.begin(), help.output.end(), pattern), end; option != end;
         ++option)
    {
        (IsRefused(option->str()) ? refused : accepted).insert(option->str());
    }

    EXPECT_EQ(refused,
              (std::set<std::string>{"--array", "--chdir", "--clusters", "--help", "--job-name", "--output",
                                     "--parsable", "--quiet", "--usage", "--version", "--wait", "--wrap"}));
    EXPECT_GT(accepted.size(), 50U);
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
