#include "Tools/zconf/Commands/JobRunning.h"

#include "Media/Running/JobPreparation.h"
#include "Media/Running/JobRun.h"
#include "Media/Running/ShellWords.h"
#include "Media/Running/SizeEstimate.h"
#include "Tools/zconf/Commands/VerificationOutput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/ProgressDisplay.h"
#include "Tools/zconf/Console/ProgressJson.h"
#include "Tools/zconf/Console/SignalGuard.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"
#include "Tools/zconf/Console/TimeText.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

void WriteWithLines(const std::string& sentence, const std::vector<std::string>& lines)
{
    WriteMessage("zconf: " + sentence + "\n");
    for (const std::string& line : lines)
    {
        WriteMessage("  " + Printable(line) + "\n");
    }
}

/// Tells how a run goes: to people on standard error, or to a program on standard output.
class RunReport
{
public:
    explicit RunReport(bool isJson) : m_isJson(isJson) {}

    void Progress(const Media::RunProgress& progress)
    {
        m_isJson ? WriteText(ProgressJson(progress)) : m_display.Show(progress);
    }

    void Done(const Media::TargetResult& target)
    {
        m_targets.push_back({target.file, "done", target.warnings, target.notes});
        if (m_isJson)
        {
            WriteText(DoneJson(target));
            return;
        }
        m_display.ShowDone(target);
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

    void Cancelled(const Media::RunResult& result)
    {
        for (const Media::TargetResult& target : result.targets)
        {
            if (m_isJson && target.outcome == Media::TargetResult::Outcome::Cancelled)
            {
                WriteText(CancelledJson(target));
            }
        }
    }

    int Failed(const Media::TranscodeFailed& failure)
    {
        m_display.Clear();
        std::vector<std::string> lines = *boost::get_error_info<Media::TranscodeFailed::TagMessages>(failure);
        const std::string file = *boost::get_error_info<Media::MediaException::TagFile>(failure);
        const int exitCode = *boost::get_error_info<Media::TranscodeFailed::TagExitCode>(failure);
        RunTarget target = {file, "failed"};
        target.exitCode = exitCode;
        target.messages = lines;
        m_targets.push_back(std::move(target));
        if (m_isJson)
        {
            WriteText(FailedJson(file, lines));
        }
        lines.push_back("(exit code " + std::to_string(exitCode) + ")");
        WriteWithLines("ffmpeg failed to make '" + Printable(file) + "':", lines);
        return kExitFFmpeg;
    }

    int Different(const Media::VerificationFailed& failure)
    {
        m_display.Clear();
        RunTarget target = {*boost::get_error_info<Media::MediaException::TagFile>(failure), "different"};
        target.differences = *boost::get_error_info<Media::VerificationFailed::TagDifferences>(failure);
        std::vector<std::string> lines;
        for (const Media::TargetDifference& difference : target.differences)
        {
            lines.push_back(difference.Sentence());
        }
        if (m_isJson)
        {
            WriteText(FailedJson(target.file, lines));
        }
        WriteWithLines("'" + Printable(target.file) + "' is not what the job says:", lines);
        if (const auto* const kept = boost::get_error_info<Media::VerificationFailed::TagKeptFile>(failure))
        {
            ReportNote("it is kept as '" + *kept + "'");
            target.kept = *kept;
        }
        m_targets.push_back(std::move(target));
        return kExitDifferent;
    }

    const std::vector<RunTarget>& Targets() const { return m_targets; }

private:
    bool m_isJson;
    ProgressDisplay m_display;
    std::vector<RunTarget> m_targets;
};

void ReportLoss(const Media::JobFault& loss)
{
    const std::string& document = loss.place.file;
    ReportNote((document.empty() ? "" : document + ": ") + loss.Sentence());
}

Media::RunOptions OptionsOf(const Media::JobFile& job, const RunSettings& settings)
{
    Media::RunOptions run;
    run.ffmpeg = settings.ffmpeg;
    run.overwrite = settings.overwrite;
    run.strict = settings.strict;
    if (settings.tellsLosses)
    {
        run.onLoss = &ReportLoss;
    }
    run.document = job.name;
    run.verification = VerificationDepths().at(settings.verify);
    run.keepUnverified = settings.keepUnverified;
    run.scratch = settings.scratch;
    return run;
}

/// Runs the job as far as it goes. \returns the exit code
int Run(const Media::JobFile& job, const RunSettings& settings, RunReport& report)
{
    Media::RunResult result;
    int signal = 0;
    try
    {
        Media::RunOptions run = OptionsOf(job, settings);
        run.onProgress = [&report](const Media::RunProgress& progress) { report.Progress(progress); };
        run.onTargetDone = [&report](const Media::TargetResult& target) { report.Done(target); };
        const SignalGuard guard(run.cancel);
        result = Media::RunJob(*job.graph, run);
        signal = SignalGuard::Caught();
    }
    catch (const Media::TranscodeFailed& failure)
    {
        return report.Failed(failure);
    }
    catch (const Media::VerificationFailed& failure)
    {
        return report.Different(failure);
    }
    report.Cancelled(result);
    if (signal != 0 && !result.IsDone())
    {
        EndBy(signal);
    }
    return kExitSuccess;
}

} // namespace

void AddScratchOption(CLI::App& command, std::string& folder)
{
    command
        .add_option(
            "--scratch", folder,
            "A folder in which ffmpeg writes, such as one on the disk of a cluster's node; a finished "
            "and verified file is copied from there to its place, where it appears as a whole "
            "(default: beside that place)")
        ->type_name("FOLDER");
}

void AddRunOptions(CLI::App& command, RunSettings& settings)
{
    AddStrictFlag(command, settings.strict);
    command.add_flag("--overwrite", settings.overwrite, "Replace output files that exist");
    command.add_option("--ffmpeg", settings.ffmpeg, "The ffmpeg program (default: the one in PATH)")
        ->type_name("FILE");
    AddProgressOption(command, settings.progress);
    AddVerifyOption(command, settings.verify);
    command.add_flag("--keep-unverified", settings.keepUnverified,
                     "Keep an output file that is not what the job says beside its place, as "
                     "\"out.unverified.mp4\"");
    AddScratchOption(command, settings.scratch);
    AddJsonFlag(command, settings.json);
}

int RunTargets(const Media::JobFile& job, const RunSettings& settings)
{
    const bool isProgressJson = IsProgressJson(settings.progress, settings.json);
    RunReport report(isProgressJson);
    const int exitCode = Run(job, settings, report);
    if (settings.json)
    {
        WriteRunJson(report.Targets());
    }
    return exitCode;
}

void PrintCommands(const Media::JobFile& job, const RunSettings& settings)
{
    Media::PreparationOptions preparation;
    preparation.document = job.name;
    preparation.strict = settings.strict;
    std::string text;
    for (const Media::PreparedTranscode& prepared : Media::PrepareJob(*job.graph, preparation))
    {
        if (settings.tellsLosses)
        {
            std::for_each(prepared.losses.begin(), prepared.losses.end(), &ReportLoss);
        }
        for (const auto& command : CommandsOf(prepared, settings.ffmpeg, settings.overwrite))
        {
            text += Media::ShellLine(command) + "\n";
        }
        if (const auto size = Media::EstimateSize(prepared.transcode))
        {
            ReportNote("'" + prepared.transcode.output + "' will have about " +
                       SizeText(static_cast<std::uintmax_t>(*size)));
        }
    }
    WriteText(text);
}

} // namespace Zelnor::Tool
