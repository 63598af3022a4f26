#include "Media/Jobs/JobFile.h"
#include "Media/Running/FFmpegArguments.h"
#include "Media/Running/FFmpegProcess.h"
#include "Media/Running/Files.h"
#include "Media/Running/TargetFile.h"
#include "Media/Running/Transcode.h"
#include "Tools/zconf/Commands/JobCommands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/ProgressDisplay.h"
#include "Tools/zconf/Console/ShellWords.h"
#include "Tools/zconf/Console/SignalGuard.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

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
};

/// Ends this process by the signal that stopped its work, as the shell expects.
[[noreturn]] void EndBy(int signal)
{
    ::signal(signal, SIG_DFL);
    ::raise(signal);
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

/// Nothing may write over what it reads.
void CheckTarget(const Media::Transcode& transcode, const Options& options)
{
    for (const Media::MediaFile& input : transcode.inputs)
    {
        if (Media::IsSameFile(input.name, transcode.output))
        {
            throw ToolError("The output and the input are the same file: '" + transcode.output + "'");
        }
    }
    Media::CheckReplaceable(transcode.output, options.overwrite);
}

int Print(const std::vector<Media::Transcode>& transcodes, const Options& options)
{
    std::string text;
    for (const Media::Transcode& transcode : transcodes)
    {
        for (const auto& arguments :
             Media::MakeFFmpegArguments(transcode, {transcode.output, "ffmpeg2pass-", options.overwrite}))
        {
            text += ShellLine(Command(options, arguments)) + "\n";
        }
    }
    WriteText(text);
    return kExitSuccess;
}

std::optional<std::int64_t> DurationOf(const Media::Transcode& transcode)
{
    std::optional<std::int64_t> longest;
    for (const Media::MediaFile& input : transcode.inputs)
    {
        longest = std::max(longest, input.duration);
    }
    return longest;
}

void ReportEngine(const std::string& sentence, const std::vector<std::string>& messages)
{
    WriteMessage("zconf: " + sentence + "\n");
    for (const std::string& message : messages)
    {
        WriteMessage("  " + Printable(message) + "\n");
    }
}

enum class Outcome
{
    Done,
    Failed,
    Stopped,
};

Outcome RunPasses(const std::vector<std::vector<std::string>>& passes, const Options& options,
                  ProgressDisplay& display, std::vector<std::string>& messages)
{
    for (std::size_t i = 0; i < passes.size(); ++i)
    {
        display.BeginRun(i);
        Media::EngineResult result = Media::RunEngine(
            Command(options, passes[i]), [&display](const auto& progress) { display.Show(progress); },
            [] { return SignalGuard::Caught() != 0; });
        messages = std::move(result.messages);
        if (SignalGuard::Caught() != 0)
        {
            return Outcome::Stopped;
        }
        if (result.exitCode != 0)
        {
            messages.push_back("(exit code " + std::to_string(result.exitCode) + ")");
            return Outcome::Failed;
        }
    }
    return Outcome::Done;
}

Outcome RunOne(const Media::Transcode& transcode, const Options& options)
{
    Media::TargetFile target(transcode.output, options.overwrite);
    const Media::TemporaryFolder folder;
    const auto passes =
        Media::MakeFFmpegArguments(transcode, {target.GetWorkName(), folder.GetName() + "/pass-", true});
    std::vector<std::string> messages;
    Outcome outcome = Outcome::Done;
    {
        ProgressDisplay display(transcode.output, DurationOf(transcode), passes.size());
        outcome = RunPasses(passes, options, display, messages);
        if (outcome == Outcome::Done)
        {
            target.Commit();
            display.ShowDone();
        }
    }
    if (outcome == Outcome::Failed)
    {
        ReportEngine("ffmpeg failed to make '" + Printable(transcode.output) + "':", messages);
    }
    else if (outcome == Outcome::Done && !messages.empty())
    {
        ReportEngine("note: ffmpeg had something to say about '" + Printable(transcode.output) + "':",
                     messages);
    }
    return outcome;
}

int RunAll(const std::vector<Media::Transcode>& transcodes, const Options& options)
{
    Outcome outcome = Outcome::Done;
    int signal = 0;
    {
        const SignalGuard guard;
        for (const Media::Transcode& transcode : transcodes)
        {
            outcome = RunOne(transcode, options);
            if (outcome != Outcome::Done)
            {
                break;
            }
        }
        signal = SignalGuard::Caught();
    }
    if (outcome == Outcome::Stopped)
    {
        EndBy(signal);
    }
    return outcome == Outcome::Failed ? kExitEngine : kExitSuccess;
}

int Run(const Options& options)
{
    const Media::JobFile job = Media::ReadJob(*OpenInput(options.job), InputName(options.job));
    const std::vector<Media::Transcode> transcodes = Media::ReadTranscodes(job);
    // Everything is asked before anything is begun.
    for (const Media::Transcode& transcode : transcodes)
    {
        Media::MakeFFmpegArguments(transcode, {transcode.output, "", options.overwrite});
        if (!options.dryRun)
        {
            CheckTarget(transcode, options);
        }
    }
    if (options.dryRun)
    {
        return Print(transcodes, options);
    }
    return RunAll(transcodes, options);
}

} // namespace

void AddJobRun(CLI::App& job)
{
    CLI::App* const command = AddCommand(job, "run", "Run a job: make its targets with ffmpeg");
    const auto options = std::make_shared<Options>();
    command->add_option("JOB", options->job, "The job's document")->required();
    command->add_flag("-n,--dry-run", options->dryRun,
                      "Print the commands, for a shell, instead of running them");
    command->add_flag("--overwrite", options->overwrite, "Replace a target that is there already");
    command->add_option("--ffmpeg", options->ffmpeg, "The ffmpeg program (default: the one in PATH)");
    OnRun(*command, [options] { return Run(*options); });
}

} // namespace Zelnor::Tool
