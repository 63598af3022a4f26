#include "Media/Presets/PresetFolders.h"

#include "Media/MediaException.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

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

TEST(PresetFolders, AreOnesOfTheSystemOnceEachWhereThereIsNoHome)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "zelnor/presets");
    const char* const home = std::getenv("HOME");
    const std::string former = home == nullptr ? "" : home;
    ::unsetenv("HOME");
    ::unsetenv("XDG_DATA_HOME");
    ::setenv("XDG_DATA_DIRS", (folder.Path().string() + ":" + folder.Path().string() + "/").c_str(), 1);
    const std::vector<ioPath> folders = DefaultPresetFolders();
    ::unsetenv("XDG_DATA_DIRS");
    ::setenv("HOME", former.c_str(), 1);
    EXPECT_EQ(std::count_if(folders.begin(), folders.end(),
                            [&](const ioPath& each) { return each.native() == folder / "zelnor/presets"; }),
              1);
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

TEST(PresetFolders, CountTheirPresetsWhereThereAreMany)
{
    const TemporaryFolder folder;
    for (const char c : std::string("abcdefghijklm"))
    {
        WriteFile(folder / ("preset-" + std::string(1, c) + ".json"), "");
    }
    EXPECT_EQ(ExpectThrow<PresetFileException>([&] { FindPreset("presets-d", {folder.Path()}); }).description,
              "presets-d: neither a file nor a known preset (13 are known); did you mean 'preset-d' or "
              "'preset-a' or "
              "'preset-b'?");
}

TEST(PresetFolders, HoldRegularFilesOnly)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe.json").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", folder / "zero.json");
    EXPECT_THAT(ListPresets({folder.Path()}), IsEmpty());
    ExpectThrow<PresetFileException>([&] { FindPreset("pipe", {folder.Path()}); });
    ExpectThrow<PresetFileException>([&] { FindPreset("zero", {folder.Path()}); });
}

TEST(PresetFolders, AreNotLeftByAName)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "presets");
    WriteFile(folder / "secret.json", "");
    WriteFile(folder / "presets/.hidden.json", "");
    WriteFile(folder / "presets/odd\nname.json", "");
    WriteFile(folder / "presets/-option.json", "");
    const std::vector<ioPath> folders = {folder / "presets"};
    EXPECT_THAT(ListPresets(folders), IsEmpty());
    for (const std::string name : {"..", "..\\secret", ".hidden", "odd\nname", "-option", ".", ".json"})
    {
        ExpectThrow<PresetFileException>([&] { FindPreset(name, folders); });
    }
    EXPECT_EQ(FindPreset("../secret", folders), "../secret") << "a path, which is opened as it stands";
}

TEST(PresetFolders, HaveNamesOfLettersDigitsAndAFewSigns)
{
    const TemporaryFolder folder;
    for (const char* const name :
         {"Mp4", "9", "a b", "a_b-c+d.e,f(g)", "\xc3\xa4", "{a}", "a[1]", "a:b", "`a`", "a@b"})
    {
        WriteFile(folder / (std::string(name) + ".json"), "");
    }
    EXPECT_THAT(ListPresets({folder.Path()}),
                UnorderedElementsAre("Mp4", "9", "a b", "a_b-c+d.e,f(g)", "\xc3\xa4"));
}

/// Makes a folder the working folder as long as it lives.
class WorkingFolder
{
public:
    explicit WorkingFolder(const std::filesystem::path& folder) : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~WorkingFolder() { std::filesystem::current_path(m_before); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    std::filesystem::path m_before;
};

TEST(PresetFolders, AreSearchedWhereTheWorkingFolderHasNoSuchFile)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "presets");
    std::filesystem::create_directory(folder / "mp3");
    WriteFile(folder / "presets/mp3.json", "");
    WriteFile(folder / "own", "");
    const std::vector<ioPath> folders = {folder / "presets"};
    const WorkingFolder working(folder.Path());
    EXPECT_EQ(FindPreset("mp3", folders), (folder / "presets/mp3.json").string());
    EXPECT_EQ(FindPreset("own", folders), "own");
}

/// Sets variables of the environment as long as it lives.
class Environment
{
public:
    explicit Environment(const std::vector<std::pair<std::string, std::string>>& variables)
    {
        for (const auto& [name, value] : variables)
        {
            const char* const before = std::getenv(name.c_str());
            m_before.emplace_back(name,
                                  before == nullptr ? std::nullopt : std::optional<std::string>(before));
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    ~Environment()
    {
        for (const auto& [name, value] : m_before)
        {
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> m_before;
};

std::vector<std::string> FirstFolders(std::size_t count)
{
    std::vector<std::string> texts;
    for (const ioPath& folder : DefaultPresetFolders())
    {
        if (texts.size() < count)
        {
            texts.push_back(folder.utf8string());
        }
    }
    return texts;
}

TEST(PresetFolders, OfPeopleComeBeforeThoseOfSystemsAndOfPrograms)
{
    const TemporaryFolder folder;
    for (const std::string name : {"home", "one", "two"})
    {
        std::filesystem::create_directories(folder / (name + "/zelnor/presets"));
    }
    const std::string base = folder.Path().string();
    const Environment environment({{"XDG_DATA_HOME", base + "/home"},
                                   {"XDG_DATA_DIRS", base + "/two::" + base + "/gone:" + base + "/one/"}});
    EXPECT_THAT(FirstFolders(3), ElementsAre(base + "/home/zelnor/presets", base + "/two/zelnor/presets",
                                             base + "/one/zelnor/presets"));
    EXPECT_THAT(ListPresets(DefaultPresetFolders()), testing::Contains("mp3"));
}

TEST(PresetFolders, OfPeopleAreInTheHomeFolderByDefault)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / ".local/share/zelnor/presets");
    const Environment environment({{"XDG_DATA_HOME", ""}, {"HOME", folder.Path().string()}});
    EXPECT_THAT(FirstFolders(1), ElementsAre((folder / ".local/share/zelnor/presets").string()));
}

TEST(PresetFolders, ThatAreNotAbsoluteCountForNothing)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "data/zelnor/presets");
    std::filesystem::create_directories(folder / "zelnor/presets");
    std::filesystem::create_directories(folder / ".local/share/zelnor/presets");
    const WorkingFolder working(folder.Path());
    const Environment environment(
        {{"XDG_DATA_HOME", "data"}, {"XDG_DATA_DIRS", "data:./data:.:~/data"}, {"HOME", "."}});
    for (const std::string& name : FirstFolders(9))
    {
        EXPECT_EQ(name.find(folder.Path().string()), std::string::npos) << name;
    }
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
