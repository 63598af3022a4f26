#include "Media/Running/Subprocess.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>

namespace Zelnor::Tool
{

namespace
{

struct JobDrawArguments
{
    std::string job;
    std::string output = "-";
    std::string format;
};

constexpr std::array<const char*, 4> kFormats = {"dot", "svg", "png", "pdf"};

/// The format that belongs to the extension of the output.
std::string FormatOf(const std::string& output)
{
    if (IsStandardStream(output))
    {
        return "dot";
    }
    std::string extension = std::filesystem::path(output).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    for (const char* const format : kFormats)
    {
        if (extension == std::string(".") + format)
        {
            return format;
        }
    }
    throw ToolError(
        output + ": the extension is not that of a drawing: expected .dot, .svg, .png or .pdf, or --format");
}

std::string DrawWithGraphviz(const std::string& dot, const std::string& format)
{
    const Media::FilterResult result = Media::RunFilter({"dot", "-T" + format}, dot);
    if (!result.started)
    {
        throw ToolError(
            "Drawing as " + format +
            " needs Graphviz, whose program 'dot' is not in PATH; the format dot does not need it");
    }
    if (result.exitCode != 0 || result.output.empty())
    {
        const std::string message = result.messages.substr(0, result.messages.find('\n'));
        throw ToolError("Graphviz failed with exit code " + std::to_string(result.exitCode) +
                        (message.empty() ? "" : ": " + message));
    }
    return result.output;
}

int RunJobDraw(const JobDrawArguments& options)
{
    // First, so that a wrong name is reported before anything is read.
    const std::string format = options.format.empty() ? FormatOf(options.output) : options.format;
    const Media::JobFile job = OpenJob(options.job);
    const auto dot = Core::MemoryDataOutput::Create();
    job.graph->SaveInToDot(dot);
    WriteDocument(options.output,
                  format == "dot" ? dot->GetData() : DrawWithGraphviz(dot->GetData(), format));
    return kExitSuccess;
}

} // namespace

void AddJobDrawCommand(CLI::App& job)
{
    CLI::App* const command = AddCommand(job, "draw", "Draw a job as a graph (DOT, SVG, PNG or PDF)");
    const auto options = std::make_shared<JobDrawArguments>();
    AddJobArgument(*command, options->job);
    AddDocumentOption(*command, options->output,
                      "The drawing, in the format of its extension (.dot, .svg, .png or .pdf) or DOT,",
                      "--output");
    command
        ->add_option("-f,--format", options->format,
                     "The format (dot, svg, png or pdf), whatever the extension")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(std::vector<std::string>(kFormats.begin(), kFormats.end())));
    OnRun(*command, [options] { return RunJobDraw(*options); });
}

} // namespace Zelnor::Tool
