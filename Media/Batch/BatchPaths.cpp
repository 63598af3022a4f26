#include "Media/Batch/BatchPaths.h"

#include "Media/Batch/BatchRecord.h"
#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"
#include "Media/RecordText.h"

#include <climits>
#include <stdlib.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <vector>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;
using Conf::ITranscodingMetaGraph;
using Conf::NodeId;
using GraphPtr = boost::intrusive_ptr<ITranscodingMetaGraph>;

constexpr const char* kUnit = "Media/Batch/BatchPaths";

/// Without links; empty when there is no such folder.
std::string RealPath(const std::string& folder)
{
    std::array<char, PATH_MAX> path = {};
    return ::realpath(folder.empty() ? "." : folder.c_str(), path.data()) == nullptr ? "" : path.data();
}

/// \throw JobException unless all these nodes have the path
void RequirePath(const ITranscodingMetaGraph& job, const std::vector<NodeId>& nodes, const Place& document,
                 const std::string& path)
{
    for (const NodeId node : nodes)
    {
        const std::string found = TextUnder(job[node], ITranscodingMetaGraph::KEY_FILEPATH);
        if (found != path)
        {
            Place place = document;
            place.node = node;
            ZELNOR_THROW(kUnit, MakeError<JobException>(place.At(ITranscodingMetaGraph::KEY_FILEPATH),
                                                        "the batch says '" + path + "', the document '" +
                                                            found + "'"));
        }
    }
}

} // namespace

std::string KeptPath(const std::string& path, const std::string& base)
{
    if (path.empty() || path.front() == '/')
    {
        return path;
    }
    const fs::path given = path;
    const std::string file = given.filename().string();
    const bool isFolder = file.empty() || file == "." || file == "..";
    const std::string folder = RealPath(isFolder ? path : given.parent_path().string());
    if (folder.empty())
    {
        // Nothing can be read from there or written to; the reason is told when that is tried.
        return fs::absolute(given).string();
    }
    return (isFolder ? fs::path(folder) : fs::path(folder) / file).lexically_relative(base).string();
}

GraphPtr WithPaths(const ITranscodingMetaGraph& job, const std::string& document,
                   const std::function<std::string(const std::string&)>& change)
{
    GraphPtr changed = ITranscodingMetaGraph::Create();
    std::vector<NodeId> nodes;
    job.Nodes(nodes);
    for (const NodeId node : nodes)
    {
        Core::Property record = job[node];
        const std::string path = TextUnder(record, ITranscodingMetaGraph::KEY_FILEPATH);
        if (!path.empty())
        {
            record.SetChildT(ITranscodingMetaGraph::KEY_FILEPATH, change(path));
        }
        if (changed->AddNode(record) != node)
        {
            Place place{document};
            place.node = node;
            ZELNOR_THROW(kUnit, MakeError<JobException>(place, "expected nodes from 1 to " +
                                                                   std::to_string(nodes.size()) +
                                                                   " in order, as a plan numbers them"));
        }
    }
    std::vector<std::pair<NodeId, NodeId>> links;
    job.Links(links);
    for (const auto& [from, to] : links)
    {
        changed->AddLink(from, to, job.GetLink(from, to));
    }
    return changed;
}

GraphPtr ReadBatchJob(const Batch& batch, const BatchJob& job, const std::string& text)
{
    const std::string document = batch.DocumentOf(job.number);
    const JobFile file = ReadJob(*Core::MemoryDataInput::Create(text), document);
    std::vector<NodeId> sources;
    std::vector<NodeId> targets;
    file.graph->Inputs(sources);
    file.graph->Outputs(targets);
    const std::size_t expected = 1;
    if (sources.size() != expected || targets.size() != expected)
    {
        ZELNOR_THROW(kUnit,
                     MakeError<JobException>(Place{document}, "expected one source and one target, found " +
                                                                  std::to_string(sources.size()) + " and " +
                                                                  std::to_string(targets.size())));
    }
    RequirePath(*file.graph, sources, Place{document}, job.input);
    RequirePath(*file.graph, targets, Place{document}, batch.OutputOf(job));
    return WithPaths(*file.graph, document, [&batch](const std::string& path) {
        return IsKeptPath(path) ? batch.PathOf(path) : path;
    });
}

} // namespace Zelnor::Media
