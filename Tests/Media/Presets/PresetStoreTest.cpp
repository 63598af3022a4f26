#include "Media/Presets/PresetStore.h"

#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

std::string Described(const std::string& container, const std::string& streams)
{
    return DescribePreset(MakePreset(container, streams)->GetProperty());
}

TEST(PresetStore, SaysWhatAPresetMakesInOneLine)
{
    EXPECT_EQ(Described("mp4", R"({"video":{"codec_id":"CODEC_ID_H264","width":1280,"height":720,)"
                               R"("bitrate":4000000},"audio":{"codec_id":"CODEC_ID_AAC","layout":"STEREO",)"
                               R"("sample_rate":48000,"bitrate":160001}})"),
              "mp4; video H264 1280x720, 4000 kbit/s; audio AAC STEREO, 48000 Hz, 160001 bit/s");
    EXPECT_EQ(Described("flac", R"({"audio":{"codec_id":"CODEC_ID_FLAC"}})"), "flac; audio FLAC");
}

TEST(PresetStore, SaysOfARecordThatIsNotAPresetWhatThereIs)
{
    const auto described = [](const std::string& members) {
        return DescribePreset(RecordOf(R"({"p":{"container":"mp4")" + members + "}}"));
    };
    EXPECT_EQ(described(""), "mp4");
    EXPECT_EQ(described(R"(,"$$STREAMS$$":5)"), "mp4");
    EXPECT_EQ(
        described(R"(,"$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H264","width":640,"bitrate":"high"},)"
                  R"("audio":5})"),
        "mp4; video H264");
    EXPECT_EQ(described(R"(,"$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_h~{}"}})"), "mp4; video H~{}");
}

TEST(PresetStore, ListsPresetsInTheOrderOfTheirNames)
{
    const TemporaryFolder folder;
    const std::string streams = R"("$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_FLAC"}}}})";
    WriteFile(folder / "b.json", R"({"p":{"container":"flac","name":"For the archive",)" + streams);
    WriteFile(folder / "a.json", R"({"p":{"container":"matroska",)" + streams);
    const std::vector<StoredPreset> presets = ListStoredPresets({folder.Path()});
    ASSERT_EQ(presets.size(), 2U);
    EXPECT_EQ(presets[0].name, "a");
    EXPECT_EQ(presets[0].title, "");
    EXPECT_EQ(presets[0].makes, "matroska; audio FLAC");
    EXPECT_EQ(presets[1].name, "b");
    EXPECT_EQ(presets[1].title, "For the archive");
    EXPECT_EQ(presets[1].container, "flac");
    EXPECT_EQ(presets[1].file, (folder / "b.json").string());
    EXPECT_EQ(presets[1].fault, "");
}

TEST(PresetStore, ListsAFileThatHoldsNoPresetWithItsFault)
{
    const TemporaryFolder folder;
    WriteFile(folder / "bad.json", R"({"p":{"container":"mp4"}})");
    const std::vector<StoredPreset> presets = ListStoredPresets({folder.Path()});
    ASSERT_EQ(presets.size(), 1U);
    EXPECT_EQ(presets[0].fault,
              (folder / "bad.json").string() +
                  ": p.$$STREAMS$$: expected a group of at least one stream, found nothing");
    EXPECT_EQ(presets[0].makes, "");
}

TEST(PresetStore, ListsOfEqualNamesTheOneThatIsFound)
{
    const TemporaryFolder first;
    const TemporaryFolder second;
    WriteFile(first / "a.json", R"({"p":{"container":"flac","$$STREAMS$$":{"audio":{"codec_id":)"
                                R"("CODEC_ID_FLAC"}}}})");
    WriteFile(second / "a.json", "");
    const std::vector<StoredPreset> presets = ListStoredPresets({first.Path(), second.Path()});
    ASSERT_EQ(presets.size(), 1U);
    EXPECT_EQ(presets[0].file, (first / "a.json").string());
    EXPECT_EQ(presets[0].fault, "");
}

} // namespace
