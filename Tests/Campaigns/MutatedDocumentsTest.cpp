// Jobs, records and presets that somebody cut off, damaged or forged: each is refused with the exception that
// its reader promises, or what was read is the same after being saved and read again.

#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"
#include "Media/Presets/PresetFile.h"

#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertySerializer.h"

#include "Tests/Campaigns/JsonMutator.h"
#include "Tests/Support/Campaign.h"
#include "Tests/Support/GraphRoundTrip.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelnor
{

namespace
{

using namespace Zelnor::Testing;

void Require(bool holds, const std::string& what)
{
    if (!holds)
    {
        throw std::logic_error(what);
    }
}

std::string DescriptionOf(const boost::exception& e)
{
    const std::string* const description = boost::get_error_info<TagDescription>(e);
    return description == nullptr ? "" : *description;
}

std::string Write(const Core::Property& record)
{
    const auto output = Core::MemoryDataOutput::Create();
    Core::JsonZelnorStreamOut stream(*output);
    rapidjson::Writer<Core::JsonZelnorStreamOut> writer(stream);
    Core::PropertyEvents(writer, false).Record(record);
    return output->GetData();
}

/// Whether the graph takes the document; other exceptions than those of a document pass through.
bool IsJobForGraph(const std::string& document, Conf::ITranscodingMetaGraph& graph)
{
    try
    {
        graph.Load(Core::MemoryDataInput::Create(document));
        return true;
    }
    catch (const Conf::BadJson& e)
    {
        const auto* const what = boost::get_error_info<Conf::ProfileException::TagJsonBadStructure>(e);
        Require(what != nullptr && !what->empty(), "a refusal says what is wrong");
    }
    catch (const Conf::NodeNotFound& e)
    {
        Require(boost::get_error_info<Conf::ProfileException::TagRequestedNodeId>(e) != nullptr,
                "which node");
    }
    catch (const Conf::LinkExists& e)
    {
        Require(boost::get_error_info<Conf::ProfileException::TagRequestedLink>(e) != nullptr, "which link");
    }
    catch (const Conf::ProfileException& e)
    {
        Require(DescriptionOf(e) == "No identifier is left", "another refusal");
    }
    catch (const Core::PropertyException& e)
    {
        Require(!DescriptionOf(e).empty(), "a refusal says what is wrong");
    }
    return false;
}

/// \returns whether the document is taken
bool TryJob(const std::string& document)
{
    const auto graph = Conf::ITranscodingMetaGraph::Create();
    const bool isTaken = IsJobForGraph(document, *graph);
    // What was read before a failure is a graph, too.
    const std::string difference = GraphRoundTrip(*graph).FindDifference();
    Require(difference.empty(), difference);
    try
    {
        Media::ReadJob(*Core::MemoryDataInput::Create(document), "job.json");
        Require(isTaken, "the graph refuses what the reader of jobs takes");
    }
    catch (const Media::JobException& e)
    {
        Require(!isTaken, "the graph takes what the reader of jobs refuses");
        Require(DescriptionOf(e).find("job.json: ") == 0, "a refusal begins with the file");
    }
    return isTaken;
}

bool TryRecord(const std::string& document)
{
    rapidjson::Document json;
    json.Parse<rapidjson::kParseIterativeFlag>(document.data(), document.size());
    if (json.HasParseError())
    {
        return false;
    }
    Core::Property record("before", 1);
    try
    {
        Core::PropertySerializer::Load(record, json);
    }
    catch (const Core::PropertyException& e)
    {
        Require(!DescriptionOf(e).empty(), "a refusal says what is wrong");
        Require(record == Core::Property("before", 1), "a refusal changes nothing");
        return false;
    }
    const std::string text = Write(record);
    rapidjson::Document again;
    again.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
    Require(!again.HasParseError(), "what was written is JSON");
    Core::Property read;
    Core::PropertySerializer::Load(read, again);
    Require(read == record, "what was written is read equal");
    return true;
}

bool TryPreset(const std::string& document)
{
    const auto read = [](const std::string& text) {
        return Media::PresetFile::Read(*Core::MemoryDataInput::Create(text), "p.json");
    };
    boost::intrusive_ptr<Media::PresetFile> preset;
    try
    {
        preset = read(document);
    }
    catch (const Media::PresetFileException& e)
    {
        Require(DescriptionOf(e).find("p.json: ") == 0, "a refusal begins with the file");
        return false;
    }
    Require(read(Write(preset->GetProperty()))->GetProperty() == preset->GetProperty(),
            "what was written is read equal");
    return true;
}

/// A kind of document, good ones of it, and what must hold for any.
struct Kind
{
    const char* folder;
    bool (*tryOne)(const std::string&);

    std::vector<std::string> Documents() const
    {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry :
             std::filesystem::directory_iterator(std::string(ZELNOR_SOURCE_DIR "/") + folder))
        {
            paths.push_back(entry.path());
        }
        std::sort(paths.begin(), paths.end());
        std::vector<std::string> documents;
        for (const auto& path : paths)
        {
            const std::string text = ReadFile(path);
            // Large ones are the first ones with more of the same, and not all of a fuzzer's inputs are
            // documents.
            if (text.size() <= 1'000 && tryOne(text))
            {
                documents.push_back(text);
            }
        }
        return documents;
    }
};

void PrintTo(const Kind& kind, std::ostream* os) { *os << kind.folder; }

class MutatedDocuments : public ::testing::TestWithParam<Kind>
{
protected:
    void SetUp() override { ASSERT_GE(m_documents.size(), 5u); }

    void TearDown() override
    {
        EXPECT_GT(m_tried, 0u);
        ReportFigures(std::to_string(m_tried) + " documents of " + GetParam().folder + ", " +
                      std::to_string(m_taken) + " taken, " + std::to_string(m_findings) + " findings");
    }

    void Try(const std::string& document)
    {
        ++m_tried;
        try
        {
            m_taken += GetParam().tryOne(document) ? 1 : 0;
        }
        catch (...)
        {
            ++m_findings;
            ADD_FAILURE() << boost::current_exception_diagnostic_information().substr(0, 2'000)
                          << "\ndocument " << m_tried << " of the seed " << m_seed << ": "
                          << ::testing::PrintToString(document.substr(0, 5'000));
        }
    }

    /// Whether to go on: after some findings the rest says little more.
    bool GoesOn() const { return m_findings < 10; }

    const std::vector<std::string> m_documents = GetParam().Documents();
    const std::uint64_t m_seed = CampaignSeed(1);
    /// Of each kind of document for the change of bytes; twice as many for that of the structure.
    const std::size_t m_runs = std::max<std::size_t>(CampaignRuns(QuickRuns(100'000)) / 9, 1);

private:
    std::size_t m_tried = 0;
    std::size_t m_taken = 0;
    std::size_t m_findings = 0;
};

TEST_P(MutatedDocuments, CutOffAnywhereAreRefusedOrKept)
{
    for (const std::string& document : m_documents)
    {
        for (std::size_t size = 0; size < document.size() && GoesOn(); ++size)
        {
            Try(document.substr(0, size));
        }
    }
}

TEST_P(MutatedDocuments, WithAnyByteChangedAreRefusedOrKept)
{
    std::size_t bytes = 0;
    for (const std::string& document : m_documents)
    {
        bytes += document.size();
    }
    const std::size_t changes = std::clamp<std::size_t>(m_runs / bytes, 1, 255);
    for (const std::string& document : m_documents)
    {
        for (std::size_t at = 0; at < document.size(); ++at)
        {
            // Spread over all other values, beginning elsewhere at each byte.
            for (std::size_t i = 0; i < changes && GoesOn(); ++i)
            {
                std::string changed = document;
                changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^
                                                (1 + (at + m_seed + i * 255 / changes) % 255));
                Try(changed);
            }
        }
    }
}

TEST_P(MutatedDocuments, WithTheirStructureChangedAreRefusedOrKept)
{
    JsonMutator mutator(m_documents, m_seed);
    for (std::size_t i = 0; i < 2 * m_runs && GoesOn(); ++i)
    {
        Try(mutator.Next());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, MutatedDocuments,
    ::testing::Values(Kind{"Tests/Fuzz/Corpus/Job", TryJob}, Kind{"Tests/Fuzz/Corpus/Record", TryRecord},
                      Kind{"Presets", TryPreset}),
    [](const auto& kind) {
        return std::string(kind.index == 0 ? "Jobs" : kind.index == 1 ? "Records" : "Presets");
    });

} // namespace

} // namespace Zelnor
