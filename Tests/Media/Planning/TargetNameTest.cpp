#include "Media/Planning/TargetName.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

std::string NameFor(const std::string& output, const std::string& container = "mp4",
                    const std::string& source = "films/in.mkv")
{
    return TargetName(output, MakeMediaFile({}, source), container);
}

TEST(TargetName, HasTheContainersExtension)
{
    EXPECT_EQ(NameFor("out"), "out.mp4");
    EXPECT_EQ(NameFor("a.folder/out"), "a.folder/out.mp4");
    EXPECT_EQ(NameFor("out", "yuv4mpegpipe"), "out");
}

TEST(TargetName, OfAFolderIsTheSourcesInIt)
{
    EXPECT_EQ(NameFor("folder/"), "folder/in.mp4");
    EXPECT_EQ(NameFor("folder//"), "folder//in.mp4");
    const TemporaryFolder folder;
    EXPECT_EQ(NameFor(folder.Path().string()), (folder / "in.mp4").string());
    EXPECT_EQ(NameFor(folder.Path().string(), "matroska", "x.tar.mp4"), (folder / "x.tar.mkv").string());
    EXPECT_EQ(NameFor("folder/", "mp4", ".hidden"), "folder/.hidden.mp4");
    EXPECT_EQ(NameFor("."), "./in.mp4");
}

TEST(TargetName, IsKeptWhereItsExtensionFits)
{
    const std::pair<std::string, std::string> kCases[] = {
        {"out.mp4", "mp4"},      {"OUT.MP4", "mp4"},     {"out.m4v", "mp4"},   {"out.mkv", "matroska"},
        {"out.mka", "matroska"}, {"out.mpg", "dvd"},     {"out.vob", "dvd"},   {"out.ts", "mpegts"},
        {"out.jpg", "image2"},   {"out.jpeg", "image2"}, {"out.tif", "tiff"},  {"out.wma", "asf"},
        {"out.ogv", "ogg"},      {"out.mov", "mov"},     {"out.webm", "webm"}, {"out.png", "png"},
        {"out.aif", "aiff"},     {"out.m2ts", "mpegts"}, {"out.qt", "mov"},    {"out.mks", "matroska"},
    };
    for (const auto& [name, container] : kCases)
    {
        EXPECT_EQ(NameFor(name, container), name);
    }
}

TEST(TargetName, IsKeptWhereItsEndIsNotAnExtensionOfMedia)
{
    EXPECT_EQ(NameFor("out.bin"), "out.bin");
    EXPECT_EQ(NameFor("in.mkv.out"), "in.mkv.out");
    EXPECT_EQ(NameFor("out."), "out.");
    EXPECT_EQ(NameFor("v1.0"), "v1.0");
}

TEST(TargetName, OfAnotherContainerIsRefused)
{
    const auto refusal = [](const std::string& name, const std::string& container) {
        return ExpectThrow<PlanException>([&] { NameFor(name, container); }).description;
    };
    EXPECT_EQ(
        refusal("out.mkv", "mp4"),
        "'out.mkv' is named like a file of the container matroska, and the container to make is mp4; another "
        "preset makes the one, another extension fits the other");
    EXPECT_NE(refusal("out.MP4", "webm"), "");
    EXPECT_NE(refusal("out.webm", "matroska"), "");
    EXPECT_NE(refusal("out.jpg", "png"), "");
    EXPECT_NE(refusal("out.mp3", "flac"), "");
    EXPECT_NE(refusal("out.mp4", "mov"), "");
}

TEST(TargetName, OfAContainerWithoutExtensionsHasThatOfNoOther)
{
    EXPECT_EQ(ExpectThrow<PlanException>([] { NameFor("out.mkv", "framehash"); }).description,
              "'out.mkv' is named like a file of the container matroska, and the container to make is "
              "framehash; another preset makes the one, another extension fits the other");
    EXPECT_EQ(NameFor("out.jpeg", "image2"), "out.jpeg");
}

} // namespace
