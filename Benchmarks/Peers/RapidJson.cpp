// RapidJSON: documents and records as its DOM.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>

namespace Zelnor::Benchmarks
{
namespace
{

using rapidjson::Document;
using rapidjson::Value;

void Load(benchmark::State& state)
{
    const std::string& json = GetJson(state.range(0));
    Measure(state, [&] {
        Document document;
        document.Parse(json.data(), json.size());
        return document;
    });
}
BENCHMARK(Load)->Name("Load/RapidJSON")->Apply(OfDocuments);

void Save(benchmark::State& state)
{
    const std::string& json = GetJson(state.range(0));
    Document document;
    document.Parse(json.data(), json.size());
    Measure(state, [&] {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        document.Accept(writer);
        return buffer.GetSize();
    });
}
BENCHMARK(Save)->Name("Save/RapidJSON")->Apply(OfDocuments);

Value Text(const std::string& text, Document::AllocatorType& allocator)
{
    return Value(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

void AddFields(Value& value, const std::vector<Field>& fields, Document::AllocatorType& allocator)
{
    value.SetObject();
    for (const Field& field : fields)
    {
        Value member;
        switch (field.kind)
        {
        case Field::TEXT:
            member = Text(field.text, allocator);
            break;
        case Field::NUMBER:
            member.SetInt64(field.number);
            break;
        case Field::RATIO:
            member.SetArray();
            member.PushBack(Value(static_cast<std::int64_t>(field.number)), allocator);
            member.PushBack(Value(static_cast<std::int64_t>(field.denominator)), allocator);
            break;
        case Field::GROUP:
            AddFields(member, field.members, allocator);
            break;
        }
        value.AddMember(Text(field.name, allocator), member, allocator);
    }
}

Document MakeRecord()
{
    Document document;
    AddFields(document, GetNodeFields(), document.GetAllocator());
    return document;
}

void BuildRecord(benchmark::State& state) { Measure(state, MakeRecord); }
BENCHMARK(BuildRecord)->Name("BuildRecord/RapidJSON");

void CopyRecord(benchmark::State& state)
{
    const Document record = MakeRecord();
    Measure(state, [&] {
        Document copy;
        copy.CopyFrom(record, copy.GetAllocator());
        return copy;
    });
}
BENCHMARK(CopyRecord)->Name("CopyRecord/RapidJSON");

void CompareRecords(benchmark::State& state)
{
    const Document left = MakeRecord();
    const Document right = MakeRecord();
    Measure(state, [&] { return left == right; });
}
BENCHMARK(CompareRecords)->Name("CompareRecords/RapidJSON");

void FindProperty(benchmark::State& state)
{
    const Document record = MakeRecord();
    MeasureEach(state, GetNodeFields(), [&](const Field& field) {
        return &record
                    .FindMember(Value(rapidjson::StringRef(
                        field.name.data(), static_cast<rapidjson::SizeType>(field.name.size()))))
                    ->value;
    });
}
BENCHMARK(FindProperty)->Name("FindProperty/RapidJSON");

} // namespace
} // namespace Zelnor::Benchmarks
