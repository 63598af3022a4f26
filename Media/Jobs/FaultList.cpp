#include "Media/Jobs/FaultList.h"

#include "Media/MediaException.h"

namespace Zelnor::Media
{

void FaultList::Add(const JobFault& fault)
{
    if (m_known.insert(fault.place.file + '\0' + fault.Sentence()).second)
    {
        m_faults.push_back(fault);
        m_places.insert(fault.place.Text());
    }
}

void FaultList::Add(JobFault::Kind kind, const Place& place, const std::string& reason)
{
    Add(JobFault{kind, {}, place, reason});
}

void FaultList::ThrowFirst() const
{
    if (m_faults.empty())
    {
        return;
    }
    const JobFault& fault = m_faults.front();
    ZELNOR_THROW(
        "Media/Jobs/FaultList",
        MakeError<JobException>(fault.place, fault.groups.empty() ? fault.reason : fault.Sentence()));
}

} // namespace Zelnor::Media
