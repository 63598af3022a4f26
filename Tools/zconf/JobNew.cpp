#include "Tools/zconf/CommandLine.h"
#include "Tools/zconf/Errors.h"
#include "Tools/zconf/Input.h"
#include "Tools/zconf/JobCommands.h"
#include "Tools/zconf/Output.h"
#include "Tools/zconf/PresetFile.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/DataStream.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <system_error>

namespace Zelnor::Tool
{

namespace
{

using Conf::ITranscodingMetaGraph;
using Core::Property;

struct Options
{
    std::string preset;
    std::string input;
    std::string output;
    std::string job = "-";
    bool losslessDvd = false;
};

/// Refuses an input that the job could not read; standard input is not touched.
void CheckInput(const std::string& input)
{
    if (IsStandardStream(input))
    {
        return;
    }
    struct stat status = {};
    const bool found = ::stat(input.c_str(), &status) == 0;
    if (!found || ::access(input.c_str(), R_OK) != 0)
    {
        throw ToolError("Cannot read '" + input + "': " + std::generic_category().message(errno));
    }
    if (S_ISDIR(status.st_mode))
    {
        throw ToolError("Cannot read '" + input + "': " + std::generic_category().message(EISDIR));
    }
}

/// Whether both names mean the same file, be it there or not.
bool IsSameFile(const std::string& one, const std::string& other)
{
    if (IsStandardStream(one) || IsStandardStream(other))
    {
        return false;
    }
    std::error_code error;
    if (std::filesystem::equivalent(one, other, error))
    {
        return true;
    }
    const auto resolved = [](const std::string& name) {
        std::error_code failure;
        const auto path =
            std::filesystem::weakly_canonical(std::filesystem::absolute(name, failure), failure);
        return failure ? std::filesystem::path(name) : path;
    };
    return resolved(one) == resolved(other);
}

/// Neither making nor running the job may destroy what goes into it.
void CheckDistinct(const Options& options, const std::string& preset)
{
    struct Pair
    {
        const char* oneName;
        const std::string& one;
        const char* otherName;
        const std::string& other;
    };
    for (const Pair& pair :
         {Pair{"output", options.output, "input", options.input},
          Pair{"job", options.job, "input", options.input}, Pair{"job", options.job, "preset", preset},
          Pair{"job", options.job, "output", options.output}})
    {
        struct stat status = {};
        const bool isSpecial = ::stat(pair.one.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
        if (!isSpecial && IsSameFile(pair.one, pair.other))
        {
            throw ToolError(std::string("The ") + pair.oneName + " and the " + pair.otherName +
                            " are the same file: '" + pair.one + "'");
        }
    }
}

/// Source and target are the nodes 1 and 2; the streams between them follow in the preset's order.
boost::intrusive_ptr<ITranscodingMetaGraph> MakeJob(const boost::intrusive_ptr<const Conf::IPreset>& preset,
                                                    const Options& options)
{
    const auto graph = ITranscodingMetaGraph::Create();
    const Conf::NodeId source = graph->AddNode(ITranscodingMetaGraph::MakeInFileDescription(options.input));
    const Conf::NodeId target = graph->AddNode(
        ITranscodingMetaGraph::MakeOutFileDescription(preset, options.output, options.losslessDvd));
    unsigned int index = 0;
    for (const Property& stream : preset->GetProperty()[Conf::IPreset::KEY_STREAMS])
    {
        const Conf::NodeId raw = graph->AddNode(ITranscodingMetaGraph::MakeRawStreamDescription(index++));
        graph->AddLink(source, raw, Property());
        graph->AddLink(raw, target, stream);
    }
    return graph;
}

int Run(const Options& options)
{
    CheckInput(options.input);
    if (options.output.empty())
    {
        throw ToolError("The output has no name");
    }
    const std::string presetFile = FindPreset(options.preset);
    CheckDistinct(options, presetFile);
    const auto graph = MakeJob(PresetFile::Open(presetFile), options);
    if (!graph->TopologyIsValid())
    {
        throw ToolError(InputName(presetFile) + ": The preset does not make a valid job");
    }
    WriteDocument(options.job, [&graph](const auto& output) { graph->Save(output); });
    return kExitSuccess;
}

} // namespace

void AddJobNew(CLI::App& job)
{
    CLI::App* const command = AddCommand(job, "new", "Make a job that turns a media file into another one");
    const auto options = std::make_shared<Options>();
    command
        ->add_option("-p,--preset", options->preset,
                     "What to make: a preset file, or the name of one that came with the program")
        ->type_name("FILE")
        ->required();
    command
        ->add_option(
            "-i,--input", options->input,
            "The media file to read; must be there. It is kept as given: a relative path is meant from "
            "the folder in which the job will be run")
        ->type_name("FILE")
        ->required();
    command->add_option("-t,--output", options->output, "The media file to make; kept as given")
        ->type_name("FILE")
        ->required();
    command->add_flag("--lossless-dvd", options->losslessDvd,
                      "Make the container DVD, whatever the preset says");
    command->add_option("-o,--job", options->job, "Where the job's document goes (default \"-\")")
        ->type_name("FILE");
    OnRun(*command, [options] { return Run(*options); });
}

} // namespace Zelnor::Tool
