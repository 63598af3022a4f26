#include "Media/Running/JobVerification.h"

#include "Media/FileKind.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Running/QualityMeasurement.h"
#include "Media/Running/TargetExpectation.h"
#include "Media/Running/TranscodeContents.h"
#include "Media/Running/VerificationProgress.h"
#include "Media/Verifying/FileVerification.h"

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// Empty when the target can be verified.
std::string WhyNotVerified(const std::string& name)
{
    struct stat status = {};
    const bool isOther = ::stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
    return isOther ? "'" + name + "' cannot be verified, because it is " + FileKindText(status.st_mode) : "";
}

/// \param progress  what is told of the target's position among the others
TargetVerification VerifyTarget(const Transcode& transcode, const TranscodeCommand& command,
                                const VerifyOptions& options, RunProgress progress)
{
    const std::string reason = WhyNotVerified(transcode.output);
    if (!reason.empty())
    {
        TargetVerification unverified;
        unverified.file = transcode.output;
        unverified.notes = {reason};
        return unverified;
    }
    FileVerificationOptions file;
    file.depth =
        options.depth == VerificationDepth::Full ? VerificationDepth::Full : VerificationDepth::Quick;
    file.isCancelled = [&options] { return options.cancel.IsCancelled(); };
    if (file.depth == VerificationDepth::Full)
    {
        progress.file = transcode.output;
        progress.duration = transcode.Duration();
        const auto report = std::make_shared<VerificationProgress>(std::move(progress), options.onProgress);
        file.onProgress = [report](std::int64_t done) { report->Report(done); };
    }
    TargetVerification verification =
        VerifyFile(transcode.output, transcode.output, ExpectationOf(transcode, command), file);
    if (options.quality && !options.cancel.IsCancelled())
    {
        MeasureQuality(transcode, command, options, verification);
    }
    return verification;
}

} // namespace

std::vector<TargetVerification> VerifyJob(const Conf::ITranscodingMetaGraph& job,
                                          const VerifyOptions& options)
{
    FaultList faults;
    std::vector<Transcode> transcodes = ReadTranscodes(job, options.document, faults);
    for (const Transcode& transcode : transcodes)
    {
        MakeTranscodeCommand(transcode, faults);
    }
    faults.ThrowFirst();
    // What the targets get beside their streams can be planned only for a job without a fault.
    std::vector<TranscodeCommand> commands;
    for (Transcode& transcode : transcodes)
    {
        PlanContentsOf(transcode, faults);
        commands.push_back(MakeTranscodeCommand(transcode, faults));
    }
    faults.ThrowFirst();
    std::vector<TargetVerification> verifications;
    for (std::size_t i = 0; i < transcodes.size() && !options.cancel.IsCancelled(); ++i)
    {
        RunProgress progress;
        progress.target = i;
        progress.targetCount = transcodes.size();
        TargetVerification verification =
            VerifyTarget(transcodes[i], commands[i], options, std::move(progress));
        if (!options.cancel.IsCancelled())
        {
            verifications.push_back(std::move(verification));
        }
    }
    return verifications;
}

} // namespace Zelnor::Media
