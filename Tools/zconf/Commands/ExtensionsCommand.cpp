#include "Tools/zconf/Commands/Catalogue.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"

#include "Conf/Interfaces/MediaTypeUtils.h"

#include <algorithm>
#include <memory>

namespace Zelnor::Tool
{

namespace
{

using Conf::IFormatFile;

struct ExtensionsArguments
{
    std::string group;
    std::string container;
    bool json = false;
};

std::string KindOf(IFormatFile::MediaType mediaType)
{
    switch (mediaType)
    {
    case IFormatFile::MEDIA_ALL:
        return "all";
    case IFormatFile::MEDIA_VIDEO:
        return "video";
    case IFormatFile::MEDIA_AUDIO:
        return "audio";
    case IFormatFile::MEDIA_SUBTITLES:
        return "subtitles";
    case IFormatFile::MEDIA_IMAGES:
        return "images";
    }
    return "";
}

Description DescribeGroup(const std::string& group, const std::string& kind)
{
    return {{"name", group},
            {"kind", kind},
            {"hint", Conf::GetFormatExtentionTip(group)},
            {"extensions", Conf::GetSupportedFormatExtensions(group)}};
}

/// The file groups that a file dialog offers, and the one that it does not.
std::vector<Description> DescribeGroups()
{
    std::vector<Description> groups;
    for (const auto& [mediaType, group] : Conf::GetSupportedFormats())
    {
        groups.push_back(DescribeGroup(group, KindOf(mediaType)));
    }
    groups.push_back(DescribeGroup(IFormatFile::GROUP_OTHER, "all"));
    return groups;
}

int ShowGroups(bool json)
{
    const std::vector<Description> groups = DescribeGroups();
    if (json)
    {
        WriteJsonAnswer(groups);
        return kExitSuccess;
    }
    WriteText(ColumnsText(groups, Painter::ForStandardOutput()));
    return kExitSuccess;
}

int ShowGroup(const std::string& name, bool json)
{
    const std::vector<Description> groups = DescribeGroups();
    std::vector<std::string> names;
    for (const Description& group : groups)
    {
        names.push_back(FieldText(group.front().value));
        if (LowerCase(names.back()) != LowerCase(name))
        {
            continue;
        }
        if (json)
        {
            WriteJsonAnswer(group);
            return kExitSuccess;
        }
        std::string text;
        for (const std::string& extension : std::get<std::vector<std::string>>(group.back().value))
        {
            text += extension + "\n";
        }
        WriteText(text);
        return kExitSuccess;
    }
    ThrowUnknownName("file group", name, names);
}

int ShowContainer(const std::string& name, bool json)
{
    const std::string extension = DefaultExtension(name);
    if (extension.empty())
    {
        const std::vector<std::string> known = ContainerNames();
        if (std::find(known.begin(), known.end(), LowerCase(name)) != known.end())
        {
            throw ToolError("The container '" + name + "' has no default extension");
        }
        ThrowUnknownName("container", name, known);
    }
    if (json)
    {
        WriteJsonAnswer(Description{{"container", LowerCase(name)}, {"extension", extension}});
    }
    else
    {
        WriteText(extension + "\n");
    }
    return kExitSuccess;
}

int RunExtensions(const ExtensionsArguments& options)
{
    if (!options.container.empty())
    {
        return ShowContainer(options.container, options.json);
    }
    return options.group.empty() ? ShowGroups(options.json) : ShowGroup(options.group, options.json);
}

} // namespace

void AddExtensionsCommand(CLI::App& app)
{
    CLI::App* const command = AddCommand(
        app, "extensions",
        "Show the file groups of a file dialog with their extensions, or a container's default extension");
    const auto options = std::make_shared<ExtensionsArguments>();
    CLI::Option* const group =
        command->add_option("GROUP", options->group, "Show only the extensions of this group, one per line");
    command->add_option("--container", options->container, "Show the default extension of this container")
        ->type_name("CONTAINER")
        ->excludes(group);
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunExtensions(*options); });
}

} // namespace Zelnor::Tool
