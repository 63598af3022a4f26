#include "Tools/zconf/Commands/JobCommands.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"

namespace Zelnor::Tool
{

void AddJobCommands(CLI::App& app)
{
    CLI::App* const job =
        AddCommandGroup(app, "job", "Make, show, check, draw, run and compare transcoding jobs");
    AddJobNew(*job);
    AddJobShow(*job);
    AddJobCheck(*job);
    AddJobDraw(*job);
    AddJobRun(*job);
    AddJobDiff(*job);
}

} // namespace Zelnor::Tool
