#include "Media/Batch/BatchJobRun.h"

#include "Media/Batch/BatchFolder.h"
#include "Media/Batch/BatchPaths.h"
#include "Media/Batch/BatchRecord.h"
#include "Media/Batch/BatchStatusOf.h"
#include "Media/ErrorText.h"
#include "Media/MediaException.h"
#include "Media/Running/JobVerification.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/BatchJobRun";

using JobGraph = boost::intrusive_ptr<Conf::ITranscodingMetaGraph>;

std::string Now()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm utc = {};
    ::gmtime_r(&now, &utc);
    std::array<char, 32> text = {};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text.data();
}

std::string HostName()
{
    std::array<char, 256> name = {};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string DepthText(VerificationDepth depth)
{
    switch (depth)
    {
    case VerificationDepth::Off:
        return "off";
    case VerificationDepth::Quick:
        return "quick";
    case VerificationDepth::Full:
        break;
    }
    return "full";
}

/// Nothing when there is no such file.
std::optional<FileStamp> StampOf(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
    {
        return std::nullopt;
    }
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return FileStamp{status.st_ino, static_cast<std::uint64_t>(status.st_size),
                     status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

/// \throw RunException
void MakeOutputFolder(const std::string& folder)
{
    constexpr mode_t kMode = 0777;
    if (::mkdir(folder.c_str(), kMode) != 0 && errno != EEXIST)
    {
        auto exception = MakeError<RunException>("Cannot make '" + folder +
                                                 "': " + std::generic_category().message(errno));
        exception << MediaException::TagFile(folder);
        ZELNOR_THROW(kUnit, exception);
    }
}

/// Refuses a folder that is in the batch because of a link, so that no output replaces a document.
/// \throw JobException
void CheckOutputFolder(const Batch& batch)
{
    std::error_code error;
    const std::string folder = std::filesystem::canonical(batch.PathOf(batch.outputFolder), error).string();
    if (!error && IsInFolder(folder, batch.base))
    {
        ZELNOR_THROW(
            kUnit, MakeError<JobException>(Place{batch.folder}.At("outputFolder"),
                                           "expected a folder outside of the batch, found '" + folder + "'"));
    }
}

class OneJobRun
{
public:
    OneJobRun(const BatchFolder& folder, const Batch& batch, const BatchJob& job,
              const BatchRunOptions& options, const BatchJobHooks& hooks)
        : m_folder(folder), m_batch(batch), m_job(job), m_options(options), m_hooks(hooks),
          m_output(batch.PathOf(batch.OutputOf(job))), m_former(ReadBatchResult(folder, job.number))
    {}

    BatchResult Run()
    {
        // The caller has locked the job, so nobody else runs it.
        const BatchJobState state = StateOf(m_batch, m_job, m_former, [] { return false; });
        if (ChooseJobs({state}, m_options.choice).empty())
        {
            return *m_former;
        }
        BatchResult result = NewResult();
        JobGraph graph;
        try
        {
            graph = ReadBatchJob(m_batch, m_job, m_folder.ReadJob(m_job.number));
        }
        catch (const std::exception&)
        {
            Fail(result, BatchResult::Failure::Job);
            Store(result);
            return result;
        }
        if (state == BatchJobState::Interrupted && IsOutputNew())
        {
            return Adopt(*graph);
        }
        for (unsigned int tries = 0;; ++tries)
        {
            Try(*graph, result);
            const bool isWorthwhile =
                result.state == BatchResult::State::Failed && result.failure != BatchResult::Failure::Job;
            if (!isWorthwhile || tries == m_options.retries || m_options.job.cancel.IsCancelled())
            {
                return result;
            }
        }
    }

private:
    BatchResult NewResult() const
    {
        BatchResult result;
        result.attempts = m_former ? m_former->attempts : 0;
        result.verification = DepthText(m_options.job.verification);
        result.host = HostName();
        result.process = ::getpid();
        result.started = Now();
        const std::optional<FileStamp> input = StampOf(m_batch.PathOf(m_job.input));
        result.sizeBefore = input ? input->size : 0;
        result.duration = m_job.duration;
        return result;
    }

    void Store(const BatchResult& result) const { m_folder.WriteResult(m_job.number, ResultText(result)); }

    /// Whether the run that was killed has put the output in place.
    bool IsOutputNew() const
    {
        const std::optional<FileStamp> stamp = StampOf(m_output);
        return stamp && !(m_former->replaced && *m_former->replaced == *stamp);
    }

    /// What is handled, as a failure of the job.
    static void Fail(BatchResult& result, BatchResult::Failure failure)
    {
        result.state = BatchResult::State::Failed;
        result.failure = failure;
        result.reason = ErrorText(std::current_exception());
        result.ended = Now();
    }

    /// Takes the output of a run that was killed right after it had put it in place. It is verified also
    /// where runs verify nothing: somebody else may have put it there. As long as that is not possible, the
    /// job counts as interrupted.
    BatchResult Adopt(const Conf::ITranscodingMetaGraph& graph) const
    {
        BatchResult result = *m_former;
        result.ended = Now();
        result.notes.push_back("the run that made it was killed before it could say so");
        try
        {
            if (!IsVerified(graph, result))
            {
                return result;
            }
        }
        catch (const std::exception&)
        {
            Fail(result, BatchResult::Failure::Job);
            return result;
        }
        if (result.failure == BatchResult::Failure::None)
        {
            const std::optional<FileStamp> stamp = StampOf(m_output);
            result.state = BatchResult::State::Done;
            result.commands.clear();
            result.sizeAfter = stamp ? stamp->size : 0;
        }
        Store(result);
        return result;
    }

    /// \returns false when it was cancelled
    bool IsVerified(const Conf::ITranscodingMetaGraph& graph, BatchResult& result) const
    {
        VerifyOptions options;
        if (m_options.job.verification != VerificationDepth::Off)
        {
            options.depth = m_options.job.verification;
        }
        options.document = m_batch.DocumentOf(m_job.number);
        options.cancel = m_options.job.cancel;
        options.onProgress = m_hooks.onProgress;
        const std::vector<TargetVerification> targets = VerifyJob(graph, options);
        if (targets.empty())
        {
            result.state = BatchResult::State::Cancelled;
            return false;
        }
        result.notes.insert(result.notes.end(), targets.front().notes.begin(), targets.front().notes.end());
        result.verification = DepthText(options.depth);
        if (!targets.front().differences.empty())
        {
            result.state = BatchResult::State::Failed;
            result.failure = BatchResult::Failure::Different;
            result.reason = "'" + m_output +
                            "' is not what the job says: " + targets.front().differences.front().Sentence();
        }
        return true;
    }

    void Try(const Conf::ITranscodingMetaGraph& graph, BatchResult& result) const
    {
        const unsigned int attempts = result.attempts + 1;
        result = NewResult();
        result.attempts = attempts;
        result.replaced = StampOf(m_output);
        Store(result);
        const auto begin = std::chrono::steady_clock::now();
        RunGraph(graph, result);
        result.elapsed =
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin)
                .count();
        result.ended = Now();
        Store(result);
    }

    void RunGraph(const Conf::ITranscodingMetaGraph& graph, BatchResult& result) const
    {
        RunOptions run = m_options.job;
        run.document = m_batch.DocumentOf(m_job.number);
        run.onLoss = {};
        run.onTargetDone = {};
        run.onProgress = m_hooks.onProgress;
        // Before ffmpeg starts, so that it is known also when the run is killed.
        run.onCommands = [this, &result](const std::vector<std::vector<std::string>>& commands) {
            result.commands = commands;
            Store(result);
        };
        try
        {
            MakeOutputFolder(m_batch.PathOf(m_batch.outputFolder));
            CheckOutputFolder(m_batch);
            const RunResult made = RunJob(graph, run);
            const TargetResult& target = made.targets.front();
            result.state = made.IsDone() ? BatchResult::State::Done : BatchResult::State::Cancelled;
            result.messages = target.warnings;
            result.notes = target.notes;
            result.sizeAfter = target.size;
            if (made.IsDone())
            {
                result.commands.clear();
            }
        }
        catch (const TranscodeFailed& failure)
        {
            Fail(result, BatchResult::Failure::FFmpeg);
            result.exitCode = *boost::get_error_info<TranscodeFailed::TagExitCode>(failure);
            result.messages = *boost::get_error_info<TranscodeFailed::TagMessages>(failure);
        }
        catch (const VerificationFailed& failure)
        {
            Fail(result, BatchResult::Failure::Different);
            for (const TargetDifference& difference :
                 *boost::get_error_info<VerificationFailed::TagDifferences>(failure))
            {
                result.notes.push_back(difference.Sentence());
            }
        }
        catch (const JobException&)
        {
            Fail(result, BatchResult::Failure::Job);
        }
        catch (const std::exception&)
        {
            Fail(result, BatchResult::Failure::Run);
        }
    }

    const BatchFolder& m_folder;
    const Batch& m_batch;
    const BatchJob& m_job;
    const BatchRunOptions& m_options;
    const BatchJobHooks& m_hooks;
    std::string m_output;
    std::optional<BatchResult> m_former;
};

} // namespace

BatchResult RunOneBatchJob(const BatchFolder& folder, const Batch& batch, const BatchJob& job,
                           const BatchRunOptions& options, const BatchJobHooks& hooks)
{
    return OneJobRun(folder, batch, job, options, hooks).Run();
}

} // namespace Zelnor::Media
