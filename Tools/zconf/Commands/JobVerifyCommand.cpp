#include "Media/Running/JobVerification.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Commands/VerificationOutput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/ProgressDisplay.h"
#include "Tools/zconf/Console/ProgressJson.h"
#include "Tools/zconf/Console/Terminal.h"
#include "Tools/zconf/Console/Text.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct JobVerifyArguments
{
    std::string job;
    std::string ffmpeg = "ffmpeg";
    bool full = false;
    bool quality = false;
    bool json = false;
    std::string progress; ///< "json": progress for programs on standard output
};

std::string QualityText(const Media::VideoQuality& quality)
{
    constexpr int kSimilarityDigits = 4;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << quality.place.TextInDocument() << ": PSNR " << std::fixed << std::setprecision(2);
    quality.psnr ? text << *quality.psnr << " dB" : text << "infinite";
    text << ", SSIM " << std::setprecision(kSimilarityDigits) << quality.ssim;
    return text.str();
}

void WriteTarget(const Media::TargetVerification& target)
{
    const Painter paint = Painter::ForStandardOutput();
    const std::size_t count = target.differences.size();
    std::string text = Printable(target.file) + ": " +
                       (count == 0 ? paint(Style::Good, target.notes.empty() ? "verified" : "no differences")
                                   : paint(Style::Bad, Count(count, "difference"))) +
                       "\n";
    for (const Media::TargetDifference& difference : target.differences)
    {
        text += "  " + Printable(difference.Sentence()) + "\n";
    }
    for (const Media::VideoQuality& quality : target.quality)
    {
        text += "  " + QualityText(quality) + "\n";
    }
    WriteText(text);
    for (const std::string& note : target.notes)
    {
        ReportNote(note);
    }
}

void WriteEvent(const Media::TargetVerification& target) { WriteText(VerifiedJson(target)); }

/// Tells how far it is, where everything is decoded: to people on standard error, or to a program on standard
/// output.
std::vector<Media::TargetVerification> Verify(const Conf::ITranscodingMetaGraph& job,
                                              Media::VerifyOptions options, bool isProgressJson)
{
    ProgressDisplay display;
    options.onProgress = [&display, isProgressJson](const Media::RunProgress& progress) {
        isProgressJson ? WriteText(ProgressJson(progress)) : display.Show(progress);
    };
    return Media::VerifyJob(job, options);
}

int RunJobVerify(const JobVerifyArguments& options)
{
    const Media::JobFile job = OpenJob(options.job);
    Media::VerifyOptions verify;
    verify.depth = options.full ? Media::VerificationDepth::Full : Media::VerificationDepth::Quick;
    verify.quality = options.quality;
    verify.ffmpeg = options.ffmpeg;
    verify.document = job.name;
    const bool isProgressJson = IsProgressJson(options.progress, options.json);
    const std::vector<Media::TargetVerification> targets = Verify(*job.graph, verify, isProgressJson);
    if (options.json)
    {
        WriteVerificationJson(targets);
    }
    else
    {
        std::for_each(targets.begin(), targets.end(), isProgressJson ? &WriteEvent : &WriteTarget);
    }
    const bool isVerified = std::all_of(targets.begin(), targets.end(),
                                        [](const auto& target) { return target.differences.empty(); });
    return isVerified ? kExitSuccess : kExitDifferent;
}

} // namespace

void AddJobVerifyCommand(CLI::App& job)
{
    CLI::App* const command =
        AddCommand(job, "verify",
                   "Compare the output files of a job with it: exit code 0 if they are what it says, else 4 "
                   "with every difference");
    const auto options = std::make_shared<JobVerifyArguments>();
    AddJobArgument(*command, options->job);
    command->add_flag("--full", options->full,
                      "Decode everything, not only the first, middle and last seconds");
    command->add_flag(
        "--quality", options->quality,
        "Compare the images of each video with its source's, or with those of the part that the job takes: "
        "PSNR and SSIM");
    command
        ->add_option("--ffmpeg", options->ffmpeg,
                     "The ffmpeg program that --quality runs (default: the one in PATH)")
        ->type_name("FILE");
    AddProgressOption(*command, options->progress);
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunJobVerify(*options); });
}

} // namespace Zelnor::Tool
