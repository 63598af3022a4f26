#include "Media/Jobs/JobDifferences.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/Table.h"
#include "Tools/zconf/Console/Text.h"

#include <memory>
#include <optional>

namespace Zelnor::Tool
{

namespace
{

struct JobDiffArguments
{
    std::string one;
    std::string other;
    bool json = false;
};

/// A place as a heading, and below it a line for each key: "-" what the first job has, "+" the second.
std::string DifferencesText(const std::vector<Media::JobDifference>& differences)
{
    const Painter paint = Painter::ForStandardOutput();
    std::string text;
    std::string place;
    for (const Media::JobDifference& difference : differences)
    {
        if (difference.place != place)
        {
            place = difference.place;
            text += paint(Style::Heading, place) + "\n";
        }
        if (!difference.key.empty())
        {
            text += "  " + paint(Style::Key, Printable(difference.key)) + "\n";
        }
        const std::string indent = difference.key.empty() ? "  " : "    ";
        if (!difference.one.empty())
        {
            text += indent + paint(Style::Bad, "- " + Printable(difference.one)) + "\n";
        }
        if (!difference.other.empty())
        {
            text += indent + paint(Style::Good, "+ " + Printable(difference.other)) + "\n";
        }
    }
    return text;
}

void WriteMember(JsonOutput& json, const char* key, const std::string& text)
{
    json.Key(key);
    if (text.empty())
    {
        json.GetWriter().Null();
    }
    else
    {
        json.String(text);
    }
}

/// A value as it stands in a job's document. A difference that is not between values has texts.
void WriteValue(JsonOutput& json, const char* key, const std::optional<Core::Property>& value,
                const std::string& text)
{
    if (!value)
    {
        WriteMember(json, key, text);
        return;
    }
    Core::Property group;
    group.SetChild(key, *value);
    json.Member(group[key]);
}

void WriteJson(const std::vector<Media::JobDifference>& differences)
{
    JsonOutput json;
    json.GetWriter().StartObject();
    json.Key("equal");
    json.GetWriter().Bool(differences.empty());
    json.Key("differences");
    json.GetWriter().StartArray();
    for (const Media::JobDifference& difference : differences)
    {
        json.GetWriter().StartObject();
        WriteMember(json, "place", difference.place);
        WriteMember(json, "key", difference.key);
        WriteValue(json, "first", difference.oneValue, difference.one);
        WriteValue(json, "second", difference.otherValue, difference.other);
        json.GetWriter().EndObject();
    }
    json.GetWriter().EndArray();
    json.GetWriter().EndObject();
    json.Finish();
}

int RunJobDiff(const JobDiffArguments& options)
{
    if (IsStandardStream(options.one) && IsStandardStream(options.other))
    {
        throw ToolError("Only one of the two jobs can be read from standard input");
    }
    const Media::JobFile one = OpenJob(options.one);
    const Media::JobFile other = OpenJob(options.other);
    const std::vector<Media::JobDifference> differences = Media::DiffJobs(*one.graph, *other.graph);
    if (options.json)
    {
        WriteJson(differences);
    }
    else
    {
        Tool::WriteText(DifferencesText(differences));
    }
    return differences.empty() ? kExitSuccess : kExitNo;
}

} // namespace

void AddJobDiffCommand(CLI::App& job)
{
    CLI::App* const command = AddCommand(
        job, "diff", "Compare two jobs: exit code 0 if they are equal, else 1 with the differences");
    const auto options = std::make_shared<JobDiffArguments>();
    command->add_option("A", options->one, "The first job's document")->type_name("FILE")->required();
    command->add_option("B", options->other, "The second job's document")->type_name("FILE")->required();
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunJobDiff(*options); });
}

} // namespace Zelnor::Tool
