#include "Tools/zconf/Console/CommandLine.h"

#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/OutputDocument.h"

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
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

/// The command that was parsed last.
const CLI::App& LastCommand(const CLI::App& app)
{
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty())
    {
        command = command->get_subcommands().front();
    }
    return *command;
}

/// What could have been meant by an argument that the command does not know.
std::string SuggestionFor(const std::string& argument, const CLI::App& command)
{
    std::vector<std::string> known = CommandNames(command);
    if (argument.substr(0, 2) == "--")
    {
        known.clear();
        for (const CLI::Option* const option : command.get_options())
        {
            for (const std::string& name : option->get_lnames())
            {
                known.push_back("--" + name);
            }
        }
    }
    return DidYouMean(argument.substr(0, argument.find('=')), known);
}

std::filesystem::path PlaceOf(const std::string& name)
{
    std::error_code error;
    const std::filesystem::path place = std::filesystem::weakly_canonical(name, error);
    return error ? std::filesystem::path(name) : place;
}

/// An answer must not replace a file that the command was given. \throw ToolError
void RequireOther(const CLI::App& command, const std::string& document)
{
    if (IsStandardStream(document))
    {
        return;
    }
    for (const CLI::Option* const option : command.get_options())
    {
        const bool isFlag = option->get_type_size() == 0;
        for (const std::string& value : option->results())
        {
            if (!isFlag && !option->check_name("-o") && PlaceOf(value) == PlaceOf(document))
            {
                throw ToolError("-o would replace '" + document + "', which the command was given");
            }
        }
    }
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

std::vector<std::string> CommandNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
    {
        names.push_back(command->get_name());
    }
    return names;
}

void AddJsonFlag(CLI::App& command, bool& json) { command.add_flag("--json", json, "Write JSON"); }

void AddDocumentOption(CLI::App& command, std::string& name, const std::string& what,
                       const std::string& oldName)
{
    command
        .add_option("-o,--document," + oldName, name,
                    what + " to write; \"-\" (the default) is standard output (" + oldName +
                        " is another name of this option)")
        ->type_name("FILE");
}

void AddProgressOption(CLI::App& command, std::string& format)
{
    command
        .add_option("--progress", format,
                    "Write progress for programs to standard output, a JSON object on each line")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"json"}));
}

bool IsProgressJson(const std::string& format, bool isResultJson)
{
    if (!format.empty() && isResultJson)
    {
        throw ToolError("--json and --progress json both write to standard output");
    }
    return !format.empty();
}

void AddStrictFlag(CLI::App& command, bool& strict)
{
    command.add_flag("--strict", strict,
                     "Refuse a job by which something of an input would be lost: a stream, a tag, a chapter");
}

void OnRun(CLI::App& command, std::function<int()> run)
{
    const auto document = std::make_shared<std::string>("-");
    if (command.get_option_no_throw("-o") == nullptr)
    {
        command
            .add_option("-o,--document", *document,
                        "The file to write the answer to; \"-\" (the default) is standard output")
            ->type_name("FILE");
    }
    command.callback([&command, document, run = std::move(run)] {
        RequireOther(command, *document);
        OutputDocument output(*document);
        const int code = run();
        output.Commit();
        if (code != kExitSuccess)
        {
            throw CLI::RuntimeError(code);
        }
    });
}

std::unique_ptr<CLI::App> MakeProgram(const std::function<void(CLI::App&)>& addCommands)
{
    auto app =
        std::make_unique<CLI::App>("Make, show, check, draw, compare and run transcoding jobs.", "zconf");
    AddVersion(*app);
    app->require_subcommand(1);
    addCommands(*app);
    app->footer("The file name \"-\" means standard input or standard output.\n"
                "Exit codes: 0 success, 1 the answer is no, 2 error, 3 ffmpeg failed, "
                "4 an output file is not what its job says.");
    return app;
}

int RunCommandLine(int argc, char** argv, const std::function<void(CLI::App&)>& addCommands)
{
    const std::unique_ptr<CLI::App> program = MakeProgram(addCommands);
    CLI::App& app = *program;
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
        const std::string reason = unexpected.empty()
                                       ? std::string(error.what())
                                       : "Unexpected argument '" + unexpected.front() + "'" +
                                             SuggestionFor(unexpected.front(), LastCommand(app));
        throw ToolError(reason + " (see " + CommandPath(app) + " --help)");
    }
}

} // namespace Zelnor::Tool
