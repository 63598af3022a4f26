#pragma once

#include <string>
#include <string_view>

namespace Zelnor::Testing
{

/// An indented JSON document as the library writes it: without the white space between its tokens. Strings
/// keep every byte, so that golden documents may be compared exactly and still be read.
inline std::string CompactJson(std::string_view indented)
{
    std::string compact;
    bool isInString = false;
    bool isEscaped = false;
    for (const char c : indented)
    {
        const bool isBlank = c == ' ' || c == '\t' || c == '\n' || c == '\r';
        if (isInString || !isBlank)
        {
            compact += c;
        }
        if (c == '"' && !isEscaped)
        {
            isInString = !isInString;
        }
        isEscaped = isInString && c == '\\' && !isEscaped;
    }
    return compact;
}

} // namespace Zelnor::Testing
