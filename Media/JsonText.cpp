#include "Media/JsonText.h"

#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <rapidjson/error/en.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

/// Reads from text that somebody else keeps.
class TextInput final : public Counted<Core::IDataInput>
{
public:
    explicit TextInput(std::string_view text) : m_left(text) {}

    std::size_t Read(void* buffer, std::size_t size) override
    {
        const std::size_t count = std::min(size, m_left.size());
        std::memcpy(buffer, m_left.data(), count);
        m_left.remove_prefix(count);
        return count;
    }

private:
    std::string_view m_left;
};

std::string PlaceIn(std::string_view text, std::size_t offset)
{
    const std::string_view before = text.substr(0, offset);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    // Without a line break before the place, npos + 1 is 0.
    const std::size_t column = before.size() - (before.rfind('\n') + 1);
    return "line " + std::to_string(lines + 1) + ", column " + std::to_string(column + 1);
}

} // namespace

std::string ReadAll(Core::IDataInput& input)
{
    constexpr std::size_t kBlock = 65536;
    std::array<char, kBlock> block;
    std::string text;
    while (const std::size_t count = Core::ReadUpTo(input, block.data(), block.size()))
    {
        text.append(block.data(), count);
    }
    return text;
}

boost::intrusive_ptr<Core::IDataInput> MakeTextInput(const std::string& text) { return new TextInput(text); }

ParsedJson ParseJson(const std::string& text)
{
    const boost::intrusive_ptr<Core::IDataInput> input = MakeTextInput(text);
    Core::JsonZelnorStreamIn stream(*input);
    ParsedJson parsed;
    parsed.document.ParseStream<rapidjson::kParseIterativeFlag>(stream);
    if (parsed.document.HasParseError())
    {
        parsed.fault = PlaceIn(text, parsed.document.GetErrorOffset()) + ": " +
                       rapidjson::GetParseError_En(parsed.document.GetParseError());
    }
    else if (!stream.AtEnd())
    {
        parsed.fault = PlaceIn(text, stream.Tell()) + ": A NUL byte follows the document.";
    }
    return parsed;
}

} // namespace Zelnor::Media
