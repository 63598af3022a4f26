#include "Core/Interfaces/JsonStream.h"

#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace Zelnor::Core
{

namespace
{

using Testing::ExpectThrow;

/// What the adapters hold at a time.
constexpr std::size_t kBuffer = 16384;

class Counted : public virtual IRefCountable
{
public:
    int AddRef() const override { return 1; }
    int GetRefCount() const override { return 1; }
    int Release() const override { return 1; }
};

class Failure : public CoreException
{};

/// Hands out at most `block` bytes a call, and throws at the call of that number, counted from 0.
class Input final : public IDataInput, public Counted
{
public:
    explicit Input(std::string bytes, std::size_t block = kBuffer, int failing = -1)
        : m_bytes(std::move(bytes)), m_block(block), m_failing(failing)
    {}
    std::size_t Read(void* buffer, std::size_t size) override
    {
        if (calls++ == m_failing)
        {
            throw Failure();
        }
        const std::size_t count = std::min({size, m_block, m_bytes.size() - m_position});
        std::memcpy(buffer, m_bytes.data() + m_position, count);
        m_position += count;
        return count;
    }

    int calls = 0;

private:
    std::string m_bytes;
    std::size_t m_block;
    int m_failing;
    std::size_t m_position = 0;
};

class Output final : public IDataOutput, public Counted
{
public:
    explicit Output(int failing = -1) : m_failing(failing) {}
    void Write(const void* data, std::size_t size) override
    {
        if (calls++ == m_failing)
        {
            throw Failure();
        }
        largest = std::max(largest, size);
        bytes.append(static_cast<const char*>(data), size);
    }

    int calls = 0;
    std::size_t largest = 0;
    std::string bytes;

private:
    int m_failing;
};

std::string TakeAll(JsonZelnorStreamIn& stream)
{
    std::string all;
    while (!stream.AtEnd())
    {
        EXPECT_EQ(stream.Tell(), all.size());
        const char next = stream.Peek();
        EXPECT_EQ(stream.Take(), next);
        all += next;
    }
    return all;
}

std::string Bytes(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
    {
        bytes[i] = static_cast<char>(i * 7 % 251);
    }
    return bytes;
}

} // namespace

TEST(JsonZelnorStreamIn, GivesEveryByteAroundTheBufferBorders)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, kBuffer - 1, kBuffer, kBuffer + 1,
                                   2 * kBuffer - 1, 2 * kBuffer, 2 * kBuffer + 1})
    {
        Input input(Bytes(size));
        JsonZelnorStreamIn stream(input);
        EXPECT_EQ(TakeAll(stream), Bytes(size)) << size;
        EXPECT_EQ(stream.Tell(), size);
    }
}

TEST(JsonZelnorStreamIn, TakesShortReads)
{
    for (const std::size_t block : {1u, 2u, 3u, 1000u})
    {
        Input input(Bytes(5000), block);
        JsonZelnorStreamIn stream(input);
        EXPECT_EQ(TakeAll(stream), Bytes(5000));
    }
}

TEST(JsonZelnorStreamIn, AsksTheInputOnceABlock)
{
    Input input(Bytes(10 * kBuffer));
    JsonZelnorStreamIn stream(input);
    TakeAll(stream);
    EXPECT_EQ(input.calls, 11);
}

TEST(JsonZelnorStreamIn, GivesNulAtTheEndWithoutReadingOn)
{
    Input input("a");
    JsonZelnorStreamIn stream(input);
    EXPECT_EQ(stream.Take(), 'a');
    const int calls = input.calls;
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(stream.Peek(), '\0');
        EXPECT_EQ(stream.Take(), '\0');
        EXPECT_TRUE(stream.AtEnd());
        EXPECT_EQ(stream.Tell(), 1u);
    }
    EXPECT_EQ(input.calls, calls);
}

TEST(JsonZelnorStreamIn, RefusesACountBeyondItsBuffer)
{
    for (const std::size_t beyond : {std::size_t{1}, std::size_t{2}, kBuffer, ~std::size_t{0} - kBuffer})
    {
        for (const std::size_t lieAt : {1u, 2u, 3u})
        {
            const auto thrown = ExpectThrow<CoreException>([=] {
                Testing::LyingInput input('x', beyond, lieAt);
                JsonZelnorStreamIn stream(input);
                while (stream.Take() == 'x')
                {}
            });
            EXPECT_EQ(thrown.description, "The input claims to have read " +
                                              std::to_string(kBuffer + beyond) +
                                              " bytes, expected at most 16384");
            EXPECT_EQ(thrown.file, "Core/Interfaces/DataStream");
        }
    }
}

TEST(JsonZelnorStreamIn, TellsANulFromTheEnd)
{
    Input input(std::string("{}\0garbage", 10));
    JsonZelnorStreamIn stream(input);
    rapidjson::Document document;
    document.ParseStream(stream);
    EXPECT_FALSE(document.HasParseError()) << "RapidJSON takes the NUL for the end";
    EXPECT_FALSE(stream.AtEnd());

    Input whole("{} \n");
    JsonZelnorStreamIn wholeStream(whole);
    document.ParseStream(wholeStream);
    EXPECT_FALSE(document.HasParseError());
    EXPECT_TRUE(wholeStream.AtEnd());
}

TEST(JsonZelnorStreamIn, ParsesDocumentsAroundTheBufferBorders)
{
    for (std::size_t size = kBuffer - 20; size < kBuffer + 20; ++size)
    {
        const std::string text(size, 'x');
        Input input("[\"" + text + "\",12345678901]");
        JsonZelnorStreamIn stream(input);
        rapidjson::Document document;
        document.ParseStream(stream);
        ASSERT_FALSE(document.HasParseError());
        EXPECT_EQ(document[0].GetString(), text);
        EXPECT_EQ(document[1].GetInt64(), 12345678901);
    }
}

TEST(JsonZelnorStreamIn, PassesEveryFailureOfTheInputOn)
{
    const std::string text = "{\"a\":[1,2,3],\"b\":\"text\"}";
    const int calls = [&] {
        Input input(text, 3);
        JsonZelnorStreamIn stream(input);
        rapidjson::Document document;
        document.ParseStream(stream);
        EXPECT_FALSE(document.HasParseError());
        return input.calls;
    }();
    ASSERT_GT(calls, 5);
    for (int failing = 0; failing < calls; ++failing)
    {
        Input input(text, 3, failing);
        rapidjson::Document document;
        ExpectThrow<Failure>([&] {
            JsonZelnorStreamIn stream(input);
            document.ParseStream(stream);
        });
        EXPECT_EQ(input.calls, failing + 1);
    }
}

TEST(JsonZelnorStreamIn, DoesNotWrite)
{
    Input input("");
    JsonZelnorStreamIn stream(input);
    const auto expect = [](auto action) {
        EXPECT_EQ(ExpectThrow<CoreException>(action).description,
                  "This JSON stream does not support writing");
    };
    expect([&] { stream.PutBegin(); });
    expect([&] { stream.Put('x'); });
    expect([&] { stream.Flush(); });
    expect([&] { stream.PutEnd(nullptr); });
}

TEST(JsonZelnorStreamOut, WritesEveryByteAroundTheBufferBorders)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, kBuffer - 1, kBuffer, kBuffer + 1,
                                   2 * kBuffer - 1, 2 * kBuffer, 2 * kBuffer + 1})
    {
        Output output;
        JsonZelnorStreamOut stream(output);
        for (const char c : Bytes(size))
        {
            stream.Put(c);
        }
        stream.Flush();
        EXPECT_EQ(output.bytes, Bytes(size)) << size;
        EXPECT_EQ(output.calls, static_cast<int>((size + kBuffer - 1) / kBuffer));
        EXPECT_LE(output.largest, kBuffer);
        stream.Flush();
        EXPECT_EQ(output.bytes.size(), size) << "what is flushed is not written again";
    }
}

TEST(JsonZelnorStreamOut, WritesManyBytesAsItWritesEach)
{
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, kBuffer - 1, kBuffer, kBuffer + 1, 3 * kBuffer + 5})
    {
        Output output;
        JsonZelnorStreamOut stream(output);
        const std::string bytes = Bytes(size);
        stream.Put('<');
        stream.Put(bytes.data(), bytes.size());
        stream.Put('>');
        stream.Flush();
        EXPECT_EQ(output.bytes, '<' + bytes + '>') << size;
        EXPECT_LE(output.largest, kBuffer);
    }
}

TEST(JsonZelnorStreamOut, GetsTheWholeDocumentOfAWriter)
{
    Output output;
    JsonZelnorStreamOut stream(output);
    rapidjson::Writer<JsonZelnorStreamOut> writer(stream);
    writer.StartArray();
    writer.String(std::string(2 * kBuffer, 'x').c_str());
    writer.EndArray();
    EXPECT_EQ(output.bytes, "[\"" + std::string(2 * kBuffer, 'x') + "\"]");
}

TEST(JsonZelnorStreamOut, PassesFailuresOnAndKeepsWhatWasNotWritten)
{
    Output output(0);
    JsonZelnorStreamOut stream(output);
    for (std::size_t i = 0; i < kBuffer; ++i)
    {
        stream.Put('x');
    }
    ExpectThrow<Failure>([&] { stream.Put('y'); });
    EXPECT_EQ(output.bytes, "");
    stream.Flush();
    EXPECT_EQ(output.bytes, std::string(kBuffer, 'x'));
}

TEST(JsonZelnorStreamOut, DoesNotRead)
{
    Output output;
    JsonZelnorStreamOut stream(output);
    const auto expect = [](auto action) {
        EXPECT_EQ(ExpectThrow<CoreException>(action).description,
                  "This JSON stream does not support reading");
    };
    expect([&] { stream.Peek(); });
    expect([&] { stream.Take(); });
    expect([&] { stream.Tell(); });
    expect([&] { stream.PutBegin(); });
    expect([&] { stream.PutEnd(nullptr); });
}

} // namespace Zelnor::Core
