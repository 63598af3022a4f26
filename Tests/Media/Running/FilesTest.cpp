#include "Media/Running/Files.h"

#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{

using namespace Zelnor::Testing;
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

} // namespace
