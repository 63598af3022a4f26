// Records that are read from a document share memory; nobody may see that.

#include "Core/Private/RecordParser.h"

#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Core
{

namespace
{

/// A record with groups of that many children, one of them nested deeply.
Property MakeRecord(int children)
{
    Property record("record");
    for (const char* const name : {"first", "second", "third"})
    {
        Property& group = record.SetChild(name);
        for (int i = 0; i < children; ++i)
        {
            group.CreateChildT("child " + std::to_string(i),
                               "a text of ordinary length " + std::to_string(i));
        }
    }
    Property* deepest = &record;
    for (int depth = 0; depth < 10; ++depth)
    {
        deepest = &deepest->SetChild("nested");
        deepest->SetChildT("depth", depth);
    }
    return record;
}

std::string JsonOf(const Property& record)
{
    rapidjson::Document json;
    PropertySerializer::Save(record, json, json.GetAllocator());
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    json.Accept(writer);
    return buffer.GetString();
}

/// Reads that many equal records with one reader, as the nodes of a graph are read.
std::vector<Property> Read(const std::string& json, int count)
{
    std::vector<Property> records;
    PropertyReader reader;
    for (int i = 0; i < count; ++i)
    {
        const auto input = MemoryDataInput::Create(json);
        JsonCursor cursor(*input);
        EXPECT_TRUE(ParseRecord(cursor, reader));
        PropertySerializer::Load(records.emplace_back(), reader);
    }
    return records;
}

} // namespace

TEST(RecordParser, ReadsTheValueThatComesNext)
{
    const auto input = MemoryDataInput::Create(R"( {"a":1},{"b":[2,3]} x)");
    JsonCursor cursor(*input);
    PropertyReader reader;
    Property record;
    ASSERT_TRUE(ParseRecord(cursor, reader));
    PropertySerializer::Load(record, reader);
    EXPECT_EQ(record, Property("a", 1));
    EXPECT_EQ(*cursor.next++, ',');
    ASSERT_TRUE(ParseRecord(cursor, reader));
    PropertySerializer::Load(record, reader);
    EXPECT_EQ(record, Property("b", Property::Ratio(2, 3)));
    EXPECT_FALSE(ParseRecord(cursor, reader));
}

TEST(RecordParser, GivesEqualRecordsHoweverLargeTheyAre)
{
    for (const int children : {0, 1, 4, 40, 64, 65, 400})
    {
        const Property expected = MakeRecord(children);
        for (const Property& record : Read(JsonOf(expected), 20))
        {
            EXPECT_EQ(record, expected);
        }
    }
}

TEST(RecordParser, AGroupOutlivesTheRecordAndAllOthers)
{
    const Property expected = MakeRecord(5);
    std::vector<Property> kept;
    {
        std::vector<Property> records = Read(JsonOf(expected), 30);
        for (Property& record : records)
        {
            kept.push_back(std::move(record["second"]));
        }
        records.erase(records.begin(), records.begin() + 15);
    }
    kept.erase(kept.begin() + 1, kept.end());
    EXPECT_EQ(kept.front(), expected["second"]);
    kept.front().SetChildT("more", 1LL);
    EXPECT_EQ(kept.front()["child 4"], expected["second"]["child 4"]);
}

TEST(RecordParser, RecordsMayBeChangedAndCopied)
{
    const Property expected = MakeRecord(5);
    std::vector<Property> records = Read(JsonOf(expected), 3);
    const Property copy = records[1];
    for (Property& record : records)
    {
        record["first"].RemoveChild("child 2");
        record["second"] = 5LL;
        record["third"].SetChild("child 1").SetChildT("text", std::string(100, 'x'));
        record.Add(record["nested"]);
    }
    records.erase(records.begin());
    EXPECT_EQ(copy, expected);
    EXPECT_EQ(records[0], records[1]);
    EXPECT_EQ(records[0][4ul], expected["nested"]);
}

TEST(RecordParser, WhatIsRefusedLeavesNothingBehind)
{
    PropertyReader reader;
    for (const char* const json :
         {R"({"a":{"b":{"c":1,"text":"a text that owns its memory"},"d":true}})",
          R"({"a":[{"b":{"c":1}},{"d":{"e":1}},5]})", R"({"a":{"b":{"c":1}},"d":1})"})
    {
        const auto input = MemoryDataInput::Create(json);
        JsonCursor cursor(*input);
        ASSERT_TRUE(ParseRecord(cursor, reader));
        Property record("before");
        EXPECT_THROW(PropertySerializer::Load(record, reader), PropertyException);
        EXPECT_EQ(record, Property("before"));
    }
    EXPECT_EQ(Read(R"({"a":{"b":1}})", 1).front()["b"].GetInt64(), 1);
}

} // namespace Zelnor::Core
