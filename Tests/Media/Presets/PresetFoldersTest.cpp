#include "Media/Presets/PresetFolders.h"

#include "Media/MediaException.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PresetFolders, ListTheirPresetsByNameAndEachOnce)
{
    const TemporaryFolder first;
    const TemporaryFolder second;
    WriteFile(first / "mp3.json", "");
    WriteFile(first / "notes.txt", "");
    std::filesystem::create_directory(first / "folder.json");
    WriteFile(second / "mp3.json", "");
    WriteFile(second / "flac.json", "");
    EXPECT_THAT(ListPresets({first.Path(), second.Path(), first / "gone"}), ElementsAre("flac", "mp3"));
    EXPECT_THAT(ListPresets({}), IsEmpty());
}

TEST(PresetFolders, AreSearchedInTheirOrder)
{
    const TemporaryFolder first;
    const TemporaryFolder second;
    WriteFile(second / "mp3.json", "");
    EXPECT_EQ(FindPreset("mp3", {first.Path(), second.Path()}), (second / "mp3.json").string());
    WriteFile(first / "mp3.json", "");
    EXPECT_EQ(FindPreset("mp3", {first.Path(), second.Path()}), (first / "mp3.json").string());
    EXPECT_EQ(FindPreset("mp3.json", {second.Path()}), (second / "mp3.json").string());
}

TEST(PresetFolders, AreNotSearchedForAPath)
{
    const TemporaryFolder folder;
    WriteFile(folder / "mp3.json", "");
    EXPECT_EQ(FindPreset("./mp3", {folder.Path()}), "./mp3");
    const std::string path = (folder / "mp3.json").string();
    EXPECT_EQ(FindPreset(path, {}), path);
}

TEST(PresetFolders, WithoutThePresetAreToldWithWhatTheyHold)
{
    const TemporaryFolder folder;
    WriteFile(folder / "flac.json", "");
    WriteFile(folder / "mp3.json", "");
    const Thrown thrown = ExpectThrow<PresetFileException>([&] { FindPreset("mp5", {folder.Path()}); });
    EXPECT_EQ(thrown.description,
              "mp5: neither a file nor a known preset (known: flac, mp3); did you mean 'mp3'?");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "mp5");
    EXPECT_EQ(ExpectThrow<PresetFileException>([] { FindPreset("mp5", {}); }).description,
              "mp5: neither a file nor a known preset (none is known)");
    EXPECT_EQ(ExpectThrow<PresetFileException>([] { FindPreset("", {}); }).description,
              "'': neither a file nor a known preset (none is known)");
}

TEST(PresetFolders, DoNotEndANameAtANulByte)
{
    const TemporaryFolder folder;
    WriteFile(folder / "mp3.json", "");
    const std::string name("mp3.json\0more", 13);
    ExpectThrow<PresetFileException>([&] { FindPreset(name, {folder.Path()}); });
}

TEST(PresetFolders, OfThisBuildHoldThePresetsThatShip)
{
    const auto names = ListPresets(DefaultPresetFolders());
    EXPECT_THAT(names, testing::IsSupersetOf({"flac", "mp3", "mp4-h264-aac"}));
}

TEST(PresetFolders, DoNotDependOnTheWorkingFolder)
{
    const auto texts = [] {
        std::vector<std::string> folders;
        for (const ioPath& folder : DefaultPresetFolders())
        {
            EXPECT_TRUE(folder.native().is_absolute());
            folders.push_back(folder.utf8string());
        }
        return folders;
    };
    const auto before = texts();
    const TemporaryFolder folder;
    const auto working = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    const auto after = texts();
    std::filesystem::current_path(working);
    EXPECT_EQ(after, before);
}

} // namespace
