#include "Media/Pages/RecordTree.h"

#include "Tests/Support/Html.h"
#include "Tests/Support/JobFixtures.h"

namespace Zelnor::Media
{
namespace
{

using Testing::RecordOf;

TEST(RecordTree, ShowsNamesAndValuesOfEachKind)
{
    EXPECT_EQ(RecordTreeHtml(RecordOf(R"({"r":{"a":25,"b":"mp4","c":[30000,1001],"d":null,"e":{}}})")),
              "<ul class=\"tree\">\n"
              "<li><span class=\"key\">a</span> <span class=\"value\">25</span></li>\n"
              "<li><span class=\"key\">b</span> <span class=\"value\">&quot;mp4&quot;</span></li>\n"
              "<li><span class=\"key\">c</span> <span class=\"value\">30000/1001</span></li>\n"
              "<li><span class=\"key\">d</span> <span class=\"value\">null</span></li>\n"
              "<li><span class=\"key\">e</span> <span class=\"value\">empty group</span></li>\n"
              "</ul>\n");
}

TEST(RecordTree, FoldsGroupsUp)
{
    EXPECT_EQ(RecordTreeHtml(RecordOf(R"({"r":{"metadata":{"title":"One"},"b":1}})")),
              "<ul class=\"tree\">\n"
              "<li><details open=\"open\"><summary><span class=\"key\">metadata</span></summary>\n<ul>\n"
              "<li><span class=\"key\">title</span> <span class=\"value\">&quot;One&quot;</span></li>\n"
              "</ul></details></li>\n"
              "<li><span class=\"key\">b</span> <span class=\"value\">1</span></li>\n"
              "</ul>\n");
}

TEST(RecordTree, ShowsTheValueOfARecordThatIsNotAGroup)
{
    EXPECT_EQ(RecordTreeHtml(Core::Property("r", 5LL)), "<p class=\"value\">5</p>\n");
    EXPECT_EQ(RecordTreeHtml(Core::Property("r")), "<p class=\"value\">empty group</p>\n");
}

TEST(RecordTree, TellsARecordFromNone)
{
    EXPECT_TRUE(IsNoRecord(RecordOf(R"({"data":{}})")));
    EXPECT_TRUE(IsNoRecord(RecordOf(R"({"r":null})")));
    EXPECT_FALSE(IsNoRecord(RecordOf(R"({"r":{}})")));
    EXPECT_FALSE(IsNoRecord(RecordOf(R"({"data":{"a":1}})")));
    EXPECT_FALSE(IsNoRecord(RecordOf(R"({"data":5})")));
}

TEST(RecordTree, ShowsHostileNamesAndValuesAsTexts)
{
    const std::string html = RecordTreeHtml(RecordOf(R"({"r":{"</ul><b>":"\"><script>\u202e"}})"));
    EXPECT_EQ(html, "<ul class=\"tree\">\n"
                    "<li><span class=\"key\">&lt;/ul&gt;&lt;b&gt;</span> <span class=\"value\">"
                    "&quot;&quot;&gt;&lt;script&gt;\\342\\200\\256&quot;</span></li>\n</ul>\n");
}

/// Groups nested `depth` deep, with `leaves` values in the innermost.
Core::Property Nested(int depth, int leaves)
{
    Core::Property record("g");
    for (int i = 0; i < leaves; ++i)
    {
        record.CreateChildT("leaf", 1LL);
    }
    for (int i = 0; i < depth; ++i)
    {
        Core::Property outer("g");
        outer.Add(std::move(record));
        record = std::move(outer);
    }
    return record;
}

TEST(RecordTree, NestsSixteenLevelsAndNumbersTheOthers)
{
    const std::string html = RecordTreeHtml(Nested(20, 1));
    EXPECT_EQ(Testing::AllMatches(html, "(<details)").size(), 15U);
    EXPECT_EQ(Testing::AllMatches(html, "(</details>)").size(), 15U);
    EXPECT_EQ(Testing::AllMatches(html, "level\">level ([0-9]+)<"),
              (std::vector<std::string>{"17", "18", "19", "20", "21"}));
    Testing::ExpectWellFormed(html);
}

TEST(RecordTree, GrowsNoFasterThanTheRecord)
{
    EXPECT_LT(RecordTreeHtml(Nested(510, 10'000)).size(), 120U * 10'510U);
    EXPECT_LT(RecordTreeHtml(Nested(100'000, 0)).size(), 140U * 100'000U);
}

} // namespace
} // namespace Zelnor::Media
