#include "Media/Jobs/JobFile.h"
#include "Media/Running/JobCheck.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Commands/PlaceJson.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/Terminal.h"
#include "Tools/zconf/Console/Text.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct JobCheckArguments
{
    std::string job;
    bool topology = false;
    bool strict = false;
    bool json = false;
};

void WriteTopology(const Media::JobFault& fault, JsonOutput& output)
{
    output.Key("nodes");
    output.GetWriter().StartArray();
    for (const std::vector<Conf::NodeId>& group : fault.groups)
    {
        output.Integers(group);
    }
    output.GetWriter().EndArray();
}

void WriteFaults(const std::vector<Media::JobFault>& faults, JsonOutput& output)
{
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartArray();
    for (const Media::JobFault& fault : faults)
    {
        writer.StartObject();
        output.Key("fault");
        output.String(fault.Name());
        if (fault.IsOfTopology())
        {
            WriteTopology(fault, output);
        }
        else
        {
            WritePlace(fault.place, output);
            output.Key("text");
            output.String(fault.reason);
        }
        writer.EndObject();
    }
    writer.EndArray();
}

void WriteJson(const Media::JobReport& report, const JobCheckArguments& options)
{
    JsonOutput output;
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    output.Key("valid");
    writer.Bool(report.faults.empty());
    output.Key("faults");
    WriteFaults(report.faults, output);
    if (!options.topology)
    {
        output.Key("losses");
        WriteFaults(report.losses, output);
    }
    writer.EndObject();
    output.Finish();
}

void WriteVerdict(const Media::JobFile& job, const Media::JobReport& report)
{
    const std::vector<Media::JobFault>& faults = report.faults;
    const Painter paint = Painter::ForStandardOutput();
    std::vector<Conf::NodeId> nodes;
    job.graph->Nodes(nodes);
    std::vector<std::pair<Conf::NodeId, Conf::NodeId>> links;
    job.graph->Links(links);
    std::string text = Printable(job.name) + ": " +
                       (faults.empty() ? paint(Style::Good, "valid") : paint(Style::Bad, "not valid")) +
                       ", " + Count(nodes.size(), "node") + " and " + Count(links.size(), "link") + "\n";
    for (const Media::JobFault& fault : faults)
    {
        text += "  " + Printable(fault.Sentence()) + "\n";
    }
    for (const Media::JobFault& loss : report.losses)
    {
        text += "  note: " + Printable(loss.Sentence()) + "\n";
    }
    WriteText(text);
}

int RunJobCheck(const JobCheckArguments& options)
{
    const Media::JobFile job = OpenJob(options.job);
    Media::JobReport report = options.topology
                                  ? Media::JobReport{Media::FindTopologyFaults(*job.graph, job.name), {}}
                                  : Media::ReportJob(*job.graph, job.name);
    if (options.strict)
    {
        std::move(report.losses.begin(), report.losses.end(), std::back_inserter(report.faults));
        report.losses.clear();
    }
    options.json ? WriteJson(report, options) : WriteVerdict(job, report);
    return report.faults.empty() ? kExitSuccess : kExitNo;
}

} // namespace

void AddJobCheckCommand(CLI::App& job)
{
    CLI::App* const command = AddCommand(
        job, "check", "Check whether a job can be run: exit code 0 if so, else 1 with every reason");
    const auto options = std::make_shared<JobCheckArguments>();
    AddJobArgument(*command, options->job);
    command->add_flag("--topology", options->topology,
                      "Check only nodes and links; the job's files need not be there");
    AddStrictFlag(*command, options->strict);
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunJobCheck(*options); });
}

} // namespace Zelnor::Tool
