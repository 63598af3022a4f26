#include "Media/Jobs/JobDifferences.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::NodeId;
using Core::Property;

/// A value as it stands in a document; a group by what it holds.
std::string DocumentText(const Property& value)
{
    switch (value.GetType())
    {
    case PROPERTY_TYPE_NONE:
        return "null";
    case PROPERTY_TYPE_INT64:
        return std::to_string(value.GetInt64());
    case PROPERTY_TYPE_STRING:
        return '"' + value.GetString() + '"';
    case PROPERTY_TYPE_RATIO:
        return "[" + std::to_string(value.GetRatio().numerator()) + ", " +
               std::to_string(value.GetRatio().denominator()) + "]";
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return "a group of " + std::to_string(value.Count());
}

/// A child of a group.
struct Keyed
{
    /// What the same child of another group is found by: the name, and how many of that name come before.
    std::pair<std::string, int> key;
    /// The name, numbered where it occurs more than once.
    std::string text;
    const Property* child;
};

std::vector<Keyed> KeyedChildren(const Property& group)
{
    std::map<std::string, int> counts;
    for (const Property& child : group)
    {
        ++counts[child.GetName()];
    }
    std::map<std::string, int> seen;
    std::vector<Keyed> children;
    for (const Property& child : group)
    {
        const std::string& name = child.GetName();
        const int before = seen[name]++;
        const std::string number = "[" + std::to_string(before + 1) + "]";
        children.push_back({{name, before}, counts[name] == 1 ? name : name + number, &child});
    }
    return children;
}

std::map<std::pair<std::string, int>, const Property*> ByKey(const std::vector<Keyed>& children)
{
    std::map<std::pair<std::string, int>, const Property*> found;
    for (const Keyed& each : children)
    {
        found.emplace(each.key, each.child);
    }
    return found;
}

class Differ
{
public:
    explicit Differ(std::vector<JobDifference>& found) : m_found(found) {}

    void Records(const std::string& place, const Property& one, const Property& other)
    {
        m_place = place;
        if (one.GetName() != other.GetName())
        {
            const Property oneName("", one.GetName());
            const Property otherName("", other.GetName());
            ReportValues("name of the record", &oneName, &otherName);
        }
        Values("", one, other);
    }
    void Existence(const std::string& place, std::size_t one, std::size_t other)
    {
        const auto text = [](std::size_t count) {
            return count == 0 ? "" : count == 1 ? "there" : "there " + std::to_string(count) + " times";
        };
        m_found.push_back({place, "", text(one), text(other), {}, {}});
    }

private:
    void Report(const std::string& key, const std::string& one, const std::string& other)
    {
        m_found.push_back({m_place, key, one, other, {}, {}});
    }

    /// Null: that side does not have it.
    void ReportValues(const std::string& key, const Property* one, const Property* other)
    {
        const auto text = [](const Property* value) { return value == nullptr ? "" : DocumentText(*value); };
        const auto copy = [](const Property* value) {
            return value == nullptr ? std::nullopt : std::optional(*value);
        };
        m_found.push_back({m_place, key, text(one), text(other), copy(one), copy(other)});
    }

    void Values(const std::string& key, const Property& one, const Property& other)
    {
        const bool areGroups = one.GetType() == PROPERTY_TYPE_GROUP && other.GetType() == PROPERTY_TYPE_GROUP;
        if (areGroups)
        {
            Groups(key, one, other);
        }
        else if (one.GetType() != other.GetType() || DocumentText(one) != DocumentText(other))
        {
            ReportValues(key.empty() ? "value of the record" : key, &one, &other);
        }
    }

    void Groups(const std::string& key, const Property& one, const Property& other)
    {
        const std::vector<Keyed> ones = KeyedChildren(one);
        const std::vector<Keyed> others = KeyedChildren(other);
        const auto inOne = ByKey(ones);
        const auto inOther = ByKey(others);
        const std::size_t before = m_found.size();
        const auto path = [&key](const Keyed& each) {
            return key.empty() ? each.text : key + "." + each.text;
        };
        for (const Keyed& each : ones)
        {
            const auto match = inOther.find(each.key);
            if (match == inOther.end())
            {
                ReportValues(path(each), each.child, nullptr);
            }
            else
            {
                Values(path(each), *each.child, *match->second);
            }
        }
        for (const Keyed& each : others)
        {
            if (inOne.count(each.key) == 0)
            {
                ReportValues(path(each), nullptr, each.child);
            }
        }
        if (m_found.size() == before && one != other && SameKeysInOtherOrder(ones, others))
        {
            Report(key.empty() ? "order of the keys" : key + ", order of its keys", Names(ones),
                   Names(others));
        }
    }

    static bool SameKeysInOtherOrder(const std::vector<Keyed>& ones, const std::vector<Keyed>& others)
    {
        return !std::equal(ones.begin(), ones.end(), others.begin(), others.end(),
                           [](const Keyed& a, const Keyed& b) { return a.key == b.key; });
    }

    static std::string Names(const std::vector<Keyed>& children)
    {
        std::string names;
        for (const Keyed& each : children)
        {
            names += (names.empty() ? "" : ", ") + each.text;
        }
        return names;
    }

    std::vector<JobDifference>& m_found;
    std::string m_place;
};

/// Walks what either side lists, in order, and compares what both have.
template <class Id, class Compare>
void Walk(const std::vector<Id>& ones, const std::vector<Id>& others, const Compare& compare)
{
    std::map<Id, std::pair<std::size_t, std::size_t>> counts;
    for (const Id& id : ones)
    {
        ++counts[id].first;
    }
    for (const Id& id : others)
    {
        ++counts[id].second;
    }
    for (const auto& [id, count] : counts)
    {
        compare(id, count.first, count.second);
    }
}

using Link = std::pair<NodeId, NodeId>;

std::vector<NodeId> NodesOf(const Conf::ITranscodingMetaGraph& job)
{
    std::vector<NodeId> nodes;
    job.Nodes(nodes);
    return nodes;
}

std::vector<Link> LinksOf(const Conf::ITranscodingMetaGraph& job)
{
    std::vector<Link> links;
    job.Links(links);
    return links;
}

} // namespace

std::vector<JobDifference> DiffJobs(const Conf::ITranscodingMetaGraph& one,
                                    const Conf::ITranscodingMetaGraph& other)
{
    std::vector<JobDifference> found;
    Differ differ(found);
    Walk(NodesOf(one), NodesOf(other), [&](NodeId id, std::size_t inOne, std::size_t inOther) {
        const std::string place = "node " + std::to_string(id);
        if (inOne != inOther)
        {
            differ.Existence(place, inOne, inOther);
        }
        if (inOne != 0 && inOther != 0)
        {
            differ.Records(place, one[id], other[id]);
        }
    });
    Walk(LinksOf(one), LinksOf(other), [&](const Link& link, std::size_t inOne, std::size_t inOther) {
        const std::string place = "link " + std::to_string(link.first) + " -> " + std::to_string(link.second);
        if (inOne != inOther)
        {
            differ.Existence(place, inOne, inOther);
        }
        if (inOne != 0 && inOther != 0)
        {
            differ.Records(place, one.GetLink(link.first, link.second),
                           other.GetLink(link.first, link.second));
        }
    });
    return found;
}

} // namespace Zelnor::Media
