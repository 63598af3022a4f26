#include "Media/Batch/InputFiles.h"

#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

class FindingInputs : public testing::Test
{
protected:
    void Make(const std::vector<std::string>& names) const
    {
        for (const std::string& name : names)
        {
            fs::create_directories((m_folder / name).parent_path());
            WriteFile(m_folder / name, "");
        }
    }
    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    const TemporaryFolder& Folder() const { return m_folder; }
    /// The files that are found, as they are named inside of the test's folder.
    std::vector<std::string> Find(const std::vector<std::string>& names,
                                  const std::string& outputs = "") const
    {
        std::vector<std::string> given;
        for (const std::string& name : names)
        {
            given.push_back(Name(name));
        }
        std::vector<std::string> found;
        for (const InputFile& file : FindInputFiles(given, outputs, [] { return false; }))
        {
            EXPECT_EQ(file.reason, "");
            found.push_back(fs::path(file.path).lexically_relative(m_folder.Path()).string());
        }
        return found;
    }

private:
    TemporaryFolder m_folder;
};

TEST_F(FindingInputs, WalksFoldersInTheOrderOfTheNames)
{
    Make({"d/c.mp4", "d/b/z.mkv", "d/b/a.mp3", "d/a.MOV"});
    EXPECT_THAT(Find({"d"}), ElementsAre("d/a.MOV", "d/b/a.mp3", "d/b/z.mkv", "d/c.mp4"));
}

TEST_F(FindingInputs, TakesOnlyMediaOfFoldersAndNothingHidden)
{
    Make({"d/a.txt", "d/.a.mp4", "d/.git/b.mp4", "d/noext", "d/mp4", "d/c.jpg", "d/s.srt"});
    EXPECT_THAT(Find({"d"}), IsEmpty());
}

TEST_F(FindingInputs, TakesEveryFileThatIsNamedInTheOrderGiven)
{
    Make({"b.txt", ".hidden", "a.mp4"});
    EXPECT_THAT(Find({"b.txt", ".hidden", "a.mp4", "not there"}),
                ElementsAre("b.txt", ".hidden", "a.mp4", "not there"));
}

TEST_F(FindingInputs, TakesAFileThatIsNamedTwiceOnce)
{
    Make({"d/a.mp4", "d/b.mp4"});
    EXPECT_THAT(Find({"d/b.mp4", "d", "d/b.mp4"}), ElementsAre("d/b.mp4", "d/a.mp4"));
}

TEST_F(FindingInputs, TakesAFileThatIsNamedInTwoSpellingsOnce)
{
    Make({"d/a.mp4", "d/sub/b.mp4"});
    fs::create_directory_symlink(Name("d"), Name("link"));
    EXPECT_THAT(Find({"d/a.mp4", "d/./a.mp4", "d//a.mp4", "d/sub/../a.mp4", "link/a.mp4"}),
                ElementsAre("d/a.mp4"));
    EXPECT_THAT(Find({"d/not there", "d/./not there", "not there"}), ElementsAre("d/not there", "not there"));
}

TEST_F(FindingInputs, WalksDeeperThanAProcessHasOpenFiles)
{
    std::string deep = "d";
    for (int i = 0; i < 40; ++i)
    {
        deep += "/n";
    }
    Make({deep + "/a.mp4"});
    const int status = RunForked([&] {
        const int first = ::dup(0);
        const auto most = static_cast<rlim_t>(first + 8);
        const rlimit few = {most, most};
        ::close(first);
        ::setrlimit(RLIMIT_NOFILE, &few);
        const std::vector<InputFile> found = FindInputFiles({Name("d")}, "", [] { return false; });
        return found.size() == 1 && found[0].path == Name(deep + "/a.mp4") && found[0].reason.empty() ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
}

TEST_F(FindingInputs, EndsWhereFoldersLeadBackToThemselves)
{
    Make({"d/a.mp4"});
    fs::create_directory_symlink(Name("d"), Name("d/loop"));
    fs::create_directory_symlink(Name("d"), Name("again"));
    EXPECT_THAT(Find({"d", "again"}), ElementsAre("d/a.mp4"));
}

TEST_F(FindingInputs, FollowsLinksToFilesUnderTheirOwnNames)
{
    Make({"store/a.mp4"});
    fs::create_directory(Name("d"));
    fs::create_symlink(Name("store/a.mp4"), Name("d/one.mp4"));
    fs::create_symlink(Name("store/a.mp4"), Name("d/two.mp4"));
    EXPECT_THAT(Find({"d"}), ElementsAre("d/one.mp4", "d/two.mp4"));
}

TEST_F(FindingInputs, TakesLinksThatLeadNowhereAsFilesThatCannotBeRead)
{
    fs::create_directory(Name("d"));
    fs::create_symlink("nowhere", Name("d/a.mp4"));
    EXPECT_THAT(Find({"d"}), ElementsAre("d/a.mp4"));
}

TEST_F(FindingInputs, TakesAFileOfTheWorkingFolderOnceHoweverItIsNamed)
{
    Make({"a.mp4"});
    const fs::path former = fs::current_path();
    fs::current_path(Folder().Path());
    const std::vector<InputFile> found = FindInputFiles({"a.mp4", "./a.mp4"}, "", [] { return false; });
    fs::current_path(former);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].path, "a.mp4");
}

TEST_F(FindingInputs, NamesFilesOfAFolderWithOneSlash)
{
    Make({"d/a.mp4"});
    const std::vector<InputFile> found = FindInputFiles({Name("d/")}, "", [] { return false; });
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].path, Name("d/a.mp4"));
}

TEST_F(FindingInputs, DoesNotTakeTheOutputsInsideOfAFolder)
{
    Make({"d/a.mp4", "d/out/a.mp4"});
    EXPECT_THAT(Find({"d"}, Name("d/out")), ElementsAre("d/a.mp4"));
    EXPECT_THAT(Find({"d/out"}, Name("d/out")), ElementsAre("d/out/a.mp4"));
}

TEST_F(FindingInputs, SaysWhichFolderCannotBeListed)
{
    Make({"d/closed/a.mp4", "d/b.mp4"});
    fs::permissions(Name("d/closed"), fs::perms::none);
    fs::permissions(Folder().Path(), fs::perms::all);
    const Unprivileged unprivileged;
    const std::vector<InputFile> found = FindInputFiles({Name("d")}, "", [] { return false; });
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].path, Name("d/b.mp4"));
    EXPECT_EQ(found[1].reason, Name("d/closed") + ": cannot be listed: Permission denied");
}

TEST_F(FindingInputs, StopsWhenItIsCancelled)
{
    Make({"d/a.mp4"});
    EXPECT_THAT(FindInputFiles({Name("d")}, "", [] { return true; }), IsEmpty());
}

} // namespace
