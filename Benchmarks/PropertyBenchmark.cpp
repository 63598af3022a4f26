// The property tree beside the other tree that a Boost user would take.

#include "Core/Interfaces/Property.h"

#include <benchmark/benchmark.h>

#include <boost/property_tree/ptree.hpp>

#include <string>
#include <vector>

namespace
{

using boost::property_tree::ptree;
using Zelnor::Core::Property;

constexpr int kGroups = 100;
constexpr int kMembers = 12;

const std::vector<std::string>& Names()
{
    static const std::vector<std::string> names = {
        "codec",    "width", "height",  "frame_rate", "bitrate",     "gop_size",
        "b_frames", "level", "profile", "pix_fmt",    "$$TYPE_ID$$", "codec.options.encode",
    };
    return names;
}

Property MakeProperty()
{
    Property record("record");
    for (int group = 0; group < kGroups; ++group)
    {
        Property& child = record.SetChild("group" + std::to_string(group));
        for (int i = 0; i < kMembers; i += 2)
        {
            child.CreateChildT(Names()[static_cast<std::size_t>(i)], static_cast<long long>(i));
            child.CreateChildT(Names()[static_cast<std::size_t>(i) + 1],
                               std::string("a value of everyday length"));
        }
    }
    return record;
}

ptree MakePtree()
{
    ptree record;
    for (int group = 0; group < kGroups; ++group)
    {
        ptree& child = record.push_back({"group" + std::to_string(group), ptree()})->second;
        for (int i = 0; i < kMembers; i += 2)
        {
            child.push_back({Names()[static_cast<std::size_t>(i)], ptree()})->second.put_value(i);
            child.push_back({Names()[static_cast<std::size_t>(i) + 1], ptree("a value of everyday length")});
        }
    }
    return record;
}

void SetItems(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * kGroups * (kMembers + 1));
}

void BuildProperty(benchmark::State& state)
{
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(MakeProperty());
    }
    SetItems(state);
}
BENCHMARK(BuildProperty);

void BuildPtree(benchmark::State& state)
{
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(MakePtree());
    }
    SetItems(state);
}
BENCHMARK(BuildPtree);

void CopyProperty(benchmark::State& state)
{
    const Property record = MakeProperty();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(Property(record));
    }
    SetItems(state);
}
BENCHMARK(CopyProperty);

void CopyPtree(benchmark::State& state)
{
    const ptree record = MakePtree();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(ptree(record));
    }
    SetItems(state);
}
BENCHMARK(CopyPtree);

void CompareProperty(benchmark::State& state)
{
    const Property left = MakeProperty();
    const Property right(left);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(left == right);
    }
    SetItems(state);
}
BENCHMARK(CompareProperty);

void ComparePtree(benchmark::State& state)
{
    const ptree left = MakePtree();
    const ptree right(left);
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(left == right);
    }
    SetItems(state);
}
BENCHMARK(ComparePtree);

void ReadProperty(benchmark::State& state)
{
    const Property record = MakeProperty();
    const Property& group = record["group0"];
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(group["$$TYPE_ID$$"].GetInt64() + group["bitrate"].GetInt64());
    }
}
BENCHMARK(ReadProperty);

void ReadPtree(benchmark::State& state)
{
    const ptree record = MakePtree();
    const ptree& group = record.get_child("group0");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(group.get<long long>("$$TYPE_ID$$") + group.get<long long>("bitrate"));
    }
}
BENCHMARK(ReadPtree);

/// Adding and reaching the child just added, as those do who build lists of streams.
void AppendAndReachByPosition(benchmark::State& state)
{
    const Property child("stream", 1);
    for (auto _ : state)
    {
        Property list("streams");
        for (int i = 0; i < state.range(0); ++i)
        {
            list.Add(child);
            list[list.Count() - 1] = 2LL;
        }
        benchmark::DoNotOptimize(list);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(AppendAndReachByPosition)->RangeMultiplier(4)->Range(64, 16384)->Complexity(benchmark::oN);

} // namespace
