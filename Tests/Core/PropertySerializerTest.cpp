#include "Core/Interfaces/PropertySerializer.h"

#include "Core/Interfaces/PropertyEvents.h"

#include "Tests/Support/CollidingNames.h"
#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <limits>
#include <string>
#include <utility>

namespace Zelnor::Core
{

namespace
{

using Testing::ExpectThrow;
using Testing::Thrown;
using Ratio = Property::Ratio;

constexpr long long kLeast = std::numeric_limits<long long>::min();
constexpr long long kMost = std::numeric_limits<long long>::max();
const std::string kKinds = "expected an integer, a string, a rational, null or a group, found ";
const std::string kRecord = "expected a record (an object with one member), found ";

std::string TextOf(const rapidjson::Value& json)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    json.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

rapidjson::Document Parse(const std::string& text)
{
    rapidjson::Document document;
    document.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
    EXPECT_FALSE(document.HasParseError()) << text;
    return document;
}

std::string Save(const Property& record)
{
    rapidjson::Document document;
    PropertySerializer::Save(record, document, document.GetAllocator());
    return TextOf(document);
}

Property Load(const std::string& text)
{
    rapidjson::Document document = Parse(text);
    Property property("whatever it held before", 1);
    PropertySerializer::Load(property, document);
    return property;
}

/// Expects that the text is what the record is saved as and that loading it, and what RapidJSON makes of the
/// saved value, gives the record again.
void ExpectSavedAs(const std::string& text, const Property& record)
{
    rapidjson::Document document;
    PropertySerializer::Save(record, document, document.GetAllocator());
    EXPECT_EQ(TextOf(document), text);
    Property loaded("other");
    PropertySerializer::Load(loaded, document);
    EXPECT_EQ(loaded, record);
    EXPECT_EQ(Load(text), record);
}

void ExpectRefused(const std::string& text, const std::string& description)
{
    rapidjson::Document document = Parse(text);
    Property target("target");
    target.CreateChildT("kept", 1LL);
    const Property before(target);
    const Thrown thrown = ExpectThrow<PropertyException>([&] { PropertySerializer::Load(target, document); });
    EXPECT_EQ(thrown.description, description) << text;
    EXPECT_EQ(thrown.file, "Core/Interfaces/PropertySerializer");
    EXPECT_NE(thrown.function.value_or("").find("PropertySerializer::Load("), std::string::npos)
        << thrown.function.value_or("");
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
    EXPECT_EQ(target, before) << text;
    EXPECT_EQ(TextOf(document), TextOf(Parse(text))) << "the document is left alone";
}

/// That many groups around an integer, or around nothing.
Property Nested(int groups, bool withLeaf)
{
    Property outermost("g");
    Property* innermost = &outermost;
    for (int i = 1; i < groups; ++i)
    {
        innermost = &innermost->SetChild("g");
    }
    if (withLeaf)
    {
        innermost->CreateChildT("n", 1LL);
    }
    return outermost;
}

std::string Repeated(int count, const std::string& text)
{
    std::string all;
    for (int i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

} // namespace

TEST(PropertySerializer, WritesEachKind)
{
    ExpectSavedAs(R"({"n":5})", Property("n", 5));
    ExpectSavedAs(R"({"n":-9223372036854775808})", Property("n", kLeast));
    ExpectSavedAs(R"({"n":9223372036854775807})", Property("n", kMost));
    ExpectSavedAs(R"({"s":"text"})", Property("s", "text"));
    ExpectSavedAs(R"({"s":""})", Property("s", ""));
    ExpectSavedAs(R"({"r":[30000,1001]})", Property("r", Ratio(30000, 1001)));
    ExpectSavedAs(R"({"r":[-1,2]})", Property("r", Ratio(1, -2)));
    ExpectSavedAs(R"({"r":[0,1]})", Property("r", Ratio(0)));
    ExpectSavedAs(R"({"x":null})", Property::None("x"));
    ExpectSavedAs(R"({"g":{}})", Property("g"));
    ExpectSavedAs(R"({"":{}})", Property());
}

TEST(PropertySerializer, WritesAGroupAsAnObjectInOrder)
{
    Property record("source");
    record.CreateChildT("$$TYPE_ID$$", std::string("sourceFile"));
    record.CreateChildT("filePath", std::string("/media/in.mp4"));
    record.SetChild("a").CreateChildT("", 1LL);
    ExpectSavedAs(R"({"source":{"$$TYPE_ID$$":"sourceFile","filePath":"/media/in.mp4","a":{"":1}}})", record);
}

TEST(PropertySerializer, WritesAGroupInWhichANameRepeatsAsAnArray)
{
    Property record("target");
    Property& merged = record.SetChild("$$MERGE_WITH$$");
    merged.SetChild("").CreateChildT("$$MERGE_WITH$$", 2LL);
    Property second("");
    second.CreateChildT("$$MERGE_WITH$$", 5LL);
    merged.Add(second);
    ExpectSavedAs(R"({"target":{"$$MERGE_WITH$$":[{"":{"$$MERGE_WITH$$":2}},{"":{"$$MERGE_WITH$$":5}}]}})",
                  record);
}

TEST(PropertySerializer, TellsTwoChildrenOfOneNameFromARational)
{
    Property record("g");
    record.Add(Property("x", 1));
    record.Add(Property("x", 2));
    ExpectSavedAs(R"({"g":[{"x":1},{"x":2}]})", record);
}

TEST(PropertySerializer, FindsARepeatedNameAmongManyChildren)
{
    for (const int count : {11, 12, 13, 14, 100})
    {
        Property record("g");
        for (int i = 0; i < count; ++i)
        {
            record.CreateChildT("c" + std::to_string(i), static_cast<long long>(i));
        }
        EXPECT_EQ(Save(record).substr(0, 10), R"({"g":{"c0")");
        EXPECT_EQ(Load(Save(record)), record);
        record.Add(Property("c0", 1));
        EXPECT_EQ(Save(record).substr(0, 15), R"({"g":[{"c0":0},)");
        EXPECT_EQ(Load(Save(record)), record);
    }
}

TEST(HasDistinctNames, TellsInMomentsWhateverTheNamesAre)
{
    constexpr unsigned int kChoices = 16;
    Property group("group");
    for (const std::string& name : Testing::CollidingNames::Make(kChoices))
    {
        group.Add(Property(name, 1LL));
    }
    EXPECT_TRUE(HasDistinctNames(group));
    group.Add(Property(group.begin()->GetName(), 1LL));
    EXPECT_FALSE(HasDistinctNames(group));
}

TEST(HasDistinctNames, ComparesNamesThatOnlyLookAlike)
{
    // So many of one length and with equal ends that some must share a bit of any small filter.
    for (const int count : {2, 13, 50, 64, 65, 2000})
    {
        Property group("group");
        for (int i = 0; i < count; ++i)
        {
            group.CreateChildT("name" + std::to_string(10'000 + i) + "end", 1LL);
        }
        EXPECT_TRUE(HasDistinctNames(group)) << count;
        group.CreateChildT("name10001end", 1LL);
        EXPECT_FALSE(HasDistinctNames(group)) << count;
    }
}

TEST(HasDistinctNames, ComparesEmptyNamesToo)
{
    Property group("g");
    for (int i = 0; i < 40; ++i)
    {
        group.Add(Property(i == 0 ? "" : "name" + std::to_string(i), 1LL));
    }
    EXPECT_TRUE(HasDistinctNames(group));
    group.Add(Property("", 2LL));
    EXPECT_FALSE(HasDistinctNames(group));
}

TEST(PropertySerializer, KeepsStringsByteForByte)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i)
    {
        bytes += static_cast<char>(i);
    }
    for (const std::string& text : {bytes, std::string(1, '\0'), std::string("\xff\xfe"),
                                    std::string("\xc0\x80"), std::string("\xed\xa0\x80")})
    {
        Property record(text, text);
        EXPECT_EQ(Load(Save(record)), record);
    }
    EXPECT_EQ(Save(Property(std::string("a\0b", 3), "\"\\\n")), "{\"a\\u0000b\":\"\\\"\\\\\\n\"}");
}

TEST(PropertySerializer, CopiesStringsIntoTheDocument)
{
    rapidjson::Document document;
    {
        const Property record(std::string(100, 'n'), std::string(100, 'v'));
        PropertySerializer::Save(record, document, document.GetAllocator());
    }
    EXPECT_EQ(TextOf(document), "{\"" + std::string(100, 'n') + "\":\"" + std::string(100, 'v') + "\"}");
}

TEST(PropertySerializer, SavesOverWhateverTheValueHeld)
{
    rapidjson::Document document = Parse(R"({"old":[1,2,3]})");
    PropertySerializer::Save(Property("n", 1), document["old"], document.GetAllocator());
    EXPECT_EQ(TextOf(document), R"({"old":{"n":1}})");
}

TEST(PropertySerializer, ReadsTheOtherFormsOfAGroup)
{
    Property repeated("g");
    repeated.Add(Property("x", 1));
    repeated.Add(Property("x", 2));
    EXPECT_EQ(Load(R"({"g":{"x":1,"x":2}})"), repeated);
    Property different("g");
    different.Add(Property("x", 1));
    different.Add(Property("y", 2));
    EXPECT_EQ(Load(R"({"g":[{"x":1},{"y":2}]})"), different);
    EXPECT_EQ(Load(R"({"g":[]})"), Property("g"));
    EXPECT_EQ(Load(R"({"g":{}})"), Property("g"));
}

TEST(PropertySerializer, NullMakesTheTargetAnEmptyGroupOfItsName)
{
    rapidjson::Value null;
    Property target("target", 5);
    PropertySerializer::Load(target, null);
    EXPECT_EQ(target, Property("target"));
}

TEST(PropertySerializer, ReducesRationals)
{
    EXPECT_EQ(Load(R"({"r":[2,-4]})"), Property("r", Ratio(-1, 2)));
    EXPECT_EQ(Load(R"({"r":[0,-9223372036854775808]})"), Property("r", Ratio(0)));
}

TEST(PropertySerializer, ReadsRationalsAroundTheLeastIntegerOrRefusesThem)
{
    const auto load = [](const std::string& top, const std::string& bottom) {
        return Load("{\"r\":[" + top + "," + bottom + "]}").GetRatio();
    };
    const std::string least = "-9223372036854775808";
    EXPECT_EQ(load(least, "1").numerator(), kLeast);
    EXPECT_EQ(load(least, least), Ratio(1));
    EXPECT_EQ(load(least, "6"), Ratio(kLeast / 2, 3));
    EXPECT_EQ(load("2", least), Ratio(-1, kLeast / -2));
    EXPECT_EQ(load(least, "1").numerator(), kLeast);
    EXPECT_EQ(load(least, "-2"), Ratio(kLeast / -2));
    EXPECT_EQ(load("9223372036854775807", "2"), Ratio(kMost, 2));
    EXPECT_EQ(load("9223372036854775807", "-1"), Ratio(-kMost));
    EXPECT_EQ(load("1", "9223372036854775807"), Ratio(1, kMost));
    const std::string doesNotFit = "r: a rational whose reduced form does not fit 64 bits";
    ExpectRefused(R"({"r":[-9223372036854775808,-1]})", doesNotFit);
    ExpectRefused(R"({"r":[1,-9223372036854775808]})", doesNotFit);
    ExpectRefused(R"({"r":[-3,-9223372036854775808]})", doesNotFit);
    ExpectRefused(R"({"r":[-9223372036854775808,-3]})", doesNotFit);
}

TEST(PropertySerializer, KeepsRationalsAtTheLimits)
{
    for (const Ratio& ratio : {Ratio(kLeast), Ratio(kMost), Ratio(1, kMost), Ratio(kLeast, kMost)})
    {
        const Property record("r", ratio);
        EXPECT_EQ(Load(Save(record)), record);
    }
}

TEST(PropertySerializer, RefusesAZeroDenominator)
{
    ExpectRefused(R"({"r":[1,0]})", "r: a rational with the denominator 0");
    ExpectRefused(R"({"r":[0,0]})", "r: a rational with the denominator 0");
}

TEST(PropertySerializer, RefusesRationalsOfAnythingButIntegers)
{
    const std::string expected = "r: expected two 64-bit integers, found ";
    ExpectRefused(R"({"r":[1.5,2]})", expected + "a number that is not a 64-bit integer");
    ExpectRefused(R"({"r":[1,2e0]})", expected + "a number that is not a 64-bit integer");
    ExpectRefused(R"({"r":[9223372036854775808,2]})", expected + "an integer beyond the signed 64-bit range");
    ExpectRefused(R"({"r":[1,"2"]})", expected + "a string");
    ExpectRefused(R"({"r":[null,2]})", expected + "null");
    ExpectRefused(R"({"r":[{},2]})", expected + "an object");
    ExpectRefused(R"({"r":[1,[2]]})", expected + "an array");
    ExpectRefused(R"({"r":[true,2]})", expected + "true");
    ExpectRefused(R"({"r":[1,false]})", expected + "false");
}

TEST(PropertySerializer, RefusesWhatIsNoRecord)
{
    ExpectRefused("true", "record: " + kRecord + "true");
    ExpectRefused("5", "record: " + kRecord + "an integer");
    ExpectRefused("1.5", "record: " + kRecord + "a number that is not a 64-bit integer");
    ExpectRefused(R"("text")", "record: " + kRecord + "a string");
    ExpectRefused("[]", "record: " + kRecord + "an array");
    ExpectRefused("{}", "record: " + kRecord + "an object with 0 members");
    ExpectRefused(R"({"a":1,"b":2})", "record: " + kRecord + "an object with 2 members");
}

TEST(PropertySerializer, RefusesValuesThatAPropertyCannotHold)
{
    ExpectRefused(R"({"a":true})", "a: " + kKinds + "true");
    ExpectRefused(R"({"a":false})", "a: " + kKinds + "false");
    ExpectRefused(R"({"a":1.5})", "a: " + kKinds + "a number that is not a 64-bit integer");
    ExpectRefused(R"({"a":1.0})", "a: " + kKinds + "a number that is not a 64-bit integer");
    ExpectRefused(R"({"a":1e2})", "a: " + kKinds + "a number that is not a 64-bit integer");
    ExpectRefused(R"({"a":9223372036854775808})",
                  "a: " + kKinds + "an integer beyond the signed 64-bit range");
    ExpectRefused(R"({"a":18446744073709551615})",
                  "a: " + kKinds + "an integer beyond the signed 64-bit range");
    ExpectRefused(R"({"a":18446744073709551616})", "a: " + kKinds + "a number that is not a 64-bit integer");
    ExpectRefused(R"({"a":-9223372036854775809})", "a: " + kKinds + "a number that is not a 64-bit integer");
}

TEST(PropertySerializer, RefusesOtherArrays)
{
    ExpectRefused(R"({"a":[1]})", "a[0]: " + kRecord + "an integer");
    ExpectRefused(R"({"a":[1,2,3]})", "a[0]: " + kRecord + "an integer");
    ExpectRefused(R"({"a":[{"x":1},{"x":1,"y":2}]})", "a[1]: " + kRecord + "an object with 2 members");
    ExpectRefused(R"({"a":[{"x":1},{}]})", "a[1]: " + kRecord + "an object with 0 members");
    ExpectRefused(R"({"a":["x","y"]})", "a[0]: " + kRecord + "a string");
    ExpectRefused(R"({"a":[null]})", "a[0]: " + kRecord + "null");
    ExpectRefused(R"({"a":[[1,2]]})", "a[0]: " + kRecord + "an array");
}

TEST(PropertySerializer, SaysTheWayToThePlace)
{
    ExpectRefused(R"({"data":{"source":{"ok":1,"bitrate":1.5}}})",
                  "data.source.bitrate: " + kKinds + "a number that is not a 64-bit integer");
    ExpectRefused(R"({"data":{"inputs":[{"x":1},{"x":2},{"x":{"bitrate":true}}]}})",
                  "data.inputs[2].x.bitrate: " + kKinds + "true");
    ExpectRefused(R"({"":{"":true}})", ".: " + kKinds + "true");
    ExpectRefused(R"({"":true})", "record: " + kKinds + "true");
}

TEST(PropertySerializer, Takes512NestedGroupsAndNotOneMore)
{
    EXPECT_EQ(Load(Save(Nested(512, true))), Nested(512, true));
    EXPECT_EQ(Load(Save(Nested(512, false))), Nested(512, false));
    for (const bool withLeaf : {true, false})
    {
        rapidjson::Document document;
        document.SetInt(7);
        const Property tooDeep = Nested(513, withLeaf);
        const Thrown thrown = ExpectThrow<PropertyException>(
            [&] { PropertySerializer::Save(tooDeep, document, document.GetAllocator()); });
        EXPECT_EQ(thrown.description, Repeated(512, "g.") + "g: groups are nested deeper than 512");
        EXPECT_EQ(thrown.file, "Core/Interfaces/PropertySerializer");
        EXPECT_NE(thrown.function.value_or("").find("PropertySerializer::Save("), std::string::npos)
            << thrown.function.value_or("");
        EXPECT_EQ(document.GetInt(), 7);
    }
}

TEST(PropertySerializer, LoadCountsGroupsLikeSave)
{
    const std::string path = Repeated(512, "g.") + "g";
    const auto objects = [](int count, const std::string& innermost) {
        return Repeated(count, R"({"g":)") + innermost + Repeated(count, "}");
    };
    EXPECT_EQ(Load(objects(512, "{}")), Nested(512, false));
    EXPECT_EQ(Load(objects(512, "[]")), Nested(512, false));
    EXPECT_EQ(Load(objects(512, R"({"n":1})")), Nested(512, true));
    ExpectRefused(objects(513, "{}"), path + ": groups are nested deeper than 512");
    ExpectRefused(objects(513, "[]"), path + ": groups are nested deeper than 512");
    ExpectRefused(objects(513, R"({"n":1})"), path + ": groups are nested deeper than 512");
    Property arrays = Load(Repeated(512, R"({"g":[)") + Repeated(512, "]}"));
    EXPECT_EQ(arrays, Nested(512, false));
    const std::string tooDeep = Repeated(513, R"({"g":[)") + Repeated(513, "]}");
    ExpectRefused(tooDeep, Repeated(512, "g[0].") + "g: groups are nested deeper than 512");
}

TEST(PropertySerializer, LoadsAValueInsideADocument)
{
    rapidjson::Document document = Parse(R"({"records":[{"a":1},{"b":"x"}]})");
    Property property("x");
    PropertySerializer::Load(property, document["records"][1]);
    EXPECT_EQ(property, Property("b", "x"));
}

TEST(PropertyEvents, WritesARecordStraightToAWriter)
{
    Property record("g");
    record.CreateChildT("n", 5LL);
    record.CreateChildT("r", Ratio(1, 2));
    record.Add(Property::None("x"));
    record.Add(Property("x", "text"));
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    PropertyEvents(writer, false).Record(record);
    EXPECT_TRUE(writer.IsComplete());
    EXPECT_STREQ(buffer.GetString(), R"({"g":[{"n":5},{"r":[1,2]},{"x":null},{"x":"text"}]})");
    EXPECT_EQ(Load(buffer.GetString()), record);
}

/// The description with which `record` is refused when it is saved.
std::string SaveRefusalOf(const Property& record)
{
    rapidjson::Document document;
    const Thrown thrown = ExpectThrow<PropertyException>(
        [&] { PropertySerializer::Save(record, document, document.GetAllocator()); });
    return thrown.description.value_or("");
}

const std::string kTooDeep = ": groups are nested deeper than 512";

TEST(PropertySerializer, SaveSaysTheWayToThePlaceAsLoadDoes)
{
    Property record("data");
    record.CreateChildT("before", 1LL);
    record.SetChild("source").SetChild("fine");
    record["source"].Add(Nested(511, true));
    record.SetChild("after");
    EXPECT_EQ(SaveRefusalOf(record), "data.source" + Repeated(511, ".g") + kTooDeep);
    // Equal names make the group a list, in which positions tell them apart.
    record["source"].SetChild("g2");
    record["source"].Add(Property("fine", 5));
    EXPECT_EQ(SaveRefusalOf(record), "data.source[1]" + Repeated(511, ".g") + kTooDeep);
}

TEST(PropertySerializer, SaveNamesTheFirstPlaceOfSeveral)
{
    Property record("r");
    record.SetChild("a").SetChild("b");
    record["a"].SetChild("c").Add(Nested(512, false));
    record.SetChild("z").Add(Nested(600, false));
    EXPECT_EQ(SaveRefusalOf(record), "r.a.c" + Repeated(510, ".g") + kTooDeep);
}

TEST(PropertySerializer, LongNamesInAWayAreCutBetweenCharacters)
{
    const std::string euro = "\xE2\x82\xAC";
    Property record(std::string(256, 'x'));
    record.SetChild(std::string(255, 'y') + euro).SetChild(Repeated(1'000'000, euro)).Add(Nested(510, false));
    EXPECT_EQ(SaveRefusalOf(record), std::string(256, 'x') + "." + std::string(255, 'y') + "..." + "." +
                                         Repeated(85, euro) + "..." + Repeated(510, ".g") + kTooDeep);
    Property unreadable(std::string(300, '\x80'));
    unreadable.Add(Nested(512, false));
    EXPECT_EQ(SaveRefusalOf(unreadable), "..." + Repeated(512, ".g") + kTooDeep);
}

TEST(PropertySerializer, SaveFindsThePlaceInTimeInProportionToTheRecord)
{
    Property record("r");
    for (int i = 0; i < 50'000; ++i)
    {
        record.SetChild("g").CreateChildT("n", 1LL);
        record.Add(Property("list"));
    }
    record.Add(Nested(512, false));
    EXPECT_EQ(SaveRefusalOf(record), "r[50001]" + Repeated(512, ".g") + kTooDeep);
}

TEST(GetSaveRefusal, NamesTheWrappers)
{
    EXPECT_EQ(GetSaveRefusal(Nested(512, true)), "");
    EXPECT_EQ(GetSaveRefusal(Nested(511, true), {"data"}), "");
    EXPECT_EQ(GetSaveRefusal(Nested(511, true), {"a", "b"}), "a.b" + Repeated(511, ".g") + kTooDeep);
    EXPECT_EQ(GetSaveRefusal(Property("n", 1), {"data"}), "");
}

TEST(CheckDepth, CountsTheWrappers)
{
    EXPECT_NO_THROW(CheckDepth(Nested(512, true), 0));
    EXPECT_NO_THROW(CheckDepth(Nested(511, true), 1));
    EXPECT_NO_THROW(CheckDepth(Property("n", 1), 512));
    const Thrown thrown = ExpectThrow<PropertyException>([] { CheckDepth(Nested(512, true), 1); });
    EXPECT_EQ(thrown.description, Repeated(511, "g.") + "g: groups are nested deeper than 512");
    EXPECT_EQ(thrown.file, "Core/Interfaces/PropertySerializer");
}

} // namespace Zelnor::Core
