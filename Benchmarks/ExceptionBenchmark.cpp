// A failure: thrown and caught 20 calls deep, with the call stack as text.

#include "Benchmarks/Support/Sizes.h"
#include "Core/Interfaces/Exception.h"

#include <boost/stacktrace.hpp>

#include <execinfo.h>

#include <array>
#include <stdexcept>
#include <string>

namespace Zelnor::Benchmarks
{
namespace
{

constexpr const char* kUnit = "Benchmarks/ExceptionBenchmark";
constexpr int kDepth = 20;

/// Not a constant, so that the compiler does not know that each of them throws.
using Work = void (*volatile)();

/// Calls `work` from as many calls as `depth` says.
[[gnu::noinline]] void Descend(int depth, Work& work)
{
    if (depth == 0)
    {
        work();
        return;
    }
    Descend(depth - 1, work);
    // Something is left to do, so that the call stays a call.
    benchmark::ClobberMemory();
}

void ThrowAndCatch(benchmark::State& state, void (*thrower)())
{
    Work work = thrower;
    for (auto _ : state)
    {
        try
        {
            Descend(kDepth, work);
        }
        catch (const std::exception& e)
        {
            benchmark::DoNotOptimize(e.what());
        }
    }
}

void Throw(benchmark::State& state)
{
    ThrowAndCatch(state, [] { ZELNOR_THROW(kUnit, std::invalid_argument("a description")); });
}
BENCHMARK(Throw)->Name("Throw/Zelnor");

/// The frames of the call stack and those of the throw are walked; no text is made.
void ThrowUnwinding(benchmark::State& state)
{
    ThrowAndCatch(state, [] {
        std::array<void*, 64> frames;
        benchmark::DoNotOptimize(backtrace(frames.data(), static_cast<int>(frames.size())));
        throw std::invalid_argument("a description");
    });
}
BENCHMARK(ThrowUnwinding)->Name("Throw/unwinding alone");

void ThrowBoostStacktrace(benchmark::State& state)
{
    ThrowAndCatch(state, [] {
        throw std::invalid_argument("a description" + to_string(boost::stacktrace::stacktrace()));
    });
}
BENCHMARK(ThrowBoostStacktrace)->Name("Throw/Boost.Stacktrace");

} // namespace
} // namespace Zelnor::Benchmarks
