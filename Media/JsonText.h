#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/JsonMemory.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <rapidjson/document.h>

#include <string>

namespace Zelnor::Media
{

/// The key under which a document names the JSON Schema that it obeys. Nothing else reads it.
inline constexpr const char* kSchemaKey = "$schema";

/// Everything that is left in the stream.
std::string ReadAll(Core::IDataInput& input);

/// The text as a stream; it must outlive the stream.
boost::intrusive_ptr<Core::IDataInput> MakeTextInput(const std::string& text);

/// A parsed document, or why there is none.
struct ParsedJson
{
    Core::JsonDocument document;
    /// "line 3, column 14: Invalid value."; empty when the text is JSON.
    std::string fault;
};

/// Parses text of any size and depth.
ParsedJson ParseJson(const std::string& text);

} // namespace Zelnor::Media
