#include "Media/Running/JobPreparation.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Running/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

/// Finds what keeps the targets of a job from being written.
class TargetChecker
{
public:
    TargetChecker(bool mayReplace, FaultList& faults) : m_mayReplace(mayReplace), m_faults(faults) {}

    void Check(const Transcode& transcode)
    {
        m_place = transcode.place.At(Conf::ITranscodingMetaGraph::KEY_FILEPATH);
        const std::string& name = transcode.output;
        // Why a name is missing, or cannot be one, is said already.
        if (m_faults.IsAt(m_place) || m_faults.IsAt(transcode.place))
        {
            return;
        }
        if (name.empty())
        {
            Add("expected the name of a file, found ''");
            return;
        }
        for (const MediaFile& input : transcode.inputs)
        {
            if (IsSameFile(input.name, name))
            {
                Add("the source and the target are the same file: '" + name + "'");
            }
        }
        struct stat status = {};
        const bool exists = ::stat(name.c_str(), &status) == 0;
        if (!exists || S_ISREG(status.st_mode))
        {
            CheckFile(name, exists);
        }
        else if (S_ISDIR(status.st_mode))
        {
            AddCannotWrite(name, EISDIR);
        }
    }

private:
    void Add(const std::string& reason) { m_faults.Add(JobFault::Output, m_place, reason); }
    void AddCannotWrite(const std::string& name, int reason)
    {
        Add("cannot write '" + name + "': " + std::generic_category().message(reason));
    }

    void CheckFile(const std::string& name, bool exists)
    {
        const auto [other, isNew] = m_targets.try_emplace(FileIdentity(name), m_place.node.value_or(0));
        if (!isNew)
        {
            Add("node " + std::to_string(other->second) + " has the same target: '" + name + "'");
        }
        if (exists && !m_mayReplace)
        {
            Add("'" + name + "' exists already; the option 'overwrite' replaces it");
        }
        // It is made beside its place, whether it is there already or not; a link is followed.
        std::error_code error;
        const fs::path target =
            fs::is_symlink(name, error) ? fs::weakly_canonical(name, error) : fs::path(name);
        const fs::path folder = target.parent_path().empty() ? fs::path(".") : target.parent_path();
        struct stat status = {};
        if (::stat(folder.c_str(), &status) == 0 && !S_ISDIR(status.st_mode))
        {
            AddCannotWrite(name, ENOTDIR);
        }
        else if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        {
            AddCannotWrite(name, errno);
        }
    }

    bool m_mayReplace;
    FaultList& m_faults;
    Place m_place;
    /// The nodes of the targets so far, by what their names mean.
    std::unordered_map<std::string, Conf::NodeId> m_targets;
};

} // namespace

std::vector<PreparedTranscode> PrepareJob(const Conf::ITranscodingMetaGraph& job,
                                          const PreparationOptions& options, FaultList& faults)
{
    std::vector<PreparedTranscode> prepared;
    TargetChecker targets(options.mayReplace, faults);
    for (Transcode& transcode : ReadTranscodes(job, options.document, faults))
    {
        std::vector<FFmpegPass> passes = MakeFFmpegArguments(transcode, faults);
        targets.Check(transcode);
        prepared.push_back({std::move(transcode), std::move(passes)});
    }
    return prepared;
}

std::vector<PreparedTranscode> PrepareJob(const Conf::ITranscodingMetaGraph& job,
                                          const PreparationOptions& options)
{
    FaultList faults;
    std::vector<PreparedTranscode> prepared = PrepareJob(job, options, faults);
    faults.ThrowFirst();
    return prepared;
}

} // namespace Zelnor::Media
