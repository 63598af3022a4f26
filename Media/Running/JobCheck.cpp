#include "Media/Running/JobCheck.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Running/JobPreparation.h"

#include <algorithm>
#include <iterator>

namespace Zelnor::Media
{

JobReport ReportJob(const Conf::ITranscodingMetaGraph& job, const std::string& document)
{
    FaultList faults;
    JobReport report;
    PreparationOptions options;
    options.document = document;
    for (PreparedTranscode& prepared : PrepareJob(job, options, faults))
    {
        std::move(prepared.losses.begin(), prepared.losses.end(), std::back_inserter(report.losses));
    }
    report.faults = faults.Get();
    if (!report.faults.empty())
    {
        report.losses.clear();
    }
    return report;
}

std::vector<JobFault> CheckJob(const Conf::ITranscodingMetaGraph& job, const std::string& document)
{
    return ReportJob(job, document).faults;
}

} // namespace Zelnor::Media
