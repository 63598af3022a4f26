#include "Tools/zconf/Commands/VerificationOutput.h"

#include "Tools/zconf/Commands/PlaceJson.h"
#include "Tools/zconf/Console/JsonOutput.h"

#include <algorithm>

namespace Zelnor::Tool
{

namespace
{

void WriteTexts(const std::string& key, const std::vector<std::string>& texts, JsonOutput& output)
{
    output.Key(key);
    output.GetWriter().StartArray();
    for (const std::string& text : texts)
    {
        output.String(text);
    }
    output.GetWriter().EndArray();
}

void WriteDifferences(const std::vector<Media::TargetDifference>& differences, JsonOutput& output)
{
    output.Key("differences");
    output.GetWriter().StartArray();
    for (const Media::TargetDifference& difference : differences)
    {
        output.GetWriter().StartObject();
        WritePlace(difference.place, output);
        for (const auto& [key, text] :
             {std::pair("what", &difference.what), std::pair("wanted", &difference.wanted),
              std::pair("found", &difference.found)})
        {
            output.Key(key);
            output.String(*text);
        }
        output.GetWriter().EndObject();
    }
    output.GetWriter().EndArray();
}

void WriteQuality(const std::vector<Media::VideoQuality>& quality, JsonOutput& output)
{
    output.Key("quality");
    output.GetWriter().StartArray();
    for (const Media::VideoQuality& video : quality)
    {
        output.GetWriter().StartObject();
        WritePlace(video.place, output);
        output.Key("psnr");
        video.psnr ? output.GetWriter().Double(*video.psnr) : output.GetWriter().Null();
        output.Key("ssim");
        output.GetWriter().Double(video.ssim);
        output.GetWriter().EndObject();
    }
    output.GetWriter().EndArray();
}

} // namespace

const std::map<std::string, Media::VerificationDepth>& VerificationDepths()
{
    static const std::map<std::string, Media::VerificationDepth> s_depths = {
        {"off", Media::VerificationDepth::Off},
        {"quick", Media::VerificationDepth::Quick},
        {"full", Media::VerificationDepth::Full}};
    return s_depths;
}

void AddVerifyOption(CLI::App& command, std::string& word)
{
    command
        .add_option("--verify", word,
                    "How closely output files are compared with the job before they are put in place: quick "
                    "(the default; the first, middle and last seconds are decoded), full or off")
        ->check(CLI::IsMember({"quick", "full", "off"}))
        ->type_name("DEPTH");
}

void WriteRunJson(const std::vector<RunTarget>& targets)
{
    JsonOutput output;
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    output.Key("targets");
    writer.StartArray();
    for (const RunTarget& target : targets)
    {
        writer.StartObject();
        output.Key("file");
        output.String(target.file);
        output.Key("outcome");
        output.String(target.outcome);
        WriteTexts("warnings", target.warnings, output);
        WriteTexts("notes", target.notes, output);
        WriteDifferences(target.differences, output);
        if (!target.kept.empty())
        {
            output.Key("kept");
            output.String(target.kept);
        }
        if (target.exitCode)
        {
            output.Key("exit_code");
            writer.Int(*target.exitCode);
            WriteTexts("messages", target.messages, output);
        }
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    output.Finish();
}

void WriteVerificationJson(const std::vector<Media::TargetVerification>& targets)
{
    JsonOutput output;
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    output.Key("verified");
    writer.Bool(std::all_of(targets.begin(), targets.end(),
                            [](const auto& target) { return target.differences.empty(); }));
    output.Key("targets");
    writer.StartArray();
    for (const Media::TargetVerification& target : targets)
    {
        writer.StartObject();
        output.Key("file");
        output.String(target.file);
        WriteDifferences(target.differences, output);
        WriteTexts("notes", target.notes, output);
        WriteQuality(target.quality, output);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    output.Finish();
}

} // namespace Zelnor::Tool
