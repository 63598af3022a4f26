#include "Media/Pages/RecordTree.h"

#include "Media/Pages/HtmlText.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

/// Browsers do not nest elements deeper than 512, and nobody reads what is indented that far.
constexpr std::size_t kMostLevels = 16;

bool HasChildren(const Property& value)
{
    return value.GetType() == PROPERTY_TYPE_GROUP && value.Count() != 0;
}

std::string Row(const Property& property, std::size_t level)
{
    std::string row = "<li>";
    if (level > kMostLevels)
    {
        row += "<span class=\"level\">level " + std::to_string(level) + "</span> ";
    }
    return row + "<span class=\"key\">" + HtmlText(property.GetName()) + "</span> <span class=\"value\">" +
           ValueHtml(property) + "</span></li>\n";
}

/// A group that can be folded up.
std::string OpeningOf(const Property& group)
{
    return "<li><details open=\"open\"><summary><span class=\"key\">" + HtmlText(group.GetName()) +
           "</span></summary>\n<ul>\n";
}

std::string ChildrenHtml(const Property& record)
{
    std::string html = "<ul class=\"tree\">\n";
    using Range = std::pair<Property::const_iterator, Property::const_iterator>;
    std::vector<Range> open = {{record.begin(), record.end()}};
    while (!open.empty())
    {
        const std::size_t level = open.size();
        if (open.back().first == open.back().second)
        {
            open.pop_back();
            html += level <= kMostLevels && level > 1 ? "</ul></details></li>\n" : "";
            continue;
        }
        const Property& child = *open.back().first++;
        const bool isFolding = HasChildren(child) && level < kMostLevels;
        html += isFolding ? OpeningOf(child) : Row(child, level);
        if (HasChildren(child))
        {
            open.emplace_back(child.begin(), child.end());
        }
    }
    return html + "</ul>\n";
}

} // namespace

bool IsNoRecord(const Property& record)
{
    return record.GetType() == PROPERTY_TYPE_NONE ||
           (record.GetType() == PROPERTY_TYPE_GROUP && record.Count() == 0 &&
            (record.GetName().empty() || record.GetName() == "data"));
}

std::string ValueHtml(const Property& value)
{
    switch (value.GetType())
    {
    case PROPERTY_TYPE_NONE:
        return "null";
    case PROPERTY_TYPE_INT64:
        return std::to_string(value.GetInt64());
    case PROPERTY_TYPE_STRING:
        return "&quot;" + HtmlText(value.GetString()) + "&quot;";
    case PROPERTY_TYPE_RATIO:
        return std::to_string(value.GetRatio().numerator()) + "/" +
               std::to_string(value.GetRatio().denominator());
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return value.Count() == 0 ? "empty group" : "group of " + std::to_string(value.Count());
}

std::string RecordTreeHtml(const Property& record)
{
    return HasChildren(record) ? ChildrenHtml(record) : "<p class=\"value\">" + ValueHtml(record) + "</p>\n";
}

} // namespace Zelnor::Media
