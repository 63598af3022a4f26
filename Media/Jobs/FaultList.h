#pragma once

// Private to the library, not installed.

#include "Media/Jobs/JobFault.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Collects what is wrong with a job, so that all of it can be told at once. What is said twice counts once.
class FaultList
{
public:
    void Add(const JobFault& fault);
    void Add(JobFault::Kind kind, const Place& place, const std::string& reason);

    /// Whether something is wrong at exactly that place.
    bool IsAt(const Place& place) const { return m_places.count(place.Text()) != 0; }
    std::size_t Count() const { return m_faults.size(); }
    const std::vector<JobFault>& Get() const { return m_faults; }
    /// \throw JobException for the first fault, if there is one
    void ThrowFirst() const;

private:
    std::vector<JobFault> m_faults;
    // Like all that holds names of documents, not hash tables: a stranger may choose names that have one
    // hash.
    std::set<std::string> m_known;
    std::set<std::string> m_places;
};

} // namespace Zelnor::Media
