#include "Media/Batch/BatchStatus.h"
#include "Tools/zconf/Commands/BatchSlurm.h"
#include "Tools/zconf/Commands/BatchText.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/StatusLine.h"
#include "Tools/zconf/Console/Table.h"
#include "Tools/zconf/Console/Terminal.h"
#include "Tools/zconf/Console/Text.h"
#include "Tools/zconf/Console/TimeText.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace Zelnor::Tool
{

namespace
{

using Media::BatchJobState;

struct BatchStatusArguments
{
    std::string batch;
    bool all = false;
    bool watch = false;
    bool json = false;
};

std::string MediaTimeText(const Media::BatchStatus& status)
{
    const auto clock = [](std::int64_t time) { return ClockText(static_cast<double>(time) / kSecond); };
    return clock(status.mediaDone) + " of media made, " + clock(status.mediaLeft) + " left";
}

/// Why a job stands as it does; empty where its state says all.
std::string ReasonOf(const Media::BatchJob& job, const Media::BatchJobStatus& status,
                     const std::optional<Media::SlurmTask>& task)
{
    return !job.IsPlanned()                        ? job.refusal
           : status.state == BatchJobState::Failed ? status.result->reason
           : status.state == BatchJobState::Running
               ? "since " + status.result->started + " on " + status.result->host
           : task ? SlurmTaskText(*task)
                  : "";
}

Style StyleOf(BatchJobState state)
{
    return state == BatchJobState::Done ? Style::Good
           : state == BatchJobState::Failed || state == BatchJobState::Missing ||
                   state == BatchJobState::Changed || state == BatchJobState::Refused
               ? Style::Bad
               : Style::Plain;
}

void WriteStatus(const Media::Batch& batch, const Media::BatchStatus& status, const SlurmTasks& tasks,
                 bool all)
{
    const Painter paint = Painter::ForStandardOutput();
    Table table(2);
    for (std::size_t i = 0; i < batch.jobs.size(); ++i)
    {
        const Media::BatchJob& job = batch.jobs[i];
        const BatchJobState state = status.jobs[i].state;
        const std::optional<Media::SlurmTask> task = tasks.empty() ? std::nullopt : tasks[i];
        if (all || (state != BatchJobState::Done && (state != BatchJobState::Waiting || task)))
        {
            table.AddRow({{std::to_string(job.number), Style::Id},
                          {NameOf(state), StyleOf(state)},
                          {job.input},
                          {job.preset},
                          {ReasonOf(job, status.jobs[i], task)}});
        }
    }
    WriteText(Printable(batch.folder) + ": " + BatchSummaryText(status) + "\n" + MediaTimeText(status) +
              "\n" + table.Text(paint));
}

/// Whether a run has something left to do, or does it.
bool IsOpen(const Media::BatchStatus& status)
{
    return status.CountOf(BatchJobState::Waiting) + status.CountOf(BatchJobState::Running) > 0;
}

bool IsAnyPending(const SlurmTasks& tasks)
{
    return std::any_of(tasks.begin(), tasks.end(), [](const std::optional<Media::SlurmTask>& task) {
        return task && Media::IsPending(task->state);
    });
}

/// Waits until nothing is open any more, or nobody runs the batch.
Media::BatchStatus Watch(const Media::Batch& batch)
{
    StatusLine line;
    // A run may just begin, and it begins its next job a moment after one has ended.
    constexpr int kPatience = 10;
    int idle = 0;
    for (;;)
    {
        const Media::BatchStatus status = Media::ReadBatchStatus(batch);
        idle = status.CountOf(BatchJobState::Running) > 0 ? 0 : idle + 1;
        if (!IsOpen(status) || (idle > kPatience && !IsAnyPending(AskSlurmOf(batch))))
        {
            return Media::ReadBatchStatus(batch);
        }
        idle = idle > kPatience ? 0 : idle;
        line.Show(BatchSummaryText(status) + "; " + MediaTimeText(status));
        constexpr std::chrono::milliseconds kPause(500);
        std::this_thread::sleep_for(kPause);
    }
}

int RunBatchStatus(const BatchStatusArguments& options)
{
    const Media::Batch batch = Media::ReadBatch(options.batch);
    const Media::BatchStatus status = options.watch ? Watch(batch) : Media::ReadBatchStatus(batch);
    const SlurmTasks tasks = AskSlurmOf(batch);
    options.json ? WriteBatchJson(batch, status, tasks) : WriteStatus(batch, status, tasks, options.all);
    return status.IsDone() ? kExitSuccess : kExitNo;
}

} // namespace

void AddBatchStatusCommand(CLI::App& batch)
{
    CLI::App* const command = AddCommand(
        batch, "status", "Show how a batch stands: exit code 0 if all of its jobs are done, else 1");
    const auto options = std::make_shared<BatchStatusArguments>();
    AddBatchArgument(*command, options->batch);
    command->add_flag("--all", options->all, "List each job, also those that are done or wait to be run");
    command->add_flag(
        "--watch", options->watch,
        "Wait until no job is left that waits or runs, or nobody has run the batch for five seconds; a line "
        "on the terminal tells how far it is");
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunBatchStatus(*options); });
}

} // namespace Zelnor::Tool
