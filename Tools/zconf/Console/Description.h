#pragma once

#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Terminal.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

/// \file
/// Descriptions, made of named fields, that are printed for people or written as JSON for scripts.

namespace Zelnor::Tool
{

/// In pixels.
struct FrameSize
{
    long long width;
    long long height;
};

using FieldValue =
    std::variant<bool, long long, double, std::string, std::vector<std::string>, std::vector<FrameSize>>;

/// A field with an empty text or list is a gap in `ColumnsText` and left out of `LinesText`. JSON leaves out
/// empty texts, but not empty lists.
struct Field
{
    std::string name; ///< "bitrate required"; in JSON "bitrateRequired"
    FieldValue value;
};

/// Fields in the order in which they are shown. The first one is the name of what is described.
using Description = std::vector<Field>;

/// "yes", "28", "a, b", "960x540"
std::string FieldText(const FieldValue& value);

/// Writes one JSON object with a member for each field to standard output, as the whole document.
void WriteJsonAnswer(const Description& description);
/// Writes an array of such objects.
void WriteJsonAnswer(const std::vector<Description>& descriptions);

/// A line for each description, with its values in columns.
std::string ColumnsText(const std::vector<Description>& descriptions, const Painter& paint);
/// A line for each field: its name and its value.
std::string LinesText(const Description& description, std::size_t indent, const Painter& paint);

} // namespace Zelnor::Tool
