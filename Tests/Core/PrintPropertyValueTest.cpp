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
    EXPECT_EQ("t: ", line.substr(0, 3));
    EXPECT_EQ('\n', line.back());
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

TEST(PrintPropertyValue, PrintsOnePropertyALine) { EXPECT_EQ(kSample, Print(Sample())); }

TEST(PrintPropertyValue, PrintsEachKind)
{
    EXPECT_EQ("n: -9223372036854775808\n", Print(Property("n", std::numeric_limits<long long>::min())));
    EXPECT_EQ("n: 9223372036854775807\n", Print(Property("n", std::numeric_limits<long long>::max())));
    EXPECT_EQ("r: -9223372036854775808/9223372036854775807\n",
              Print(Property("r", Property::Ratio(std::numeric_limits<long long>::min(),
                                                  std::numeric_limits<long long>::max()))));
    EXPECT_EQ("s: \n", Print(Property("s", "")));
    EXPECT_EQ("x: null\n", Print(Property::None("x")));
    EXPECT_EQ(":\n", Print(Property()));
}

TEST(PrintPropertyValue, IndentsFromTheGivenLevel)
{
    EXPECT_EQ("    source:\n", Print(Sample(), 2, true, false));
    EXPECT_EQ("      width: 1920\n", Print(Sample(), 2).substr(12, 18));
    EXPECT_EQ(kSample, Print(Sample(), -5));
}

TEST(PrintPropertyValue, LeavesOutTheNameOrTheChildren)
{
    EXPECT_EQ("source:\n", Print(Sample(), 0, true, false));
    EXPECT_EQ("", Print(Sample(), 0, false, false));
    EXPECT_EQ("title: A \\\"quoted\\\" title\nempty:\n", Print(Sample()["metadata"], 0, false, true));
    EXPECT_EQ("  title: A \\\"quoted\\\" title\n  empty:\n", Print(Sample()["metadata"], 1, false, true));
    EXPECT_EQ("", Print(Property("n", 1), 0, false, true));
}

TEST(PrintPropertyValue, EscapesInNamesAndValues)
{
    EXPECT_EQ("a\\\"b\\\\: c\\n\n", Print(Property("a\"b\\", "c\n")));
    EXPECT_EQ("\\n\\r\\t", PrintText("\n\r\t"));
    EXPECT_EQ("\\\\N \\\\G \\\\l", PrintText("\\N \\G \\l"));
    EXPECT_EQ("trailing\\\\", PrintText("trailing\\"));
    EXPECT_EQ("\\000\\0011\\037\\177", PrintText(std::string("\0\0011\037\177", 5)));
    EXPECT_EQ("' ~<>{}|", PrintText("' ~<>{}|"));
}

TEST(PrintPropertyValue, KeepsUtf8AndEscapesWhatIsNot)
{
    const std::string valid = "\u00e9\u6620\U0001F600\u00A0\uD7FF\uE000\U0010FFFF";
    EXPECT_EQ(valid, PrintText(valid));
    EXPECT_EQ("\\377x", PrintText("\xff"
                                  "x"));
    EXPECT_EQ("\\200", PrintText("\x80"));
    EXPECT_EQ("\\300\\200", PrintText("\xc0\x80")) << "an overlong form";
    EXPECT_EQ("\\340\\237\\277", PrintText("\xe0\x9f\xbf")) << "an overlong form";
    EXPECT_EQ("\\360\\217\\277\\277", PrintText("\xf0\x8f\xbf\xbf")) << "an overlong form";
    EXPECT_EQ("\\355\\240\\200", PrintText("\xed\xa0\x80")) << "a surrogate";
    EXPECT_EQ("\\364\\220\\200\\200", PrintText("\xf4\x90\x80\x80")) << "beyond the last code point";
    EXPECT_EQ("\\346\\230", PrintText("\xe6\x98")) << "cut off";
    EXPECT_EQ("\\346\\\"", PrintText("\xe6\"")) << "what follows is escaped by itself";
    EXPECT_EQ("\\303\u00e9", PrintText("\xc3\u00e9")) << "the character behind it is whole";
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

TEST(PrintPropertyValue, KeepsTheNeighboursOfTheBidirectionalControls)
{
    for (const std::string text :
         {"\xD8\x9B", "\xD8\x9D", "\xE2\x80\x8D", "\xE2\x80\x90", "\xE2\x80\xA9", "\xE2\x80\xAF",
          "\xE2\x81\xA5", "\xE2\x81\xAA", "\xF0\x9F\x8E\xAC", "\xD7\x90 \xD8\xA7"})
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
    EXPECT_EQ(kSample, os.str());
}

TEST(PrintPropertyValue, IsNotChangedByTheGlobalLocale)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Thousands));
    const std::string text = Print(Sample());
    std::locale::global(before);
    EXPECT_EQ(kSample, text);
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
    EXPECT_EQ(expected, Print(record));
    EXPECT_EQ("s: " + std::string(100000, 'x') + "\n", Print(Property("s", std::string(100000, 'x'))));
}

} // namespace Zelnor::Core
