#include "Media/Pages/Graphviz.h"
#include "Media/Pages/JobPage.h"
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
    bool documentOnly = false;
};

constexpr std::array<const char*, 5> kFormats = {"dot", "svg", "png", "pdf", "html"};

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
    throw ToolError(output + ": the extension is not that of a drawing: expected .dot, .svg, .png, .pdf or "
                             ".html, or --format");
}

std::string Draw(const Media::JobFile& job, const std::string& format, bool documentOnly)
{
    if (format == "html")
    {
        return Media::MakeJobPage(*job.graph, {job.name, !documentOnly});
    }
    const auto dot = Core::MemoryDataOutput::Create();
    job.graph->SaveInToDot(dot);
    return format == "dot" ? dot->GetData() : Media::DrawWithGraphviz(dot->GetData(), format);
}

int RunJobDraw(const JobDrawArguments& options)
{
    // First, so that a wrong name is reported before anything is read.
    const std::string format = options.format.empty() ? FormatOf(options.output) : options.format;
    if (options.documentOnly && format != "html")
    {
        throw ToolError("--document-only is for the format html; a drawing as " + format +
                        " opens no file but the job");
    }
    const Media::JobFile job = OpenJob(options.job);
    WriteDocument(options.output, Draw(job, format, options.documentOnly));
    return kExitSuccess;
}

} // namespace

void AddJobDrawCommand(CLI::App& job)
{
    CLI::App* const command =
        AddCommand(job, "draw", "Draw a job as a graph (DOT, SVG, PNG or PDF), or show it as a page (HTML)");
    const auto options = std::make_shared<JobDrawArguments>();
    AddJobArgument(*command, options->job);
    AddDocumentOption(*command, options->output,
                      "The drawing, in the format of its extension (.dot, .svg, .png, .pdf or .html) or DOT,",
                      "--output");
    command
        ->add_option("-f,--format", options->format,
                     "The format (dot, svg, png, pdf or html), whatever the extension; html is a page with "
                     "the drawing, the records, what is wrong, and sources beside targets")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(std::vector<std::string>(kFormats.begin(), kFormats.end())));
    command->add_flag("--document-only", options->documentOnly,
                      "Do not open the job's sources for a page; show what the document alone tells");
    OnRun(*command, [options] { return RunJobDraw(*options); });
}

} // namespace Zelnor::Tool
