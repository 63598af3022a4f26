// nlohmann's JSON with its members in their order.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <nlohmann/json.hpp>

namespace Zelnor::Benchmarks
{
namespace
{

using nlohmann::ordered_json;

void Load(benchmark::State& state)
{
    const std::string& json = GetJson(state.range(0));
    Measure(state, [&] { return ordered_json::parse(json); });
}
BENCHMARK(Load)->Name("Load/nlohmann")->Apply(OfDocuments);

void Save(benchmark::State& state)
{
    const ordered_json document = ordered_json::parse(GetJson(state.range(0)));
    Measure(state, [&] { return document.dump(); });
}
BENCHMARK(Save)->Name("Save/nlohmann")->Apply(OfDocuments);

ordered_json MakeGroup(const std::vector<Field>& fields)
{
    ordered_json group = ordered_json::object();
    for (const Field& field : fields)
    {
        switch (field.kind)
        {
        case Field::TEXT:
            group[field.name] = field.text;
            break;
        case Field::NUMBER:
            group[field.name] = field.number;
            break;
        case Field::RATIO:
            group[field.name] = {field.number, field.denominator};
            break;
        case Field::GROUP:
            group[field.name] = MakeGroup(field.members);
            break;
        }
    }
    return group;
}

void BuildRecord(benchmark::State& state)
{
    Measure(state, [] { return MakeGroup(GetNodeFields()); });
}
BENCHMARK(BuildRecord)->Name("BuildRecord/nlohmann");

void CopyRecord(benchmark::State& state)
{
    const ordered_json record = MakeGroup(GetNodeFields());
    Measure(state, [&] { return ordered_json(record); });
}
BENCHMARK(CopyRecord)->Name("CopyRecord/nlohmann");

void CompareRecords(benchmark::State& state)
{
    const ordered_json left = MakeGroup(GetNodeFields());
    const ordered_json right = MakeGroup(GetNodeFields());
    Measure(state, [&] { return left == right; });
}
BENCHMARK(CompareRecords)->Name("CompareRecords/nlohmann");

void FindProperty(benchmark::State& state)
{
    const ordered_json record = MakeGroup(GetNodeFields());
    MeasureEach(state, GetNodeFields(), [&](const Field& field) { return &record[field.name]; });
}
BENCHMARK(FindProperty)->Name("FindProperty/nlohmann");

} // namespace
} // namespace Zelnor::Benchmarks
