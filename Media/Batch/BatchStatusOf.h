#pragma once

// Private to the library, not installed.

#include "Media/Batch/BatchStatus.h"

#include <functional>
#include <limits>
#include <optional>

namespace Zelnor::Media
{

class BatchFolder;

/// Sums overflow only in the batch of somebody who means harm.
template <class T>
void AddCapped(T& sum, T part)
{
    if (__builtin_add_overflow(sum, part, &sum))
    {
        sum = std::numeric_limits<T>::max();
    }
}

/// Nothing when the job has none.
/// \throw JobException when it cannot be read, with the advice to delete it
std::optional<BatchResult> ReadBatchResult(const BatchFolder& folder, unsigned int number);

/// How one job stands by its last result.
/// \param isLocked  whether a process that lives has locked it; asked only where that matters
BatchJobState StateOf(const Batch& batch, const BatchJob& job, const std::optional<BatchResult>& result,
                      const std::function<bool()>& isLocked);

/// The same as the public one, in a folder that is open.
BatchStatus ReadBatchStatus(const BatchFolder& folder, const Batch& batch);

} // namespace Zelnor::Media
