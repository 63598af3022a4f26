#include "Core/Interfaces/ioPath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Zelnor
{

TEST(ioPath, KeepsUtf8Text)
{
    const std::string text = "/m\u00e9dia/\u6620\u753b.mp4";
    EXPECT_EQ(text, ioPath(text).utf8string());
    EXPECT_EQ(text, ioPath(text.c_str()).utf8string());
    EXPECT_EQ("", ioPath(std::string()).utf8string());
    EXPECT_EQ("a/../b//c", ioPath(std::string("a/../b//c")).utf8string());
}

TEST(ioPath, KeepsBytesThatAreNotUtf8)
{
    EXPECT_EQ("\xff\xfe.mp4", ioPath(std::string("\xff\xfe.mp4")).utf8string());
}

TEST(ioPath, IsMadeOfAFileSystemPath)
{
    const std::filesystem::path path = std::filesystem::path("folder") / "file";
    const ioPath made = path;
    EXPECT_EQ("folder/file", made.utf8string());
    EXPECT_EQ(path, made.native());
}

} // namespace Zelnor
