#include "Tools/zconf/Commands/JobOptions.h"

#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetFolders.h"
#include "Media/Presets/PresetStore.h"
#include "Media/Running/Files.h"
#include "Tools/zconf/Commands/Catalogue.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/FrameSizeText.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/TimeText.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <map>
#include <tuple>

namespace Zelnor::Tool
{

namespace
{

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

Media::FrameLimit ParseLimit(const std::string& text)
{
    const FrameSize size = ParseFrameSize(text);
    return {static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height)};
}

std::string CodecId(const std::string& name)
{
    const CodecEntry* const codec = FindCodec(name);
    if (codec == nullptr)
    {
        ThrowUnknownName("codec", name, CodecNames());
    }
    return codec->id;
}

const std::map<std::string, Media::StreamKind>& CopiedKinds()
{
    static const std::map<std::string, Media::StreamKind> s_kinds = {
        {"video", Media::StreamKind::Video},
        {"audio", Media::StreamKind::Audio},
        {"subtitles", Media::StreamKind::Subtitle},
    };
    return s_kinds;
}

Media::StreamKind ParseKind(const std::string& name)
{
    const auto kind = CopiedKinds().find(name);
    if (kind == CopiedKinds().end())
    {
        ThrowUnknownName("kind of stream to copy (video, audio, subtitles)", name, CopiedKindNames());
    }
    return kind->second;
}

Media::StreamRequest StreamsOf(const JobOptions& options)
{
    Media::StreamRequest streams;
    streams.chosen = options.streams;
    streams.losslessDvd = options.losslessDvd;
    streams.audioLanguages = options.audioLanguages;
    streams.allAudio = options.allAudio;
    streams.mayUpscale = options.upscale;
    streams.allowDisabled = options.allowDisabled;
    for (const std::string& kind : options.copied)
    {
        streams.copied.push_back(ParseKind(kind));
    }
    if (!options.maxSize.empty())
    {
        streams.maxSize = ParseLimit(options.maxSize);
    }
    else if (options.upscale)
    {
        throw ToolError("--upscale needs --max-size");
    }
    return streams;
}

/// The preset that fits an output without further words: one that is named like the extension, else the one
/// with the shortest name. A preset that cannot be used is passed over with a note.
std::string PresetFor(const std::string& output)
{
    const std::string extension = LowerCase(std::filesystem::path(output).extension().string());
    std::vector<std::tuple<bool, std::size_t, std::string>> fitting;
    if (extension.size() > 1)
    {
        for (const Media::StoredPreset& preset : Media::ListStoredPresets())
        {
            if (!preset.fault.empty())
            {
                ReportNote("the preset '" + preset.name + "' cannot be used: " + preset.fault);
            }
            else if ("." + DefaultExtension(preset.container) == extension)
            {
                const bool isOther = preset.name.compare(0, extension.size() - 1, extension, 1) != 0;
                fitting.emplace_back(isOther, isOther ? preset.name.size() : 0, preset.name);
            }
        }
    }
    if (fitting.empty())
    {
        throw ToolError("No preset makes a file with the extension of '" + output +
                        "'; --preset names one (see zconf list presets)");
    }
    const std::string name = std::get<std::string>(*std::min_element(fitting.begin(), fitting.end()));
    ReportNote("the preset '" + name + "' makes such a file");
    return name;
}

} // namespace

std::vector<std::string> CopiedKindNames()
{
    std::vector<std::string> names;
    for (const auto& [name, kind] : CopiedKinds())
    {
        names.push_back(name);
    }
    return names;
}

void AddJobOptions(CLI::App& command, JobOptions& options)
{
    command.add_option("-s,--stream", options.streams,
                       "The index of a stream of the input to convert; may be repeated (default: the best "
                       "video and audio, and the subtitles that the output can hold)");
    command.add_option(
        "--merge", options.merges,
        "Two stream indexes, as 1+2: mix the second stream into the first (audio), or overlay it "
        "(a subtitle on a video); may be repeated");
    command.add_flag("--lossless-dvd", options.losslessDvd,
                     "Use the container DVD, whatever the preset says");
    command
        .add_option("--set", options.settings,
                    "A setting in place of the preset's, as video.bitrate=4000000, audio[1].layout=MONO or "
                    "metadata.title=T; may be repeated")
        ->type_name("PATH=VALUE")
        ->allow_extra_args(false);
    command
        .add_option("--codec", options.codecs,
                    "A codec in place of the preset's, such as h264 or aac; may be "
                    "repeated")
        ->type_name("CODEC")
        ->allow_extra_args(false);
    command.add_option("--max-size", options.maxSize, "Scale larger images down into this size")
        ->type_name("WIDTHxHEIGHT");
    command.add_flag("--upscale", options.upscale, "Scale smaller images up to --max-size, too");
    command.add_option("--fps", options.frameRate, "Frames per second, such as 25 or 30000/1001")
        ->type_name("RATE");
    command
        .add_option("--audio-language", options.audioLanguages,
                    "The languages of the audio in order, as deu,eng: the best stream of each")
        ->type_name("CODE,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_flag("--all-audio", options.allAudio,
                     "Convert all audio streams; with --audio-language, all in these languages");
    command
        .add_option("--copy", options.copied,
                    "Take streams over unchanged, where the container can hold them: video, audio or "
                    "subtitles; may be repeated, or a list with commas")
        ->type_name("KIND,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("--start", options.start, "Begin here in the input: 90.5 (seconds) or 1:02:03.5")
        ->type_name("TIME");
    command.add_option("--end", options.end, "End here in the input, counted from its beginning")
        ->type_name("TIME");
    command.add_flag("--allow-disabled", options.allowDisabled,
                     "Use encoders that the library does not use by default (HEVC)");
}

Media::JobRequest RequestOf(const JobOptions& options, const std::string& output)
{
    if (IsStandardStream(output))
    {
        throw ToolError("The output of a job must be a named file, not standard output");
    }
    Media::JobRequest request;
    request.output = output;
    request.strict = options.strict;
    request.streams = StreamsOf(options);
    for (const std::string& merge : options.merges)
    {
        request.merges.push_back(ParseMerge(merge));
    }
    for (const std::string& codec : options.codecs)
    {
        request.codecs.push_back(CodecId(codec));
    }
    for (const std::string& setting : options.settings)
    {
        request.settings.push_back(Media::ParseSetting(setting));
    }
    if (!options.frameRate.empty())
    {
        request.frameRate = ParseExactFrameRate(options.frameRate);
    }
    if (!options.start.empty())
    {
        request.start = ParseTime(options.start);
    }
    if (!options.end.empty())
    {
        request.end = ParseTime(options.end);
    }
    return request;
}

NewJob PlanNewJob(const std::string& preset, const std::string& input, const Media::JobRequest& request)
{
    if (IsStandardStream(input))
    {
        throw ToolError("The input of a job must be a named file, not standard input");
    }
    NewJob made;
    made.presetFile = IsStandardStream(preset)
                          ? preset
                          : Media::FindPreset(preset.empty() ? PresetFor(request.output) : preset);
    const auto settings = Media::PresetFile::Read(*OpenInput(made.presetFile), InputName(made.presetFile));
    made.job = Media::PlanJob(Media::ProbeMedia(input), settings, request);
    return made;
}

void CheckDistinct(const NewJob& made, const std::string& input, const std::string& document)
{
    struct Pair
    {
        const char* oneName;
        const std::string& one;
        const char* otherName;
        const std::string& other;
    };
    const std::string& output = made.job.output;
    for (const Pair& pair :
         {Pair{"output", output, "input", input}, Pair{"output", output, "preset", made.presetFile},
          Pair{"job", document, "input", input}, Pair{"job", document, "preset", made.presetFile},
          Pair{"job", document, "output", output}})
    {
        struct stat status = {};
        const bool isSpecial = ::stat(pair.one.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
        const bool isFile = !pair.one.empty() && !IsStandardStream(pair.one) && !IsStandardStream(pair.other);
        if (!isSpecial && isFile && Media::IsSameFile(pair.one, pair.other))
        {
            throw ToolError(std::string("The ") + pair.oneName + " and the " + pair.otherName +
                            " are the same file: '" + pair.one + "'");
        }
    }
}

} // namespace Zelnor::Tool
