#pragma once

// Private to the library, not installed.

#include "Media/Batch/Batch.h"
#include "Media/Batch/BatchResult.h"
#include "Media/Batch/BatchRun.h"

#include <functional>

namespace Zelnor::Media
{

class BatchFolder;

/// Who hears of a job while it runs.
struct BatchJobHooks
{
    std::function<void(const RunProgress&)> onProgress = {};
};

/// Runs a job, which the caller has locked, and writes its result. One that is done stays as it is, unless
/// its output has gone and the options choose it. Where a killed run has put an output in place and could
/// not say so, the output is verified instead.
/// \throw JobException, RunException when a result cannot be read or written
BatchResult RunOneBatchJob(const BatchFolder& folder, const Batch& batch, const BatchJob& job,
                           const BatchRunOptions& options, const BatchJobHooks& hooks);

} // namespace Zelnor::Media
