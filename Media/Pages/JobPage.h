#pragma once

#include "Media/Pages/Graphviz.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <string>

namespace Zelnor::Media
{

/// How a page of a job is made.
struct JobPageOptions
{
    std::string document = {}; ///< what the page calls the job: "job.json"
    /// Whether the job's sources are opened, as `CheckJob` does, so that the page shows them beside the
    /// targets. Else only what is wrong with the document is shown.
    bool opensSources = true;
};

/// A job as one HTML page for people: a drawing in which each node and link leads to its record, every reason
/// why the job cannot be run, marked at its place, and the streams of the sources beside what becomes of
/// them. The page loads nothing and is the same each time for the same job and files. Texts of the job are
/// shown as texts, whatever they hold. A job of more than 1,000 boxes and lines has a page without a drawing.
/// \throw DrawingException when Graphviz is missing or fails
ZELNOR_API std::string MakeJobPage(const Conf::ITranscodingMetaGraph& job,
                                   const JobPageOptions& options = {});

} // namespace Zelnor::Media
