#pragma once

// Private to the library, not installed: which jobs of a batch Slurm was given.

#include "Media/Batch/Batch.h"
#include "Media/Batch/SlurmText.h"
#include "Media/Running/Descriptor.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// An array of jobs that Slurm was given.
struct SlurmArray
{
    /// Slurm's name for it. It is written down before the array is submitted: should the process end right
    /// then, the next one finds the array by its name.
    std::string name;
    long long id = 0;     ///< 0 as long as Slurm has not told
    long long offset = 0; ///< the task with index i runs the job with the number offset + i
    IndexRanges indices;
};

/// What tasks print goes there, in the batch's folder, as `sbatch --output` takes it.
inline constexpr const char* kSlurmLog = "slurm/%A_%a.log";

/// The folder "slurm" of a batch.
class SlurmFolder
{
public:
    /// Opens it, and makes it when there is none.
    /// \throw RunException "Cannot make 'films/slurm': Permission denied"
    explicit SlurmFolder(const Batch& batch);

    /// Keeps other processes from submitting jobs of the batch, for as long as the descriptor is open. Waits
    /// until they have ended.
    Descriptor Lock() const;

    /// The arrays in the order in which they were submitted; none when there is no record of them.
    /// \throw JobException "films/slurm/arrays.json: arrays.000002.indices: expected ..."
    std::vector<SlurmArray> Read() const;
    /// \throw RunException
    void Write(const std::vector<SlurmArray>& arrays) const;
    /// Whether the task has ever begun: it has printed something, or nothing, into a file by then.
    bool HasLog(const SlurmArray& array, long long index) const;
    /// Writes what a task runs and returns its absolute name.
    /// \throw RunException
    std::string WriteScript() const;

private:
    std::string m_name;
    std::string m_base;
    std::size_t m_jobs;
    Descriptor m_folder;
};

/// Whether there is such a folder: whether any jobs were ever given to Slurm.
bool HasSlurmFolder(const Batch& batch);

/// The jobs as arrays whose indices are below `limit`, each as large as can be, without names.
/// \param jobs  numbers, ascending
/// \param limit  at least 2
std::vector<SlurmArray> SplitIntoArrays(const std::vector<unsigned int>& jobs, long long limit);

/// A task: the position of its array, and its index there.
using TaskPlace = std::pair<std::size_t, long long>;

/// The task with which each job was submitted last.
/// \param count  of the jobs
std::vector<std::optional<TaskPlace>> LastTasks(std::size_t count, const std::vector<SlurmArray>& arrays);

} // namespace Zelnor::Media
