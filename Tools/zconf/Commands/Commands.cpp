#include "Tools/zconf/Commands/Commands.h"

namespace Zelnor::Tool
{

void AddAllCommands(CLI::App& app)
{
    AddJobCommands(app);
    AddProbeCommand(app);
    AddListCommands(app);
    AddExplainCommand(app);
    AddBitrateCommand(app);
    AddExtensionsCommand(app);
}

} // namespace Zelnor::Tool
