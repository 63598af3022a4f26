#pragma once

#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Terminal.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

/// \file
/// What is known about a thing of the vocabulary, for people and for scripts alike.

namespace Zelnor::Tool
{

/// In pixels.
struct FrameSize
{
    long long width;
    long long height;
};

using FactValue =
    std::variant<bool, long long, double, std::string, std::vector<std::string>, std::vector<FrameSize>>;

/// A fact without a value (an empty text, an empty list) is shown to people as a gap, and to scripts not at
/// all, except for lists.
struct Fact
{
    std::string name; ///< "bitrate required"; scripts see "bitrateRequired"
    FactValue value;
};

/// In the order to show; the first one is the thing's name.
using Facts = std::vector<Fact>;

/// "yes", "28", "a, b", "960x540"
std::string FactText(const FactValue& value);

/// Writes an object with one member for each fact.
void WriteFacts(JsonOutput& json, const Facts& facts);
/// Writes the whole answer: one object, or an array of them.
void WriteJsonAnswer(const Facts& facts);
void WriteJsonAnswer(const std::vector<Facts>& things);

/// A line for each thing, with its facts in columns.
std::string ColumnsText(const std::vector<Facts>& things, const Painter& paint);
/// A line for each fact, with its name before it. Facts without a value are left out.
std::string LinesText(const Facts& facts, std::size_t indent, const Painter& paint);

} // namespace Zelnor::Tool
