#include "Media/Running/JobPreparation.h"
#include "Media/Running/JobRun.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Commands/VerificationOutput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/ProgressDisplay.h"
#include "Tools/zconf/Console/ShellWords.h"
#include "Tools/zconf/Console/SignalGuard.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"

#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct Options
{
    std::string job;
    std::string ffmpeg = "ffmpeg";
    bool dryRun = false;
    bool overwrite = false;
    std::string verify = "quick";
    bool keepUnverified = false;
    bool json = false;
};

/// Ends this process by the signal that stopped its work, as the shell expects.
[[noreturn]] void EndBy(int signal)
{
    (void)::signal(signal, SIG_DFL);
    (void)::raise(signal);
    // Only when the signal is blocked.
    constexpr int kSignalledExitBase = 128;
    std::_Exit(kSignalledExitBase + signal);
}

std::vector<std::string> Command(const Options& options, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {options.ffmpeg};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

int Print(const Media::JobFile& job, const Options& options)
{
    Media::PreparationOptions preparation;
    preparation.document = job.name;
    std::string text;
    for (const Media::PreparedTranscode& prepared : Media::PrepareJob(*job.graph, preparation))
    {
        for (const Media::FFmpegPass& pass : prepared.passes)
        {
            const Media::PassFiles files = {prepared.transcode.output, "ffmpeg2pass-", options.overwrite};
            text += ShellLine(Command(options, pass.Arguments(files))) + "\n";
        }
    }
    WriteText(text);
    return kExitSuccess;
}

void WriteWithLines(const std::string& sentence, const std::vector<std::string>& lines)
{
    WriteMessage("zconf: " + sentence + "\n");
    for (const std::string& line : lines)
    {
        WriteMessage("  " + Printable(line) + "\n");
    }
}

void ReportDone(const Media::TargetResult& target, ProgressDisplay& display)
{
    display.ShowDone(target.file);
    if (!target.warnings.empty())
    {
        WriteWithLines("note: ffmpeg reported warnings for '" + Printable(target.file) + "':",
                       target.warnings);
    }
    for (const std::string& note : target.notes)
    {
        ReportNote(note);
    }
}

int ReportFailed(const Media::TranscodeFailed& failure)
{
    std::vector<std::string> lines = *boost::get_error_info<Media::TranscodeFailed::TagMessages>(failure);
    lines.push_back("(exit code " +
                    std::to_string(*boost::get_error_info<Media::TranscodeFailed::TagExitCode>(failure)) +
                    ")");
    const std::string file = *boost::get_error_info<Media::MediaException::TagFile>(failure);
    WriteWithLines("ffmpeg failed to make '" + Printable(file) + "':", lines);
    return kExitFFmpeg;
}

int ReportDifferent(const Media::VerificationFailed& failure, std::vector<RunTarget>& targets)
{
    RunTarget target = {*boost::get_error_info<Media::MediaException::TagFile>(failure), "different"};
    target.differences = *boost::get_error_info<Media::VerificationFailed::TagDifferences>(failure);
    std::vector<std::string> lines;
    for (const Media::TargetDifference& difference : target.differences)
    {
        lines.push_back(difference.Sentence());
    }
    WriteWithLines("'" + Printable(target.file) + "' is not what the job says:", lines);
    if (const auto* const kept = boost::get_error_info<Media::VerificationFailed::TagKeptFile>(failure))
    {
        ReportNote("it is kept as '" + *kept + "'");
        target.kept = *kept;
    }
    targets.push_back(std::move(target));
    return kExitDifferent;
}

Media::RunOptions MakeRunOptions(const Media::JobFile& job, const Options& options)
{
    Media::RunOptions run;
    run.ffmpeg = options.ffmpeg;
    run.overwrite = options.overwrite;
    run.document = job.name;
    run.verification = VerificationDepths().at(options.verify);
    run.keepUnverified = options.keepUnverified;
    return run;
}

int RunTargets(const Media::JobFile& job, const Options& options, std::vector<RunTarget>& targets)
{
    Media::RunResult result;
    int signal = 0;
    try
    {
        ProgressDisplay display;
        Media::RunOptions run = MakeRunOptions(job, options);
        run.onProgress = [&display](const Media::RunProgress& progress) { display.Show(progress); };
        run.onTargetDone = [&](const Media::TargetResult& target) {
            ReportDone(target, display);
            targets.push_back({target.file, "done", target.warnings, target.notes});
        };
        const SignalGuard guard(run.cancel);
        result = Media::RunJob(*job.graph, run);
        signal = SignalGuard::Caught();
    }
    catch (const Media::TranscodeFailed& failure)
    {
        return ReportFailed(failure);
    }
    catch (const Media::VerificationFailed& failure)
    {
        return ReportDifferent(failure, targets);
    }
    if (signal != 0 && !result.IsDone())
    {
        EndBy(signal);
    }
    return kExitSuccess;
}

int Run(const Options& options)
{
    const Media::JobFile job = OpenJob(options.job);
    if (options.dryRun)
    {
        return Print(job, options);
    }
    std::vector<RunTarget> targets;
    const int exitCode = RunTargets(job, options, targets);
    if (options.json && exitCode != kExitFFmpeg)
    {
        WriteRunJson(targets);
    }
    return exitCode;
}

} // namespace

void AddJobRunCommand(CLI::App& job)
{
    CLI::App* const command = AddCommand(job, "run", "Run a job: make its output files with ffmpeg");
    const auto options = std::make_shared<Options>();
    AddJobArgument(*command, options->job);
    command->add_flag("-n,--dry-run", options->dryRun,
                      "Print the ffmpeg commands, quoted for a shell, instead of running them");
    command->add_flag("--overwrite", options->overwrite, "Replace output files that exist");
    command->add_option("--ffmpeg", options->ffmpeg, "The ffmpeg program (default: the one in PATH)")
        ->type_name("FILE");
    AddVerifyOption(*command, options->verify);
    command->add_flag("--keep-unverified", options->keepUnverified,
                      "Keep an output file that is not what the job says beside its place, as "
                      "\"out.unverified.mp4\"");
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return Run(*options); });
}

} // namespace Zelnor::Tool
