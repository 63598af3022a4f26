#include "Tools/zconf/Commands/JobInput.h"

#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"

namespace Zelnor::Tool
{

void AddJobArgument(CLI::App& command, std::string& name)
{
    command.add_option("JOB", name, "The job's document; \"-\" is standard input")
        ->type_name("FILE")
        ->required();
}

Media::JobFile OpenJob(const std::string& name)
{
    Media::JobFile job = Media::ReadJob(*OpenInput(name), InputName(name));
    for (const std::string& note : job.notes)
    {
        ReportNote(note);
    }
    return job;
}

} // namespace Zelnor::Tool
