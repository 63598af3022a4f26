#pragma once

// Private to the library, not installed.

#include "Media/Validating/FaultCollector.h"
#include "Media/Validating/RecordReading.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A node or a link of a job's document.
struct JobElement
{
    JsonIndex::Id value;
    Place place;
    Conf::NodeId id = 0; ///< of a node
    std::pair<Conf::NodeId, Conf::NodeId> ends = {};
    std::optional<JsonIndex::Id> data = {}; ///< its value
    Core::Property record = {};             ///< without the group around it
    bool hasRecord = false;
    bool isChanged = false; ///< whether some of it was left out
};

struct JobElements
{
    std::vector<JobElement> nodes;
    std::vector<JobElement> links;
};

/// Reads one of them. What is not of its form is a fault. Nothing when it is not an object.
std::optional<JobElement> ReadElement(const JsonPart& document, JsonIndex::Id value, bool isLink,
                                      const std::string& name, FaultCollector& faults);

/// The record of an element as a part of the document, which must outlive it. \param data  its value
JsonPart DataPart(const JsonPart& document, JsonIndex::Id data);

/// A link that a graph refuses.
struct BadLink
{
    std::size_t position; ///< among the links
    std::string reason;
    const char* key; ///< of the end that is wrong; null: both
};

std::vector<BadLink> FindBadLinks(const JobElements& job);

/// Names the records of links to raw streams, which nobody reads.
void CheckRecordsOfSources(const JsonPart& document, const JobElements& job, FaultCollector& faults);

/// A document of the elements, as far as they could be read.
std::string WriteElements(const JobElements& job);

/// Names the members of an object that its readers pass over: unknown ones, and repeated ones.
void CheckKeys(const JsonPart& part, JsonIndex::Id object, const std::vector<std::string>& known,
               const Place& place, FaultCollector& faults);

/// "an array"
const char* KindText(const JsonIndex& index, JsonIndex::Id value);

/// The member, or the object itself when it does not have it.
JsonIndex::Id MemberOr(const JsonIndex& index, JsonIndex::Id object, const char* key);

} // namespace Zelnor::Media
