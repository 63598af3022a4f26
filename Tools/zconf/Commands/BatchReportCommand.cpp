#include "Media/Pages/BatchPage.h"
#include "Tools/zconf/Commands/BatchSlurm.h"
#include "Tools/zconf/Commands/BatchText.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"

#include <memory>
#include <string>

namespace Zelnor::Tool
{

namespace
{

struct BatchReportArguments
{
    std::string batch;
    std::string output = "-";
};

int RunBatchReport(const BatchReportArguments& options)
{
    const Media::Batch batch = Media::ReadBatch(options.batch);
    const Media::BatchStatus status = Media::ReadBatchStatus(batch);
    WriteDocument(options.output, Media::MakeBatchPage(batch, status, AskSlurmOf(batch)));
    return kExitSuccess;
}

} // namespace

void AddBatchReportCommand(CLI::App& batch)
{
    CLI::App* const command =
        AddCommand(batch, "report",
                   "Show a batch as a page (HTML): a summary, all jobs to sort and filter, and why jobs are "
                   "not done");
    const auto options = std::make_shared<BatchReportArguments>();
    AddBatchArgument(*command, options->batch);
    AddDocumentOption(*command, options->output, "The page", "--output");
    OnRun(*command, [options] { return RunBatchReport(*options); });
}

} // namespace Zelnor::Tool
