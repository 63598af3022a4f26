#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/Campaign.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Zelnor::Conf
{

namespace
{

using namespace Testing;
using Core::Property;

/// A graph whose document has `blocks` blocks of 16 KiB at most.
GraphPtr GraphOfBlocks(std::size_t blocks)
{
    GraphPtr graph = GraphWithNodes(2);
    graph->AddLink(1, 2, Property("format", std::string(16000 * blocks, 'x')));
    return graph;
}

std::size_t CountReads(const std::string& json, std::size_t piece)
{
    TestInput input(json, piece);
    ITranscodingMetaGraph::Create()->Load(&input);
    return input.GetCalls();
}

/// Expects that a graph still saves, loads and changes.
void ExpectUsable(ITranscodingMetaGraph& graph)
{
    const std::string json = JsonOf(graph);
    EXPECT_EQ(NodesOf(*Loaded(json)), NodesOf(graph));
    const NodeId added = graph.AddNode(Property("n"));
    graph.RemoveNode(added);
    EXPECT_EQ(JsonOf(graph), json);
}

} // namespace

TEST(GraphStreamsCampaign, LoadingPassesTheFailureOfEveryReadOn)
{
    std::size_t cases = 0;
    for (const auto& [json, piece] : {std::pair(JsonOf(*GraphWithNodes(5)), std::size_t{1}),
                                      std::pair(JsonOf(*GraphOfBlocks(4)), std::size_t{16384}),
                                      std::pair(JsonOf(*GraphOfBlocks(1)), std::size_t{100})})
    {
        const std::size_t reads = CountReads(json, piece);
        for (std::size_t failing = 1; failing <= reads; ++failing, ++cases)
        {
            TestInput input(json, piece, failing);
            const GraphPtr graph = ITranscodingMetaGraph::Create();
            const Thrown thrown = ExpectThrow<Core::CoreException>([&] { graph->Load(&input); });
            EXPECT_EQ(thrown.description, "test stream: no more");
            EXPECT_EQ(input.GetCalls(), failing);
            ExpectUsable(*graph);
        }
    }
    std::cout << "campaign: " << cases << " failing reads\n";
}

TEST(GraphStreamsCampaign, SavingAndDrawingPassTheFailureOfEveryWriteOn)
{
    const GraphPtr graph = GraphOfBlocks(4);
    const std::string json = JsonOf(*graph);
    for (std::size_t failing = 1; failing <= json.size() / 16384 + 1; ++failing)
    {
        TestOutput output(failing);
        EXPECT_EQ(ExpectThrow<Core::CoreException>([&] { graph->Save(&output); }).description,
                  "test stream: no more");
        EXPECT_EQ(output.GetBytes(), json.substr(0, output.GetBytes().size()));
        EXPECT_EQ(output.GetBytes().size(), 16384 * (failing - 1));
        EXPECT_EQ(JsonOf(*graph), json);
    }
    TestOutput output(1);
    EXPECT_EQ(ExpectThrow<Core::CoreException>([&] { graph->SaveInToDot(&output); }).description,
              "test stream: no more");
    EXPECT_EQ(output.GetBytes(), "");
    ExpectUsable(*graph);
}

TEST(GraphStreamsCampaign, ADocumentThatEndsTooEarlyIsRefusedWhereverThatIs)
{
    const std::string json = JsonOf(*GraphWithNodes(5));
    for (std::size_t size = 0; size < json.size(); ++size)
    {
        for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::string::npos})
        {
            TestInput input(json.substr(0, size), piece);
            const GraphPtr graph = ITranscodingMetaGraph::Create();
            ExpectThrow<BadJson>([&] { graph->Load(&input); });
            ExpectUsable(*graph);
        }
    }
}

TEST(GraphStreamsCampaign, AnInputThatClaimsTooMuchIsRefusedAtEveryRead)
{
    for (std::size_t lieAt = 1; lieAt <= 20; ++lieAt)
    {
        for (const std::size_t beyond : {std::size_t{1}, std::size_t{16384}, ~std::size_t{0} - 16384})
        {
            LyingInput input(' ', beyond, lieAt);
            const GraphPtr graph = ITranscodingMetaGraph::Create();
            EXPECT_EQ(ExpectThrow<Core::CoreException>([&] { graph->Load(&input); }).description,
                      "The input claims to have read " + std::to_string(16384 + beyond) +
                          " bytes, expected at most 16384");
            ExpectUsable(*graph);
        }
    }
}

TEST(GraphStreamsCampaign, AnEndlessInputIsReadOneMebibyteAheadAtMost)
{
    /// Repeats a letter after the document, or instead of one.
    class Endless final : public OnStack<Core::IDataInput>
    {
    public:
        Endless(std::string beginning, char letter) : m_beginning(std::move(beginning)), m_letter(letter) {}
        std::size_t Read(void* buffer, std::size_t size) override
        {
            ++calls;
            auto* const bytes = static_cast<char*>(buffer);
            std::fill_n(bytes, size, m_letter);
            std::copy_n(m_beginning.data(), std::min(size, m_beginning.size()), bytes);
            m_beginning.clear();
            return size;
        }
        std::size_t calls = 0;

    private:
        std::string m_beginning;
        char m_letter;
    };
    for (const std::string beginning : {"", R"({"vertices":[],"edges":[]})", R"({"vertices":[{)"})
    {
        for (const char letter : {'x', '\0', ']', '\xFF'})
        {
            Endless input(beginning, letter);
            ExpectThrow<BadJson>([&] { ITranscodingMetaGraph::Create()->Load(&input); });
            EXPECT_LE(input.calls, 64u);
        }
    }
}

namespace
{

/// Saves the document in the way that programs do.
void SaveToFile(const ITranscodingMetaGraph& graph, const std::string& path)
{
    const auto output = Core::AtomicFileDataOutput::Create(path);
    graph.Save(output);
    output->Commit();
}

pid_t ForkSaver(const ITranscodingMetaGraph& graph, const std::string& path, std::size_t times)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        try
        {
            for (std::size_t i = 0; i < times; ++i)
            {
                SaveToFile(graph, path);
            }
            ::_exit(0);
        }
        catch (...)
        {
            ::_exit(1);
        }
    }
    return child;
}

/// \returns as `waitpid` does
int WaitFor(pid_t child)
{
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

} // namespace

TEST(GraphStreamsCampaign, AKilledSaverLeavesTheOldFileOrTheNewOneAndNoLitterAfterTheNextSave)
{
    const TemporaryFolder folder;
    const std::string path = (folder / "job.json").string();
    const std::vector<GraphPtr> graphs = {GraphOfBlocks(1), GraphOfBlocks(5)};
    const std::vector<std::string> documents = {JsonOf(*graphs[0]), JsonOf(*graphs[1])};
    const std::size_t runs = CampaignRuns(100);
    const std::uint64_t seed = CampaignSeed(std::random_device()());
    SCOPED_TRACE("ZELNOR_CAMPAIGN_SEED=" + std::to_string(seed));
    std::mt19937_64 random(seed);
    SaveToFile(*graphs[0], path);
    std::size_t old = 0;
    std::size_t complete = 0;
    std::size_t littered = 0;
    auto longest = std::chrono::microseconds(0);
    for (std::size_t run = 0; run < runs && !::testing::Test::HasFailure(); ++run)
    {
        const auto begin = std::chrono::steady_clock::now();
        const pid_t child = ForkSaver(*graphs[1 - old], path, 1);
        if (run % 10 == 0)
        {
            // Undisturbed, to know how long a save takes here and now.
            ASSERT_EQ(WaitFor(child), 0);
            longest = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                            begin);
        }
        else
        {
            std::this_thread::sleep_until(
                begin + std::chrono::microseconds(random() % static_cast<std::uint64_t>(longest.count())));
            ::kill(child, SIGKILL);
            WaitFor(child);
        }
        const std::string found = ReadFile(path);
        ASSERT_TRUE(found == documents[0] || found == documents[1]) << "run " << run;
        complete += found == documents[1 - old] ? 1 : 0;
        old = found == documents[0] ? 0 : 1;
        littered += folder.Names().size() > 1 ? 1 : 0;
        if (random() % 4 == 0)
        {
            SaveToFile(*graphs[old], path);
            ASSERT_EQ(folder.Names(), std::vector<std::string>{"job.json"}) << "run " << run;
        }
    }
    SaveToFile(*graphs[0], path);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"job.json"});
    EXPECT_GT(littered, 0u) << "no saver was killed in the middle of its work";
    std::cout << "campaign: " << runs << " savers, " << complete << " saves were complete, " << littered
              << " times a killed one had left a file\n";
}

TEST(GraphStreamsCampaign, TwoSaversAtOnceBothWriteWholeFiles)
{
    const TemporaryFolder folder;
    const std::string path = (folder / "job.json").string();
    const std::vector<GraphPtr> graphs = {GraphOfBlocks(1), GraphOfBlocks(3)};
    const std::vector<std::string> documents = {JsonOf(*graphs[0]), JsonOf(*graphs[1])};
    SaveToFile(*graphs[0], path);
    const std::size_t saves = CampaignRuns(50);
    std::vector<pid_t> savers;
    for (const GraphPtr& graph : graphs)
    {
        savers.push_back(ForkSaver(*graph, path, saves));
    }
    std::size_t reads = 0;
    siginfo_t ended = {};
    do
    {
        const std::string found = ReadFile(path);
        EXPECT_TRUE(found == documents[0] || found == documents[1]) << found.size() << " bytes";
        ++reads;
        ended.si_pid = 0;
    } while (!::testing::Test::HasFailure() &&
             ::waitid(P_PID, static_cast<id_t>(savers[0]), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
             ended.si_pid == 0);
    for (const pid_t saver : savers)
    {
        EXPECT_EQ(WaitFor(saver), 0);
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"job.json"});
    std::cout << "campaign: " << 2 * saves << " saves, " << reads << " reads of whole files\n";
}

} // namespace Zelnor::Conf
