#include "Tools/zconf/Commands/ListCommand.h"

#include "Tools/zconf/Commands/Catalogue.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"

#include <algorithm>
#include <memory>

namespace Zelnor::Tool
{

namespace
{

struct ListKind
{
    const char* name;
    const char* help;
    std::vector<Description> (*list)();
    /// The values of `--kind`; empty when the list does not have that option.
    std::vector<std::string> kinds = {};
};

struct ListArguments
{
    std::string filter;
    std::string kind;
    bool json = false;
};

const std::string& TextOf(const Description& description, const std::string& name)
{
    const auto found = std::find_if(description.begin(), description.end(),
                                    [&](const Field& field) { return field.name == name; });
    return std::get<std::string>(found->value);
}

bool Matches(const Description& description, const ListArguments& options)
{
    const std::string name = LowerCase(TextOf(description, "name"));
    return name.find(LowerCase(options.filter)) != std::string::npos &&
           (options.kind.empty() || TextOf(description, "kind") == options.kind);
}

int RunList(const ListKind& kind, const ListArguments& options)
{
    std::vector<Description> descriptions = kind.list();
    descriptions.erase(
        std::remove_if(descriptions.begin(), descriptions.end(),
                       [&](const Description& description) { return !Matches(description, options); }),
        descriptions.end());
    if (options.json)
    {
        WriteJsonAnswer(descriptions);
    }
    else
    {
        WriteText(ColumnsText(descriptions, Painter::ForStandardOutput()));
    }
    return descriptions.empty() ? kExitNo : kExitSuccess;
}

const std::vector<ListKind>& ListKinds()
{
    static const std::vector<ListKind> s_kinds = {
        {"codecs",
         "Codecs: name, kind, FFmpeg's name, codec ID in the FFmpeg of this build",
         ListCodecs,
         {"video", "audio", "subtitle", "other"}},
        {"formats", "Containers: name, kind, default extension", ListContainers, {"image", "audio", "other"}},
        {"muxers", "Muxer and parser implementations: name, role", ListMuxers},
        {"decoders", "Decoder implementations: name, accelerator, codec", ListDecoders},
        {"encoders",
         "Encoder implementations: name, accelerator, codec, whether a job can prefer it here (encoders by "
         "FFmpeg's names can be preferred, too)",
         ListEncoders},
        {"accelerators", "Accelerators: name, codecs that they encode, codecs that they decode",
         ListAccelerators},
        {"presets", "Presets that are found by name: name, container, title (see zconf preset)",
         ListPresetsByName},
        {"pixel-formats", "Pixel formats: name, value, number of components, colour range, flags",
         ListPixelFormats},
        {"sample-formats", "Sample formats: name, value, bits per sample, planar or packed",
         ListSampleFormats},
        {"layouts", "Channel layouts: name, value, number of channels", ListLayouts},
    };
    return s_kinds;
}

void AddList(CLI::App& group, const ListKind& kind)
{
    CLI::App* const command = AddCommand(group, kind.name, kind.help);
    const auto options = std::make_shared<ListArguments>();
    command->add_option(
        "FILTER", options->filter,
        "Show only names that contain this text, ignoring case; exit code 1 if there are none");
    if (!kind.kinds.empty())
    {
        command->add_option("--kind", options->kind, "Show only this kind")->check(CLI::IsMember(kind.kinds));
    }
    AddJsonFlag(*command, options->json);
    OnRun(*command, [kind, options] { return RunList(kind, *options); });
}

} // namespace

std::vector<std::string> NamesInList(const std::string& kind)
{
    std::vector<std::string> names;
    for (const ListKind& list : ListKinds())
    {
        if (list.name == kind)
        {
            for (const Description& description : list.list())
            {
                names.push_back(TextOf(description, "name"));
            }
        }
    }
    return names;
}

void AddListCommand(CLI::App& app)
{
    CLI::App* const group = AddCommandGroup(app, "list", "List the names that the library knows");
    for (const ListKind& kind : ListKinds())
    {
        AddList(*group, kind);
    }
}

} // namespace Zelnor::Tool
