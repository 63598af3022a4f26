#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/PlaceJson.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/MarkedLine.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/Terminal.h"
#include "Tools/zconf/Console/Text.h"

#include "Media/Validating/DocumentFault.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct ValidateArguments
{
    std::vector<std::string> files;
    bool json = false;
};

struct Validated
{
    std::string name;
    std::string text;
    Media::DocumentFaults result;
};

std::string ReadText(const std::string& name)
{
    const auto input = OpenInput(name);
    std::array<char, 65536> block;
    std::string text;
    while (const std::size_t count = Core::ReadUpTo(*input, block.data(), block.size()))
    {
        text.append(block.data(), count);
    }
    return text;
}

Validated Validate(const std::string& file)
{
    Validated validated = {InputName(file), ReadText(file), {}};
    validated.result = Media::ValidateDocument(validated.text, validated.name);
    return validated;
}

const char* KindText(Media::DocumentFaults::Kind kind)
{
    switch (kind)
    {
    case Media::DocumentFaults::Job:
        return "job";
    case Media::DocumentFaults::Preset:
        return "preset";
    case Media::DocumentFaults::Unknown:
        break;
    }
    return "unknown";
}

void WriteString(JsonOutput& output, const char* key, const std::string& text)
{
    output.Key(key);
    output.String(text);
}

void WriteFault(const Media::DocumentFault& fault, JsonOutput& output)
{
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    WriteString(output, "fault", fault.Name());
    WritePlace(fault.place, output);
    WriteString(output, "text", fault.reason);
    WriteString(output, "pointer", fault.pointer);
    for (const auto& [key, number] : {std::pair("line", fault.line), std::pair("column", fault.column),
                                      std::pair("offset", fault.offset), std::pair("length", fault.length)})
    {
        output.Key(key);
        writer.Uint64(number);
    }
    WriteString(output, "found", fault.found);
    if (!fault.expected.empty())
    {
        WriteString(output, "expected", fault.expected);
    }
    output.Key("nearest");
    writer.StartArray();
    for (const std::string& name : fault.nearest)
    {
        output.String(name);
    }
    writer.EndArray();
    writer.EndObject();
}

void WriteJson(const std::vector<Validated>& files)
{
    JsonOutput output;
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartArray();
    for (const Validated& file : files)
    {
        writer.StartObject();
        WriteString(output, "file", file.name);
        WriteString(output, "kind", KindText(file.result.kind));
        output.Key("valid");
        writer.Bool(file.result.faults.empty());
        output.Key("complete");
        writer.Bool(file.result.isComplete);
        output.Key("faults");
        writer.StartArray();
        for (const Media::DocumentFault& fault : file.result.faults)
        {
            WriteFault(fault, output);
        }
        writer.EndArray();
        writer.EndObject();
    }
    writer.EndArray();
    output.Finish();
}

void WriteFaults(const Validated& file)
{
    const Painter paint = Painter::ForStandardOutput();
    const std::vector<Media::DocumentFault>& faults = file.result.faults;
    const std::string name = Printable(file.name);
    for (const Media::DocumentFault& fault : faults)
    {
        WriteText(paint(Style::Heading,
                        name + ":" + std::to_string(fault.line) + ":" + std::to_string(fault.column) + ":") +
                  " " + Printable(fault.Sentence()) + "\n" +
                  MarkedLine(file.text, fault.offset, fault.length, paint));
    }
    const std::string verdict = faults.empty()
                                    ? paint(Style::Good, std::string("valid ") + KindText(file.result.kind))
                                    : paint(Style::Bad, "not valid") + ", " + Count(faults.size(), "fault") +
                                          (file.result.isComplete ? "" : " and more");
    WriteText(name + ": " + verdict + "\n");
}

int RunValidate(const ValidateArguments& options)
{
    std::vector<Validated> files;
    for (const std::string& file : options.files)
    {
        files.push_back(Validate(file));
    }
    if (options.json)
    {
        WriteJson(files);
    }
    else
    {
        std::for_each(files.begin(), files.end(), WriteFaults);
    }
    const bool isValid = std::all_of(files.begin(), files.end(),
                                     [](const Validated& file) { return file.result.faults.empty(); });
    return isValid ? kExitSuccess : kExitNo;
}

} // namespace

void AddValidateCommand(CLI::App& app)
{
    CLI::App* const command = AddCommand(app, "validate",
                                         "Show every mistake in jobs and presets: exit code 0 if there is "
                                         "none, else 1. No other file is opened");
    const auto options = std::make_shared<ValidateArguments>();
    command->add_option("FILE", options->files, "Jobs and presets; \"-\" is standard input")
        ->type_name("FILE")
        ->required();
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunValidate(*options); });
}

} // namespace Zelnor::Tool
