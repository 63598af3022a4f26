#include "Media/Running/JobRun.h"

#include "Media/Running/FFmpegRun.h"
#include "Media/Running/Files.h"
#include "Media/Running/JobPreparation.h"
#include "Media/Running/TargetExpectation.h"
#include "Media/Running/TargetFile.h"
#include "Media/Running/VerificationProgress.h"
#include "Media/Running/WorkFolder.h"
#include "Media/Text.h"
#include "Media/Verifying/FileVerification.h"

#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <set>
#include <system_error>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Running/JobRun";

[[noreturn]] void ThrowFailed(const std::string& file, FFmpegResult result)
{
    auto exception = MakeError<TranscodeFailed>(
        "ffmpeg failed to make '" + file + "' (exit code " + std::to_string(result.exitCode) + ")" +
        (result.messages.empty() ? "" : ": " + result.messages.back()));
    exception << MediaException::TagFile(file) << TranscodeFailed::TagExitCode(result.exitCode)
              << TranscodeFailed::TagMessages(std::move(result.messages));
    ZELNOR_THROW(kUnit, exception);
}

/// \param kept  where the file is; empty when it is gone
[[noreturn]] void ThrowUnverified(TargetVerification verification, const std::string& kept)
{
    const std::size_t more = verification.differences.size() - 1;
    auto exception =
        MakeError<VerificationFailed>("'" + verification.file + "' is not what the job says: " +
                                      verification.differences.front().Sentence() +
                                      (more == 0 ? "" : " (and " + Count(more, "more difference") + ")"));
    exception << MediaException::TagFile(verification.file)
              << VerificationFailed::TagDifferences(std::move(verification.differences));
    if (!kept.empty())
    {
        exception << VerificationFailed::TagKeptFile(kept);
    }
    ZELNOR_THROW(kUnit, exception);
}

/// The files that a run must not replace: the sources of the job, and the targets that are done. That none of
/// them has two names was asked before anything ran, but some file systems know more names for a file than
/// can be told before it is there.
class KeptFiles
{
public:
    void Add(const std::string& name) { m_identities.insert(FileIdentity(name)); }
    /// \throw RunException
    void Check(const std::string& name) const
    {
        if (m_identities.count(FileIdentity(name)) != 0)
        {
            auto exception = MakeError<RunException>("Cannot write '" + name +
                                                     "': it is a file that the job reads or has made");
            exception << MediaException::TagFile(name);
            ZELNOR_THROW(kUnit, exception);
        }
    }

private:
    std::set<std::string> m_identities;
};

/// Makes one target.
class TargetRun
{
public:
    TargetRun(const PreparedTranscode& prepared, const RunOptions& options, KeptFiles& kept,
              std::size_t position, std::size_t count)
        : m_prepared(prepared), m_options(options), m_kept(kept)
    {
        m_progress.target = position;
        m_progress.targetCount = count;
        m_progress.file = prepared.transcode.output;
        m_progress.passCount = prepared.passes.size();
        m_progress.duration = prepared.transcode.Duration();
    }

    TargetResult Run()
    {
        TargetResult result;
        result.file = m_progress.file;
        TargetFile target(result.file, m_options.overwrite, m_options.scratch);
        const PassFiles files = {target.GetWorkName(), target.GetPassLog(), true};
        if (IsVerifiable(target))
        {
            // It asks FFmpeg's encoders, which takes a while; meanwhile, we would only wait for ffmpeg.
            m_expected = std::async([this] { return ExpectationOf(m_prepared.transcode); });
        }
        for (std::size_t pass = 0; pass < m_prepared.passes.size(); ++pass)
        {
            m_progress.pass = pass;
            Report({});
            const std::optional<FFmpegResult> run = RunPass(m_prepared.passes[pass].Arguments(files));
            if (!run)
            {
                return result;
            }
            TakeMessages(*run, files.output, result);
        }
        if (!Verify(target, result) ||
            !target.LeaveScratch([this] { return m_options.cancel.IsCancelled(); }))
        {
            return result;
        }
        Commit(target);
        result.outcome = TargetResult::Outcome::Done;
        result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
        std::error_code error;
        const std::uintmax_t size = target.IsDirect() ? 0 : std::filesystem::file_size(result.file, error);
        result.size = error ? 0 : size;
        return result;
    }

private:
    /// \returns nothing when it was cancelled
    std::optional<FFmpegResult> RunPass(std::vector<std::string> arguments)
    {
        if (m_options.cancel.IsCancelled())
        {
            return std::nullopt;
        }
        arguments.insert(arguments.begin(), m_options.ffmpeg);
        FFmpegResult run = RunFFmpeg(
            arguments, [this](const FFmpegProgress& progress) { Report(progress); },
            [this] { return m_options.cancel.IsCancelled(); });
        return m_options.cancel.IsCancelled() ? std::nullopt : std::optional(std::move(run));
    }

    void TakeMessages(FFmpegResult run, const std::string& workName, TargetResult& result) const
    {
        for (std::string& message : run.messages)
        {
            // People know the target, not where it is made.
            boost::replace_all(message, workName, result.file);
        }
        if (run.exitCode != 0)
        {
            ThrowFailed(result.file, std::move(run));
        }
        result.warnings.insert(result.warnings.end(), run.messages.begin(), run.messages.end());
    }

    bool IsVerifiable(const TargetFile& target) const
    {
        return m_options.verification != VerificationDepth::Off && !target.IsDirect();
    }

    /// \returns false when it was cancelled
    bool Verify(TargetFile& target, TargetResult& result)
    {
        if (m_options.verification == VerificationDepth::Off)
        {
            return true;
        }
        if (!IsVerifiable(target))
        {
            result.notes.push_back("'" + result.file +
                                   "' cannot be verified, because it is not a regular file");
            return true;
        }
        FileVerificationOptions options;
        options.depth = m_options.verification;
        options.isCancelled = [this] { return m_options.cancel.IsCancelled(); };
        if (options.depth == VerificationDepth::Full)
        {
            const auto progress = std::make_shared<VerificationProgress>(m_progress, m_options.onProgress);
            options.onProgress = [progress](std::int64_t done) { progress->Report(done); };
        }
        TargetVerification verification =
            VerifyFile(target.GetWorkName(), result.file, m_expected.get(), options);
        if (m_options.cancel.IsCancelled())
        {
            return false;
        }
        if (!verification.differences.empty())
        {
            ThrowUnverified(std::move(verification),
                            m_options.keepUnverified ? target.KeepAside() : std::string());
        }
        result.notes = std::move(verification.notes);
        return true;
    }

    void Commit(TargetFile& target)
    {
        if (!target.IsDirect())
        {
            m_kept.Check(m_progress.file);
            target.Commit();
            m_kept.Add(m_progress.file);
        }
    }

    void Report(const FFmpegProgress& progress)
    {
        m_progress.done = progress.done;
        m_progress.speed = progress.speed;
        if (m_progress.duration && *m_progress.duration > 0)
        {
            const double ofPass = std::clamp(
                static_cast<double>(progress.done) / static_cast<double>(*m_progress.duration), 0.0, 1.0);
            m_progress.part =
                (static_cast<double>(m_progress.pass) + ofPass) / static_cast<double>(m_progress.passCount);
        }
        if (m_options.onProgress)
        {
            m_options.onProgress(m_progress);
        }
    }

    const PreparedTranscode& m_prepared;
    const RunOptions& m_options;
    KeptFiles& m_kept;
    RunProgress m_progress;
    std::future<ExpectedFile> m_expected;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

/// Removes what killed runs have left beside the targets and in the scratch folder.
void RemoveLeftovers(const std::vector<PreparedTranscode>& prepared, const std::string& scratch)
{
    std::set<std::string> folders;
    // Of a name with a NUL, the system would see another one.
    if (!scratch.empty() && scratch.find('\0') == std::string::npos)
    {
        folders.insert(scratch);
    }
    for (const PreparedTranscode& transcode : prepared)
    {
        folders.insert(
            std::filesystem::path(ResolveLinks(transcode.transcode.output)).parent_path().string());
    }
    std::for_each(folders.begin(), folders.end(), &RemoveAbandonedWorkFolders);
}

void ReportLosses(const std::vector<PreparedTranscode>& prepared, const RunOptions& options)
{
    for (const PreparedTranscode& transcode : prepared)
    {
        for (const JobFault& loss : transcode.losses)
        {
            if (options.onLoss)
            {
                options.onLoss(loss);
            }
        }
    }
}

} // namespace

bool RunResult::IsDone() const
{
    return std::all_of(targets.begin(), targets.end(), [](const TargetResult& target) {
        return target.outcome == TargetResult::Outcome::Done;
    });
}

RunResult RunJob(const Conf::ITranscodingMetaGraph& job, const RunOptions& options)
{
    PreparationOptions preparation;
    preparation.document = options.document;
    preparation.mayReplace = options.overwrite;
    preparation.strict = options.strict;
    preparation.ffmpeg = options.ffmpeg;
    const std::vector<PreparedTranscode> prepared = PrepareJob(job, preparation);
    ReportLosses(prepared, options);
    RemoveLeftovers(prepared, options.scratch);
    KeptFiles kept;
    for (const PreparedTranscode& transcode : prepared)
    {
        for (const MediaFile& input : transcode.transcode.inputs)
        {
            kept.Add(input.name);
        }
    }
    RunResult result;
    for (std::size_t i = 0; i < prepared.size(); ++i)
    {
        if (options.cancel.IsCancelled())
        {
            result.targets.emplace_back();
            result.targets.back().file = prepared[i].transcode.output;
            continue;
        }
        if (options.onCommands)
        {
            options.onCommands(CommandsOf(prepared[i], options.ffmpeg, options.overwrite));
        }
        result.targets.push_back(TargetRun(prepared[i], options, kept, i, prepared.size()).Run());
        if (result.targets.back().outcome == TargetResult::Outcome::Done && options.onTargetDone)
        {
            options.onTargetDone(result.targets.back());
        }
    }
    return result;
}

} // namespace Zelnor::Media
