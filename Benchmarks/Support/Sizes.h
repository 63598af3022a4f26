#pragma once

#include <benchmark/benchmark.h>

/// \file
/// The sizes at which all that do the same work are measured, and `Measure`.

namespace Zelnor::Benchmarks
{

/// The rows "Load" and "Save".
inline void OfDocuments(benchmark::internal::Benchmark* row) { row->Arg(4)->Arg(100)->Arg(100'000); }
/// The row "Validate".
inline void OfTopologies(benchmark::internal::Benchmark* row) { row->Arg(100)->Arg(100'000); }
/// The row "Path".
inline void OfPaths(benchmark::internal::Benchmark* row) { row->Arg(10'000); }

/// Times `work`, whose result counts as used.
template <class Work>
void Measure(benchmark::State& state, Work&& work)
{
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(work());
    }
}

/// Times `work` on one item of `items` after the other, so that no look-up is always the same one.
template <class Items, class Work>
void MeasureEach(benchmark::State& state, const Items& items, Work&& work)
{
    auto item = items.begin();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(work(*item));
        if (++item == items.end())
        {
            item = items.begin();
        }
    }
}

} // namespace Zelnor::Benchmarks
