#pragma once

// Private to the library, not installed: what Slurm's programs are given and print.

#include "Media/Batch/SlurmTask.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// Indices of tasks as ranges from a first to a last one, ascending. So they take memory as the text does
/// that holds them.
using IndexRanges = std::vector<std::pair<long long, long long>>;

/// \param index  greater than those before
void AddIndex(long long index, IndexRanges& indices);

/// As `sbatch --array` takes them: "1-4,7".
std::string WriteIndices(const IndexRanges& indices);

/// The indices in such a text. Nothing when it is not such a text, when they do not ascend, or when there are
/// more than `most`.
std::optional<IndexRanges> ReadIndices(std::string_view text, std::size_t most);

/// What `squeue --Format` is given.
inline constexpr const char* kQueueFields =
    "ArrayJobID:|,ArrayTaskID:|,Name:|,State:|,RestartCnt:|,NodeList:|,Reason:|";

/// The tasks in what `squeue` printed. Jobs that are not in an array are left out.
std::vector<SlurmTask> ReadQueue(std::string_view text);

/// What `sacct --format` is given.
inline constexpr const char* kAccountFields = "JobID,JobName,State,NodeList,Reason";

/// The tasks in what `sacct --parsable2` printed. Tasks of one array that have not begun are one line there;
/// they are left out, since the queue has them until they begin or are cancelled. A task that still waits or
/// runs by the accounts is unknown: the queue tells what does, and accounts may never have heard of the end.
std::vector<SlurmTask> ReadAccounts(std::string_view text);

/// The number that a setting has in what `scontrol show config` printed.
std::optional<long long> ReadSetting(std::string_view text, std::string_view name);

} // namespace Zelnor::Media
