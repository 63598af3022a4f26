// A document passes validation exactly when its reader takes it and the check of jobs finds nothing but what
// is about files, or a preset has a codec that is not made here; and each fault points to a place in the
// text.

#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Running/JobCheck.h"
#include "Media/Validating/DocumentFault.h"

#include "Tests/Campaigns/JsonMutator.h"
#include "Tests/Support/Campaign.h"
#include "Tests/Support/DocumentFaults.h"
#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// What only the sources of a job, or the machine, can tell: the reasons contain these.
constexpr const char* kAboutSources[] = {
    "expected the record 'format_codec_",
    "such a stream cannot go into a target",
    "another link to the same stream asks for",
    "the index of a cover or attachment",
    "is a cover or an attachment",
    "does not have a stream",
    "expected a time before the end of the source",
    "that is copied from such a container can only begin with it",
    "cannot become",
    "does not have a decoder for",
    "does not have an option", // of a decoder, which is known with the source
    "cannot be merged",
    "is merged",
    "merge",
    "needs the filter",
};

bool IsAboutFiles(const JobFault& fault, bool isCopied)
{
    return fault.kind == JobFault::Input || fault.kind == JobFault::Output ||
           (isCopied && fault.kind == JobFault::Container) ||
           std::any_of(std::begin(kAboutSources), std::end(kAboutSources),
                       [&](const char* text) { return fault.reason.find(text) != std::string::npos; });
}

/// Whether all faults are what only a job of the preset meets, so that its reader takes it.
bool AreOfTheInstallation(const std::vector<DocumentFault>& faults)
{
    return std::all_of(faults.begin(), faults.end(), [](const DocumentFault& fault) {
        return fault.kind == DocumentFault::Ignored || fault.kind == DocumentFault::Container ||
               (fault.kind == DocumentFault::Encoder &&
                fault.reason.find("does not have an encoder") != std::string::npos);
    });
}

/// What the reader of jobs and the check say; nothing when the job can be run as far as documents tell.
std::string JobRefusal(const std::string& document, bool& isRefused)
{
    isRefused = true;
    try
    {
        const JobFile job = ReadJob(*Core::MemoryDataInput::Create(document), "");
        const bool isCopied =
            document.find("lossless") != std::string::npos || document.find("LOSSLESS") != std::string::npos;
        const std::vector<JobFault> faults = CheckJob(*job.graph);
        isRefused = !faults.empty();
        for (const JobFault& fault : faults)
        {
            if (!IsAboutFiles(fault, isCopied))
            {
                return fault.Sentence();
            }
        }
        return "";
    }
    catch (const JobException& e)
    {
        return *boost::get_error_info<TagDescription>(e);
    }
}

std::string PresetRefusal(const std::string& document)
{
    try
    {
        PresetFile::Read(*Core::MemoryDataInput::Create(document), "");
        return "";
    }
    catch (const PresetFileException& e)
    {
        return *boost::get_error_info<TagDescription>(e);
    }
}

std::string Unescaped(std::string step)
{
    for (const auto& [escape, character] : {std::pair("~1", "/"), std::pair("~0", "~")})
    {
        for (std::size_t at = 0; (at = step.find(escape, at)) != std::string::npos; ++at)
        {
            step.replace(at, 2, character);
        }
    }
    return step;
}

/// Whether a JSON pointer leads to a value, through any of several members of one name.
bool LeadsToAValue(const rapidjson::Value& value, const std::string& pointer)
{
    if (pointer.empty())
    {
        return true;
    }
    const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
    const std::string step = Unescaped(pointer.substr(1, end - 1));
    const std::string rest = pointer.substr(end);
    if (value.IsArray())
    {
        // The name of a member is meant for another value of the same name.
        if (step.empty() || step.find_first_not_of("0123456789") != std::string::npos)
        {
            return false;
        }
        const std::size_t index = std::stoul(step);
        return index < value.Size() && LeadsToAValue(value[static_cast<rapidjson::SizeType>(index)], rest);
    }
    return value.IsObject() && std::any_of(value.MemberBegin(), value.MemberEnd(), [&](const auto& member) {
               return std::string(member.name.GetString(), member.name.GetStringLength()) == step &&
                      LeadsToAValue(member.value, rest);
           });
}

/// Where the fault is, told anew.
std::string FindWrongPlace(const std::string& text, const rapidjson::Document& json,
                           const DocumentFault& fault)
{
    if (fault.offset + fault.length > text.size())
    {
        return "a place behind the text";
    }
    const std::string before = text.substr(0, fault.offset);
    const auto lines = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    if (fault.line != lines + 1)
    {
        return "another line";
    }
    const std::string shown = fault.found.substr(0, fault.found.find("..."));
    if (fault.found != "nothing" && text.compare(fault.offset, shown.size(), shown) != 0)
    {
        return "another text";
    }
    if (fault.kind != DocumentFault::Syntax && !LeadsToAValue(json, fault.pointer))
    {
        return "a pointer to nothing: " + fault.pointer;
    }
    return fault.reason.empty() ? "no reason" : "";
}

class Validation : public testing::Test
{
protected:
    Validation()
    {
        const std::string wav = (m_folder / "in.wav").string();
        WriteFile(wav, SilentWav());
        const std::string target = (m_folder / "out.wav").string();
        m_documents = {JsonOf(*WavJob(wav, {target})), JsonOf(*WavJob(wav, {target, target + "2"})),
                       kGoodPreset, kGoodJob};
        m_documents.push_back(With(m_documents[0], "\"container\":\"wav\"",
                                   R"("container":"wav","start":0,"end":90,"metadata":{"title":"x"},)"
                                   R"("chapters":[{"":{"start":0,"end":5,"title":"a"}}],"attachments":{})"));
        m_documents.push_back(With(m_documents[0], "\"codec_id\":\"CODEC_ID_PCM_S16LE\"",
                                   R"("codec_id":"CODEC_ID_PCM_S16LE","layout":"MONO","sample_rate":8000,)"
                                   R"("codec.options.encode":{"threads":1},"language":"eng","lossless":0)"));
        // As many as of the others, whose sources are not there.
        const std::vector<std::string> own = m_documents;
        for (int i = 0; i < 8; ++i)
        {
            m_documents.insert(m_documents.end(), own.begin(), own.end());
        }
        for (const char* const folder : {"Presets", "Tests/Fuzz/Corpus/Preset", "Tests/Fuzz/Corpus/Job"})
        {
            AddDocuments(std::string(ZELNOR_SOURCE_DIR "/") + folder);
        }
    }

    void TearDown() override
    {
        ReportFigures(std::to_string(m_tried) + " documents, " + std::to_string(m_passed) + " pass, " +
                      std::to_string(m_findings) + " findings");
    }

    void Try(const std::string& document)
    {
        ++m_tried;
        const std::string finding = FindDifference(document);
        if (!finding.empty() && ++m_findings <= 10)
        {
            ADD_FAILURE() << finding << "\nseed " << m_seed << ": "
                          << ::testing::PrintToString(document.substr(0, 5'000));
        }
    }

    std::vector<std::string> m_documents;
    const std::uint64_t m_seed = CampaignSeed(1);

private:
    void AddDocuments(const std::string& folder)
    {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
        {
            paths.push_back(entry.path());
        }
        std::sort(paths.begin(), paths.end());
        for (const auto& path : paths)
        {
            const std::string text = ReadFile(path);
            rapidjson::Document json;
            if (text.size() <= 1'000 && !json.Parse(text.data(), text.size()).HasParseError())
            {
                m_documents.push_back(text);
            }
        }
    }

    std::string FindDifference(const std::string& document)
    {
        const DocumentFaults found = ValidateDocument(document);
        rapidjson::Document json;
        json.Parse<rapidjson::kParseIterativeFlag>(document.data(), document.size());
        for (const DocumentFault& fault : found.faults)
        {
            const std::string wrong = FindWrongPlace(document, json, fault);
            if (!wrong.empty())
            {
                return wrong + ": " + fault.Sentence();
            }
        }
        m_passed += found.faults.empty() ? 1 : 0;
        const auto refusing =
            std::find_if(found.faults.begin(), found.faults.end(),
                         [](const DocumentFault& fault) { return fault.kind != DocumentFault::Ignored; });
        const std::string said = refusing == found.faults.end() ? "" : refusing->Sentence();
        const bool isJob = found.kind == DocumentFaults::Job;
        bool isRefused = true;
        const std::string job = JobRefusal(document, isRefused);
        const std::string preset = PresetRefusal(document);
        if (isJob ? preset.empty() : job.empty() && !isRefused)
        {
            return "it is taken for the other kind of document";
        }
        const std::string refusal = isJob ? job : preset;
        if (!isJob && refusal.empty() && AreOfTheInstallation(found.faults))
        {
            return "";
        }
        if (said.empty() != refusal.empty() && !(isJob && !said.empty() && isRefused))
        {
            return "validation says '" + said + "', the reader '" + refusal + "'";
        }
        return "";
    }

    TemporaryFolder m_folder;
    std::size_t m_tried = 0;
    std::size_t m_passed = 0;
    std::size_t m_findings = 0;
};

TEST_F(Validation, SaysWhatTheReadersSay)
{
    for (const std::string& document : m_documents)
    {
        Try(document);
    }
    JsonMutator mutator(m_documents, m_seed);
    for (std::size_t i = CampaignRuns(QuickRuns(4'000)); i != 0; --i)
    {
        Try(mutator.Next());
    }
}

TEST_F(Validation, SaysWhatTheReadersSayOfTextsCutOff)
{
    for (std::size_t i = 0; i < 6; ++i)
    {
        for (std::size_t size = 0; size < m_documents[i].size(); size += 3)
        {
            Try(m_documents[i].substr(0, size));
        }
    }
}

} // namespace
