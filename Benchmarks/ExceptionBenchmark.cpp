// What a failure costs: the throw itself, the call stack on it, and naming that stack anew each time.

#include "Core/Interfaces/CallStack.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Property.h"

#include <benchmark/benchmark.h>

#include <execinfo.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace
{

void ThrowStandard(benchmark::State& state)
{
    for (auto _ : state)
    {
        try
        {
            throw std::logic_error("a description");
        }
        catch (const std::exception& e)
        {
            benchmark::DoNotOptimize(e.what());
        }
    }
}
BENCHMARK(ThrowStandard);

void ThrowOfAProperty(benchmark::State& state)
{
    const Zelnor::Core::Property property("p", 1);
    for (auto _ : state)
    {
        try
        {
            benchmark::DoNotOptimize(property.GetString());
        }
        catch (const Zelnor::Exception& e)
        {
            benchmark::DoNotOptimize(&e);
        }
    }
}
BENCHMARK(ThrowOfAProperty)->ThreadRange(1, 2);

void CallStack(benchmark::State& state)
{
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(Zelnor::GetCallStack());
    }
}
BENCHMARK(CallStack)->ThreadRange(1, 2);

/// The peer: the C library's own, which names every frame at every call (and demangles nothing).
void BacktraceSymbols(benchmark::State& state)
{
    for (auto _ : state)
    {
        std::array<void*, 64> frames;
        const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
        char** const names = backtrace_symbols(frames.data(), count);
        benchmark::DoNotOptimize(names);
        std::free(names);
    }
}
BENCHMARK(BacktraceSymbols);

} // namespace
