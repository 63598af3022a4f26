#pragma once

#include "Tests/Support/Graphs.h"

#include <rapidcheck.h>

#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// Keys and values that have been trouble: equal, empty, bytes that are no text, JSON and DOT inside.
inline rc::Gen<std::string> AnyText()
{
    using namespace std::string_literals;
    // Made once: that takes longer than all that is done with the texts.
    static const auto texts = rc::gen::weightedOneOf<std::string>(
        {{3, rc::gen::element(""s, "data"s, "a"s, "$$MERGE_WITH$$"s, "\0"s, "a\0b"s, "\xFF\xC3"s,
                              "\xF0\x9F\x8E\xAC"s, "\"\\"s, "\\N\\"s, "{\"a\":1}"s, "&amp;"s, "]}"s,
                              "\n\r\t\x7F"s, "\xED\xA0\x80"s)},
         {1, rc::gen::container<std::string>(rc::gen::arbitrary<char>())}});
    return texts;
}

inline rc::Gen<long long> AnyInteger()
{
    return rc::gen::oneOf(rc::gen::arbitrary<long long>(),
                          rc::gen::element(0LL, -1LL, std::numeric_limits<long long>::min(),
                                           std::numeric_limits<long long>::max()));
}

inline rc::Gen<Core::Property::Ratio> AnyRatio()
{
    constexpr long long kMax = std::numeric_limits<long long>::max();
    const auto make = [](long long numerator, long long denominator) {
        return Core::Property::Ratio(numerator, denominator);
    };
    return rc::gen::oneOf(rc::gen::apply(make, rc::gen::inRange(-kMax, kMax), rc::gen::inRange(1LL, kMax)),
                          rc::gen::element(Core::Property::Ratio(0), Core::Property::Ratio(30000, 1001),
                                           Core::Property::Ratio(-1, kMax),
                                           Core::Property::Ratio(std::numeric_limits<long long>::min())));
}

namespace details
{

inline rc::Gen<Core::Property> MakeRecords(int levels)
{
    using Core::Property;
    const auto scalar = rc::gen::oneOf(
        rc::gen::map(AnyText(), [](const std::string& name) { return Property::None(name); }),
        rc::gen::apply([](const std::string& name, long long value) { return Property(name, value); },
                       AnyText(), AnyInteger()),
        rc::gen::apply(
            [](const std::string& name, const std::string& value) { return Property(name, value); },
            AnyText(), AnyText()),
        rc::gen::apply(
            [](const std::string& name, const Property::Ratio& value) { return Property(name, value); },
            AnyText(), AnyRatio()));
    if (levels == 0)
    {
        return scalar;
    }
    const auto group = rc::gen::apply(
        [](const std::string& name, const std::vector<Property>& children) {
            Property made(name);
            for (const Property& child : children)
            {
                made.Add(child);
            }
            return made;
        },
        AnyText(), rc::gen::scale(0.3, rc::gen::container<std::vector<Property>>(MakeRecords(levels - 1))));
    return rc::gen::weightedOneOf<Property>({{2, scalar}, {3, group}});
}

} // namespace details

/// `levels` bounds how deep groups are nested.
template <int levels = 4>
rc::Gen<Core::Property> AnyRecord()
{
    static const auto records = details::MakeRecords(levels);
    return records;
}

/// A record inside up to `most` groups.
inline rc::Gen<Core::Property> DeepRecord(int most)
{
    return rc::gen::apply(
        [](Core::Property record, int depth) {
            for (int i = 0; i < depth; ++i)
            {
                Core::Property group("g");
                group.Add(std::move(record));
                record = std::move(group);
            }
            return record;
        },
        AnyRecord(), rc::gen::inRange(0, most));
}

/// A graph with random records and random links, some of whose nodes were removed.
inline GraphPtr AnyGraph(const rc::Gen<Core::Property>& record)
{
    GraphPtr graph = Conf::ITranscodingMetaGraph::Create();
    const int nodes = *rc::gen::inRange(0, 12);
    for (int i = 0; i < nodes; ++i)
    {
        graph->AddNode(*record);
    }
    for (const auto& link : *rc::gen::container<std::vector<std::pair<int, int>>>(
             rc::gen::pair(rc::gen::inRange(1, 13), rc::gen::inRange(1, 13))))
    {
        try
        {
            graph->AddLink(link.first, link.second, *record);
        }
        catch (const Conf::ProfileException&)
        {}
    }
    for (const int removed : *rc::gen::container<std::vector<int>>(rc::gen::inRange(1, 13)))
    {
        try
        {
            graph->RemoveNode(removed);
        }
        catch (const Conf::ProfileException&)
        {}
    }
    return graph;
}

} // namespace Zelnor::Testing
