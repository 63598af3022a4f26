#include "Media/Pages/RecordComparison.h"

#include "Tests/Support/Html.h"
#include "Tests/Support/JobFixtures.h"

namespace Zelnor::Media
{
namespace
{

using Testing::RecordOf;

/// "width | 1920 | 1280 | changed" for each row, without markup.
std::vector<std::string> Rows(const std::string& source, const std::string& target, bool isKept = false)
{
    const Core::Property one = RecordOf(source);
    const std::string html = ComparisonRows(&one, RecordOf(target), isKept);
    std::vector<std::string> rows;
    for (const std::string& row : Testing::AllMatches(html, "<tr[^>]*>(.*)</tr>"))
    {
        std::string text = std::regex_replace(row, std::regex("</t[hd]><td>"), " | ");
        rows.push_back(std::regex_replace(text, std::regex("<[^>]*>"), ""));
    }
    return rows;
}

using Texts = std::vector<std::string>;

TEST(RecordComparison, SaysOfEachKeyWhatBecomesOfIt)
{
    EXPECT_EQ(Rows(R"({"s":{"width":1920,"height":1080,"language":"eng"}})",
                   R"({"t":{"height":1080,"width":1280,"bitrate":400000}})"),
              (Texts{"height | 1080 | 1080 | same", "width | 1920 | 1280 | changed",
                     "bitrate | \xE2\x80\x93 | 400000 | set",
                     "language | &quot;eng&quot; | \xE2\x80\x93 | not in the job"}));
}

TEST(RecordComparison, KeepsWhatACopiedStreamDoesNotSay)
{
    EXPECT_EQ(Rows(R"({"s":{"width":1920}})", R"({"t":{"lossless":1}})", true),
              (Texts{"lossless | \xE2\x80\x93 | 1 | set", "width | 1920 | \xE2\x80\x93 | kept"}));
}

TEST(RecordComparison, PassesOverWhatTheSourceHasRoomForOnly)
{
    EXPECT_EQ(Rows(R"({"s":{"metadata":{}}})", R"({"t":{"options":{}}})"),
              (Texts{"options | \xE2\x80\x93 | empty group | set"}));
}

TEST(RecordComparison, ComparesGroupsKeyByKey)
{
    EXPECT_EQ(
        Rows(R"({"s":{"metadata":{"title":"One","artist":"A"}}})", R"({"t":{"metadata":{"title":"Two"}}})"),
        (Texts{"metadata | group of 2 | group of 1 | ", "title | &quot;One&quot; | &quot;Two&quot; | changed",
               "artist | &quot;A&quot; | \xE2\x80\x93 | not in the job"}));
}

TEST(RecordComparison, OfAGroupWithANumberIsOfTheWholeGroup)
{
    EXPECT_EQ(Rows(R"({"s":{"options":5}})", R"({"t":{"options":{"crf":23}}})"),
              (Texts{"options | 5 | group of 1 | changed"}));
}

TEST(RecordComparison, ComparesEqualNamesInTheirOrder)
{
    EXPECT_EQ(Rows(R"({"s":[{"a":1},{"a":2}]})", R"({"t":[{"a":1},{"a":3},{"a":4}]})"),
              (Texts{"a | 1 | 1 | same", "a | 2 | 3 | changed", "a | \xE2\x80\x93 | 4 | set"}));
}

TEST(RecordComparison, TellsANumberFromATextOfThatNumber)
{
    EXPECT_EQ(Rows(R"({"s":{"a":1}})", R"({"t":{"a":"1"}})"), (Texts{"a | 1 | &quot;1&quot; | changed"}));
    EXPECT_EQ(Rows(R"({"s":{"a":{"b":1}}})", R"({"t":{"a":1}})"), (Texts{"a | group of 1 | 1 | changed"}));
}

TEST(RecordComparison, OfASourceThatIsNotKnownSaysNothing)
{
    const std::string html = ComparisonRows(nullptr, RecordOf(R"({"t":{"a":1}})"), false);
    EXPECT_EQ(html, "<tr><th scope=\"row\" class=\"level0\">a</th><td>\xE2\x80\x93</td><td>1</td>"
                    "<td></td></tr>\n");
}

TEST(RecordComparison, ComparesDeepGroupsAsAWhole)
{
    const char* const source = R"({"s":{"a":{"a":{"a":{"a":{"a":{"x":1}}}}}}})";
    const char* const target = R"({"t":{"a":{"a":{"a":{"a":{"a":{"x":2}}}}}}})";
    EXPECT_EQ(Rows(source, source).back(), "a | group of 1 | group of 1 | same");
    EXPECT_EQ(Rows(source, target).back(), "a | group of 1 | group of 1 | changed");
}

TEST(RecordComparison, ShowsHostileKeysAsTexts)
{
    EXPECT_EQ(Rows(R"({"s":{"</td>":"<b>"}})", R"({"t":{"</td>":"<i>"}})"),
              (Texts{"&lt;/td&gt; | &quot;&lt;b&gt;&quot; | &quot;&lt;i&gt;&quot; | changed"}));
}

} // namespace
} // namespace Zelnor::Media
