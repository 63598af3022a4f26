#include "Tests/Support/Tsv.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

#include <rapidjson/document.h>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;
using testing::StartsWith;

class ExtensionsCommand : public ZconfTest
{};

TEST_F(ExtensionsCommand, ShowsAllGroupsInTheirOrder)
{
    const ProcessResult result = Zconf({"extensions"});
    ExpectQuietSuccess(result);
    // Only the layout is asked here: the names and extensions of all groups are compared below.
    EXPECT_THAT(result.output, StartsWith("All Files      all        *.*"));
    EXPECT_THAT(result.output,
                HasSubstr("\nMP4            video                                    mp4, m4v, mpeg4\n"));

    rapidjson::Document document;
    document.Parse(Zconf({"extensions", "--json"}).output.c_str());
    ASSERT_TRUE(document.IsArray());
    const auto rows = ReadTsv("Tests/Conf/Data/groups.tsv");
    ASSERT_EQ(document.Size(), rows.size());
    for (unsigned i = 0; i < document.Size(); ++i)
    {
        EXPECT_EQ(document[i]["name"].GetString(), rows[i][0]);
        std::string extensions;
        for (const auto& extension : document[i]["extensions"].GetArray())
        {
            extensions += (extensions.empty() ? "" : ";") + std::string(extension.GetString());
        }
        EXPECT_EQ(extensions, rows[i][2]);
    }
}

TEST_F(ExtensionsCommand, ShowsAGroupsExtensionsEachOnALine)
{
    const ProcessResult result = Zconf({"extensions", "Other"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "dat\nmrec\n");
    EXPECT_EQ(Zconf({"extensions", "mp4"}).output, "mp4\nm4v\nmpeg4\n");
    EXPECT_EQ(Zconf({"extensions", "Other", "--json"}).output, R"({
  "name": "Other",
  "kind": "all",
  "extensions": ["dat", "mrec"]
}
)");
}

TEST_F(ExtensionsCommand, SuggestsTheNearestGroup)
{
    ExpectFailure(Zconf({"extensions", "All Vidoe"}),
                  "'All Vidoe' is not a known file group; did you mean 'All Video'?");
}

TEST_F(ExtensionsCommand, ShowsTheExtensionOfAContainer)
{
    const ProcessResult result = Zconf({"extensions", "--container", "MATROSKA"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "mkv\n");
    EXPECT_EQ(Zconf({"extensions", "--container", "adts", "--json"}).output,
              R"({
  "container": "adts",
  "extension": "aac"
}
)");
}

TEST_F(ExtensionsCommand, RefusesContainersWithoutAnExtensionAndUnknownOnes)
{
    ExpectFailure(Zconf({"extensions", "--container", "nut"}),
                  "The container 'nut' has no default extension");
    ExpectFailure(Zconf({"extensions", "--container", "matrosca"}),
                  "'matrosca' is not a known container; did you mean 'matroska'?");
    EXPECT_EQ(Zconf({"extensions", "MP4", "--container", "mp4"}).exitCode, 2);
}

} // namespace
