#include "Media/Pages/RecordComparison.h"

#include "Media/Pages/HtmlText.h"
#include "Media/Pages/RecordTree.h"

#include <cstddef>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

/// Groups that are nested deeper are compared as a whole.
constexpr int kMostComparedLevels = 4;

bool IsGroup(const Property* value) { return value != nullptr && value->GetType() == PROPERTY_TYPE_GROUP; }

/// Descriptors of files have groups for what might be there.
bool IsEmptyGroup(const Property& value) { return IsGroup(&value) && value.Count() == 0; }

/// The children of a group by name; equal names are told apart by their number.
using Keyed = std::map<std::pair<std::string_view, std::size_t>, const Property*>;

template <class Visit>
void ForEachKeyed(const Property& group, const Visit& visit)
{
    std::map<std::string_view, std::size_t> seen;
    for (const Property& child : group)
    {
        visit(Keyed::key_type(child.GetName(), seen[child.GetName()]++), child);
    }
}

Keyed KeyedChildren(const Property* group)
{
    Keyed children;
    if (IsGroup(group))
    {
        ForEachKeyed(*group, [&children](const Keyed::key_type& key, const Property& child) {
            children.emplace(key, &child);
        });
    }
    return children;
}

class Comparison
{
public:
    Comparison(bool isKnown, bool isKept) : m_isKnown(isKnown), m_isKept(isKept) {}

    /// Rows for the children of both groups.
    void AddChildren(const Property* source, const Property* target, int level)
    {
        Keyed sources = KeyedChildren(source);
        if (IsGroup(target))
        {
            ForEachKeyed(*target, [&](const Keyed::key_type& key, const Property& child) {
                const auto match = sources.find(key);
                const Property* const other = match == sources.end() ? nullptr : match->second;
                Add(other, &child, level);
                if (other != nullptr)
                {
                    sources.erase(match);
                }
            });
        }
        if (IsGroup(source))
        {
            ForEachKeyed(*source, [&](const Keyed::key_type& key, const Property& child) {
                if (sources.count(key) != 0 && !IsEmptyGroup(child))
                {
                    Add(&child, nullptr, level);
                }
            });
        }
    }

    std::string rows;

private:
    /// One of both may be null.
    void Add(const Property* source, const Property* target, int level)
    {
        const Property& named = target != nullptr ? *target : *source;
        const bool isOpen = level < kMostComparedLevels && named.GetType() == PROPERTY_TYPE_GROUP &&
                            named.Count() != 0 && (source == nullptr || target == nullptr || IsGroup(source));
        const char* const state = isOpen ? "" : StateOf(source, target);
        const auto cell = [](const Property* value) {
            return "<td>" + (value == nullptr ? std::string("\xE2\x80\x93") : ValueHtml(*value)) + "</td>";
        };
        rows += std::string("<tr") + (*state == '\0' ? "" : std::string(" class=\"") + state + "\"") +
                "><th scope=\"row\" class=\"level" + std::to_string(level) + "\">" +
                HtmlText(named.GetName()) + "</th>" + cell(source) + cell(target) + "<td>" + WordFor(state) +
                "</td></tr>\n";
        if (isOpen)
        {
            AddChildren(source, target, level + 1);
        }
    }

    const char* StateOf(const Property* source, const Property* target) const
    {
        if (target == nullptr)
        {
            return m_isKept ? "kept" : "dropped";
        }
        if (source == nullptr)
        {
            return m_isKnown ? "set" : "";
        }
        return *source == *target ? "same" : "changed";
    }

    static std::string WordFor(std::string_view state)
    {
        if (state == "changed")
        {
            return "<strong>changed</strong>";
        }
        return state == "dropped" ? "not in the job" : std::string(state);
    }

    bool m_isKnown;
    bool m_isKept;
};

} // namespace

std::string ComparisonRows(const Property* source, const Property& target, bool isKept)
{
    Comparison comparison(source != nullptr, isKept);
    comparison.AddChildren(source, &target, 0);
    return std::move(comparison.rows);
}

} // namespace Zelnor::Media
