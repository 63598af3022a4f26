#include "Media/Jobs/JobFaults.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/Terminal.h"
#include "Tools/zconf/Console/Text.h"

#include <memory>

namespace Zelnor::Tool
{

namespace
{

struct Options
{
    std::string job;
    bool json = false;
};

void WriteJson(bool valid, const std::vector<Media::JobFault>& faults)
{
    JsonOutput output;
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    output.Key("valid");
    writer.Bool(valid);
    output.Key("faults");
    writer.StartArray();
    for (const Media::JobFault& fault : faults)
    {
        writer.StartObject();
        output.Key("fault");
        output.String(fault.Name());
        output.Key("nodes");
        writer.StartArray();
        for (const std::vector<Conf::NodeId>& group : fault.groups)
        {
            output.Integers(group);
        }
        writer.EndArray();
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    output.Finish();
}

void WriteVerdict(const Media::JobFile& job, bool valid, const std::vector<Media::JobFault>& faults)
{
    const Painter paint = Painter::ForStandardOutput();
    std::string text = Printable(job.name) + ": " +
                       (valid ? paint(Style::Good, "valid") : paint(Style::Bad, "not valid")) + ", " +
                       Count(job.nodes.size(), "node") + " and " + Count(job.links.size(), "link") + "\n";
    for (const Media::JobFault& fault : faults)
    {
        text += "  " + fault.Sentence() + "\n";
    }
    WriteText(text);
}

int Run(const Options& options)
{
    const Media::JobFile job = OpenJob(options.job);
    const bool valid = job.graph->TopologyIsValid();
    const std::vector<Media::JobFault> faults = Media::FindFaults(job);
    if (valid != faults.empty())
    {
        throw ToolError(job.name + ": The reasons found contradict the verdict (please report this)");
    }
    options.json ? WriteJson(valid, faults) : WriteVerdict(job, valid, faults);
    return valid ? kExitSuccess : kExitNo;
}

} // namespace

void AddJobCheckCommand(CLI::App& job)
{
    CLI::App* const command =
        AddCommand(job, "check", "Tell whether a job can be run: exit code 0 if so, else 1 and every reason");
    const auto options = std::make_shared<Options>();
    AddJobArgument(*command, options->job);
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return Run(*options); });
}

} // namespace Zelnor::Tool
