#include "Media/Validating/JsonIndex.h"

#include "Media/JsonText.h"

#include "Core/Interfaces/JsonMemory.h"
#include "Core/Interfaces/JsonStream.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace Zelnor::Media
{

namespace
{

using JsonReader = rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, Core::JsonMemory>;

/// Behind the string that begins there.
std::size_t EndOfString(std::string_view text, std::size_t begin)
{
    std::size_t next = begin + 1;
    while (text[next] != '"')
    {
        next += text[next] == '\\' ? 2U : 1U;
    }
    return next + 1;
}

std::uint32_t Narrow(std::size_t offset) { return static_cast<std::uint32_t>(offset); }

} // namespace

/// Follows the events of a parser through the text: between two of them stand white space and separators
/// only. Where the parser is does not matter, since it reads ahead.
class JsonIndexer : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, JsonIndexer>
{
public:
    JsonIndexer(JsonIndex& index, std::size_t levels) : m_index(index), m_levels(levels) {}

    bool Null() { return Word(JsonIndex::Kind::Null); }
    bool Bool(bool) { return Word(JsonIndex::Kind::Bool); }
    bool Int(int) { return Word(JsonIndex::Kind::Number); }
    bool Uint(unsigned) { return Word(JsonIndex::Kind::Number); }
    bool Int64(std::int64_t) { return Word(JsonIndex::Kind::Number); }
    bool Uint64(std::uint64_t) { return Word(JsonIndex::Kind::Number); }
    bool Double(double) { return Word(JsonIndex::Kind::Number); }
    bool String(const char*, rapidjson::SizeType, bool)
    {
        const std::size_t begin = Begin();
        m_next = EndOfString(Text(), begin);
        return Add(JsonIndex::Kind::String, begin, m_next);
    }
    bool Key(const char*, rapidjson::SizeType, bool)
    {
        m_key = Begin();
        m_next = EndOfString(Text(), m_key);
        return true;
    }
    bool StartObject() { return Open(JsonIndex::Kind::Object); }
    bool StartArray() { return Open(JsonIndex::Kind::Array); }
    bool EndObject(rapidjson::SizeType) { return Close(); }
    bool EndArray(rapidjson::SizeType) { return Close(); }

private:
    std::string_view Text() const { return m_index.m_text; }
    std::size_t Begin() const { return Text().find_first_not_of(" \t\r\n,:", m_next); }

    bool Word(JsonIndex::Kind kind)
    {
        const std::size_t begin = Begin();
        m_next = std::min(Text().find_first_of(" \t\r\n,]}", begin), Text().size());
        return Add(kind, begin, m_next);
    }

    bool Open(JsonIndex::Kind kind)
    {
        const std::size_t begin = Begin();
        m_next = begin + 1;
        if (m_depth <= m_levels)
        {
            const auto id = static_cast<JsonIndex::Id>(m_index.m_entries.size());
            Add(kind, begin, m_next);
            m_open = id;
        }
        ++m_depth;
        return true;
    }

    bool Close()
    {
        m_next = Begin() + 1;
        if (--m_depth <= m_levels)
        {
            JsonIndex::Entry& entry = m_index.m_entries[m_open];
            entry.end = Narrow(m_next);
            entry.after = static_cast<JsonIndex::Id>(m_index.m_entries.size());
            m_open = entry.parent;
        }
        return true;
    }

    bool Add(JsonIndex::Kind kind, std::size_t begin, std::size_t end)
    {
        if (m_depth <= m_levels)
        {
            const auto behind = static_cast<JsonIndex::Id>(m_index.m_entries.size() + 1);
            const bool isMember =
                m_open != JsonIndex::kNone && m_index.m_entries[m_open].kind == JsonIndex::Kind::Object;
            m_index.m_entries.push_back({Narrow(begin), Narrow(end),
                                         isMember ? Narrow(m_key) : JsonIndex::kNone, behind, m_open, kind});
        }
        return true;
    }

    JsonIndex& m_index;
    std::size_t m_levels;
    std::size_t m_next = 0;
    std::size_t m_key = 0;
    std::size_t m_depth = 0;
    JsonIndex::Id m_open = JsonIndex::kNone;
};

JsonIndex::JsonIndex(std::string_view text, std::size_t levels) : m_text(text)
{
    JsonIndexer indexer(*this, levels);
    rapidjson::MemoryStream stream(text.data(), text.size());
    JsonReader().Parse<rapidjson::kParseIterativeFlag>(stream, indexer);
}

std::size_t JsonIndex::KeyOffsetOf(Id value) const
{
    const Entry& entry = m_entries[value];
    return entry.key == kNone ? entry.begin : entry.key;
}

std::string_view JsonIndex::KeyTextOf(Id value) const
{
    const std::uint32_t key = m_entries[value].key;
    return key == kNone ? std::string_view() : Text(key, EndOfString(m_text, key));
}

std::string JsonIndex::KeyOf(Id value) const
{
    const std::string_view key = KeyTextOf(value);
    return key.empty() ? "" : DecodeJsonString(key);
}

JsonIndex::ChildRange JsonIndex::Children(Id value) const { return {*this, value}; }

std::optional<JsonIndex::Id> JsonIndex::ChildAt(Id value, std::size_t position) const
{
    constexpr std::size_t kFew = 64;
    if (position >= kFew)
    {
        std::vector<Id>& children = m_positions[value];
        if (children.empty())
        {
            for (const Id child : Children(value))
            {
                children.push_back(child);
            }
        }
        return position < children.size() ? std::optional(children[position]) : std::nullopt;
    }
    std::size_t before = 0;
    for (const Id child : Children(value))
    {
        if (before++ == position)
        {
            return child;
        }
    }
    return std::nullopt;
}

std::optional<JsonIndex::Id> JsonIndex::Member(Id object, std::string_view key) const
{
    for (Id child = object + 1; child < m_entries[object].after; child = m_entries[child].after)
    {
        if (KeyOf(child) == key)
        {
            return child;
        }
    }
    return std::nullopt;
}

std::string JsonIndex::PointerTo(Id value) const
{
    std::string pointer;
    for (Id at = value; m_entries[at].parent != kNone; at = m_entries[at].parent)
    {
        const Id parent = m_entries[at].parent;
        std::string step;
        if (m_entries[parent].kind == Kind::Object)
        {
            for (const char c : KeyOf(at))
            {
                step += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
            }
        }
        else
        {
            std::size_t index = 0;
            for (Id sibling = parent + 1; sibling != at; sibling = m_entries[sibling].after)
            {
                ++index;
            }
            step = std::to_string(index);
        }
        pointer.insert(0, "/" + step);
    }
    return pointer;
}

std::optional<JsonFault> FindJsonFault(const std::string& text)
{
    if (text.size() > kLongestJson)
    {
        return JsonFault{0, "The document is longer than 1 GiB."};
    }
    const boost::intrusive_ptr<Core::IDataInput> input = MakeTextInput(text);
    Core::JsonZelnorStreamIn stream(*input);
    rapidjson::BaseReaderHandler<> ignored;
    JsonReader reader;
    reader.Parse<rapidjson::kParseIterativeFlag>(stream, ignored);
    if (reader.HasParseError())
    {
        return JsonFault{reader.GetErrorOffset(), rapidjson::GetParseError_En(reader.GetParseErrorCode())};
    }
    if (!stream.AtEnd())
    {
        return JsonFault{stream.Tell(), "A NUL byte follows the document."};
    }
    return std::nullopt;
}

std::string DecodeJsonString(std::string_view quoted)
{
    const std::string_view inside = quoted.substr(1, quoted.size() - 2);
    if (inside.find('\\') == std::string_view::npos)
    {
        return std::string(inside);
    }
    Core::JsonDocument document;
    document.Parse(quoted.data(), quoted.size());
    return {document.GetString(), document.GetStringLength()};
}

} // namespace Zelnor::Media
