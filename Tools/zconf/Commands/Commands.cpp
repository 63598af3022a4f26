#include "Tools/zconf/Commands/Commands.h"

#include "Tools/zconf/Console/CommandLine.h"

namespace Zelnor::Tool
{

void AddAllCommands(CLI::App& app)
{
    CLI::App* const job =
        AddCommandGroup(app, "job", "Make, show, check, draw, run, verify and compare transcoding jobs");
    AddJobNewCommand(*job);
    AddJobShowCommand(*job);
    AddJobCheckCommand(*job);
    AddJobDrawCommand(*job);
    AddJobRunCommand(*job);
    AddJobVerifyCommand(*job);
    AddJobDiffCommand(*job);
    CLI::App* const batch =
        AddCommandGroup(app, "batch", "Make and run batches: many jobs, kept in one folder");
    AddBatchNewCommand(*batch);
    AddBatchRunCommand(*batch);
    AddBatchStatusCommand(*batch);
    AddBatchReportCommand(*batch);
    CLI::App* const preset = AddCommandGroup(app, "preset", "List, show and make presets");
    AddPresetListCommand(*preset);
    AddPresetShowCommand(*preset);
    AddPresetNewCommand(*preset);
    AddConvertCommand(app);
    AddValidateCommand(app);
    AddProbeCommand(app);
    AddListCommand(app);
    AddExplainCommand(app);
    AddBitrateCommand(app);
    AddExtensionsCommand(app);
    AddHelpCommand(app);
}

} // namespace Zelnor::Tool
