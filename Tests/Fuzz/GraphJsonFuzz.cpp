// Feeds documents to the graph's loader. Whatever it takes must come back the same after being saved, and
// every operation must end. With libFuzzer (-fsanitize=fuzzer, ZELNOR_LIBFUZZER defined) this is a fuzz
// target; otherwise it is a program:
//
//   GraphJsonFuzz [file...]                     runs the files, or standard input
//   GraphJsonFuzz --mutate <count> <file...>    runs the files and `count` documents made from them, always
//   the
//                                               same ones

#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Core/Interfaces/Exception.h"
#include "Tests/Support/GraphRoundTrip.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using Conf::ITranscodingMetaGraph;
using Graph = boost::intrusive_ptr<ITranscodingMetaGraph>;

[[noreturn]] void Fail(const std::string& what)
{
    std::cerr << "differs after saving and loading: " << what << '\n';
    std::abort();
}

/// Takes everything apart again.
void Dismantle(ITranscodingMetaGraph& graph)
{
    std::vector<Conf::NodeId> exits;
    graph.Outputs(exits);
    for (const Conf::NodeId id : exits)
    {
        std::vector<Conf::NodeId> inputs;
        graph.Inputs(id, inputs);
        for (const Conf::NodeId input : inputs)
        {
            graph.RemoveLink(input, id);
        }
    }
    for (const Conf::NodeId id : exits)
    {
        try
        {
            graph.RemoveNode(id);
        }
        catch (const Conf::LinkExists&)
        {
            // Another node with this identifier came first.
        }
    }
}

/// Whether the loader took the document.
bool Run(const std::string& document)
{
    const Graph graph = ITranscodingMetaGraph::Create();
    bool taken = true;
    try
    {
        graph->Load(Core::MemoryDataInput::Create(document));
    }
    catch (const Conf::ProfileException&)
    {
        taken = false;
    }
    catch (const Core::PropertyException&)
    {
        taken = false;
    }
    // What was read before a failure is a graph, too.
    const std::string difference = Testing::GraphRoundTrip(*graph).FindDifference();
    if (!difference.empty())
    {
        Fail(difference);
    }
    graph->SaveInToDot(Core::MemoryDataOutput::Create());
    std::vector<Conf::NodeId> entries;
    graph->Inputs(entries);
    if (!entries.empty())
    {
        PathExistInGraph(graph, entries.front(), entries.back());
    }
    Dismantle(*graph);
    return taken;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Run(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}

#ifndef ZELNOR_LIBFUZZER

namespace
{

/// Makes documents from others: bytes changed, pieces cut out, repeated, exchanged between documents, and
/// words of the format put in.
class Mutator
{
public:
    explicit Mutator(std::vector<std::string> corpus) : m_corpus(std::move(corpus)) {}

    std::string Next()
    {
        std::string document = AnyDocument();
        for (std::size_t steps = 1 + Below(3); steps > 0; --steps)
        {
            Mutate(document);
        }
        return document;
    }

private:
    std::size_t Below(std::size_t bound) { return bound == 0 ? 0 : m_random() % bound; }

    const std::string& AnyDocument() { return m_corpus[Below(m_corpus.size())]; }

    /// A place where a value may begin or end: the changes that a parser gets past are made there.
    std::size_t AnyBoundary(const std::string& text)
    {
        const std::size_t found = text.find_first_of("{}[],:\"", Below(text.size()));
        return found == std::string::npos ? text.size() : found;
    }

    void Mutate(std::string& document)
    {
        static const std::vector<std::string> kWords = {"0",
                                                        "-1",
                                                        "9223372036854775807",
                                                        "-9223372036854775808",
                                                        "9223372036854775808",
                                                        "1.5",
                                                        "1e3",
                                                        "null",
                                                        "true",
                                                        "\"\"",
                                                        "{}",
                                                        "[]",
                                                        "[1,2]",
                                                        "[1,0]",
                                                        "[-9223372036854775808,-1]",
                                                        "{\"a\":1}",
                                                        "{\"data\":{\"\":[]}}",
                                                        "\"id\":",
                                                        "\"data\":",
                                                        "\"from\":1",
                                                        "\"\\u0000\"",
                                                        "\"\\ud800\"",
                                                        std::string(1, '\0'),
                                                        "\xFF",
                                                        ",",
                                                        "{\"a\":1,\"a\":2}",
                                                        "[{\"a\":1},{\"a\":2}]",
                                                        "{\"id\":1},"};
        const std::size_t place = AnyBoundary(document);
        switch (Below(8))
        {
        case 0:
            document.insert(place, kWords[Below(kWords.size())]);
            break;
        case 1:
            document.erase(place, 1 + Below(8));
            break;
        case 2:
            document.insert(place, document.substr(AnyBoundary(document), Below(60)));
            break;
        case 3:
            if (!document.empty())
            {
                document[Below(document.size())] = static_cast<char>(m_random());
            }
            break;
        default:
            ReplaceNumber(document, place, kWords[Below(5)]);
            break;
        }
    }

    static void ReplaceNumber(std::string& document, std::size_t place, const std::string& number)
    {
        const std::size_t begin = document.find_first_of("0123456789", place);
        if (begin != std::string::npos)
        {
            const std::size_t end = document.find_first_not_of("0123456789", begin);
            document.replace(begin, end == std::string::npos ? end : end - begin, number);
        }
    }

    std::vector<std::string> m_corpus;
    std::mt19937 m_random;
};

std::string ReadAll(std::istream& in)
{
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

int RunMutations(long count, const std::vector<std::string>& corpus)
{
    Mutator mutator(corpus);
    long taken = 0;
    for (long i = 0; i < count; ++i)
    {
        taken += Run(mutator.Next()) ? 1 : 0;
    }
    std::cout << count << " documents, " << taken << " of them taken\n";
    // Documents that are all refused, or all taken, test nothing.
    return taken > count / 50 && taken < count - count / 50 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    long mutations = 0;
    if (arguments.size() >= 2 && arguments.front() == "--mutate")
    {
        mutations = std::stol(arguments[1]);
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    std::vector<std::string> documents;
    for (const std::string& path : arguments)
    {
        std::ifstream file(path, std::ios::binary);
        if (!file)
        {
            std::cerr << path << ": cannot be read\n";
            return EXIT_FAILURE;
        }
        documents.push_back(ReadAll(file));
    }
    if (arguments.empty())
    {
        documents.push_back(ReadAll(std::cin));
    }
    for (const std::string& document : documents)
    {
        Run(document);
    }
    return mutations == 0 ? EXIT_SUCCESS : RunMutations(mutations, documents);
}

#endif
