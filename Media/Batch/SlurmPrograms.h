#pragma once

// Private to the library, not installed: Slurm's programs.

#include "Media/Batch/SlurmTask.h"
#include "Media/Batch/SlurmText.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// An index in an array of jobs is below this number.
/// \throw RunException as all functions below, when a program is missing or refuses, with its own words
long long AskArrayLimit();

/// What `sbatch` is given.
struct ArrayRequest
{
    std::string name;
    IndexRanges indices;
    unsigned int parallel = 0;        ///< tasks that run at once; 0: as many as the cluster lets
    std::string folder;               ///< where the tasks start
    std::string log;                  ///< what the tasks print goes there; %A and %a are array and index
    std::vector<std::string> options; ///< more of `sbatch`
    std::string script;
    std::vector<std::string> arguments; ///< of the script
};

/// \returns the array's number
long long SubmitArray(const ArrayRequest& request);

/// The number of the array of that name that this user has in the queue; 0 when there is none.
long long FindArray(const std::string& name);

/// The tasks of those arrays that the queue still knows, and of the others what the accounts know, if the
/// cluster keeps any.
std::vector<SlurmTask> AskTasks(const std::vector<long long>& arrays);

/// \param tasks  "1234_17", or "1234" for all of an array
void CancelTasks(const std::vector<std::string>& tasks);

/// \throw RunException "--array=1-3: this option of sbatch is set for the batch", and for words that are not
///        options
void CheckOptions(const std::vector<std::string>& options);

} // namespace Zelnor::Media
