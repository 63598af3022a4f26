#include "Tools/zconf/Console/Facts.h"

#include "Tools/zconf/Console/Table.h"

#include <array>
#include <charconv>

namespace Zelnor::Tool
{

namespace
{

template <class... Fs>
struct Overload : Fs...
{
    using Fs::operator()...;
};
template <class... Fs>
Overload(Fs...) -> Overload<Fs...>;

std::string SizeText(const FrameSize& size)
{
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

/// The shortest text that means the number, whatever the locale.
std::string NumberText(double number)
{
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), result.ptr};
}

template <class List, class ToText>
std::string Join(const List& list, ToText toText)
{
    std::string text;
    for (const auto& item : list)
    {
        text += (text.empty() ? "" : ", ") + toText(item);
    }
    return text;
}

/// "bitrateRequired" for "bitrate required"
std::string KeyOf(const std::string& name)
{
    std::string key;
    bool begins = false;
    for (const char c : name)
    {
        if (c == ' ')
        {
            begins = true;
            continue;
        }
        key += begins && c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        begins = false;
    }
    return key;
}

void WriteStrings(JsonOutput& json, const std::vector<std::string>& texts)
{
    json.GetWriter().StartArray();
    for (const std::string& text : texts)
    {
        json.String(text);
    }
    json.GetWriter().EndArray();
}

void WriteSizes(JsonOutput& json, const std::vector<FrameSize>& sizes)
{
    json.GetWriter().StartArray();
    for (const FrameSize& size : sizes)
    {
        json.Integers({size.width, size.height});
    }
    json.GetWriter().EndArray();
}

void WriteValue(JsonOutput& json, const FactValue& value)
{
    std::visit(Overload{[&](bool flag) { json.GetWriter().Bool(flag); },
                        [&](long long number) { json.GetWriter().Int64(number); },
                        [&](double number) { json.GetWriter().Double(number); },
                        [&](const std::string& text) { json.String(text); },
                        [&](const std::vector<std::string>& texts) { WriteStrings(json, texts); },
                        [&](const std::vector<FrameSize>& sizes) { WriteSizes(json, sizes); }},
               value);
}

bool IsEmptyText(const FactValue& value)
{
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr && text->empty();
}

} // namespace

std::string FactText(const FactValue& value)
{
    return std::visit(Overload{[](bool flag) { return std::string(flag ? "yes" : "no"); },
                               [](long long number) { return std::to_string(number); },
                               [](double number) { return NumberText(number); },
                               [](const std::string& text) { return text; },
                               [](const std::vector<std::string>& texts) {
                                   return Join(texts, [](const std::string& text) { return text; });
                               },
                               [](const std::vector<FrameSize>& sizes) { return Join(sizes, SizeText); }},
                      value);
}

void WriteFacts(JsonOutput& json, const Facts& facts)
{
    json.GetWriter().StartObject();
    for (const Fact& fact : facts)
    {
        if (!IsEmptyText(fact.value))
        {
            json.Key(KeyOf(fact.name));
            WriteValue(json, fact.value);
        }
    }
    json.GetWriter().EndObject();
}

void WriteJsonAnswer(const Facts& facts)
{
    JsonOutput json;
    WriteFacts(json, facts);
    json.Finish();
}

void WriteJsonAnswer(const std::vector<Facts>& things)
{
    JsonOutput json;
    json.GetWriter().StartArray();
    for (const Facts& facts : things)
    {
        WriteFacts(json, facts);
    }
    json.GetWriter().EndArray();
    json.Finish();
}

std::string ColumnsText(const std::vector<Facts>& things, const Painter& paint)
{
    Table table;
    for (const Facts& facts : things)
    {
        std::vector<Table::Cell> cells;
        for (const Fact& fact : facts)
        {
            cells.push_back({FactText(fact.value), cells.empty() ? Style::Key : Style::Plain});
        }
        // Nothing but blanks would follow.
        while (cells.size() > 1 && cells.back().text.empty())
        {
            cells.pop_back();
        }
        table.AddRow(std::move(cells));
    }
    return table.Text(paint);
}

std::string LinesText(const Facts& facts, std::size_t indent, const Painter& paint)
{
    Table table(indent);
    for (const Fact& fact : facts)
    {
        const std::string text = FactText(fact.value);
        if (!text.empty())
        {
            table.AddRow({{fact.name, Style::Key}, {text}});
        }
    }
    return table.Text(paint);
}

} // namespace Zelnor::Tool
