#include "Tools/zconf/Commands/BitrateCurve.h"
#include "Tools/zconf/Commands/Catalogue.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/FrameSizeText.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"

#include "Conf/Interfaces/BitrateCalculator.h"

#include <memory>

namespace Zelnor::Tool
{

namespace
{

constexpr int kNoQuality = -1;

struct BitrateArguments
{
    std::string codec;
    std::string size;
    std::string fps;
    int quality = kNoQuality;
    std::string curve;
    bool json = false;
};

std::string VideoCodec(const std::string& name)
{
    const CodecEntry* const codec = FindCodec(name);
    if (codec == nullptr)
    {
        std::vector<std::string> videoCodecs;
        for (const CodecEntry& known : AllCodecs())
        {
            if (known.kind == "video")
            {
                videoCodecs.push_back(known.id);
            }
        }
        ThrowUnknownName("codec", name, videoCodecs);
    }
    if (codec->kind != "video")
    {
        throw ToolError("'" + codec->id + "' is not a video codec; bitrates are proposed for video only");
    }
    return codec->id;
}

Description Answer(const BitrateQuestion& question)
{
    const auto& [codec, size, fps, quality] = question;
    Description description = {
        {"codec", codec}, {"width", size.width}, {"height", size.height}, {"fps", fps}};
    if (quality != kNoQuality)
    {
        description.push_back({"quality", static_cast<long long>(quality)});
    }
    description.push_back(
        {"default", Conf::GetDefaultVideoBitrate(codec, size.width, size.height, fps, quality)});
    description.push_back(
        {"minimum", Conf::GetMinVideoBitrate(codec, size.width, size.height, fps, quality)});
    description.push_back(
        {"maximum", Conf::GetMaxVideoBitrate(codec, size.width, size.height, fps, quality)});
    return description;
}

int RunBitrate(const BitrateArguments& options)
{
    const BitrateQuestion question = {VideoCodec(options.codec), ParseFrameSize(options.size),
                                      ParseFrameRate(options.fps), options.quality};
    if (!options.curve.empty())
    {
        // Standard output holds one document only.
        WriteDocument(options.curve, DrawBitrateCurve(question));
        if (IsStandardStream(options.curve))
        {
            return kExitSuccess;
        }
    }
    const Description answer = Answer(question);
    if (options.json)
    {
        WriteJsonAnswer(answer);
    }
    else
    {
        // The codec, size and rate need not be repeated to the person who just gave them.
        WriteText(LinesText(Description(answer.end() - 3, answer.end()), 0, Painter::ForStandardOutput()));
    }
    return kExitSuccess;
}

} // namespace

void AddBitrateCommand(CLI::App& app)
{
    CLI::App* const command =
        AddCommand(app, "bitrate", "Propose a video bitrate and its bounds, in bits per second");
    const auto options = std::make_shared<BitrateArguments>();
    command->add_option("--codec", options->codec, "The video codec, such as CODEC_ID_H264 or h264")
        ->type_name("CODEC")
        ->required();
    command->add_option("--size", options->size, "The frame size, such as 1920x1080")
        ->type_name("WIDTHxHEIGHT")
        ->required();
    command->add_option("--fps", options->fps, "Frames per second, such as 25 or 30000/1001")
        ->type_name("RATE")
        ->required();
    command->add_option("--quality", options->quality, "From 1 (the full bitrate) to 32 (a third of it)")
        ->check(CLI::Range(1, Conf::IFormatCodec::MAX_QUALITY));
    command
        ->add_option("--curve", options->curve,
                     "Also plot the bitrates of smaller and larger frames as SVG to this file, with gnuplot")
        ->type_name("FILE");
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunBitrate(*options); });
}

} // namespace Zelnor::Tool
