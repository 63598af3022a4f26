#include "Media/Running/JobRun.h"

#include "Media/Running/FFmpegRun.h"
#include "Media/Running/JobPreparation.h"
#include "Media/Running/TargetFile.h"

#include <algorithm>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Running/JobRun";

std::optional<std::int64_t> DurationOf(const Transcode& transcode)
{
    std::optional<std::int64_t> longest;
    for (const MediaFile& input : transcode.inputs)
    {
        longest = std::max(longest, input.duration);
    }
    return longest;
}

[[noreturn]] void ThrowFailed(const std::string& file, FFmpegResult result)
{
    auto exception = MakeError<TranscodeFailed>(
        "ffmpeg failed to make '" + file + "' (exit code " + std::to_string(result.exitCode) + ")" +
        (result.messages.empty() ? "" : ": " + result.messages.back()));
    exception << MediaException::TagFile(file) << TranscodeFailed::TagExitCode(result.exitCode)
              << TranscodeFailed::TagMessages(std::move(result.messages));
    ZELNOR_THROW(kUnit, exception);
}

/// Makes one target.
class TargetRun
{
public:
    TargetRun(const PreparedTranscode& prepared, const RunOptions& options, std::size_t position,
              std::size_t count)
        : m_prepared(prepared), m_options(options)
    {
        m_progress.target = position;
        m_progress.targetCount = count;
        m_progress.file = prepared.transcode.output;
        m_progress.passCount = prepared.passes.size();
        m_progress.duration = DurationOf(prepared.transcode);
    }

    TargetResult Run()
    {
        TargetResult result;
        result.file = m_progress.file;
        TargetFile target(result.file, m_options.overwrite);
        const TemporaryFolder folder;
        const PassFiles files = {target.GetWorkName(), folder.GetName() + "/pass-", true};
        for (std::size_t pass = 0; pass < m_prepared.passes.size(); ++pass)
        {
            m_progress.pass = pass;
            Report({});
            if (!RunPass(m_prepared.passes[pass].Arguments(files), result.warnings))
            {
                return result;
            }
        }
        target.Commit();
        result.outcome = TargetResult::Outcome::Done;
        return result;
    }

private:
    /// \returns false when it was cancelled
    bool RunPass(std::vector<std::string> arguments, std::vector<std::string>& messages)
    {
        if (m_options.cancel.IsCancelled())
        {
            return false;
        }
        arguments.insert(arguments.begin(), m_options.ffmpeg);
        FFmpegResult run = RunFFmpeg(
            arguments, [this](const FFmpegProgress& progress) { Report(progress); },
            [this] { return m_options.cancel.IsCancelled(); });
        if (m_options.cancel.IsCancelled())
        {
            return false;
        }
        if (run.exitCode != 0)
        {
            ThrowFailed(m_progress.file, std::move(run));
        }
        messages.insert(messages.end(), run.messages.begin(), run.messages.end());
        return true;
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
    RunProgress m_progress;
};

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
    const std::vector<PreparedTranscode> prepared = PrepareJob(job, preparation);
    RunResult result;
    for (std::size_t i = 0; i < prepared.size(); ++i)
    {
        if (options.cancel.IsCancelled())
        {
            result.targets.push_back({prepared[i].transcode.output, TargetResult::Outcome::Cancelled, {}});
            continue;
        }
        result.targets.push_back(TargetRun(prepared[i], options, i, prepared.size()).Run());
        if (result.targets.back().outcome == TargetResult::Outcome::Done && options.onTargetDone)
        {
            options.onTargetDone(result.targets.back());
        }
    }
    return result;
}

} // namespace Zelnor::Media
