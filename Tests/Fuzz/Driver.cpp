// Drives a fuzzer without libFuzzer: `--runs N` mutations of the corpus from `--seed N`, or the inputs of the
// files that are named. The input that breaks something is left in `fuzz-failure.bin`.

#include "Tests/Fuzz/Fuzzer.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

namespace
{

using Random = std::mt19937_64;

/// What is being tried, for the handler of a crash.
const std::string* g_current = nullptr;

void KeepInput(int)
{
    // Not for a handler in general; here the process ends anyway.
    if (g_current != nullptr)
    {
        std::ofstream("fuzz-failure.bin", std::ios::binary) << *g_current;
        std::fputs("the input is in fuzz-failure.bin\n", stderr);
    }
    std::signal(SIGABRT, SIG_DFL);
    std::abort();
}

/// \returns whether the input was well-formed
bool Try(const std::string& input)
{
    g_current = &input;
    return 0 == LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

std::size_t Below(Random& random, std::size_t limit) { return limit == 0 ? 0 : random() % limit; }

/// A piece of one of the inputs that are known.
std::string Piece(const std::vector<std::string>& corpus, Random& random)
{
    const std::string& from = corpus[Below(random, corpus.size())];
    const std::size_t begin = Below(random, from.size());
    return from.substr(begin, Below(random, from.size() - begin + 1));
}

void Mutate(std::string& input, const std::vector<std::string>& corpus, Random& random)
{
    static constexpr char kBytes[] = "{}[]\":,-0123456789eE.tfn\\u \0\xff\xc3";
    const std::size_t at = Below(random, input.size() + 1);
    switch (Below(random, 6))
    {
    case 0:
        input.insert(at, 1, kBytes[Below(random, sizeof kBytes - 1)]);
        break;
    case 1:
        input.erase(at, Below(random, 8) + 1);
        break;
    case 2:
        if (at < input.size())
        {
            input[at] = kBytes[Below(random, sizeof kBytes - 1)];
        }
        break;
    case 3:
        if (at < input.size())
        {
            input[at] = static_cast<char>(input[at] ^ (1 << Below(random, 8)));
        }
        break;
    case 4:
        input.insert(at, Piece(corpus, random));
        break;
    default:
        input.replace(at, Below(random, 16), Piece(corpus, random));
    }
}

std::string Contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The inputs of the corpus, in the order of their files' names.
std::vector<std::string> ReadCorpus()
{
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(ZELNOR_FUZZ_CORPUS))
    {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> corpus;
    std::transform(paths.begin(), paths.end(), std::back_inserter(corpus), Contents);
    Zelnor::Fuzz::Require(!corpus.empty(), "there is a corpus");
    return corpus;
}

void Run(unsigned long runs, unsigned long seed)
{
    constexpr std::size_t kMostBytes = 4096;
    constexpr std::size_t kMostInputs = 1024;
    std::vector<std::string> corpus = ReadCorpus();
    const std::size_t seeds = corpus.size();
    unsigned long wellFormed = 0;
    for (const std::string& input : corpus)
    {
        wellFormed += Try(input) ? 1 : 0;
    }
    Zelnor::Fuzz::Require(wellFormed != 0, "the corpus holds a well-formed input");
    wellFormed = 0;
    Random random(seed);
    for (unsigned long i = 0; i < runs; ++i)
    {
        std::string input = corpus[Below(random, corpus.size())];
        for (std::size_t mutations = Below(random, 5) + 1; mutations != 0; --mutations)
        {
            Mutate(input, corpus, random);
        }
        input.resize(std::min(input.size(), kMostBytes));
        if (!Try(input))
        {
            continue;
        }
        // Well-formed ones live on, so that mutations add up; the seeds stay.
        ++wellFormed;
        corpus.size() < kMostInputs ? corpus.push_back(input)
                                    : void(corpus[seeds + Below(random, kMostInputs - seeds)] = input);
    }
    std::printf("%lu inputs, %lu of them well-formed, 0 findings\n", runs, wellFormed);
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGABRT, KeepInput);
    unsigned long runs = 0;
    unsigned long seed = 1;
    bool named = false;
    for (int i = 1; i < argc; ++i)
    {
        if (i + 1 < argc && std::strcmp(argv[i], "--runs") == 0)
        {
            runs = std::stoul(argv[++i]);
        }
        else if (i + 1 < argc && std::strcmp(argv[i], "--seed") == 0)
        {
            seed = std::stoul(argv[++i]);
        }
        else
        {
            Try(Contents(argv[i]));
            named = true;
        }
    }
    if (!named)
    {
        Run(runs, seed);
    }
    return 0;
}
