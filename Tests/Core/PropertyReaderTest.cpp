#include "Core/Interfaces/PropertyReader.h"

#include "Core/Interfaces/PropertySerializer.h"
#include "Core/Private/RecordParser.h"

#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <rapidjson/reader.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

namespace Zelnor::Core
{

namespace
{

using Testing::ExpectThrow;

void Send(const std::string& text, PropertyReader& record)
{
    rapidjson::StringStream stream(text.c_str());
    rapidjson::Reader reader;
    reader.Parse<rapidjson::kParseIterativeFlag>(stream, record);
    EXPECT_FALSE(reader.HasParseError()) << text;
}

Property Load(PropertyReader& record)
{
    Property property("before", 1);
    PropertySerializer::Load(property, record);
    return property;
}

/// Calls a function with a reader that has read the text, for each way of reading.
template <class Use>
void ForEachWay(const std::string& text, Use&& use)
{
    PropertyReader events;
    Send(text, events);
    use(events);
    for (const std::size_t piece : {1u, 7u, 16384u})
    {
        const auto input = MemoryDataInput::Create(text);
        JsonCursor cursor(*input, piece, piece);
        PropertyReader parsed;
        EXPECT_TRUE(ParseRecord(cursor, parsed)) << text;
        use(parsed);
    }
}

Property LoadUnwrapped(const std::string& text)
{
    std::vector<Property> loaded;
    ForEachWay(text, [&](PropertyReader& record) {
        PropertySerializer::LoadUnwrapped(loaded.emplace_back("before", 1), record);
    });
    EXPECT_EQ(std::count(loaded.begin(), loaded.end(), loaded.front()), 4) << text;
    return loaded.front();
}

std::string RefusalOf(const std::string& text)
{
    std::vector<std::string> refusals;
    ForEachWay(text, [&](PropertyReader& record) {
        Property property("before", 1);
        const auto load = [&] { PropertySerializer::Load(property, record); };
        refusals.push_back(ExpectThrow<PropertyException>(load).description.value_or(""));
        EXPECT_EQ(property, Property("before", 1));
    });
    EXPECT_EQ(std::count(refusals.begin(), refusals.end(), refusals.front()), 4) << text;
    return refusals.front();
}

} // namespace

TEST(PropertyReader, BuildsARecordFromEvents)
{
    PropertyReader record;
    Send(
        R"({"a":{"b":5,"c":[30000,1001],"d":[{"x":null},{"x":"text"}],"e":{},"f":[],"g":-9223372036854775808}})",
        record);
    Property expected("a");
    expected.CreateChildT("b", 5LL);
    expected.CreateChildT("c", Property::Ratio(30000, 1001));
    Property& d = expected.SetChild("d");
    d.Add(Property::None("x"));
    d.Add(Property("x", std::string("text")));
    expected.SetChild("e");
    expected.SetChild("f");
    expected.CreateChildT("g", std::numeric_limits<long long>::min());
    EXPECT_EQ(Load(record), expected);
}

TEST(PropertyReader, UnwrappedLeavesTheFirstChildOfAGroup)
{
    Property expected("inner");
    expected.CreateChildT("b", 5LL);
    EXPECT_EQ(LoadUnwrapped(R"({"data":{"inner":{"b":5}}})"), expected);
    EXPECT_EQ(LoadUnwrapped(R"({"data":{"inner":{"b":5},"other":{"c":[1,2]}}})"), expected);
    EXPECT_EQ(LoadUnwrapped(R"({"data":[{"inner":{"b":5}},{"inner":6}]})"), expected);
    EXPECT_EQ(LoadUnwrapped(R"({"data":{"inner":[1,2]}})"), Property("inner", Property::Ratio(1, 2)));
    EXPECT_EQ(LoadUnwrapped(R"({"data":{"inner":null}})"), Property::None("inner"));
}

TEST(PropertyReader, UnwrappedKeepsWhatIsNotAGroupWithChildren)
{
    EXPECT_EQ(LoadUnwrapped(R"({"data":{}})"), Property("data"));
    EXPECT_EQ(LoadUnwrapped(R"({"data":[]})"), Property("data"));
    EXPECT_EQ(LoadUnwrapped(R"({"data":"text"})"), Property("data", std::string("text")));
    EXPECT_EQ(LoadUnwrapped(R"({"data":[3,4]})"), Property("data", Property::Ratio(3, 4)));
    EXPECT_EQ(LoadUnwrapped("null"), Property("before"));
}

TEST(PropertyReader, UnwrappedRefusesWhatTheWholeRecordRefuses)
{
    PropertyReader record;
    Send(R"({"data":{"inner":{"b":5},"other":1.5}})", record);
    Property property("before", 1);
    ExpectThrow<PropertyException>([&] { PropertySerializer::LoadUnwrapped(property, record); });
    EXPECT_EQ(property, Property("before", 1));
}

TEST(PropertyReader, IsCompleteAfterTheLastEventOfOneValue)
{
    PropertyReader record;
    EXPECT_FALSE(record.IsComplete());
    record.StartObject();
    EXPECT_FALSE(record.IsComplete());
    record.Key("a", 1, true);
    record.StartArray();
    record.Bool(true);
    record.StartArray();
    record.EndArray(0);
    record.EndArray(2);
    EXPECT_FALSE(record.IsComplete());
    record.EndObject(1);
    EXPECT_TRUE(record.IsComplete());
    PropertyReader null;
    null.Null();
    EXPECT_TRUE(null.IsComplete());
}

TEST(PropertyReader, BeginsAnewWhenARecordWasTakenOrRefused)
{
    PropertyReader record;
    Send(R"({"a":{"b":true}})", record);
    Property property;
    ExpectThrow<PropertyException>([&] { PropertySerializer::Load(property, record); });
    for (long long i = 0; i < 3; ++i)
    {
        EXPECT_FALSE(record.IsComplete());
        Send(R"({"a":{"b":)" + std::to_string(i) + "}}", record);
        EXPECT_EQ(Load(record)["b"].GetInt64(), i);
    }
    Send("null", record);
    EXPECT_EQ(Load(record), Property("before"));
    Send(R"({"c":"d"})", record);
    EXPECT_EQ(Load(record), Property("c", std::string("d")));
}

TEST(PropertyReader, CopiesTextsThatDoNotStay)
{
    std::string text(10'000, 'x');
    PropertyReader record;
    record.StartObject();
    record.Key("a", 1, true);
    record.StartObject();
    for (int i = 0; i < 100; ++i)
    {
        std::string name = "name " + std::to_string(i);
        record.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()), true);
        name.assign(name.size(), '?');
        record.String(text.data(), static_cast<rapidjson::SizeType>(text.size()), true);
    }
    text.assign(text.size(), '?');
    record.EndObject(100);
    record.EndObject(1);
    const Property property = Load(record);
    EXPECT_EQ(property["name 99"].GetString(), std::string(10'000, 'x'));
    EXPECT_EQ(property[0ul].GetName(), "name 0");
}

TEST(PropertyReader, ReportsTheFaultOfAnObjectOrArrayBeforeThoseInside)
{
    const std::string kind = "expected an integer, a string, a rational, null or a group, found ";
    const std::string wanted = "expected a record (an object with one member), found ";
    EXPECT_EQ(RefusalOf(R"({"a":true,"b":1})"), "record: " + wanted + "an object with 2 members");
    EXPECT_EQ(RefusalOf(R"({"a":[{"b":true},{"c":1,"d":2}]})"), "a[0].b: " + kind + "true");
    EXPECT_EQ(RefusalOf(R"({"a":[{"b":1},{"c":true,"d":2},5]})"),
              "a[1]: " + wanted + "an object with 2 members");
    EXPECT_EQ(RefusalOf(R"({"a":[{"b":true},5]})"), "a: expected two 64-bit integers, found an object");
    EXPECT_EQ(RefusalOf(R"({"a":[5,{"b":true}]})"), "a: expected two 64-bit integers, found an object");
    EXPECT_EQ(RefusalOf(R"({"a":[5,6,7]})"), "a[0]: " + wanted + "an integer");
    EXPECT_EQ(RefusalOf(R"({"a":[{"b":1},[{"c":true}],7]})"), "a[1]: " + wanted + "an array");
    EXPECT_EQ(RefusalOf(R"({"a":{"b":[[1,2]],"c":[{"d":true}]}})"), "a.b[0]: " + wanted + "an array");
    EXPECT_EQ(RefusalOf(R"({"a":{"b":{"c":1.5},"d":[true,false]}})"),
              "a.b.c: " + kind + "a number that is not a 64-bit integer");
    EXPECT_EQ(RefusalOf(R"({"a":{"b":18446744073709551615}})"),
              "a.b: " + kind + "an integer beyond the signed 64-bit range");
    EXPECT_EQ(RefusalOf("[1,2]"), "record: " + wanted + "an array");
    EXPECT_EQ(RefusalOf("7"), "record: " + wanted + "an integer");
    EXPECT_EQ(RefusalOf("{}"), "record: " + wanted + "an object with 0 members");
}

TEST(PropertyReader, TakesARationalAfterAFaultThatItTurnedOutNotToBe)
{
    PropertyReader record;
    Send(R"({"a":{"b":[1,2],"c":{"d":[{"e":[3,4]},{"e":5}]}}})", record);
    const Property property = Load(record);
    EXPECT_EQ(property["b"].GetRatio(), Property::Ratio(1, 2));
    EXPECT_EQ(property["c"]["d"][0ul].GetRatio(), Property::Ratio(3, 4));
    EXPECT_EQ(property["c"]["d"][1ul].GetInt64(), 5);
}

TEST(PropertyReader, ReportsTheOuterArrayThatIsTooDeepBeforeWhatIsInside)
{
    std::string begin = R"({"g":)";
    std::string end = "}";
    for (int i = 0; i < PropertySerializer::kMaxDepth; ++i)
    {
        begin += R"({"g":)";
        end += "}";
    }
    const std::string refusal = RefusalOf(begin + R"([{"x":true}])" + end);
    const std::string wanted = ".g.g: groups are nested deeper than 512";
    EXPECT_EQ(refusal.substr(refusal.size() - wanted.size()), wanted);
    PropertyReader record;
    Send(begin + "[1,2]" + end, record);
    EXPECT_EQ(Load(record).GetName(), "g");
}

TEST(PropertyReader, TakesAMillionOpenBracketsForOneFault)
{
    PropertyReader record;
    record.StartObject();
    record.Key("a", 1, false);
    for (int i = 0; i < 1'000'000; ++i)
    {
        record.StartArray();
    }
    for (int i = 0; i < 1'000'000; ++i)
    {
        record.EndArray(1);
    }
    record.EndObject(1);
    ASSERT_TRUE(record.IsComplete());
    Property property;
    EXPECT_EQ(ExpectThrow<PropertyException>([&] { PropertySerializer::Load(property, record); }).description,
              "a[0]: expected a record (an object with one member), found an array");
}

} // namespace Zelnor::Core
