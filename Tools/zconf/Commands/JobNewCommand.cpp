#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetFolders.h"
#include "Media/Running/Files.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/Output.h"

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
         {Pair{"output", output, "input", options.input}, Pair{"output", output, "preset", preset},
          Pair{"job", options.job, "input", options.input}, Pair{"job", options.job, "preset", preset},
          Pair{"job", options.job, "output", output}})
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
        throw ToolError("The input of a job must be a named file, not standard input");
    }
    const Media::JobRequest request = RequestOf(options);
    const std::string presetFile =
        IsStandardStream(options.preset) ? options.preset : Media::FindPreset(options.preset);
    const auto preset = Media::PresetFile::Read(*OpenInput(presetFile), InputName(presetFile));
    const Media::PlannedJob job = Media::PlanJob(Media::ProbeMedia(options.input), preset, request);
    CheckDistinct(options, presetFile, job.output);
    for (const std::string& note : job.notes)
    {
        ReportNote(note);
    }
    WriteDocument(options.job, [&job](const auto& output) { job.graph->Save(output); });
    return kExitSuccess;
}

} // namespace

void AddJobNewCommand(CLI::App& job)
{
    CLI::App* const command = AddCommand(job, "new", "Make a job that converts a media file");
    const auto options = std::make_shared<Options>();
    command
        ->add_option("-p,--preset", options->preset,
                     "A preset file, or the name of a preset that comes with the program")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("-i,--input", options->input,
                     "The media file to read, which must exist; a relative path is kept, and resolved in the "
                     "folder in "
                     "which the job is run")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("-t,--output", options->output,
                     "The media file to make; a name without an extension gets that of the container")
        ->type_name("FILE")
        ->required();
    command->add_option("-s,--stream", options->streams,
                        "The index of a stream of the input to convert; may be repeated (default: the best "
                        "video and audio, and the subtitles that the output can hold)");
    command->add_option(
        "--merge", options->merges,
        "Two stream indexes, as 1+2: mix the second stream into the first (audio), or overlay it "
        "(a subtitle on a video); may be repeated");
    command->add_flag("--lossless-dvd", options->losslessDvd,
                      "Use the container DVD, whatever the preset says");
    command
        ->add_option("-o,--job", options->job, "The job's document to write (default \"-\", standard output)")
        ->type_name("FILE");
    OnRun(*command, [options] { return Run(*options); });
}

} // namespace Zelnor::Tool
