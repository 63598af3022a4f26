#pragma once

#include "Core/Interfaces/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// \file
/// What became of one job of a batch.

namespace Zelnor::Media
{

/// What tells one file under a name from another that takes its place.
struct FileStamp
{
    std::uint64_t inode = 0;   ///< its number in the file system
    std::uint64_t size = 0;    ///< in bytes
    std::int64_t modified = 0; ///< nanoseconds since 1970
    /// Whether it is the same file, unchanged.
    bool operator==(const FileStamp& other) const
    {
        return inode == other.inode && size == other.size && modified == other.modified;
    }
};

/// What a run wrote down of a job. It says `Running` before ffmpeg starts.
struct ZELNOR_API BatchResult
{
    enum class State
    {
        Running,
        Done,      ///< the output is complete, verified and in its place
        Failed,    ///< `failure` and `reason` tell why
        Cancelled, ///< somebody stopped the run
    };             ///< What became of it.
    enum class Failure
    {
        None,
        FFmpeg,    ///< ffmpeg failed
        Different, ///< the output is not what the job says
        Job,       ///< the job cannot be run as it is
        Run,       ///< anything else: ffmpeg cannot be started, the disk is full
    };             ///< Whose fault it is.

    State state = State::Running;           ///< how far it came
    Failure failure = Failure::None;        ///< of which kind
    std::string reason = {};                ///< of a failure: a sentence without an end
    int exitCode = 0;                       ///< ffmpeg's, when it failed
    std::vector<std::string> messages = {}; ///< ffmpeg's last lines
    /// The command lines that ffmpeg was started with, but that they write right to the output: the program
    /// and its arguments, for each pass. Empty when it was not started, and when the job is done.
    std::vector<std::vector<std::string>> commands = {};
    std::vector<std::string> notes = {};       ///< what could not be verified
    std::string verification = {};             ///< how the output was verified: "quick", "full" or "off"
    unsigned int attempts = 0;                 ///< how often it was tried, in all runs
    std::string host = {};                     ///< the machine that ran it
    std::int64_t process = 0;                  ///< the number of the process there
    std::string started = {};                  ///< the last attempt, in UTC: "2026-11-22T11:03:07Z"
    std::string ended = {};                    ///< empty while it runs
    std::int64_t elapsed = 0;                  ///< microseconds of the last attempt; 0: not known
    std::optional<std::int64_t> duration = {}; ///< microseconds of media that were made, if known
    std::uint64_t sizeBefore = 0;              ///< bytes of the input
    std::uint64_t sizeAfter = 0;               ///< bytes of the output, when it is done
    /// What stood under the output's name before the last attempt.
    std::optional<FileStamp> replaced = {};

    /// Media made in the time it plays; 2: twice as fast. 0: not known.
    double Speed() const;
};

/// "done", for scripts.
ZELNOR_API std::string NameOf(BatchResult::State state);
/// "ffmpeg", for scripts; empty for none.
ZELNOR_API std::string NameOf(BatchResult::Failure failure);

} // namespace Zelnor::Media
