#include "Conf/Interfaces/MediaTypeUtils.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/Tsv.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <locale>

namespace Zelnor::Conf
{
namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using Testing::ExpectThrow;
using ::testing::Not;
using ::testing::Pair;
using Testing::ReadTsv;
using ::testing::StartsWith;
using Testing::Thrown;

std::string Join(const std::vector<std::string>& list)
{
    std::string text;
    for (const std::string& item : list)
    {
        text += (text.empty() ? "" : ";") + item;
    }
    return text;
}

void ExpectInvalidArgument(const Thrown& thrown, const std::string& message, const std::string& function)
{
    EXPECT_THAT(thrown.what, StartsWith(message + "\n"));
    EXPECT_GT(thrown.what.size(), message.size() + 1) << "no call stack";
    EXPECT_EQ(thrown.file, "Conf/Interfaces/MediaTypeUtils");
    EXPECT_THAT(thrown.function.value_or(""), ::testing::HasSubstr(function));
    EXPECT_GT(thrown.line.value_or(0), 0);
}

TEST(SupportedFormats, AreTheListedGroupsInTheirOrder)
{
    std::vector<std::pair<IFormatFile::MediaType, std::string>> expected;
    for (const auto& row : ReadTsv("Tests/Conf/Data/groups.tsv"))
    {
        if (row[1] != "-")
        {
            expected.emplace_back(static_cast<IFormatFile::MediaType>(std::stoi(row[1])), row[0]);
        }
    }
    EXPECT_EQ(GetSupportedFormats(), expected);
}

TEST(SupportedFormats, AreTwentySixFromAllFilesToAllImages)
{
    const auto formats = GetSupportedFormats();
    ASSERT_EQ(formats.size(), 26U);
    EXPECT_THAT(formats.front(), Pair(0, "All Files"));
    EXPECT_THAT(formats.back(), Pair(4, "All images"));
}

TEST(SupportedFormats, LeaveOutTheGroupOfOtherFiles)
{
    EXPECT_THAT(GetSupportedFormats(), Not(Contains(Pair(::testing::_, "Other"))));
}

TEST(SupportedFormatExtensions, AreTheListedOnesForEveryGroup)
{
    const auto rows = ReadTsv("Tests/Conf/Data/groups.tsv");
    ASSERT_EQ(rows.size(), 27U);
    for (const auto& row : rows)
    {
        EXPECT_EQ(Join(GetSupportedFormatExtensions(row[0])), row[2]) << row[0];
    }
}

TEST(SupportedFormatExtensions, OfOtherFilesAreDatAndMrec)
{
    EXPECT_THAT(GetSupportedFormatExtensions("Other"), ElementsAre("dat", "mrec"));
}

TEST(SupportedFormatExtensions, OfAllFilesAreOneAsterisk)
{
    EXPECT_THAT(GetSupportedFormatExtensions("All Files"), ElementsAre("*"));
}

TEST(SupportedFormatExtensions, OfAllVideoKeepTheirDoubledEntries)
{
    const auto extensions = GetSupportedFormatExtensions("All Video");
    EXPECT_EQ(extensions.size(), 109U);
    for (const char* const twice : {"asf", "nut", "vc1", "mtv"})
    {
        EXPECT_EQ(std::count(extensions.begin(), extensions.end(), twice), 2) << twice;
    }
}

TEST(SupportedFormatExtensions, OfAnUnknownGroupThrow)
{
    for (const char* const group : {"all files", "", "MP4 ", "mp4", "All Images"})
    {
        ExpectInvalidArgument(
            ExpectThrow<std::invalid_argument>([&] { GetSupportedFormatExtensions(group); }),
            "Unknown group id", "GetSupportedFormatExtensions");
    }
}

TEST(FormatTip, IsTheListedOneForEveryGroup)
{
    for (const auto& row : ReadTsv("Tests/Conf/Data/groups.tsv"))
    {
        EXPECT_EQ(GetFormatExtentionTip(row[0]), row[3]) << row[0];
    }
    EXPECT_EQ(GetFormatExtentionTip("All Audio"), "*.mp3;*.flac;*.wav;...");
}

TEST(FormatTip, IsEmptyForGroupsWithoutOneAndForUnknownGroups)
{
    EXPECT_EQ(GetFormatExtentionTip("MP4"), "");
    EXPECT_EQ(GetFormatExtentionTip("Other"), "");
    EXPECT_EQ(GetFormatExtentionTip("all audio"), "");
    EXPECT_EQ(GetFormatExtentionTip(""), "");
}

TEST(DefaultExtension, IsTheListedOneForEveryContainer)
{
    const auto rows = ReadTsv("Tests/Conf/Data/extensions.tsv");
    ASSERT_EQ(rows.size(), 46U);
    for (const auto& row : rows)
    {
        EXPECT_EQ(GetDefaultFileExtensionForContainer(row[0]), row[1]) << row[0];
    }
}

TEST(DefaultExtension, IgnoresTheLetterCaseOfTheContainer)
{
    EXPECT_EQ(GetDefaultFileExtensionForContainer("MATROSKA"), "mkv");
    EXPECT_EQ(GetDefaultFileExtensionForContainer("MP4"), "mp4");
    EXPECT_EQ(GetDefaultFileExtensionForContainer("mP4"), "mp4");
}

TEST(DefaultExtension, KeepsTheAsymmetries)
{
    EXPECT_EQ(GetDefaultFileExtensionForContainer("vob"), "mpg");
    EXPECT_EQ(GetDefaultFileExtensionForContainer("dvd"), "vob");
    EXPECT_EQ(GetDefaultFileExtensionForContainer("asf"), "wmv");
    EXPECT_EQ(GetDefaultFileExtensionForContainer("psp"), "mp4");
    EXPECT_EQ(GetDefaultFileExtensionForContainer("ipod"), "mp4");
    EXPECT_EQ(GetDefaultFileExtensionForContainer("adts"), "aac");
}

TEST(DefaultExtension, OfAnUnknownContainerThrowsWithTheNameAsGiven)
{
    for (const char* const name : {"aac", "mts", "", "MTS", "mp4 ", "tif"})
    {
        ExpectInvalidArgument(
            ExpectThrow<std::invalid_argument>([&] { GetDefaultFileExtensionForContainer(name); }),
            std::string("Unknown media container name: ") + name, "GetDefaultFileExtensionForContainer");
    }
}

/// Takes 'Q' for the capital of 'm', and leaves all else as it is. Asked for a whole text, it would shout.
class ShiftedCase : public std::ctype<char>
{
protected:
    char do_tolower(char c) const override { return c == 'Q' ? 'm' : c; }
    const char* do_tolower(char* begin, const char* end) const override
    {
        std::fill(begin, const_cast<char*>(end), '!');
        return end;
    }
};

TEST(DefaultExtension, LowerCasesEachCharacterAsTheGlobalLocaleDoes)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new ShiftedCase));
    EXPECT_EQ(GetDefaultFileExtensionForContainer("Qp4"), "mp4");
    EXPECT_THROW(GetDefaultFileExtensionForContainer("MP4"), std::invalid_argument);
    std::locale::global(before);
    EXPECT_EQ(GetDefaultFileExtensionForContainer("MP4"), "mp4");
}

} // namespace
} // namespace Zelnor::Conf
