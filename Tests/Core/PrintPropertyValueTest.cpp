#include "Core/Interfaces/PrintPropertyValue.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace Zelnor::Core
{

namespace
{

std::string Print(const Property& property, int indent = 0, bool printName = true, bool printChildren = true)
{
    std::ostringstream os;
    PrintPropertyValue(property, indent, os, printName, printChildren);
    return os.str();
}

std::string PrintText(const std::string& text)
{
    const std::string line = Print(Property("t", text));
    EXPECT_EQ(line.substr(0, 3), "t: ");
    EXPECT_EQ(line.back(), '\n');
    return line.substr(3, line.size() - 4);
}

Property Sample()
{
    Property record("source");
    record.CreateChildT("width", 1920LL);
    record.CreateChildT("frame_rate", Property::Ratio(30000, 1001));
    Property& inner = record.SetChild("metadata");
    inner.CreateChildT("title", std::string("A \"quoted\" title"));
    inner.SetChild("empty");
    record.Add(Property::None("nothing"));
    return record;
}

constexpr const char* kSample = R"(source:
  width: 1920
  frame_rate: 30000/1001
  metadata:
    title: A \"quoted\" title
    empty:
  nothing: null
)";

struct Thousands : std::numpunct<char>
{
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST(PrintPropertyValue, PrintsOnePropertyALine) { EXPECT_EQ(Print(Sample()), kSample); }

TEST(PrintPropertyValue, PrintsEachKind)
{
    EXPECT_EQ(Print(Property("n", std::numeric_limits<long long>::min())), "n: -9223372036854775808\n");
    EXPECT_EQ(Print(Property("n", std::numeric_limits<long long>::max())), "n: 9223372036854775807\n");
    EXPECT_EQ(Print(Property("r", Property::Ratio(std::numeric_limits<long long>::min(),
                                                  std::numeric_limits<long long>::max()))),
              "r: -9223372036854775808/9223372036854775807\n");
    EXPECT_EQ(Print(Property("s", "")), "s: \n");
    EXPECT_EQ(Print(Property::None("x")), "x: null\n");
    EXPECT_EQ(Print(Property()), ":\n");
}

TEST(PrintPropertyValue, IndentsFromTheGivenLevel)
{
    EXPECT_EQ(Print(Sample(), 2, true, false), "    source:\n");
    EXPECT_EQ(Print(Sample(), 2).substr(12, 18), "      width: 1920\n");
    EXPECT_EQ(Print(Sample(), -5), kSample);
}

TEST(PrintPropertyValue, LeavesOutTheNameOrTheChildren)
{
    EXPECT_EQ(Print(Sample(), 0, true, false), "source:\n");
    EXPECT_EQ(Print(Sample(), 0, false, false), "");
    EXPECT_EQ(Print(Sample()["metadata"], 0, false, true), "title: A \\\"quoted\\\" title\nempty:\n");
    EXPECT_EQ(Print(Sample()["metadata"], 1, false, true), "  title: A \\\"quoted\\\" title\n  empty:\n");
    EXPECT_EQ(Print(Property("n", 1), 0, false, true), "");
}

TEST(PrintPropertyValue, EscapesInNamesAndValues)
{
    EXPECT_EQ(Print(Property("a\"b\\", "c\n")), "a\\\"b\\\\: c\\n\n");
    EXPECT_EQ(PrintText("\n\r\t"), "\\n\\r\\t");
    EXPECT_EQ(PrintText("\\N \\G \\l"), "\\\\N \\\\G \\\\l");
    EXPECT_EQ(PrintText("trailing\\"), "trailing\\\\");
    EXPECT_EQ(PrintText(std::string("\0\0011\037\177", 5)), "\\000\\0011\\037\\177");
    EXPECT_EQ(PrintText("' ~<>{}|"), "' ~<>{}|");
}

TEST(PrintPropertyValue, KeepsUtf8AndEscapesWhatIsNot)
{
    const std::string valid = "\u00e9\u6620\U0001F600\u00A0\uD7FF\uE000\U0010FFFF";
    EXPECT_EQ(PrintText(valid), valid);
    EXPECT_EQ(PrintText("\xff"
                        "x"),
              "\\377x");
    EXPECT_EQ(PrintText("\x80"), "\\200");
    EXPECT_EQ(PrintText("\xc0\x80"), "\\300\\200") << "an overlong form";
    EXPECT_EQ(PrintText("\xe0\x9f\xbf"), "\\340\\237\\277") << "an overlong form";
    EXPECT_EQ(PrintText("\xf0\x8f\xbf\xbf"), "\\360\\217\\277\\277") << "an overlong form";
    EXPECT_EQ(PrintText("\xed\xa0\x80"), "\\355\\240\\200") << "a surrogate";
    EXPECT_EQ(PrintText("\xf4\x90\x80\x80"), "\\364\\220\\200\\200") << "beyond the last code point";
    EXPECT_EQ(PrintText("\xe6\x98"), "\\346\\230") << "cut off";
    EXPECT_EQ(PrintText("\xe6\""), "\\346\\\"") << "what follows is escaped by itself";
    EXPECT_EQ(PrintText("\xc3\u00e9"), "\\303\u00e9") << "the character behind it is whole";
}

TEST(PrintPropertyValue, EscapesTheC1Controls)
{
    EXPECT_EQ(PrintText("a\xC2\x80 \xC2\x9B \xC2\x9F z"), R"(a\302\200 \302\233 \302\237 z)");
    // The no-break space that follows them is text.
    EXPECT_EQ(PrintText("\xC2\xA0"), "\xC2\xA0");
}

TEST(PrintPropertyValue, EscapesTheBidirectionalControls)
{
    EXPECT_EQ(PrintText("\xD8\x9C"), R"(\330\234)");
    EXPECT_EQ(PrintText("\xE2\x80\x8E\xE2\x80\x8F"), R"(\342\200\216\342\200\217)");
    EXPECT_EQ(PrintText("\xE2\x80\xAA\xE2\x80\xAE"), R"(\342\200\252\342\200\256)");
    EXPECT_EQ(PrintText("\xE2\x81\xA6\xE2\x81\xA9"), R"(\342\201\246\342\201\251)");
    EXPECT_EQ(Print(Property("fi\xE2\x80\xAEtxe.le")), "fi\\342\\200\\256txe.le:\n");
}

TEST(PrintPropertyValue, EscapesOtherCharactersThatNobodySees)
{
    EXPECT_EQ(PrintText("line\u2028paragraph\u2029"), R"(line\342\200\250paragraph\342\200\251)");
    EXPECT_EQ(PrintText("in\u200B.mov"), R"(in\342\200\213.mov)");
    EXPECT_EQ(PrintText("\uFEFFsource"), R"(\357\273\277source)");
    EXPECT_EQ(PrintText("\U000E0041"), R"(\363\240\201\201)");
}

TEST(PrintPropertyValue, KeepsWhatWordsAndEmojiAreSpelledWith)
{
    for (const std::string text :
         {"\u061B\u061D", "\u200C\u200D", "\u2010\u2027\u202F", "\u205F", "\u2070", "\u00AC\u00AE",
          "\U0001F468\u200D\U0001F469\u200D\U0001F467\uFE0F", "\u05D0 \u0627"})
    {
        EXPECT_EQ(PrintText(text), text);
    }
}

TEST(PrintPropertyValue, IsNotChangedByTheStreamsLocaleAndFlags)
{
    std::ostringstream os;
    os.imbue(std::locale(std::locale::classic(), new Thousands));
    os << std::hex << std::showbase << std::showpos << std::setw(40) << std::setfill('*');
    PrintPropertyValue(Sample(), 0, os, true, true);
    EXPECT_EQ(os.str(), kSample);
}

TEST(PrintPropertyValue, IsNotChangedByTheGlobalLocale)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Thousands));
    const std::string text = Print(Sample());
    std::locale::global(before);
    EXPECT_EQ(text, kSample);
}

TEST(PrintPropertyValue, HandsLongTextOverWhole)
{
    Property record("g");
    std::string expected = "g:\n";
    for (int i = 0; i < 3000; ++i)
    {
        record.CreateChildT("child", static_cast<long long>(i));
        expected += "  child: " + std::to_string(i) + "\n";
    }
    EXPECT_EQ(Print(record), expected);
    EXPECT_EQ(Print(Property("s", std::string(100000, 'x'))), "s: " + std::string(100000, 'x') + "\n");
}

} // namespace Zelnor::Core
