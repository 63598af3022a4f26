#pragma once

// Private to the library, not installed.

#include "Media/Jobs/JobFault.h"
#include "Media/Validating/JobElements.h"

#include <optional>

namespace Zelnor::Media
{

/// Adds faults that were found in the graph of a document, at their places in the text.
class JobFaultPlaces
{
public:
    /// All of these must outlive it.
    JobFaultPlaces(const JsonPart& document, const JobElements& elements, FaultCollector& faults)
        : m_document(document), m_elements(elements), m_faults(faults)
    {}

    void Add(const JobFault& fault);

private:
    const JsonPart& PartOf(JsonIndex::Id data);

    const JsonPart& m_document;
    const JobElements& m_elements;
    FaultCollector& m_faults;
    /// The data of the last element with a fault: to index a large record for each of its faults takes long.
    std::optional<JsonPart> m_part;
};

} // namespace Zelnor::Media
