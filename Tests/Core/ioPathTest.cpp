#include "Core/Interfaces/ioPath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Zelnor
{

TEST(ioPath, KeepsUtf8Text)
{
    const std::string text = "/m\u00e9dia/\u6620\u753b.mp4";
    EXPECT_EQ(ioPath(text).utf8string(), text);
    EXPECT_EQ(ioPath(text.c_str()).utf8string(), text);
    EXPECT_EQ(ioPath(std::string()).utf8string(), "");
    EXPECT_EQ(ioPath(std::string("a/../b//c")).utf8string(), "a/../b//c");
}

TEST(ioPath, KeepsBytesThatAreNotUtf8)
{
    EXPECT_EQ(ioPath(std::string("\xff\xfe.mp4")).utf8string(), "\xff\xfe.mp4");
}

TEST(ioPath, IsMadeOfAFileSystemPath)
{
    const std::filesystem::path path = std::filesystem::path("folder") / "file";
    const ioPath made = path;
    EXPECT_EQ(made.utf8string(), "folder/file");
    EXPECT_EQ(made.native(), path);
}

} // namespace Zelnor
