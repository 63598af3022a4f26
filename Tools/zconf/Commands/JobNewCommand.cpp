#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Running/Files.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct Options
{
    std::string preset;
    std::string input;
    std::string output;
    std::string job = "-";
    bool losslessDvd = false;
    std::vector<unsigned int> streams;
    std::vector<std::string> merges;
};

/// Neither making nor running the job may destroy what goes into it.
void CheckDistinct(const Options& options, const std::string& preset, const std::string& output)
{
    struct Pair
    {
        const char* oneName;
        const std::string& one;
        const char* otherName;
        const std::string& other;
    };
    for (const Pair& pair :
         {Pair{"output", output, "input", options.input}, Pair{"job", options.job, "input", options.input},
          Pair{"job", options.job, "preset", preset}, Pair{"job", options.job, "output", output}})
    {
        struct stat status = {};
        const bool isSpecial = ::stat(pair.one.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
        const bool isStream = IsStandardStream(pair.one) || IsStandardStream(pair.other);
        if (!isSpecial && !isStream && Media::IsSameFile(pair.one, pair.other))
        {
            throw ToolError(std::string("The ") + pair.oneName + " and the " + pair.otherName +
                            " are the same file: '" + pair.one + "'");
        }
    }
}

/// "2+3": stream 3 is merged into stream 2.
Media::StreamMerge ParseMerge(const std::string& text)
{
    Media::StreamMerge merge = {};
    char rest = 0;
    if (std::sscanf(text.c_str(), "%9u+%9u%c", &merge.base, &merge.overlay, &rest) != 2)
    {
        throw ToolError("--merge: expected two streams of the input, as 1+2, found '" + text + "'");
    }
    return merge;
}

Media::JobRequest RequestOf(const Options& options)
{
    Media::JobRequest request = {options.output, {options.streams, options.losslessDvd}, {}};
    for (const std::string& merge : options.merges)
    {
        request.merges.push_back(ParseMerge(merge));
    }
    return request;
}

int Run(const Options& options)
{
    if (IsStandardStream(options.input))
    {
        throw ToolError("A job needs its input by name, not from standard input");
    }
    const Media::JobRequest request = RequestOf(options);
    const std::string presetFile =
        IsStandardStream(options.preset) ? options.preset : Media::FindPreset(options.preset);
    const auto preset = Media::PresetFile::Read(*OpenInput(presetFile), InputName(presetFile));
    const Media::PlannedJob job = Media::PlanJob(Media::ProbeMedia(options.input), preset, request);
    CheckDistinct(options, presetFile, job.output);
    for (const std::string& note : job.notes)
    {
        WriteMessage("zconf: note: " + Printable(note) + "\n");
    }
    WriteDocument(options.job, [&job](const auto& output) { job.graph->Save(output); });
    return kExitSuccess;
}

} // namespace

void AddJobNewCommand(CLI::App& job)
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
    command
        ->add_option(
            "-t,--output", options->output,
            "The media file to make; kept as given, but for the container's extension, which is added to "
            "a name without one")
        ->type_name("FILE")
        ->required();
    command->add_option("-s,--stream", options->streams,
                        "A stream of the input to convert, by its number; may be repeated (default: the best "
                        "video and audio, and the subtitles that the output can hold)");
    command->add_option("--merge", options->merges,
                        "Two streams, as 1+2: the second is mixed into the first (audio), or drawn over it "
                        "(a subtitle over a video); may be repeated");
    command->add_flag("--lossless-dvd", options->losslessDvd,
                      "Make the container DVD, whatever the preset says");
    command->add_option("-o,--job", options->job, "Where the job's document goes (default \"-\")")
        ->type_name("FILE");
    OnRun(*command, [options] { return Run(*options); });
}

} // namespace Zelnor::Tool
