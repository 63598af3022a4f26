// Costs without a clock: each piece of work once, at two sizes. `Benchmarks/costs.py` runs this by itself,
// for the allocations, which are printed, and under Valgrind's callgrind, which counts the instructions.

#include "Benchmarks/Support/Allocations.h"
#include "Benchmarks/Support/Job.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Core/Interfaces/DataStream.h"

#include <gnu/libc-version.h>

#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(name)
#define CALLGRIND_STOP_INSTRUMENTATION
#endif

namespace Zelnor::Benchmarks
{
namespace
{

using Core::Property;

constexpr const char* kUnit = "Benchmarks/Costs";

/// Whether this was compiled with optimisation, whatever a compiler's wrapper did to the options.
[[gnu::noinline]] bool IsOptimized()
{
    int one = 1;
    return __builtin_constant_p(one + 1) != 0;
}

/// Does the work twice, since the first time pays for what is then kept, and counts the second. What it
/// returns counts as kept.
template <class Work>
void Count(const char* row, long long size, Work&& work)
{
    const std::string name = std::string(row) + "/" + std::to_string(size);
    const std::string ofFreeing = name + "/free";
    (void)work();
    const std::size_t allocations = CountAllocations();
    const std::size_t bytes = BytesInUse();
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    auto kept = std::optional(work());
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    CALLGRIND_STOP_INSTRUMENTATION;
    const std::size_t allocated = CountAllocations() - allocations;
    std::printf("%s\t%zu\t%zu\n", name.c_str(), allocated, BytesInUse() - bytes);
    // Freeing is work too.
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    kept.reset();
    CALLGRIND_DUMP_STATS_AT(ofFreeing.c_str());
    CALLGRIND_STOP_INSTRUMENTATION;
}

void CountDocuments(long long nodes)
{
    const auto input = GetJson(nodes);
    Count("Load", nodes, [&] {
        Graph graph = Conf::ITranscodingMetaGraph::Create();
        graph->Load(Core::MemoryDataInput::Create(input));
        return graph;
    });
    Count("Save", nodes, [&] {
        auto out = Core::MemoryDataOutput::Create();
        GetJob(nodes)->Save(out);
        return out;
    });
}

void CountTopologies(long long nodes)
{
    const Graph& graph = GetJob(nodes);
    Count("Validate", nodes, [&] { return graph->TopologyIsValid(); });
    Count("Path", nodes, [&] { return Conf::PathExistInGraph(graph, 1, nodes); });
    const Graph gaps = MakeJob(1);
    for (long long id = 2; id <= nodes; ++id)
    {
        gaps->AddNode(Property());
    }
    for (long long id = 3; id < nodes; id += 7)
    {
        gaps->RemoveNode(id);
    }
    Count("NodeById", nodes, [&] {
        std::vector<long long> outputs;
        for (long long id = 1; id <= nodes; id += 7)
        {
            gaps->Outputs(id, outputs);
        }
        return outputs.size();
    });
}

void CountLookups(int times)
{
    Count("CodecByText", times, [&] {
        long long sum = 0;
        for (int i = 0; i < times; ++i)
        {
            for (const auto& codec : Conf::mapCodecs)
            {
                sum += Conf::CodecIDFromTextID(codec.second);
            }
        }
        return sum;
    });
    Count("TextOfCodec", times, [&] {
        std::size_t sum = 0;
        for (int i = 0; i < times; ++i)
        {
            for (const auto& codec : Conf::mapCodecs)
            {
                sum += Conf::CodecIDToTextID(codec.first).size();
            }
        }
        return sum;
    });
    Count("PixelFormatByName", times, [&] {
        long long sum = 0;
        for (int i = 0; i < times; ++i)
        {
            for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
            {
                sum += PixFmtDescription::Find(record.name)->pixFmt;
            }
        }
        return sum;
    });
    Count("PixelFormatByValue", times, [&] {
        std::size_t sum = 0;
        for (int i = 0; i < times; ++i)
        {
            for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
            {
                sum += PixFmtDescription::Find(record.pixFmt)->name.size();
            }
        }
        return sum;
    });
}

void CountRecords(int records)
{
    Count("BuildRecord", records, [&] {
        std::vector<Property> built;
        for (int i = 0; i < records; ++i)
        {
            built.push_back(MakeNodeRecord());
        }
        return built;
    });
    const std::vector<Property> left(static_cast<std::size_t>(records), MakeNodeRecord());
    const std::vector<Property> right = left;
    Count("CopyRecord", records, [&] { return std::vector<Property>(left); });
    Count("CompareRecords", records, [&] { return left == right; });
    Count("FindProperty", records, [&] {
        std::size_t sum = 0;
        for (const Property& record : left)
        {
            for (const Field& field : GetNodeFields())
            {
                sum += record[field.name].GetName().size();
            }
        }
        return sum;
    });
}

void CountWideRecords(long long children)
{
    std::vector<std::string> names;
    for (long long i = 0; i < children; ++i)
    {
        names.push_back("stream" + std::to_string(i));
    }
    Count("SetNewChildren", children, [&] {
        Property record("wide");
        for (const std::string& name : names)
        {
            record.SetChild(name);
        }
        return record;
    });
    Property record("wide");
    for (const std::string& name : names)
    {
        record.CreateChildT(name, 1LL);
    }
    Count("ChildrenByPosition", children, [&] {
        long long sum = 0;
        for (unsigned long i = 0; i < record.Count(); ++i)
        {
            sum += record[i].GetInt64();
        }
        return sum;
    });
}

void CountThrows(int times)
{
    Count("Throw", times, [&] {
        std::size_t sum = 0;
        for (int i = 0; i < times; ++i)
        {
            try
            {
                ZELNOR_THROW(kUnit, std::invalid_argument("a description"));
            }
            catch (const std::invalid_argument& e)
            {
                sum += static_cast<std::size_t>(e.what()[0]);
            }
        }
        return sum;
    });
}

int CountAll()
{
    // What costs depend on beside our sources.
    std::printf("# GCC %s, glibc %s%s\n", __VERSION__, gnu_get_libc_version(),
                IsOptimized() ? "" : ", not optimized");
    CountDocuments(4);
    CountDocuments(100);
    CountTopologies(100);
    CountTopologies(2'000);
    CountLookups(1);
    CountLookups(10);
    CountRecords(1);
    CountRecords(100);
    CountWideRecords(100);
    CountWideRecords(1'000);
    CountThrows(1);
    CountThrows(100);
    return 0;
}

} // namespace
} // namespace Zelnor::Benchmarks

int main() { return Zelnor::Benchmarks::CountAll(); }
