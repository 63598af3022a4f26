#include "Benchmarks/Support/Job.h"

#include "Core/Interfaces/DataStream.h"

#include <map>
#include <utility>

namespace Zelnor::Benchmarks
{

using Conf::ITranscodingMetaGraph;
using Core::Property;

namespace
{

Field Text(std::string name, std::string text) { return {std::move(name), Field::TEXT, std::move(text)}; }
Field Number(std::string name, long long number) { return {std::move(name), Field::NUMBER, {}, number}; }

void AddFields(Property& group, const std::vector<Field>& fields)
{
    for (const Field& field : fields)
    {
        switch (field.kind)
        {
        case Field::TEXT:
            group.CreateChildT(field.name, field.text);
            break;
        case Field::NUMBER:
            group.CreateChildT(field.name, field.number);
            break;
        case Field::RATIO:
            group.CreateChildT(field.name, Property::Ratio(field.number, field.denominator));
            break;
        case Field::GROUP:
            AddFields(group.SetChild(field.name), field.members);
            break;
        }
    }
}

} // namespace

const std::vector<Field>& GetNodeFields()
{
    static const std::vector<Field> fields = {
        Text("$$TYPE_ID$$", "rawStream"),
        Text("filePath", "/media/camera/2013-05-01/clip.mp4"),
        Number("index", 1),
        Text("codec", "CODEC_ID_H264"),
        Number("width", 1920),
        Number("height", 1080),
        {"frameRateRatio", Field::RATIO, {}, 30000, 1001},
        Number("bitrate", 12'000'000),
        Text("pixelFormat", "YUV420P"),
        Number("profile", 100),
        Number("level", 41),
        {"metadata",
         Field::GROUP,
         {},
         0,
         1,
         {Text("language", "eng"), Text("title", "A title of everyday length"),
          Text("creation_time", "2013-05-01T10:20:30Z"), Text("handler_name", "VideoHandler")}},
        {"codec.options.encode",
         Field::GROUP,
         {},
         0,
         1,
         {Number("gop_size", 12), Number("b_frames", 2), Text("preset", "medium"), Number("threads", 4)}},
    };
    return fields;
}

Property MakeNodeRecord()
{
    Property record("stream");
    AddFields(record, GetNodeFields());
    return record;
}

Property MakeLinkRecord()
{
    Property record("format_codec_video");
    record.CreateChildT("codec", std::string("CODEC_ID_MPEG4"));
    record.CreateChildT("bitrate", 4'000'000LL);
    return record;
}

Pairs MakeLinks(long long nodes)
{
    Pairs links;
    for (long long id = 1; id < nodes; ++id)
    {
        links.emplace_back(id, id + 1);
        if (id % 2 == 0 && id + 2 <= nodes)
        {
            links.emplace_back(id, id + 2);
        }
    }
    return links;
}

Graph MakeJob(long long nodes)
{
    Graph graph = ITranscodingMetaGraph::Create();
    const Property node = MakeNodeRecord();
    for (long long id = 1; id <= nodes; ++id)
    {
        graph->AddNode(node);
    }
    const Property link = MakeLinkRecord();
    for (const auto& [from, to] : MakeLinks(nodes))
    {
        graph->AddLink(from, to, link);
    }
    return graph;
}

const Graph& GetJob(long long nodes)
{
    static std::map<long long, Graph> jobs;
    Graph& job = jobs[nodes];
    if (job == nullptr)
    {
        job = MakeJob(nodes);
    }
    return job;
}

const std::string& GetJson(long long nodes)
{
    static std::map<long long, std::string> documents;
    std::string& document = documents[nodes];
    if (document.empty())
    {
        const auto out = Core::MemoryDataOutput::Create();
        GetJob(nodes)->Save(out);
        document = out->GetData();
    }
    return document;
}

} // namespace Zelnor::Benchmarks
