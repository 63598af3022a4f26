#include "Tools/zconf/Commands.h"

namespace Zelnor::Tool
{

void AddAllCommands(CLI::App& app) { AddJobCommands(app); }

} // namespace Zelnor::Tool
