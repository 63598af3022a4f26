#include "Media/Running/JobCheck.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Running/JobPreparation.h"

namespace Zelnor::Media
{

std::vector<JobFault> CheckJob(const Conf::ITranscodingMetaGraph& job, const std::string& document)
{
    FaultList faults;
    PrepareJob(job, {document, true}, faults);
    return faults.Get();
}

} // namespace Zelnor::Media
