#include "Media/Running/Files.h"

#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace
{

using namespace Zelnor::Testing;
using Zelnor::Media::FoldCase;
using Zelnor::Media::FoldsCase;
using Zelnor::Media::IsSameFile;

namespace fs = std::filesystem;

class SameFile : public testing::Test
{
protected:
    std::string Name(const std::string& name) const { return (m_folder / name).string(); }

    TemporaryFolder m_folder;
};

TEST_F(SameFile, HasManySpellings)
{
    fs::create_directory(m_folder / "sub");
    WriteFile(Name("a"), "");
    for (const char* const name : {"a", "./a", ".//a", "sub/../a"})
    {
        EXPECT_TRUE(IsSameFile(Name("a"), Name(name))) << name;
    }
    EXPECT_TRUE(IsSameFile(fs::relative(Name("a")).string(), Name("a")));
    EXPECT_FALSE(IsSameFile(Name("a"), Name("b")));
}

TEST_F(SameFile, IsReachedThroughLinks)
{
    fs::create_directory(m_folder / "sub");
    WriteFile(Name("a"), "");
    fs::create_symlink("a", Name("symbolic"));
    fs::create_hard_link(Name("a"), Name("hard"));
    fs::create_directory_symlink("sub", Name("folder"));
    WriteFile(Name("sub/b"), "");
    EXPECT_TRUE(IsSameFile(Name("a"), Name("symbolic")));
    EXPECT_TRUE(IsSameFile(Name("a"), Name("hard")));
    EXPECT_TRUE(IsSameFile(Name("folder/b"), Name("sub/b")));
    EXPECT_FALSE(IsSameFile(Name("symbolic"), Name("sub/b")));
}

TEST_F(SameFile, NeedNotBeThere)
{
    fs::create_directory(m_folder / "sub");
    fs::create_directory_symlink("sub", Name("folder"));
    EXPECT_TRUE(IsSameFile(Name("new"), Name("sub/../new")));
    EXPECT_TRUE(IsSameFile(Name("folder/new"), Name("sub/new")));
    EXPECT_FALSE(IsSameFile(Name("new"), Name("sub/new")));
    EXPECT_FALSE(IsSameFile(Name("none/new"), Name("none/other")));
}

TEST_F(SameFile, IsWhatALinkToAFileThatIsNotThereMeans)
{
    fs::create_symlink("new", Name("link"));
    fs::create_symlink("link", Name("again"));
    EXPECT_TRUE(IsSameFile(Name("link"), Name("new")));
    EXPECT_TRUE(IsSameFile(Name("again"), Name("./new")));
    EXPECT_FALSE(IsSameFile(Name("again"), Name("other")));
}

TEST_F(SameFile, DiffersInCaseWhereTheFileSystemDoesNotFoldIt)
{
    ASSERT_FALSE(FoldsCase(m_folder.Path().string()));
    EXPECT_FALSE(IsSameFile(Name("new"), Name("NEW")));
    EXPECT_FALSE(FoldsCase(Name("none")));
}

TEST_F(SameFile, IsNotSeenInAHardLinkWhoseNameDiffersInCase)
{
    WriteFile(Name("a"), "");
    fs::create_hard_link(Name("a"), Name("A"));
    EXPECT_FALSE(FoldsCase(m_folder.Path().string()));
}

TEST_F(SameFile, IsNotLookedForAmongMoreThanAFewNames)
{
    constexpr int kMany = 70;
    for (int i = 0; i < kMany; ++i)
    {
        WriteFile(Name(std::to_string(i)), "");
    }
    EXPECT_FALSE(FoldsCase(m_folder.Path().string()));
}

TEST(FoldedCase, IsThatOfLettersInUtf8)
{
    EXPECT_EQ(FoldCase("FILM.Mp4"), "film.mp4");
    EXPECT_EQ(FoldCase("\u00C4\u0416"), "\u00E4\u0436");
    EXPECT_EQ(FoldCase("A\xFF\xC3Z"), "a\xFF\xC3z");
    EXPECT_EQ(FoldCase(std::string("A\0B", 3)), std::string("a\0b", 3));
    EXPECT_EQ(FoldCase(""), "");
}

} // namespace
