#pragma once

// Private to the library, not installed: how a place in the JSON form of a record is told.

#include "Core/Interfaces/Utf8.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Zelnor::Core
{

/// \internal The reason against a record that is nested too deep, in both directions.
inline constexpr const char* kTooDeep = "groups are nested deeper than 512";

/// The text of a path through a document: "data.inputs[2].bitrate".
class RecordPath
{
public:
    void AddName(std::string_view name)
    {
        // Documents nest at most 512 groups, but names may have any length.
        constexpr std::size_t kLongest = 256;
        m_text += m_isEmpty ? "" : ".";
        m_text += name.size() > kLongest ? std::string(BeginningOf(name, kLongest)) + "..." : name;
        m_isEmpty = false;
    }

    void AddIndex(std::size_t index)
    {
        m_text += '[' + std::to_string(index) + ']';
        m_isEmpty = false;
    }

    /// "data.inputs[2].bitrate: a rational with the denominator 0"
    std::string Refusal(const std::string& reason) const
    {
        return (m_text.empty() ? "record" : m_text) + ": " + reason;
    }

private:
    static std::string_view BeginningOf(std::string_view name, std::size_t size)
    {
        while (size > 0 && IsUtf8Continuation(name[size]))
        {
            --size;
        }
        return name.substr(0, size);
    }

    std::string m_text;
    bool m_isEmpty = true;
};

} // namespace Zelnor::Core
