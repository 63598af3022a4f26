#pragma once

// Private to the library, not installed.

#include "Media/Validating/DocumentFault.h"
#include "Media/Validating/JsonIndex.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// The part of a text that is looked at by itself.
struct JsonPart
{
    std::string_view text;
    std::size_t offset; ///< in the document
    JsonIndex index;
    /// What it is a part of, and which value of that it is; null for a document.
    const JsonPart* outer = nullptr;
    JsonIndex::Id place = 0;

    /// Takes time with the number of siblings, so it is asked for faults only.
    std::string PointerTo(JsonIndex::Id value) const
    {
        return (outer == nullptr ? "" : outer->PointerTo(place)) + index.PointerTo(value);
    }
};

/// What of a value a fault is about.
enum class Aspect
{
    Value,
    Key,
    Lack, ///< of something inside the value
};

/// Collects the faults of a text and works out where they are.
class FaultCollector
{
public:
    /// Nobody reads more, and a hostile document has as many as it likes.
    static constexpr std::size_t kMost = 1000;

    explicit FaultCollector(std::string_view text) : m_text(text) {}

    /// \param nearest  see `DocumentFault`
    void Add(DocumentFault::Kind kind, const Place& place, const std::string& reason, const JsonPart& part,
             JsonIndex::Id value, Aspect aspect = Aspect::Value, std::vector<std::string> nearest = {});
    void AddSyntax(const JsonFault& fault, const Place& place);
    /// What is said of the value, or inside of it, counts for nothing from now on.
    void Close(const JsonPart& part, JsonIndex::Id value);
    /// There may be faults that nobody looked for.
    void LeaveOutOthers() { m_isComplete = false; }
    bool IsFull() const { return m_faults.size() >= kMost; }
    bool IsComplete() const { return m_isComplete; }

    /// The faults in the order of the text, with lines and columns.
    DocumentFaults Finish(DocumentFaults::Kind kind);

private:
    void FindLines();

    std::string_view m_text;
    std::vector<DocumentFault> m_faults;
    /// Begin and end of what is closed.
    std::vector<std::pair<std::size_t, std::size_t>> m_closed;
    bool m_isComplete = true;
};

} // namespace Zelnor::Media
