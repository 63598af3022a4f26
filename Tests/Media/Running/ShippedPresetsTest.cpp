#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetFolders.h"
#include "Media/Presets/PresetStore.h"
#include "Media/Running/JobRun.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

/// \file
/// Every preset that ships is run once on a short clip: a new file in the folder is tested without a word
/// here.

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

const ioPath& Folder()
{
    static const ioPath s_folder(ZELNOR_SOURCE_DIR "/Presets");
    return s_folder;
}

std::string FileOf(const std::string& name) { return ZELNOR_SOURCE_DIR "/Presets/" + name + ".json"; }

/// Two frames and as much stereo sound, which are larger than the least that an encoder wants.
const MediaFile& Clip()
{
    static const TemporaryFolder s_folder;
    static const MediaFile s_clip = [] {
        const std::string name = (s_folder / "in.mkv").string();
        MakeClip({"-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=0.08", "-f", "lavfi", "-i",
                  "sine=r=48000:d=0.08", "-ac", "2", "-c:v", "ffv1", "-c:a", "pcm_s16le", name});
        return ProbeMedia(name);
    }();
    return s_clip;
}

class ShippedPreset : public testing::TestWithParam<std::string>
{};

TEST_P(ShippedPreset, MakesAFileThatIsWhatItsJobSays)
{
    const TemporaryFolder folder;
    JobRequest request;
    request.output = (folder / "out").string();
    const PlannedJob planned = PlanJob(Clip(), PresetFile::Open(FileOf(GetParam())), request);
    // The run compares the file with the job.
    const RunResult result = RunJob(*planned.graph);
    ASSERT_EQ(result.targets.size(), 1U);
    EXPECT_TRUE(result.IsDone());
    EXPECT_GT(result.targets[0].size, 0U);
}

INSTANTIATE_TEST_SUITE_P(Presets, ShippedPreset, testing::ValuesIn(ListPresets({Folder()})),
                         [](const auto& parameter) {
                             std::string name = parameter.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(ShippedPresets, AreFortyAtLeast) { EXPECT_GE(ListPresets({Folder()}).size(), 40U); }

TEST(ShippedPresets, AreNamedLikeTheirFilesAndHaveATitleOfTheirOwn)
{
    std::map<std::string, std::string> titles;
    for (const StoredPreset& stored : ListStoredPresets({Folder()}))
    {
        const auto preset = PresetFile::Open(stored.file);
        EXPECT_EQ(preset->GetProperty().GetName(), stored.name);
        EXPECT_EQ(preset->GetProperty()["id"].GetString(), stored.name);
        EXPECT_NE(stored.title, "") << stored.name;
        EXPECT_TRUE(titles.emplace(stored.title, stored.name).second)
            << stored.name << " and " << titles[stored.title];
    }
}

/// The table of the document, as it is to be.
std::string Table()
{
    std::string table = "| Preset | What it is for | What it makes |\n|---|---|---|\n";
    for (const StoredPreset& preset : ListStoredPresets({Folder()}))
    {
        table += "| `" + preset.name + "` | " + preset.title + " | " + preset.makes + " |\n";
    }
    return table;
}

TEST(ShippedPresets, AreListedInTheirDocument)
{
    std::ifstream file(ZELNOR_SOURCE_DIR "/Docs/presets.md", std::ios::binary);
    const std::string document(std::istreambuf_iterator<char>(file), {});
    EXPECT_THAT(document, testing::HasSubstr(Table()));
}

} // namespace
