#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Commands/JobRunning.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"

#include <memory>
#include <string>

namespace Zelnor::Tool
{

namespace
{

struct JobRunArguments
{
    std::string job;
    bool dryRun = false;
    RunSettings run;
};

int RunJobRun(const JobRunArguments& options)
{
    const Media::JobFile job = OpenJob(options.job);
    if (options.dryRun)
    {
        PrintCommands(job, options.run);
        return kExitSuccess;
    }
    return RunTargets(job, options.run);
}

} // namespace

void AddJobRunCommand(CLI::App& job)
{
    CLI::App* const command = AddCommand(job, "run", "Run a job: make its output files with ffmpeg");
    const auto options = std::make_shared<JobRunArguments>();
    AddJobArgument(*command, options->job);
    command->add_flag("-n,--dry-run", options->dryRun,
                      "Print the ffmpeg commands, quoted for a shell, instead of running them, and how large "
                      "the output files will be");
    AddRunOptions(*command, options->run);
    OnRun(*command, [options] { return RunJobRun(*options); });
}

} // namespace Zelnor::Tool
