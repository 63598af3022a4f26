// Records: of everyday size, and wide.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <string>
#include <vector>

namespace Zelnor::Benchmarks
{
namespace
{

using Core::Property;

void BuildRecord(benchmark::State& state) { Measure(state, MakeNodeRecord); }
BENCHMARK(BuildRecord)->Name("BuildRecord/Zelnor");

void CopyRecord(benchmark::State& state)
{
    const Property record = MakeNodeRecord();
    Measure(state, [&] { return Property(record); });
}
BENCHMARK(CopyRecord)->Name("CopyRecord/Zelnor");

void CompareRecords(benchmark::State& state)
{
    const Property left = MakeNodeRecord();
    const Property right = MakeNodeRecord();
    Measure(state, [&] { return left == right; });
}
BENCHMARK(CompareRecords)->Name("CompareRecords/Zelnor");

void FindProperty(benchmark::State& state)
{
    const Property record = MakeNodeRecord();
    MeasureEach(state, GetNodeFields(), [&](const Field& field) { return &record[field.name]; });
}
BENCHMARK(FindProperty)->Name("FindProperty/Zelnor");

void SetNewChildren(benchmark::State& state)
{
    std::vector<std::string> names;
    for (long i = 0; i < state.range(0); ++i)
    {
        names.push_back("stream" + std::to_string(i));
    }
    Measure(state, [&] {
        Property record("wide");
        for (const std::string& name : names)
        {
            record.SetChild(name);
        }
        return record;
    });
}
BENCHMARK(SetNewChildren)->Name("SetNewChildren/Zelnor")->Arg(2'000);

void ChildrenByPosition(benchmark::State& state)
{
    Property record("wide");
    for (long i = 0; i < state.range(0); ++i)
    {
        record.CreateChildT("stream", static_cast<long long>(i));
    }
    Measure(state, [&] {
        long long sum = 0;
        for (unsigned long i = 0; i < record.Count(); ++i)
        {
            sum += record[i].GetInt64();
        }
        return sum;
    });
}
BENCHMARK(ChildrenByPosition)->Name("ChildrenByPosition/Zelnor")->Arg(10'000);

} // namespace
} // namespace Zelnor::Benchmarks
