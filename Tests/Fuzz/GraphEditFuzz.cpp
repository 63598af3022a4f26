// Bytes as a sequence of edits and documents, each of which must do to a graph what its rules say.

#include "Tests/Fuzz/Bytes.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tests/Support/GraphBesideModel.h"

#include <exception>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Zelnor;
    constexpr int kMostNodes = 9;
    constexpr int kMostSteps = 48;
    const std::string input = Fuzz::ToString(data, size);
    Fuzz::Bytes bytes(input);
    Testing::GraphBesideModel graph;
    try
    {
        for (int step = 0; step < kMostSteps && !bytes.IsEmpty(); ++step)
        {
            const int kind = bytes.Byte() % Testing::GraphBesideModel::kKinds;
            const long long from = bytes.Byte() % (kMostNodes + 2) - 1;
            const long long to = bytes.Byte() % (kMostNodes + 2) - 1;
            graph.Take(kind, from, to);
        }
        graph.Compare(kMostNodes);
    }
    catch (const std::exception& e)
    {
        Fuzz::Require(false, e.what());
    }
    return 0;
}
