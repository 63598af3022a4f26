#include "Media/Running/JobCheck.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobOptions.h"
#include "Tools/zconf/Commands/JobRunning.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"

#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct ConvertArguments
{
    std::string input;
    std::string output;
    std::string preset;
    std::string document;
    bool dryRun = false;
    JobOptions job;
    RunSettings run;
};

/// \throw ToolError with every reason why the job cannot be run
void RequireValid(const Media::JobFile& job)
{
    std::string reasons;
    for (const Media::JobFault& fault : Media::CheckJob(*job.graph, job.name))
    {
        reasons += (reasons.empty() ? "" : "; ") + fault.Sentence();
    }
    if (!reasons.empty())
    {
        throw ToolError("The job cannot be run: " + reasons);
    }
}

int RunConvert(const ConvertArguments& options)
{
    if (IsStandardStream(options.document))
    {
        throw ToolError("--save-job needs a named file; the command 'job new' writes to standard output");
    }
    const NewJob made = PlanNewJob(options.preset, options.input, RequestOf(options.job, options.output));
    CheckDistinct(made, options.input, options.document);
    for (const std::string& note : made.job.notes)
    {
        ReportNote(note);
    }
    const Media::JobFile job = {options.document, made.job.graph};
    RequireValid(job);
    if (!options.document.empty())
    {
        WriteJsonDocument(options.document, [&made](const auto& output) { made.job.graph->Save(output); });
    }
    if (options.dryRun)
    {
        PrintCommands(job, options.run);
        return kExitSuccess;
    }
    return RunTargets(job, options.run);
}

} // namespace

void AddConvertCommand(CLI::App& app)
{
    CLI::App* const command = AddCommand(
        app, "convert", "Convert a media file: make a job for it, check it, run it and verify the file");
    const auto options = std::make_shared<ConvertArguments>();
    command->add_option("INPUT", options->input, "The media file to read")->type_name("FILE")->required();
    command
        ->add_option("OUTPUT", options->output,
                     "The media file to make; a folder gets a file named like the input")
        ->type_name("FILE")
        ->required();
    command
        ->add_option(
            "-p,--preset", options->preset,
            "The name of a preset (see zconf preset list), or a preset file: a name with a slash, or "
            "with the extension .json (default: of those whose files have the extension of OUTPUT, one "
            "that is named like it, else the one with the shortest name)")
        ->type_name("PRESET");
    AddJobOptions(*command, options->job);
    for (const char* const list : {"--stream", "--merge"})
    {
        // What follows may be a file.
        command->get_option(list)->allow_extra_args(false);
    }
    command->add_option("--save-job", options->document, "Write the job's document to this file, too")
        ->type_name("FILE");
    command->add_flag("-n,--dry-run", options->dryRun,
                      "Print the ffmpeg commands, quoted for a shell, instead of running them");
    AddRunOptions(*command, options->run);
    OnRun(*command, [options] {
        options->job.strict = options->run.strict;
        // The notes of the new job name them, and it was refused for what nobody asked to leave out.
        options->run.tellsLosses = false;
        options->run.strict = false;
        return RunConvert(*options);
    });
}

} // namespace Zelnor::Tool
