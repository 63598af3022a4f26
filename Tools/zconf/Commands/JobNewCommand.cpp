#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobOptions.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"

#include <memory>
#include <string>

namespace Zelnor::Tool
{

namespace
{

struct JobNewArguments
{
    std::string preset;
    std::string input;
    std::string target;
    std::string document = "-";
    JobOptions job;
};

int RunJobNew(const JobNewArguments& options)
{
    const NewJob made = PlanNewJob(options.preset, options.input, RequestOf(options.job, options.target));
    CheckDistinct(made, options.input, options.document);
    for (const std::string& note : made.job.notes)
    {
        ReportNote(note);
    }
    WriteJsonDocument(options.document, [&made](const auto& output) { made.job.graph->Save(output); });
    return kExitSuccess;
}

} // namespace

void AddJobNewCommand(CLI::App& job)
{
    CLI::App* const command = AddCommand(job, "new", "Make a job that converts a media file");
    const auto options = std::make_shared<JobNewArguments>();
    command
        ->add_option(
            "-p,--preset", options->preset,
            "The name of a preset (see zconf preset list), or a preset file: a name with a slash, or "
            "with the extension .json")
        ->type_name("PRESET")
        ->required();
    command
        ->add_option("-i,--input", options->input,
                     "The media file to read, which must exist; a relative path is kept, and resolved in the "
                     "folder in which the job is run")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("-t,--target,--output", options->target,
                     "The media file to make; a name without an extension gets that of the container, and a "
                     "folder gets a file named like the input (--output is another name of this option)")
        ->type_name("FILE")
        ->required();
    AddJobOptions(*command, options->job);
    AddStrictFlag(*command, options->job.strict);
    AddDocumentOption(*command, options->document, "The job's document", "--job");
    OnRun(*command, [options] { return RunJobNew(*options); });
}

} // namespace Zelnor::Tool
