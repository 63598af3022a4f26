#pragma once

#include "Media/Jobs/JobFault.h"
#include "Media/MediaException.h"
#include "Media/Verifying/Verification.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// \file
/// Running a job:
///
///     Media::RunOptions options;
///     options.onProgress = [](const Media::RunProgress& p) { bar.Set(p.part.value_or(0)); };
///     stopButton.onClick = [token = options.cancel] { token.Cancel(); };
///     const Media::RunResult result = Media::RunJob(*job, options);
///
/// Several jobs may run at once, each in a thread of its own. No signal handler is installed, and standard
/// streams, the working folder, the locale and the umask are left alone.

namespace Zelnor::Media
{

/// A way to stop what is running. Copies share one state, and may be used from any thread.
class ZELNOR_API CancelToken
{
public:
    // Made together with its counter, the flag would bring a unique symbol, which keeps in memory whoever
    // uses this header.
    CancelToken() : m_isCancelled(new std::atomic<bool>(false)) {}

    /// For good: there is no way back. May be called from a signal handler.
    void Cancel() const noexcept { m_isCancelled->store(true); }
    bool IsCancelled() const noexcept { return m_isCancelled->load(); }

private:
    std::shared_ptr<std::atomic<bool>> m_isCancelled;
};

/// How far a run is.
struct RunProgress
{
    std::size_t target = 0;               ///< position of the target that is being made, from 0
    std::size_t targetCount = 1;          ///< of the job
    std::string file;                     ///< the target's name, as the job gives it
    std::size_t pass = 0;                 ///< position of the pass that is running, from 0
    std::size_t passCount = 1;            ///< of this target
    std::int64_t done = 0;                ///< microseconds of media that this pass has made
    std::optional<std::int64_t> duration; ///< microseconds of media that it will make, if known
    double speed = 0;                     ///< 2.0: twice as fast as it plays; 0: not known yet
    std::optional<double> part; ///< of this target over all passes, 0 to 1; empty: duration not known
    /// Whether all passes are done, and the target is decoded to be compared with the job, as
    /// `VerificationDepth::Full` asks for: then `done` and `part` are of that.
    bool isVerifying = false;
};

/// What became of one target of a job.
struct TargetResult
{
    enum class Outcome
    {
        Done,      ///< the file is complete and in place
        Cancelled, ///< there is no file, or the one that was there before
    };             ///< What can become of it.

    std::string file;                     ///< its name, as the job gives it
    Outcome outcome = Outcome::Cancelled; ///< what became of it
    std::vector<std::string> warnings;    ///< the last lines that ffmpeg wrote although it succeeded
    std::vector<std::string> notes;       ///< what could not be verified, as sentences without an end
    double seconds = 0;                   ///< from the beginning of this target to its end
    std::uint64_t size = 0;               ///< bytes of the file; 0 when it is a pipe or a device
};

/// What became of a job.
struct ZELNOR_API RunResult
{
    std::vector<TargetResult> targets; ///< all targets of the job, in its order

    /// Whether every target is done.
    bool IsDone() const;
};

/// How a job is run.
struct RunOptions
{
    std::string ffmpeg = "ffmpeg"; ///< the program: a path, or a name to be found through PATH
    bool overwrite = false;        ///< whether targets that exist are replaced
    bool strict = false;           ///< whether a job is refused by which something of a source would be lost
    /// How closely a target is compared with the job before it is put in place.
    VerificationDepth verification = VerificationDepth::Quick;
    /// Whether a target that is not what the job says is kept beside its place: "out.unverified.mp4".
    bool keepUnverified = false;
    /// A folder, such as one on the disk of a cluster's node, in which ffmpeg writes. A finished and verified
    /// file is copied from there beside its place, and takes its name as one step, also when that is in
    /// another file system. Empty: ffmpeg writes beside the target's place.
    std::string scratch = {};
    /// What messages call the job: "job.json"; empty: they begin with the place. A file of that name is not
    /// replaced by a target.
    std::string document = {};
    /// Called before anything runs, once for each thing of a source that no target will have.
    std::function<void(const JobFault&)> onLoss = {};
    /// Called on the thread that called `RunJob`, before ffmpeg makes a target, with the command lines that
    /// would write right to it: the program and its arguments; two where a first pass analyses a stream.
    std::function<void(const std::vector<std::vector<std::string>>&)> onCommands = {};
    /// Called on the same thread, at the beginning of each pass and about twice a second,
    /// also while everything of a target is decoded to verify it.
    std::function<void(const RunProgress&)> onProgress = {};
    /// Called on the same thread when a target is done, before the next one begins.
    std::function<void(const TargetResult&)> onTargetDone = {};
    /// Cancelling it, from another thread or in a callback, stops the run within about a tenth of a second,
    /// or three seconds if ffmpeg does not end when asked to.
    CancelToken cancel = {};
};

/// Makes the targets of a job with ffmpeg, one after the other, and returns when all are done or the run is
/// cancelled. Everything that can be known beforehand is checked for all targets before anything starts. A
/// target appears under its name when it is complete and verified, never half; targets that are done stay
/// when a later one is not. Sources, and the job's document, are never replaced. What killed runs have left
/// beside the targets is removed. ffmpeg ends when this process is killed, and with the thread that calls
/// this. What a callback throws stops ffmpeg and passes through.
///
/// \throw JobException when the job cannot be run as it is; its tags name the place, and nothing has been
///        written
/// \throw TranscodeFailed when ffmpeg fails; its tags give the exit code and the last messages
/// \throw VerificationFailed when a target is not what the job says; what was there before stays
/// \throw RunException when ffmpeg cannot be started, when a target cannot be written, and when the system
///        does not tell how ffmpeg ended because this process ignores SIGCHLD or waits for all of its
///        children
ZELNOR_API RunResult RunJob(const Conf::ITranscodingMetaGraph& job, const RunOptions& options = {});

} // namespace Zelnor::Media
