#include "Tools/zconf/Commands/JobInput.h"

#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"

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
        WriteMessage("zconf: note: " + Printable(note) + "\n");
    }
    return job;
}

} // namespace Zelnor::Tool
