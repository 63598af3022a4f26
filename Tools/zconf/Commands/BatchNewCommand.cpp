#include "Media/Batch/BatchPlan.h"
#include "Tools/zconf/Commands/BatchText.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobOptions.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/SignalGuard.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/StatusLine.h"
#include "Tools/zconf/Console/Text.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct BatchNewArguments
{
    std::vector<std::string> presets;
    std::vector<std::string> inputs;
    std::string list; ///< a file that names inputs; empty: none
    bool isNulList = false;
    std::string outputFolder;
    std::string namePattern = "{stem}.{ext}";
    std::string batch = "batch";
    JobOptions job;
};

/// The entries of a list, which ends them by line breaks or NUL bytes. Empty ones are nothing.
void AddListed(const std::string& name, bool isNul, std::vector<std::string>& inputs)
{
    constexpr std::size_t kBlock = 65536;
    const auto input = OpenInput(name);
    std::array<char, kBlock> block;
    std::string entry;
    const auto end = [&entry, &inputs] {
        if (!entry.empty())
        {
            inputs.push_back(std::move(entry));
        }
        entry.clear();
    };
    while (const std::size_t count = Core::ReadUpTo(*input, block.data(), block.size()))
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            block[i] == (isNul ? '\0' : '\n') ? end() : entry.push_back(block[i]);
        }
    }
    end();
    const auto isBad = [](const std::string& path) { return path.find('\0') != std::string::npos; };
    if (std::any_of(inputs.begin(), inputs.end(), isBad))
    {
        throw ToolError(InputName(name) + ": a NUL byte stands in a line; --null reads a list of those");
    }
}

void ReportPlan(const Media::PlannedBatch& planned)
{
    std::size_t noted = 0;
    for (const Media::BatchJob& job : planned.batch.jobs)
    {
        if (!job.IsPlanned())
        {
            ReportNote(BatchFailureText(job, job.refusal));
        }
        noted += job.notes.empty() ? 0U : 1U;
    }
    if (noted > 0)
    {
        ReportNote(Count(noted, "job") +
                   " will not keep all of the input, or changes it; 'zconf batch status --json' lists that");
    }
    if (!planned.existing.empty())
    {
        ReportNote(Count(planned.existing.size(), "output") + " exist" +
                   (planned.existing.size() == 1 ? "s" : "") + " already, such as '" +
                   planned.existing.front() + "'; 'zconf batch run --overwrite' replaces such files");
    }
}

int RunBatchNew(const BatchNewArguments& options)
{
    Media::BatchRequest request;
    request.folder = options.batch;
    request.presets = options.presets;
    request.inputs = options.inputs;
    request.outputFolder = options.outputFolder;
    request.namePattern = options.namePattern;
    request.job = RequestOf(options.job, options.outputFolder);
    if (!options.list.empty())
    {
        AddListed(options.list, options.isNulList, request.inputs);
    }
    StatusLine line;
    request.onProgress = [&line](std::size_t done, std::size_t count) {
        line.Show(PlanProgressText(done, count));
    };
    const SignalGuard guard(request.cancel);
    const Media::PlannedBatch planned = Media::PlanBatch(request);
    line.Clear();
    if (planned.isCancelled)
    {
        EndBy(SignalGuard::Caught());
    }
    ReportPlan(planned);
    const auto& jobs = planned.batch.jobs;
    const auto count = static_cast<std::size_t>(
        std::count_if(jobs.begin(), jobs.end(), [](const auto& job) { return job.IsPlanned(); }));
    WriteMessage("zconf: " + Printable(options.batch) + ": " + Count(count, "job") + " planned\n");
    return kExitSuccess;
}

} // namespace

void AddBatchNewCommand(CLI::App& batch)
{
    CLI::App* const command =
        AddCommand(batch, "new", "Make a batch: plan a job for each input with each preset");
    const auto options = std::make_shared<BatchNewArguments>();
    command
        ->add_option("INPUT", options->inputs,
                     "Media files, and folders with all media files that are in them")
        ->type_name("FILE");
    command
        ->add_option("-p,--preset", options->presets,
                     "A preset file, or the name of a preset that comes with the program; may be repeated")
        ->type_name("PRESET")
        ->required()
        ->allow_extra_args(false);
    command
        ->add_option("--output-dir", options->outputFolder,
                     "The folder for all output files; a run makes it when it is not there")
        ->type_name("FOLDER")
        ->required();
    command
        ->add_option("--name", options->namePattern,
                     "How output files are named, with {stem}, {ext}, {preset}, {number} and {parent}, the "
                     "folder that the input is in (default: {stem}.{ext})")
        ->type_name("PATTERN");
    command->add_option("-o,--batch", options->batch, "The batch's folder to make (default: batch)")
        ->type_name("FOLDER");
    command
        ->add_option("--files-from", options->list,
                     "A file that names inputs, one on each line; \"-\" is standard input")
        ->type_name("FILE");
    command->add_flag("-0,--null", options->isNulList,
                      "The names of --files-from end with NUL bytes, as 'find -print0' writes them");
    AddJobOptions(*command, options->job);
    for (const char* const list : {"--stream", "--merge"})
    {
        // What follows may be an input.
        command->get_option(list)->allow_extra_args(false);
    }
    AddStrictFlag(*command, options->job.strict);
    OnRun(*command, [options] { return RunBatchNew(*options); });
}

} // namespace Zelnor::Tool
