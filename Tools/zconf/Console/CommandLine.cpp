#include "Tools/zconf/Console/CommandLine.h"

#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

/// "zconf job new": the command as far as it was parsed.
std::string CommandPath(const CLI::App& app)
{
    std::string path = app.get_name();
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty())
    {
        command = command->get_subcommands().front();
        path += " " + command->get_name();
    }
    return path;
}

void AddVersion(CLI::App& app) { app.set_version_flag("--version", "zconf " ZCONF_VERSION); }

} // namespace

CLI::App* AddCommand(CLI::App& parent, const std::string& name, const std::string& description)
{
    CLI::App* const command = parent.add_subcommand(name, description);
    AddVersion(*command);
    return command;
}

CLI::App* AddCommandGroup(CLI::App& parent, const std::string& name, const std::string& description)
{
    CLI::App* const group = AddCommand(parent, name, description);
    group->require_subcommand(1);
    return group;
}

void AddJsonFlag(CLI::App& command, bool& json) { command.add_flag("--json", json, "Write JSON"); }

void OnRun(CLI::App& command, std::function<int()> run)
{
    command.callback([run = std::move(run)] {
        const int code = run();
        if (code != kExitSuccess)
        {
            throw CLI::RuntimeError(code);
        }
    });
}

int RunCommandLine(int argc, char** argv, const std::function<void(CLI::App&)>& addCommands)
{
    CLI::App app("Make, show, check, draw, compare and run transcoding jobs.", "zconf");
    AddVersion(app);
    app.require_subcommand(1);
    addCommands(app);
    app.footer("The file name \"-\" means standard input or standard output.\n"
               "Exit codes: 0 success, 1 the answer is no, 2 error, 3 ffmpeg failed, "
               "4 an output file is not what its job says.");
    try
    {
        app.parse(argc, argv);
        return kExitSuccess;
    }
    catch (const CLI::RuntimeError& result)
    {
        return result.get_exit_code();
    }
    catch (const CLI::CallForHelp&)
    {
        WriteText(app.help());
        return kExitSuccess;
    }
    catch (const CLI::CallForVersion& version)
    {
        WriteText(std::string(version.what()) + "\n");
        return kExitSuccess;
    }
    catch (const CLI::ParseError& error)
    {
        // An unexpected argument is more likely the mistake than what is missing because of it.
        const std::vector<std::string> unexpected = app.remaining(true);
        const std::string reason = unexpected.empty() ? std::string(error.what())
                                                      : "Unexpected argument '" + unexpected.front() + "'";
        throw ToolError(reason + " (see " + CommandPath(app) + " --help)");
    }
}

} // namespace Zelnor::Tool
