#include "Tools/zconf/JobCommands.h"
#include "Tools/zconf/CommandLine.h"
#include "Tools/zconf/Commands.h"

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
