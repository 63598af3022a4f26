#include "Media/Batch/SlurmFolder.h"

#include "Media/Batch/BatchFiles.h"
#include "Media/Batch/RecordMembers.h"
#include "Media/MediaException.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <numeric>
#include <string_view>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

constexpr const char* kUnit = "Media/Batch/SlurmFolder";

constexpr const char* kFolder = "slurm";
constexpr const char* kRecord = "arrays.json";
constexpr const char* kScript = "task.sh";

constexpr std::int64_t kMostOfSlurm = std::numeric_limits<std::int64_t>::max();

constexpr const char* kTask = R"sh(#!/bin/sh
# Runs one job of a batch. $1: what to add to the index of the task to get the number of the job; then the command.
offset=$1
shift
exec "$@" --only "$((offset + SLURM_ARRAY_TASK_ID))"
)sh";

/// Names are made here; others may be those of arrays that are not the batch's.
bool IsArrayName(const std::string& name)
{
    constexpr std::string_view kBeginning = "zelnor-";
    return name.substr(0, kBeginning.size()) == kBeginning &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-'; });
}

[[noreturn]] void Refuse(const Place& place, const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<JobException>(place, reason));
}

SlurmArray ReadArray(const RecordMembers& members, std::size_t jobs)
{
    SlurmArray array;
    array.name = members.Text("name");
    if (!IsArrayName(array.name))
    {
        Refuse(members.At("name"), "expected a name that a run has made, found '" + array.name + "'");
    }
    array.id = members.Integer("id", 0, kMostOfSlurm);
    array.offset = members.Integer("offset", 0, static_cast<std::int64_t>(jobs));
    const std::string indices = members.Text("indices");
    const auto read = ReadIndices(indices, jobs);
    if (!read || read->front().first < 1 || read->back().second > static_cast<long long>(jobs) - array.offset)
    {
        Refuse(members.At("indices"),
               "expected indices of jobs of the batch, such as 1-4,7, found '" + indices + "'");
    }
    array.indices = *read;
    return array;
}

/// Positions of which each is closed once, so that a record in which many arrays have the same jobs costs no
/// more than to look at it.
class OpenPositions
{
public:
    explicit OpenPositions(std::size_t count) : m_next(count + 1)
    {
        std::iota(m_next.begin(), m_next.end(), 0U);
    }

    /// The first open one from there on; the number of all when there is none.
    std::size_t From(std::size_t position)
    {
        std::size_t found = position;
        while (m_next[found] != found)
        {
            found = m_next[found];
        }
        while (position != found)
        {
            position = std::exchange(m_next[position], found);
        }
        return found;
    }
    void Close(std::size_t position) { m_next[position] = position + 1; }

private:
    /// Of an open one, itself; of a closed one, one behind it.
    std::vector<std::size_t> m_next;
};

} // namespace

SlurmFolder::SlurmFolder(const Batch& batch)
    : m_name(batch.folder + "/" + kFolder), m_base(batch.base + "/" + kFolder), m_jobs(batch.jobs.size())
{
    constexpr mode_t kMode = 0777;
    if (::mkdir(m_base.c_str(), kMode) != 0 && errno != EEXIST)
    {
        ThrowSystem<RunException>("make", m_name, errno);
    }
    m_folder = Descriptor(::open(m_base.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!m_folder.IsOpen())
    {
        ThrowSystem<RunException>("open", m_name, errno);
    }
}

Descriptor SlurmFolder::Lock() const
{
    // Not the folder itself: other machines do not see locks of folders of a network file system.
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    constexpr mode_t kMode = 0666;
    Descriptor folder(::openat(m_folder.Get(), ".lock", kFlags, kMode));
    if (!folder.IsOpen())
    {
        ThrowSystem<RunException>("open", m_name, errno);
    }
    // A file system without locks is no reason not to run.
    while (::flock(folder.Get(), LOCK_EX) != 0 && errno == EINTR)
    {}
    return folder;
}

std::vector<SlurmArray> SlurmFolder::Read() const
{
    const std::string name = m_name + "/" + kRecord;
    const std::optional<std::string> text = ReadFileIn(m_folder, kRecord, name);
    std::vector<SlurmArray> arrays;
    if (!text)
    {
        return arrays;
    }
    const Property record = ParseRecord(*text, name, "slurm");
    const RecordMembers members(record, Place{name}, {"version", "arrays"});
    members.Integer("version", 1, 1);
    for (const Property& array : members.Group("arrays"))
    {
        const Place place = members.At("arrays").Under(array.GetName());
        if (array.GetName() != NumberText(arrays.size() + 1))
        {
            Refuse(place, "expected '" + NumberText(arrays.size() + 1) + "' here");
        }
        arrays.push_back(ReadArray(RecordMembers(array, place, {"name", "id", "offset", "indices"}), m_jobs));
    }
    return arrays;
}

void SlurmFolder::Write(const std::vector<SlurmArray>& arrays) const
{
    Property record("slurm");
    record.CreateChildT("version", 1);
    Property& list = record.SetChild("arrays");
    for (const SlurmArray& array : arrays)
    {
        Property& one = list.SetChild(NumberText(list.Count() + 1));
        one.CreateChildT("name", array.name);
        one.CreateChildT("id", array.id);
        one.CreateChildT("offset", array.offset);
        one.CreateChildT("indices", WriteIndices(array.indices));
    }
    WriteFileIn(m_folder, kRecord, m_name + "/" + kRecord, RecordDocument(record));
}

bool SlurmFolder::HasLog(const SlurmArray& array, long long index) const
{
    const std::string name = std::to_string(array.id) + "_" + std::to_string(index) + ".log";
    struct stat status = {};
    return ::fstatat(m_folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

std::string SlurmFolder::WriteScript() const
{
    WriteFileIn(m_folder, kScript, m_name + "/" + kScript, kTask);
    return m_base + "/" + kScript;
}

bool HasSlurmFolder(const Batch& batch)
{
    struct stat status = {};
    return ::lstat((batch.base + "/" + kFolder).c_str(), &status) == 0;
}

std::vector<SlurmArray> SplitIntoArrays(const std::vector<unsigned int>& jobs, long long limit)
{
    // The indices are one word of a command, of which the system takes 128 KiB.
    constexpr std::size_t kMostRanges = 4096;
    std::vector<SlurmArray> arrays;
    unsigned int last = 0;
    for (const unsigned int job : jobs)
    {
        const bool isApart = job != last + 1;
        last = job;
        if (arrays.empty() || job - arrays.back().offset >= limit ||
            (isApart && arrays.back().indices.size() == kMostRanges))
        {
            // Where the cluster's limit allows it, index and number are the same, which is easier to read.
            SlurmArray array;
            array.offset = job < limit ? 0 : job - 1;
            arrays.push_back(std::move(array));
        }
        AddIndex(job - arrays.back().offset, arrays.back().indices);
    }
    return arrays;
}

std::vector<std::optional<TaskPlace>> LastTasks(std::size_t count, const std::vector<SlurmArray>& arrays)
{
    std::vector<std::optional<TaskPlace>> last(count);
    OpenPositions open(count);
    for (std::size_t i = arrays.size(); i-- > 0;)
    {
        const long long offset = arrays[i].offset;
        for (const auto& [first, end] : arrays[i].indices)
        {
            const auto behind = static_cast<std::size_t>(offset + end);
            for (std::size_t job = open.From(static_cast<std::size_t>(offset + first - 1)); job < behind;
                 job = open.From(job))
            {
                last[job] = TaskPlace(i, static_cast<long long>(job) + 1 - offset);
                open.Close(job);
            }
        }
    }
    return last;
}

} // namespace Zelnor::Media
