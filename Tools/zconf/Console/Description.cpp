#include "Tools/zconf/Console/Description.h"

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

void WriteValue(JsonOutput& json, const FieldValue& value)
{
    std::visit(Overload{[&](bool flag) { json.GetWriter().Bool(flag); },
                        [&](long long number) { json.GetWriter().Int64(number); },
                        [&](double number) { json.GetWriter().Double(number); },
                        [&](const std::string& text) { json.String(text); },
                        [&](const std::vector<std::string>& texts) { WriteStrings(json, texts); },
                        [&](const std::vector<FrameSize>& sizes) { WriteSizes(json, sizes); }},
               value);
}

bool IsEmptyText(const FieldValue& value)
{
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr && text->empty();
}

void WriteDescription(JsonOutput& json, const Description& description)
{
    json.GetWriter().StartObject();
    for (const Field& field : description)
    {
        if (!IsEmptyText(field.value))
        {
            json.Key(KeyOf(field.name));
            WriteValue(json, field.value);
        }
    }
    json.GetWriter().EndObject();
}

} // namespace

std::string FieldText(const FieldValue& value)
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

void WriteJsonAnswer(const Description& description)
{
    JsonOutput json;
    WriteDescription(json, description);
    json.Finish();
}

void WriteJsonAnswer(const std::vector<Description>& descriptions)
{
    JsonOutput json;
    json.GetWriter().StartArray();
    for (const Description& description : descriptions)
    {
        WriteDescription(json, description);
    }
    json.GetWriter().EndArray();
    json.Finish();
}

std::string ColumnsText(const std::vector<Description>& descriptions, const Painter& paint)
{
    Table table;
    for (const Description& description : descriptions)
    {
        std::vector<Table::Cell> cells;
        for (const Field& field : description)
        {
            cells.push_back({FieldText(field.value), cells.empty() ? Style::Key : Style::Plain});
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

std::string LinesText(const Description& description, std::size_t indent, const Painter& paint)
{
    Table table(indent);
    for (const Field& field : description)
    {
        const std::string text = FieldText(field.value);
        if (!text.empty())
        {
            table.AddRow({{field.name, Style::Key}, {text}});
        }
    }
    return table.Text(paint);
}

} // namespace Zelnor::Tool
