#pragma once

#include "Media/Batch/BatchPlan.h"
#include "Media/Batch/BatchRun.h"
#include "Tests/Support/RunFixtures.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// Plans and runs batches that make WAV files of WAV files, in a folder of its own. The batch is "b", its
/// outputs are in "out".
class BatchTest : public testing::Test
{
protected:
    BatchTest()
    {
        WriteFile(Name("wav.json"), kWavPreset);
        std::filesystem::create_directory(Name("in"));
    }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    const TemporaryFolder& Folder() const { return m_folder; }
    bool Exists(const std::string& name) const { return std::filesystem::exists(Name(name)); }
    void MakeInputs(const std::vector<std::string>& names) const
    {
        for (const std::string& name : names)
        {
            WriteFile(Name("in/" + name), SilentWav());
        }
    }

    Media::BatchRequest Request() const
    {
        Media::BatchRequest request;
        request.folder = Name("b");
        request.presets = {Name("wav.json")};
        request.inputs = {Name("in")};
        request.outputFolder = Name("out");
        request.threads = 2;
        return request;
    }
    Media::PlannedBatch Plan() const { return Media::PlanBatch(Request()); }

    /// With a script in place of ffmpeg, in which $target is the file to write; nothing is verified.
    Media::BatchRunOptions With(const std::string& script) const
    {
        Media::BatchRunOptions options;
        options.job.ffmpeg = MakeScript(m_folder, script);
        options.job.verification = Media::VerificationDepth::Off;
        return options;
    }
    std::vector<std::string> States(const Media::BatchStatus& status) const
    {
        std::vector<std::string> states;
        for (const Media::BatchJobStatus& job : status.jobs)
        {
            states.push_back(Media::NameOf(job.state));
        }
        return states;
    }
    std::vector<std::string> States() const
    {
        return States(Media::ReadBatchStatus(Media::ReadBatch(Name("b"))));
    }
    /// Replaces a text in a file, which must be there.
    void Edit(const std::string& file, const std::string& from, const std::string& to) const
    {
        std::string text = ReadFile(Name(file));
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from << " in " << text;
        WriteFile(Name(file), text.replace(place, from.size(), to));
    }

private:
    TemporaryFolder m_folder;
};

} // namespace Zelnor::Testing
