#include "Media/Pages/HtmlText.h"

#include <gtest/gtest.h>

namespace Zelnor::Media
{
namespace
{

TEST(HtmlText, EscapesWhatElementsAndAttributesAreMadeOf)
{
    EXPECT_EQ(HtmlText(R"(</script><!-- & "a" 'b')"),
              "&lt;/script&gt;&lt;!-- &amp; &quot;a&quot; &#39;b&#39;");
    EXPECT_EQ(HtmlText("&lt;"), "&amp;lt;");
    EXPECT_EQ(HtmlText("]]>"), "]]&gt;");
}

TEST(HtmlText, WritesInvisibleControlsAsTheEscapesOfPrintedRecords)
{
    EXPECT_EQ(HtmlText("a\nb\tc\r"), "a\\nb\\tc\\r");
    EXPECT_EQ(HtmlText(std::string("\0\x1B\x7F", 3)), "\\000\\033\\177");
    EXPECT_EQ(HtmlText("\xE2\x80\xAE"), "\\342\\200\\256"); // the right-to-left override
    EXPECT_EQ(HtmlText("\xC2\x85"), "\\302\\205");          // C1
}

TEST(HtmlText, DoesNotTakeAWrittenEscapeForAnEscapedCharacter) { EXPECT_EQ(HtmlText("\\033"), "\\\\033"); }

TEST(HtmlText, WritesBytesThatAreNotTextAsEscapes)
{
    EXPECT_EQ(HtmlText("\xFF"
                       "a\xC3"),
              "\\377a\\303");
}

TEST(HtmlText, WritesCharactersThatDocumentsMayNotHoldAsEscapes)
{
    EXPECT_EQ(HtmlText("\xEF\xBF\xBE\xEF\xBF\xBF"), "\\357\\277\\276\\357\\277\\277");
    EXPECT_EQ(HtmlText("\xEF\xB7\x90"), "\\357\\267\\220");          // U+FDD0
    EXPECT_EQ(HtmlText("\xF0\x9F\xBF\xBF"), "\\360\\237\\277\\277"); // U+1FFFF
}

TEST(HtmlText, LeavesOtherTextsAsTheyAre)
{
    EXPECT_EQ(HtmlText("Urlaub \xC3\xBC"
                       "ber \xF0\x9F\x8E\xAC"),
              "Urlaub \xC3\xBC"
              "ber \xF0\x9F\x8E\xAC");
}

TEST(ShortenedText, EndsWithAnEllipsisWhenSomethingIsLeftOut)
{
    EXPECT_EQ(Shortened("holiday", 7), "holiday");
    EXPECT_EQ(Shortened("holiday", 6), "holid\xE2\x80\xA6");
    EXPECT_EQ(Shortened("", 3), "");
}

TEST(ShortenedText, IsNeverCutInsideACharacter)
{
    EXPECT_EQ(Shortened("\xC3\xA4\xC3\xB6\xC3\xBC", 3), "\xC3\xA4\xC3\xB6\xC3\xBC");
    EXPECT_EQ(Shortened("\xC3\xA4\xC3\xB6\xC3\xBC", 2), "\xC3\xA4\xE2\x80\xA6");
}

} // namespace
} // namespace Zelnor::Media
