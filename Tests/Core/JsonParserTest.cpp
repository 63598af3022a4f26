// Every document is read by RapidJSON, too: both must send the same.

#include "Core/Private/JsonParser.h"

#include "Core/Interfaces/DataStream.h"
#include "Tests/Support/Campaign.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>
#include <rapidjson/reader.h>

#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace Zelnor::Core
{

namespace
{

using Testing::CampaignRuns;
using Testing::CampaignSeed;
using Testing::TestInput;
using namespace std::string_literals;

/// Writes down what it is sent.
struct EventLog
{
    void Null() { text += "null "; }
    void Bool(bool value) { text += value ? "true " : "false "; }
    void Int64(std::int64_t value) { text += std::to_string(value) + " "; }
    void Uint64(std::uint64_t value) { text += "unsigned " + std::to_string(value) + " "; }
    void Double(double value) { text += "double " + std::to_string(value) + " "; }
    void String(std::string_view value, bool) { text += "'" + std::string(value) + "' "; }
    void Key(std::string_view value, bool) { text += std::string(value) + ": "; }
    void StartObject() { text += "{ "; }
    void EndObject(std::size_t members) { text += std::to_string(members) + "} "; }
    void StartArray() { text += "[ "; }
    void EndArray(std::size_t elements) { text += std::to_string(elements) + "] "; }
    static bool ReadsValue() { return false; }
    static bool ReadValue(JsonCursor&) { return false; }

    std::string text;
};

/// The same as a handler of RapidJSON.
struct RapidLog
{
    bool Null() { return log.Null(), true; }
    bool Bool(bool value) { return log.Bool(value), true; }
    bool Int(int value) { return log.Int64(value), true; }
    bool Uint(unsigned value) { return log.Int64(value), true; }
    bool Int64(std::int64_t value) { return log.Int64(value), true; }
    bool Uint64(std::uint64_t value)
    {
        value <= INT64_MAX ? log.Int64(static_cast<std::int64_t>(value)) : log.Uint64(value);
        return true;
    }
    bool Double(double value) { return log.Double(value), true; }
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
    bool String(const char* text, rapidjson::SizeType size, bool)
    {
        return log.String({text, size}, false), true;
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) { return log.Key({text, size}, false), true; }
    bool StartObject() { return log.StartObject(), true; }
    bool EndObject(rapidjson::SizeType members) { return log.EndObject(members), true; }
    bool StartArray() { return log.StartArray(), true; }
    bool EndArray(rapidjson::SizeType elements) { return log.EndArray(elements), true; }

    EventLog log;
};

/// What a document sends; nothing if it is not JSON.
using Events = std::optional<std::string>;

Events ByRapidJson(const std::string& document)
{
    RapidLog handler;
    rapidjson::Reader reader;
    rapidjson::StringStream stream(document.c_str());
    reader.Parse<rapidjson::kParseIterativeFlag>(stream, handler);
    const bool isGood = !reader.HasParseError() && stream.Tell() == document.size();
    return isGood ? Events(handler.log.text) : std::nullopt;
}

Events By(JsonCursor& cursor)
{
    EventLog log;
    const bool isGood = JsonParser(cursor, log).Parse() && cursor.SkipBlanks() == '\0' && cursor.IsAtEnd();
    return isGood ? Events(log.text) : std::nullopt;
}

Events ByParser(const std::string& document)
{
    const auto input = MemoryDataInput::Create(document);
    JsonCursor cursor(*input);
    return By(cursor);
}

/// Reads so many bytes at a time, and no more ahead.
Events InPieces(const std::string& document, std::size_t piece)
{
    const auto input = MemoryDataInput::Create(document);
    JsonCursor cursor(*input, piece, piece);
    return By(cursor);
}

void ExpectTheSame(const std::string& document)
{
    const Events expected = ByRapidJson(document);
    EXPECT_EQ(ByParser(document), expected) << document;
    for (const std::size_t piece : {1u, 2u, 3u, 7u, 16u})
    {
        EXPECT_EQ(InPieces(document, piece), expected) << document << " in pieces of " << piece;
    }
}

void ExpectRefused(const std::string& document)
{
    EXPECT_EQ(ByParser(document), std::nullopt) << document;
    ExpectTheSame(document);
}

/// One of the pieces of which documents consist, right ones and wrong ones.
std::string RandomPiece(std::mt19937_64& random)
{
    static const std::vector<std::string> pieces = {"{",
                                                    "}",
                                                    "[",
                                                    "]",
                                                    ",",
                                                    ":",
                                                    "\"a\"",
                                                    "\"a text that is longer than sixteen bytes\"",
                                                    "\"\"",
                                                    "0",
                                                    "-0",
                                                    "-1",
                                                    "12",
                                                    "012",
                                                    "1.5",
                                                    "1e5",
                                                    "1E+400",
                                                    "-",
                                                    "true",
                                                    "false",
                                                    "null",
                                                    "tru",
                                                    " ",
                                                    "\t\r\n ",
                                                    "\"",
                                                    "\\",
                                                    "\\n",
                                                    "\\u0041",
                                                    "\\uD83D\\uDE00",
                                                    "\\uD800",
                                                    "\\x",
                                                    "\x01",
                                                    "\xC3\x9F",
                                                    "\xFF",
                                                    "x",
                                                    "9223372036854775807",
                                                    "9223372036854775808",
                                                    "18446744073709551616",
                                                    "-9223372036854775808",
                                                    "-9223372036854775809",
                                                    "123456789012345678",
                                                    "1234567890123456789",
                                                    "\"\\u0000\"",
                                                    std::string(1, '\0'),
                                                    "\"a\":",
                                                    "\"a\":{\"b\":[",
                                                    "}]}",
                                                    "[1,2]",
                                                    "{\"a\":1}"};
    return pieces[random() % pieces.size()];
}

} // namespace

TEST(JsonParser, SendsWhatRapidJsonSends)
{
    ExpectTheSame(R"({"a":1,"b":[true,false,null,-5,"text",{"c":{}},[]],"":""})");
    ExpectTheSame("  [ 1 , 2 ]\n\t");
    EXPECT_EQ(ByParser(R"({"a":[1,"b"]})"), "{ a: [ 1 'b' 2] 1} ");
}

TEST(JsonParser, TakesAnyValueAsADocument)
{
    for (const char* const document :
         {"1", "-1", "\"text\"", "true", "false", "null", " 0 ", "1.25", "\"\\n\""})
    {
        EXPECT_NE(ByParser(document), std::nullopt) << document;
        ExpectTheSame(document);
    }
}

TEST(JsonParser, ReadsEscapesInNamesAndTexts)
{
    ExpectTheSame(R"({"\"\\\/\b\f\n\r\t":"\u0041\u00DF\uD83D\uDE00 and plain","plain":"\u0000"})");
    EXPECT_EQ(ByParser(R"(["\u0041\n"])"), "[ 'A\n' 1] ");
}

TEST(JsonParser, ReadsNumbersOfEveryKind)
{
    for (const char* const number : {"0",
                                     "-0",
                                     "1",
                                     "-1",
                                     "2147483647",
                                     "-2147483648",
                                     "4294967296",
                                     "999999999999999999",
                                     "1000000000000000000",
                                     "9223372036854775807",
                                     "-9223372036854775808",
                                     "9223372036854775808",
                                     "18446744073709551615",
                                     "18446744073709551616",
                                     "-9223372036854775809",
                                     "1.5",
                                     "-0.0",
                                     "1e3",
                                     "1E-3",
                                     "1e+3",
                                     "1.7976931348623157e308",
                                     "1e309",
                                     "0.1e1"})
    {
        ExpectTheSame(number);
        ExpectTheSame("["s + number + ",1]");
        ExpectTheSame("{\"a\":"s + number + "}");
    }
}

TEST(JsonParser, RefusesWhatIsNoNumber)
{
    for (const char* const number :
         {"-", "+1", "01", "-01", "1.", ".5", "1e", "1e+", "0x1", "1-", "--1", "1a", "NaN", "Infinity"})
    {
        ExpectRefused(number);
        ExpectRefused("["s + number + "]");
    }
    ExpectRefused(std::string(401, '9'));
    ExpectRefused("[" + std::string(5000, '9') + "]");
}

TEST(JsonParser, RefusesWhatIsNoDocument)
{
    for (const char* const document : {"",
                                       " ",
                                       "{",
                                       "}",
                                       "[",
                                       "]",
                                       "[1",
                                       "[1,",
                                       "[1,]",
                                       "[,1]",
                                       "[1 2]",
                                       "{\"a\"}",
                                       "{\"a\":}",
                                       "{\"a\":1,}",
                                       "{,}",
                                       "{a:1}",
                                       "{1:2}",
                                       "{\"a\" 1}",
                                       "{\"a\":1 \"b\":2}",
                                       "{\"a\":1]",
                                       "[1}",
                                       "1 2",
                                       "[]]",
                                       "tru",
                                       "nul",
                                       "fals",
                                       "truex",
                                       "x",
                                       "\"",
                                       "\"a",
                                       "\"\\\"",
                                       "\"\\",
                                       "\"\\u12\"",
                                       "\"\\uD800\"",
                                       "\"\\x\"",
                                       "\"\n\"",
                                       "\xEF\xBB\xBF{}",
                                       "//\n1",
                                       "{\"a\":1}}"})
    {
        ExpectRefused(document);
    }
}

TEST(JsonParser, RefusesBytesOfZero)
{
    for (const std::string& document : {"\0"s, "[1]\0"s, "[1\0]"s, "[\"a\0b\"]"s, "\0[1]"s, "[tru\0]"s})
    {
        EXPECT_EQ(ByParser(document), std::nullopt);
        EXPECT_EQ(InPieces(document, 1), std::nullopt);
    }
}

TEST(JsonParser, FindsTheEndOfATextAtEveryPlace)
{
    for (std::size_t size = 0; size < 70; ++size)
    {
        const std::string text(size, 'x');
        ExpectTheSame("[\"" + text + "\",1]");
        ExpectTheSame("{\"" + text + "\":\"" + text + "\\\"\"}");
        ExpectRefused("[\"" + text + "\x1F\"]");
        ExpectRefused("[\"" + text);
    }
}

TEST(JsonParser, KeepsTheBytesThatAreNoControlCharacters)
{
    std::string all;
    for (int byte = ' '; byte < 256; ++byte)
    {
        all += byte == '"' || byte == '\\' ? "" : std::string(1, static_cast<char>(byte));
    }
    EXPECT_EQ(ByParser("\"" + all + "\""), "'" + all + "' ");
    ExpectTheSame("\"" + all + "\"");
}

TEST(JsonParser, SaysWhetherATextHasToBeCopied)
{
    struct Copies : EventLog
    {
        void String(std::string_view, bool copy) { text += copy ? "copied " : "kept "; }
    };
    TestInput first(R"(["a","\n"])"), second(R"(["a","\n"])");
    Copies whole, pieces;
    JsonCursor all(first);
    JsonParser(all, whole).Parse();
    EXPECT_EQ(whole.text, "[ kept kept 2] ");
    JsonCursor some(second, 4, 4);
    JsonParser(some, pieces).Parse();
    EXPECT_EQ(pieces.text, "[ copied copied 2] ");
}

TEST(JsonParser, DoesNotRecurse)
{
    constexpr std::size_t kDeep = 1'000'000;
    const std::string document = std::string(kDeep, '[') + std::string(kDeep, ']');
    EXPECT_NE(ByParser(document), std::nullopt);
    EXPECT_EQ(ByParser(document + "]"), std::nullopt);
}

TEST(JsonParser, ReadsAValueThatIsLongerThanWhatIsReadAtATime)
{
    ExpectTheSame("[\"" + std::string(100'000, 'x') + "\\n" + std::string(100'000, 'y') + "\",0." +
                  std::string(1000, '1') + "]");
}

TEST(JsonParser, AFailureOfTheInputIsThrownOnlyWhereTheDocumentGoesOn)
{
    // The input gives four bytes and fails then.
    for (const char* const document :
         {"[1x ", "[.5 ", "[tx ", "[1.x", "[1ex", "\"\\x ", "\"\x01  ", "\"\\ux", "[1]]", "[nx", "{1  "})
    {
        TestInput input(document, 4, 2);
        JsonCursor cursor(input);
        EXPECT_EQ(By(cursor), std::nullopt) << document;
    }
    for (const char* const document :
         {"[1  ", "[tru", "[1.5", "[1e+", "\"\\u1", "\"abc", "\"ab\\", "[1, ", "{\"a\"", "    "})
    {
        TestInput input(document, 4, 2);
        JsonCursor cursor(input);
        EXPECT_THROW(By(cursor), std::exception) << document;
    }
}

TEST(JsonParser, SendsWhatRapidJsonSendsForAnyDocument)
{
    std::mt19937_64 random(CampaignSeed(1));
    for (std::size_t run = 0; run < CampaignRuns(20'000); ++run)
    {
        std::string document;
        for (std::size_t pieces = random() % 12; pieces != 0; --pieces)
        {
            document += RandomPiece(random);
        }
        const Events expected = ByRapidJson(document);
        ASSERT_EQ(ByParser(document), expected) << document;
        ASSERT_EQ(InPieces(document, 1 + random() % 20), expected) << document;
    }
}

} // namespace Zelnor::Core
