#include "Media/Validating/FaultCollector.h"

#include "Core/Interfaces/Utf8.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

/// As much of a value as a message shows.
std::string Excerpt(std::string_view text)
{
    constexpr std::size_t kLongest = 80;
    if (text.size() <= kLongest)
    {
        return std::string(text);
    }
    std::size_t size = kLongest;
    while (size > 0 && Core::IsUtf8Continuation(text[size]))
    {
        --size;
    }
    return std::string(text.substr(0, size)) + "...";
}

/// What a reason of the form "expected X, found Y" expects.
std::string ExpectedIn(const std::string& reason)
{
    constexpr std::string_view kExpected = "expected ";
    const std::size_t end = reason.find(", found ");
    return reason.compare(0, kExpected.size(), kExpected) != 0
               ? ""
               : reason.substr(kExpected.size(), end - kExpected.size());
}

} // namespace

std::string DocumentFault::Name() const
{
    switch (kind)
    {
    case Syntax:
        return "syntax";
    case Form:
        return "form";
    case Ignored:
        return "ignored";
    case Topology:
        return "topology";
    case Structure:
        return "structure";
    case Setting:
        return "setting";
    case Encoder:
        return "encoder";
    case Container:
        return "container";
    }
    return "";
}

std::string DocumentFault::Sentence() const
{
    const std::string where = place.TextInDocument();
    return where.empty() ? reason : where + ": " + reason;
}

void FaultCollector::Add(DocumentFault::Kind kind, const Place& place, const std::string& reason,
                         const JsonPart& part, JsonIndex::Id value, Aspect aspect,
                         std::vector<std::string> nearest)
{
    const JsonIndex& index = part.index;
    const std::size_t begin = part.offset + index.OffsetOf(value);
    const bool isClosed = std::any_of(m_closed.begin(), m_closed.end(), [begin](const auto& range) {
        return range.first <= begin && begin < range.second;
    });
    if (isClosed)
    {
        return;
    }
    if (IsFull())
    {
        m_isComplete = false;
        return;
    }
    DocumentFault fault = {kind, place, reason, part.PointerTo(value)};
    const std::string_view key = index.KeyTextOf(value);
    const bool isKey = aspect == Aspect::Key && !key.empty();
    fault.offset = part.offset + (isKey ? index.KeyOffsetOf(value) : index.OffsetOf(value));
    fault.length = isKey ? key.size() : index.TextOf(value).size();
    fault.found = aspect == Aspect::Lack ? "nothing" : Excerpt(isKey ? key : index.TextOf(value));
    fault.expected = ExpectedIn(reason);
    fault.nearest = std::move(nearest);
    m_faults.push_back(std::move(fault));
}

void FaultCollector::AddSyntax(const JsonFault& json, const Place& place)
{
    DocumentFault fault = {DocumentFault::Syntax, place, json.reason};
    fault.offset = std::min(json.offset, m_text.size());
    const std::string_view rest = m_text.substr(fault.offset);
    fault.length = rest.empty() ? 0 : std::max<std::size_t>(Core::Utf8Length(rest), 1);
    fault.found = rest.empty() ? "nothing" : Excerpt(rest.substr(0, fault.length));
    m_faults.push_back(std::move(fault));
}

void FaultCollector::Close(const JsonPart& part, JsonIndex::Id value)
{
    const std::size_t begin = part.offset + part.index.OffsetOf(value);
    m_closed.emplace_back(begin, begin + part.index.TextOf(value).size());
}

DocumentFaults FaultCollector::Finish(DocumentFaults::Kind kind)
{
    std::stable_sort(m_faults.begin(), m_faults.end(),
                     [](const auto& one, const auto& other) { return one.offset < other.offset; });
    FindLines();
    return {kind, std::move(m_faults), m_isComplete};
}

/// In one pass over the text, however many faults stand in one long line.
void FaultCollector::FindLines()
{
    std::size_t next = 0;
    std::size_t line = 1;
    std::size_t column = 1;
    for (DocumentFault& fault : m_faults)
    {
        while (next < fault.offset)
        {
            const bool isBreak = m_text[next] == '\n';
            line += isBreak ? 1 : 0;
            column = isBreak ? 1 : column + 1;
            next += std::max<std::size_t>(Core::Utf8Length(m_text.substr(next, 4)), 1);
        }
        fault.line = line;
        fault.column = column;
    }
}

} // namespace Zelnor::Media
