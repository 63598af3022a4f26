#include "Tools/zconf/Commands.h"

namespace Zelnor::Tool
{

void AddAllCommands(CLI::App& app)
{
    AddJobCommands(app);
    AddProbeCommand(app);
}

} // namespace Zelnor::Tool
