#include "Tools/zconf/Commands/BatchText.h"

#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Text.h"
#include "Tools/zconf/Console/TimeText.h"

#include <algorithm>
#include <cmath>

namespace Zelnor::Tool
{

namespace
{

double Seconds(std::int64_t microseconds) { return static_cast<double>(microseconds) / kSecond; }

/// "[####----------------]"
/// \param part  of all, 0 to 1
std::string BarText(double part)
{
    constexpr std::size_t kBar = 20;
    const auto filled = static_cast<std::size_t>(std::clamp(part, 0.0, 1.0) * kBar);
    return "[" + std::string(filled, '#') + std::string(kBar - filled, '-') + "]";
}

void AddText(JsonOutput& output, const char* key, const std::string& text)
{
    if (!text.empty())
    {
        output.Key(key);
        output.String(text);
    }
}

void AddTexts(JsonOutput& output, const char* key, const std::vector<std::string>& texts)
{
    if (texts.empty())
    {
        return;
    }
    output.Key(key);
    output.GetWriter().StartArray();
    for (const std::string& text : texts)
    {
        output.String(text);
    }
    output.GetWriter().EndArray();
}

void AddSeconds(JsonOutput& output, const char* key, std::int64_t microseconds)
{
    output.Key(key);
    output.GetWriter().Double(Seconds(microseconds));
}

void AddSpeed(JsonOutput& output, double speed)
{
    if (speed > 0 && std::isfinite(speed))
    {
        output.Key("speed");
        output.GetWriter().Double(speed);
    }
}

/// Each as its words.
void AddCommands(JsonOutput& output, const std::vector<std::vector<std::string>>& commands)
{
    if (commands.empty())
    {
        return;
    }
    JsonOutput::Writer& writer = output.GetWriter();
    output.Key("commands");
    writer.StartArray();
    for (const std::vector<std::string>& words : commands)
    {
        writer.StartArray();
        std::for_each(words.begin(), words.end(),
                      [&output](const std::string& word) { output.String(word); });
        writer.EndArray();
    }
    writer.EndArray();
}

void AddResult(JsonOutput& output, const Media::BatchResult& result)
{
    JsonOutput::Writer& writer = output.GetWriter();
    AddText(output, "failure", NameOf(result.failure));
    AddText(output, "reason", result.reason);
    if (result.failure == Media::BatchResult::Failure::FFmpeg)
    {
        output.Key("exit_code");
        writer.Int(result.exitCode);
    }
    AddTexts(output, "messages", result.messages);
    AddCommands(output, result.commands);
    AddTexts(output, "result_notes", result.notes);
    AddText(output, "verification", result.verification);
    output.Key("attempts");
    writer.Uint(result.attempts);
    AddText(output, "host", result.host);
    output.Key("process");
    writer.Int64(result.process);
    AddText(output, "started", result.started);
    AddText(output, "ended", result.ended);
    AddSeconds(output, "elapsed", result.elapsed);
    AddSpeed(output, result.Speed());
    output.Key("size_before");
    writer.Uint64(result.sizeBefore);
    output.Key("size_after");
    writer.Uint64(result.sizeAfter);
}

void AddTask(JsonOutput& output, const Media::SlurmTask& task)
{
    JsonOutput::Writer& writer = output.GetWriter();
    output.Key("slurm");
    writer.StartObject();
    output.Key("array");
    writer.Int64(task.array);
    output.Key("index");
    writer.Int64(task.index);
    output.Key("state");
    output.String(NameOf(task.state));
    output.Key("restarts");
    writer.Int64(task.restarts);
    AddText(output, "node", task.node);
    AddText(output, "reason", task.reason);
    writer.EndObject();
}

void AddJob(JsonOutput& output, const Media::Batch& batch, const Media::BatchJob& job,
            const Media::BatchJobStatus& status, const std::optional<Media::SlurmTask>& task)
{
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    output.Key("number");
    writer.Uint(job.number);
    output.Key("state");
    output.String(NameOf(status.state));
    output.Key("input");
    output.String(batch.PathOf(job.input));
    output.Key("preset");
    output.String(job.preset);
    AddText(output, "refusal", job.refusal);
    if (job.IsPlanned())
    {
        output.Key("output");
        output.String(batch.PathOf(batch.OutputOf(job)));
        if (job.duration)
        {
            AddSeconds(output, "duration", *job.duration);
        }
    }
    AddTexts(output, "notes", job.notes);
    if (status.result)
    {
        AddResult(output, *status.result);
    }
    if (task)
    {
        AddTask(output, *task);
    }
    writer.EndObject();
}

} // namespace

void AddBatchArgument(CLI::App& command, std::string& name)
{
    command.add_option("BATCH", name, "The batch's folder")->type_name("FOLDER")->required();
}

std::string PlanProgressText(std::size_t done, std::size_t count)
{
    return BarText(static_cast<double>(done) / static_cast<double>(std::max<std::size_t>(1, count))) +
           " planning " + std::to_string(done) + " of " + Count(count, "input");
}

std::string BatchProgressText(const Media::BatchProgress& progress)
{
    const double all = Seconds(progress.mediaDone) + Seconds(progress.mediaLeft);
    const double part = all > 0 ? Seconds(progress.mediaDone) / all
                        : progress.count > 0
                            ? static_cast<double>(progress.done) / static_cast<double>(progress.count)
                            : 0;
    std::string text = BarText(part) + " " + std::to_string(progress.done) + " of " +
                       std::to_string(progress.count) + " done";
    if (progress.failed > 0)
    {
        text += ", " + std::to_string(progress.failed) + " failed";
    }
    text += ", " + std::to_string(progress.running) + " running  " + ClockText(Seconds(progress.mediaDone)) +
            " made, " + ClockText(Seconds(progress.mediaLeft)) + " left";
    if (progress.speed > 0)
    {
        text += "  " + Media::SpeedText(progress.speed) + "  " +
                ClockText(Seconds(progress.mediaLeft) / progress.speed) + " to go";
    }
    return text;
}

std::string BatchFailureText(const Media::BatchJob& job, const std::string& reason)
{
    return "job " + std::to_string(job.number) + " ('" + job.input + "', preset '" + job.preset +
           "'): " + reason;
}

void WriteBatchJson(const Media::Batch& batch, const Media::BatchStatus& status, const SlurmTasks& tasks)
{
    JsonOutput output;
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    output.Key("batch");
    output.String(batch.folder);
    output.Key("done");
    writer.Bool(status.IsDone());
    output.Key("counts");
    writer.StartObject();
    for (const Media::BatchJobState state : Media::kBatchJobStates)
    {
        output.Key(NameOf(state));
        writer.Uint64(status.CountOf(state));
    }
    writer.EndObject();
    AddSeconds(output, "media_done", status.mediaDone);
    AddSeconds(output, "media_left", status.mediaLeft);
    AddSpeed(output, status.speed);
    output.Key("jobs");
    writer.StartArray();
    for (std::size_t i = 0; i < batch.jobs.size(); ++i)
    {
        AddJob(output, batch, batch.jobs[i], status.jobs[i], tasks.empty() ? std::nullopt : tasks[i]);
    }
    writer.EndArray();
    writer.EndObject();
    output.Finish();
}

} // namespace Zelnor::Tool
