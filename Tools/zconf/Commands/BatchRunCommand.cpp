#include "Media/Batch/BatchRun.h"
#include "Tools/zconf/Commands/BatchFailure.h"
#include "Tools/zconf/Commands/BatchSlurm.h"
#include "Tools/zconf/Commands/BatchText.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobRunning.h"
#include "Tools/zconf/Commands/VerificationOutput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/SignalGuard.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/StatusLine.h"
#include "Tools/zconf/Console/Text.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

using Media::BatchResult;

struct BatchRunArguments
{
    std::string batch;
    std::string engine = "local";
    unsigned int parallel = 0; ///< 0: one here, as many as the cluster lets there
    unsigned int retries = 0;
    unsigned int only = 0; ///< the number of the job to run; 0: all
    bool keepGoing = false;
    bool failFast = false;
    bool missing = false;
    bool overwrite = false;
    bool strict = false;
    bool keepUnverified = false;
    bool json = false;
    std::string ffmpeg = "ffmpeg";
    std::string verify = "quick";
    std::string scratch;
    std::vector<std::string> sbatch;
    bool wait = false;
};

Media::BatchRunOptions OptionsOf(const BatchRunArguments& options)
{
    Media::BatchRunOptions run;
    run.job.ffmpeg = options.ffmpeg;
    run.job.overwrite = options.overwrite;
    run.job.strict = options.strict;
    run.job.verification = VerificationDepths().at(options.verify);
    run.job.keepUnverified = options.keepUnverified;
    run.job.scratch = options.scratch;
    run.parallel = std::max(options.parallel, 1U);
    run.retries = options.retries;
    run.failFast = options.failFast;
    run.choice.missing = options.missing;
    run.choice.changed = options.missing && options.overwrite;
    return run;
}

void RunAll(const BatchRunArguments& options, const Media::BatchRunOptions& run)
{
    const Media::BatchStatus status = Media::RunBatch(options.batch, run);
    if (options.json)
    {
        WriteBatchJson(Media::ReadBatch(options.batch), status);
    }
    if (StatusLine().IsTerminal())
    {
        WriteMessage("zconf: " + Printable(options.batch) + ": " + BatchSummaryText(status) + "\n");
    }
}

/// The command line of a task, which has the job's number added.
std::vector<std::string> TaskCommand(const BatchRunArguments& options, const std::string& folder)
{
    std::vector<std::string> command = {OwnProgram(), "batch", "run", folder};
    const auto add = [&command](bool isGiven, std::initializer_list<std::string> words) {
        command.insert(command.end(), isGiven ? words.begin() : words.end(), words.end());
    };
    add(options.retries > 0, {"--retry", std::to_string(options.retries)});
    add(options.missing, {"--missing"});
    add(options.overwrite, {"--overwrite"});
    add(options.strict, {"--strict"});
    add(options.keepUnverified, {"--keep-unverified"});
    // A task runs elsewhere, so that a name with a folder is made absolute.
    if (!options.scratch.empty())
    {
        add(true, {"--scratch", std::filesystem::absolute(options.scratch).string()});
    }
    const bool isPath = options.ffmpeg.find('/') != std::string::npos;
    add(true, {"--ffmpeg", isPath ? std::filesystem::absolute(options.ffmpeg).string() : options.ffmpeg,
               "--verify", options.verify});
    return command;
}

int RunOnSlurm(const BatchRunArguments& options)
{
    if (options.failFast || options.only != 0)
    {
        throw ToolError(std::string(options.failFast ? "--fail-fast" : "--only") +
                        " cannot be combined with --engine slurm");
    }
    const Media::Batch batch = Media::ReadBatch(options.batch);
    Media::SlurmOptions slurm;
    slurm.command = TaskCommand(options, batch.base);
    slurm.sbatch = options.sbatch;
    slurm.parallel = options.parallel;
    slurm.choice = OptionsOf(options).choice;
    return RunBatchOnSlurm(batch, slurm, options.wait, options.json);
}

int RunBatchRun(const BatchRunArguments& options)
{
    if (options.engine == "slurm")
    {
        return RunOnSlurm(options);
    }
    if (options.wait || !options.sbatch.empty())
    {
        throw ToolError(std::string(options.wait ? "--wait" : "--slurm") + " needs --engine slurm");
    }
    Media::BatchRunOptions run = OptionsOf(options);
    StatusLine line;
    FailureCode code;
    run.onProgress = [&line](const Media::BatchProgress& progress) {
        line.Show(BatchProgressText(progress));
    };
    run.onJobEnd = [&](const Media::BatchJob& job, const BatchResult& result) {
        if (result.state == BatchResult::State::Failed)
        {
            code.Add(result.failure);
            line.Clear();
            ReportFailure(BatchFailureText(job, result.reason));
        }
    };
    const SignalGuard guard(run.job.cancel);
    if (options.only == 0)
    {
        RunAll(options, run);
    }
    else
    {
        Media::RunBatchJob(options.batch, options.only, run);
        if (options.json)
        {
            const Media::Batch batch = Media::ReadBatch(options.batch);
            WriteBatchJson(batch, Media::ReadBatchStatus(batch));
        }
    }
    line.Clear();
    if (SignalGuard::Caught() != 0)
    {
        EndBy(SignalGuard::Caught());
    }
    return code.Get();
}

} // namespace

void AddBatchRunCommand(CLI::App& batch)
{
    CLI::App* const command = AddCommand(batch, "run", "Run the jobs of a batch that are not done");
    const auto options = std::make_shared<BatchRunArguments>();
    constexpr int kMostParallel = 256;
    constexpr int kMostRetries = 100;
    AddBatchArgument(*command, options->batch);
    command
        ->add_option("-j,--jobs", options->parallel,
                     "How many jobs run at once (default: 1 here, since encoders of video use several "
                     "processors themselves; all that the cluster lets there)")
        ->type_name("NUMBER")
        ->check(CLI::Range(1, kMostParallel));
    command
        ->add_option("--retry", options->retries, "How often a job that failed is tried again (default: 0)")
        ->type_name("NUMBER")
        ->check(CLI::Range(0, kMostRetries));
    CLI::Option* const keepGoing =
        command->add_flag("--keep-going", options->keepGoing, "Go on when a job fails (the default)");
    command->add_flag("--fail-fast", options->failFast, "Begin no other job when one has failed")
        ->excludes(keepGoing);
    command->add_flag("--missing", options->missing,
                      "Run jobs again that were done and whose output is not there any more; with "
                      "--overwrite, also those whose output was changed");
    command
        ->add_option("--only", options->only,
                     "Run only the job of this number; several such runs may go on at once")
        ->type_name("NUMBER")
        ->check(CLI::Range(1U, Media::Batch::kMostJobs));
    command
        ->add_option("--engine", options->engine,
                     "What runs the jobs: local, this machine (the default), or slurm, the cluster that "
                     "it belongs to, whose nodes see the batch's folder under the same name")
        ->type_name("ENGINE")
        ->check(CLI::IsMember({"local", "slurm"}));
    command->add_flag("--overwrite", options->overwrite, "Replace output files that exist");
    AddStrictFlag(*command, options->strict);
    command->add_option("--ffmpeg", options->ffmpeg, "The ffmpeg program (default: the one in PATH)")
        ->type_name("FILE");
    AddVerifyOption(*command, options->verify);
    command->add_flag("--keep-unverified", options->keepUnverified,
                      "Keep an output file that is not what the job says beside its place, as "
                      "\"out.unverified.mp4\"");
    AddScratchOption(*command, options->scratch);
    AddJsonFlag(*command, options->json);
    command
        ->add_option("--slurm", options->sbatch,
                     "An option for sbatch, as in --slurm=--partition=long; it may be given several times")
        ->type_name("OPTION")
        ->expected(1)
        ->take_all();
    command->add_flag("--wait", options->wait,
                      "Wait until Slurm has run all jobs; interrupted, cancel those that it has not run");
    OnRun(*command, [options] { return RunBatchRun(*options); });
}

} // namespace Zelnor::Tool
