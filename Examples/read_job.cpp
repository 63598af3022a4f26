#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <iostream>

using namespace Zelnor;
using namespace Zelnor::Conf;
using Graph = ITranscodingMetaGraph;

namespace
{

constexpr const char* kJob = R"({"vertices": [
  {"id": 1, "data": {"data": {"source": {"$$TYPE_ID$$": "sourceFile", "filePath": "holiday.mov"}}}},
  {"id": 2, "data": {"data": {"target": {"container": "mp4", "filePath": "holiday.mp4"}}}},
  {"id": 3, "data": {"data": {"streamRaw": {"id": 0}}}}, {"id": 4, "data": {"data": {"streamRaw": {"id": 1}}}}],
 "edges": [{"id": 1, "from": 1, "to": 3}, {"id": 2, "from": 1, "to": 4},
  {"id": 3, "from": 3, "to": 2, "data": {"data": {"format_codec_video": {"codec_id": "CODEC_ID_H264"}}}},
  {"id": 4, "from": 4, "to": 2, "data": {"data": {"format_codec_audio": {"codec_id": "CODEC_ID_AAC"}}}}]})";

} // namespace

int main()
try
{
    const auto job = Graph::Create();
    job->Load(Core::MemoryDataInput::Create(kJob));
    if (!GetTopologyFaults(*job).empty())
    {
        std::cerr << "the nodes and links are not a job\n";
        return 1;
    }
    // From each target back to its streams, and from those to their sources.
    std::vector<NodeId> targets;
    job->Outputs(targets);
    for (const NodeId target : targets)
    {
        std::cout << (*job)[target][Graph::KEY_FILEPATH].GetString() << " is made of\n";
        std::vector<NodeId> streams;
        job->Inputs(target, streams);
        for (const NodeId stream : streams)
        {
            std::vector<NodeId> sources;
            job->Inputs(stream, sources);
            const Core::Property source = (*job)[sources.at(0)];
            const Core::Property codec = job->GetLink(stream, target);
            std::cout << "  stream " << (*job)[stream][Graph::KEY_STREAM_RAW_ID].GetInt64() << " of "
                      << source[Graph::KEY_FILEPATH].GetString() << " as "
                      << codec[IFormatCodec::TAG_CODEC_ID].GetString() << "\n";
        }
    }
}
catch (const Exception& e) // a document that is not a job, a record without a key: the tags say which
{
    std::cerr << boost::diagnostic_information(e);
    return 2;
}
