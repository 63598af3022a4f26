// Records from and to JSON, beside what parsing and writing the same text costs without them.

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <benchmark/benchmark.h>

#include <boost/property_tree/json_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <sstream>
#include <string>

namespace
{

using namespace Zelnor::Core;

Property MakeRecord()
{
    Property record("record");
    for (int i = 0; i < 200; ++i)
    {
        Property& node = record.SetChild("node" + std::to_string(i));
        node.CreateChildT("$$TYPE_ID$$", std::string("sourceFile"));
        node.CreateChildT("filePath", std::string("/media/a folder of everyday length/in.mp4"));
        node.CreateChildT("width", 1920LL);
        node.CreateChildT("height", 1080LL);
        node.CreateChildT("frame_rate", Property::Ratio(30000, 1001));
        node.SetChild("metadata").CreateChildT("title", std::string("A title"));
        node.SetChild("codec.options.encode").CreateChildT("gop_size", 12LL);
    }
    return record;
}

/// Properties in what `MakeRecord` gives.
constexpr int kProperties = 1 + 200 * 10;

const std::string& Text()
{
    static const std::string text = [] {
        const Property record = MakeRecord();
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        PropertyEvents(writer, false).Record(record);
        return std::string(buffer.GetString(), buffer.GetSize());
    }();
    return text;
}

void SetItems(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kProperties); }

void ParseOnly(benchmark::State& state)
{
    for (auto _ : state)
    {
        rapidjson::Document document;
        document.Parse<rapidjson::kParseIterativeFlag>(Text().data(), Text().size());
        benchmark::DoNotOptimize(document);
    }
    SetItems(state);
}
BENCHMARK(ParseOnly);

void LoadOnly(benchmark::State& state)
{
    rapidjson::Document document;
    document.Parse<rapidjson::kParseIterativeFlag>(Text().data(), Text().size());
    for (auto _ : state)
    {
        Property record;
        PropertySerializer::Load(record, document);
        benchmark::DoNotOptimize(record);
    }
    SetItems(state);
}
BENCHMARK(LoadOnly);

void ParseThroughStreamAndLoad(benchmark::State& state)
{
    for (auto _ : state)
    {
        const auto input = MemoryDataInput::Create(Text());
        JsonZelnorStreamIn stream(*input);
        rapidjson::Document document;
        document.ParseStream<rapidjson::kParseIterativeFlag>(stream);
        Property record;
        PropertySerializer::Load(record, document);
        benchmark::DoNotOptimize(record);
    }
    SetItems(state);
}
BENCHMARK(ParseThroughStreamAndLoad);

void ReadIntoPtree(benchmark::State& state)
{
    for (auto _ : state)
    {
        std::istringstream stream(Text());
        boost::property_tree::ptree record;
        boost::property_tree::read_json(stream, record);
        benchmark::DoNotOptimize(record);
    }
    SetItems(state);
}
BENCHMARK(ReadIntoPtree);

void WriteDocumentOnly(benchmark::State& state)
{
    rapidjson::Document document;
    document.Parse<rapidjson::kParseIterativeFlag>(Text().data(), Text().size());
    for (auto _ : state)
    {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        document.Accept(writer);
        benchmark::DoNotOptimize(buffer.GetString());
    }
    SetItems(state);
}
BENCHMARK(WriteDocumentOnly);

void SaveOnly(benchmark::State& state)
{
    const Property record = MakeRecord();
    for (auto _ : state)
    {
        rapidjson::Document document;
        PropertySerializer::Save(record, document, document.GetAllocator());
        benchmark::DoNotOptimize(document);
    }
    SetItems(state);
}
BENCHMARK(SaveOnly);

void WriteRecordThroughStream(benchmark::State& state)
{
    const Property record = MakeRecord();
    for (auto _ : state)
    {
        const auto output = MemoryDataOutput::Create();
        JsonZelnorStreamOut stream(*output);
        rapidjson::Writer<JsonZelnorStreamOut> writer(stream);
        CheckDepth(record, 0);
        PropertyEvents(writer, false).Record(record);
        benchmark::DoNotOptimize(output->GetData().data());
    }
    SetItems(state);
}
BENCHMARK(WriteRecordThroughStream);

void WritePtree(benchmark::State& state)
{
    std::istringstream text(Text());
    boost::property_tree::ptree record;
    boost::property_tree::read_json(text, record);
    for (auto _ : state)
    {
        std::ostringstream stream;
        boost::property_tree::write_json(stream, record, false);
        benchmark::DoNotOptimize(stream);
    }
    SetItems(state);
}
BENCHMARK(WritePtree);

} // namespace
