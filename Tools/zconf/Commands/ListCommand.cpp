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
    /// What `--kind` may ask for; nothing when the things are all of one kind.
    std::vector<std::string> kinds = {};
};

struct Options
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

bool IsAskedFor(const Description& description, const Options& options)
{
    const std::string name = LowerCase(TextOf(description, "name"));
    return name.find(LowerCase(options.filter)) != std::string::npos &&
           (options.kind.empty() || TextOf(description, "kind") == options.kind);
}

int Run(const ListKind& kind, const Options& options)
{
    std::vector<Description> things = kind.list();
    things.erase(
        std::remove_if(things.begin(), things.end(),
                       [&](const Description& description) { return !IsAskedFor(description, options); }),
        things.end());
    if (options.json)
    {
        WriteJsonAnswer(things);
    }
    else
    {
        WriteText(ColumnsText(things, Painter::ForStandardOutput()));
    }
    return things.empty() ? kExitNo : kExitSuccess;
}

void AddList(CLI::App& group, const ListKind& kind)
{
    CLI::App* const command = AddCommand(group, kind.name, kind.help);
    const auto options = std::make_shared<Options>();
    command->add_option("FILTER", options->filter,
                        "Only names that contain this, in whatever letter case; exit code 1 when none does");
    if (!kind.kinds.empty())
    {
        command->add_option("--kind", options->kind, "Only things of this kind")
            ->check(CLI::IsMember(kind.kinds));
    }
    AddJsonFlag(*command, options->json);
    OnRun(*command, [kind, options] { return Run(kind, *options); });
}

} // namespace

void AddListCommand(CLI::App& app)
{
    CLI::App* const group = AddCommandGroup(app, "list", "List what the library has names for");
    const ListKind kinds[] = {
        {"codecs",
         "Codecs: name, kind, FFmpeg's name, its number in the FFmpeg of this build",
         ListCodecs,
         {"video", "audio", "subtitle", "other"}},
        {"formats", "Containers: name, kind, default extension", ListContainers, {"image", "audio", "other"}},
        {"muxers", "Implementations of muxers and parsers: name, role", ListMuxers},
        {"decoders", "Implementations of decoders: name, accelerator, codec", ListDecoders},
        {"encoders", "Implementations of encoders: name, accelerator, codec", ListEncoders},
        {"accelerators", "Accelerators: name, codecs to encode, codecs to decode", ListAccelerators},
        {"pixel-formats", "Pixel formats: name, value, components, colour range, flags", ListPixelFormats},
        {"sample-formats", "Audio sample formats: name, value, bits a sample, order", ListSampleFormats},
        {"layouts", "Channel layouts: name, value, channels", ListLayouts},
    };
    for (const ListKind& kind : kinds)
    {
        AddList(*group, kind);
    }
}

} // namespace Zelnor::Tool
