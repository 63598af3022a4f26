#include "Media/Pages/BatchPage.h"

#include "Media/AmountText.h"
#include "Media/Batch/BatchStatusOf.h"
#include "Media/Batch/BatchTexts.h"
#include "Media/MediaException.h"
#include "Media/Pages/BatchJobDetails.h"
#include "Media/Pages/HtmlText.h"
#include "Media/Pages/PageFrame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Pages/BatchPage";

constexpr double kMicroseconds = 1'000'000;

std::string TimeText(std::int64_t microseconds)
{
    return ClockText(static_cast<double>(microseconds) / kMicroseconds);
}

/// \throw JobException
void RequireSize(const Batch& batch, const std::string& what, std::size_t size)
{
    if (size != batch.jobs.size())
    {
        auto exception =
            MakeError<JobException>(batch.folder + ": expected " + Count(batch.jobs.size(), "job") + " in " +
                                    what + ", found " + std::to_string(size));
        exception << MediaException::TagFile(batch.folder);
        ZELNOR_THROW(kUnit, exception);
    }
}

/// What the results of a batch are together.
struct Totals
{
    std::uint64_t before = 0; ///< bytes of the inputs of the jobs that are done
    std::uint64_t after = 0;  ///< bytes of their outputs
    std::int64_t elapsed = 0; ///< microseconds of the last attempts of all jobs
    std::string first;        ///< when the first of those began; empty: none did
    std::string last;         ///< when the last one ended
};

Totals TotalsOf(const BatchStatus& status)
{
    Totals totals;
    for (const BatchJobStatus& job : status.jobs)
    {
        if (!job.result)
        {
            continue;
        }
        if (job.state == BatchJobState::Done)
        {
            AddCapped(totals.before, job.result->sizeBefore);
            AddCapped(totals.after, job.result->sizeAfter);
        }
        AddCapped(totals.elapsed, job.result->elapsed);
        if (totals.first.empty() || job.result->started < totals.first)
        {
            totals.first = job.result->started;
        }
        totals.last = std::max(totals.last, job.result->ended);
    }
    return totals;
}

/// How much of `before` is left; nothing when that is not known.
std::optional<double> PercentOf(std::uint64_t after, std::uint64_t before)
{
    constexpr double kHundred = 100;
    return before == 0 ? std::nullopt
                       : std::optional(kHundred * static_cast<double>(after) / static_cast<double>(before));
}

bool IsKnownSpeed(double speed) { return speed > 0 && std::isfinite(speed); }

std::string SummaryRow(const std::string& name, const std::string& text)
{
    return text.empty() ? ""
                        : "<tr><th scope=\"row\">" + name + "</th><td>" + HtmlText(text) + "</td></tr>\n";
}

std::string SizesText(const Totals& totals)
{
    const std::optional<double> percent = PercentOf(totals.after, totals.before);
    return percent ? SizeText(totals.before) + " became " + SizeText(totals.after) + " (" +
                         FixedText(*percent) + " %)"
                   : "";
}

std::string TimesText(const Totals& totals)
{
    return totals.first.empty() ? ""
                                : "from " + totals.first + (totals.last.empty() ? "" : " to " + totals.last) +
                                      ", " + TimeText(totals.elapsed) + " in the jobs";
}

std::string SummaryHtml(const Batch& batch, const BatchStatus& status)
{
    const Totals totals = TotalsOf(status);
    std::string presets;
    for (const BatchPreset& preset : batch.presets)
    {
        presets += (presets.empty() ? "" : ", ") + preset.name;
    }
    const std::string verdict =
        status.IsDone() ? "" : " <span class=\"bad\">Not all that could be planned is done.</span>";
    return "<h1>" + HtmlText(batch.folder) + "</h1>\n<p class=\"verdict\">" +
           HtmlText(BatchSummaryText(status)) + "." + verdict +
           "</p>\n<section>\n<h2>Summary</h2>\n<div class=\"wide\"><table class=\"summary\">\n<tbody>\n" +
           SummaryRow("Folder", batch.base) + SummaryRow("Outputs", batch.PathOf(batch.outputFolder)) +
           SummaryRow("Presets", presets) +
           SummaryRow("Media",
                      TimeText(status.mediaDone) + " made, " + TimeText(status.mediaLeft) + " left") +
           SummaryRow("Sizes", SizesText(totals)) + SummaryRow("Times (UTC)", TimesText(totals)) +
           SummaryRow("Speed", IsKnownSpeed(status.speed) ? SpeedText(status.speed) : "") +
           "</tbody>\n</table></div>\n</section>\n";
}

std::string Cell(const std::string& text) { return "<td>" + HtmlText(text) + "</td>"; }

/// A cell that is sorted by the number, not by the text that people read.
std::string AmountCell(const std::string& key, const std::string& text)
{
    return "<td class=\"amount\" data-key=\"" + key + "\">" + (key.empty() ? "" : HtmlText(text)) + "</td>";
}

std::string TimeCell(const std::optional<std::int64_t>& time)
{
    return time ? AmountCell(std::to_string(*time), TimeText(*time)) : AmountCell("", "");
}

std::string SizeCell(const std::optional<std::uint64_t>& size)
{
    return size ? AmountCell(std::to_string(*size), SizeText(*size)) : AmountCell("", "");
}

std::string StateCell(const BatchJobDetails& details)
{
    const std::string name = NameOf(details.status.state);
    return std::string(details.IsBad() ? "<td class=\"bad\">" : "<td>") +
           (details.HasMore() ? "<a href=\"#" + details.Anchor() + "\">" + name + "</a>" : name) + "</td>";
}

/// What the last attempt was, if there was one.
std::string AttemptCells(const BatchResult& result, bool isMade)
{
    const auto after = isMade ? std::optional(result.sizeAfter) : std::nullopt;
    const auto percent = isMade ? PercentOf(result.sizeAfter, result.sizeBefore) : std::nullopt;
    const bool hasSpeed = isMade && IsKnownSpeed(result.Speed());
    const auto elapsed = result.elapsed > 0 ? std::optional(result.elapsed) : std::nullopt;
    constexpr int kDigits = 6;
    return SizeCell(after) +
           (percent ? AmountCell(FixedText(*percent, kDigits), FixedText(*percent) + " %")
                    : AmountCell("", "")) +
           TimeCell(elapsed) +
           (hasSpeed ? AmountCell(FixedText(result.Speed(), kDigits), SpeedText(result.Speed()))
                     : AmountCell("", "")) +
           Cell(result.started) + Cell(result.host);
}

std::string RowHtml(const BatchJobDetails& details, bool hasSlurm)
{
    const BatchJob& job = details.job;
    const std::optional<BatchResult>& result = details.status.result;
    const BatchJobState state = details.status.state;
    const bool isMade =
        state == BatchJobState::Done || state == BatchJobState::Missing || state == BatchJobState::Changed;
    const std::string number = std::to_string(job.number);
    const auto before = result ? std::optional(result->sizeBefore)
                               : (job.IsPlanned() ? std::optional(job.size) : std::nullopt);
    const std::string slurm = details.task ? NameOf(details.task->state) : "";
    return "<tr id=\"job-" + number + "\">" + AmountCell(number, number) + StateCell(details) +
           Cell(job.input) + Cell(job.preset) + Cell(job.output) + TimeCell(job.duration) + SizeCell(before) +
           AttemptCells(result ? *result : BatchResult(), isMade && result) + (hasSlurm ? Cell(slurm) : "") +
           "</tr>\n";
}

std::string TableHtml(const std::vector<BatchJobDetails>& jobs, bool hasSlurm)
{
    std::string html = "<section>\n<h2>Jobs</h2>\n<div class=\"wide\"><table class=\"jobs\">\n<thead><tr>";
    for (const char* const name : {"Job", "State", "Input", "Preset", "Output", "Media", "Size before",
                                   "Size after", "Ratio", "Run", "Speed", "Started (UTC)", "Machine"})
    {
        html += std::string("<th scope=\"col\">") + name + "</th>";
    }
    html += hasSlurm ? "<th scope=\"col\">Slurm</th></tr></thead>\n<tbody>\n" : "</tr></thead>\n<tbody>\n";
    for (const BatchJobDetails& job : jobs)
    {
        html += RowHtml(job, hasSlurm);
    }
    return html + "</tbody>\n</table></div>\n</section>\n";
}

std::string DetailsSection(const std::vector<BatchJobDetails>& jobs, bool isBad, const std::string& heading)
{
    std::string html;
    for (const BatchJobDetails& job : jobs)
    {
        html += job.HasMore() && job.IsOpen() == isBad ? DetailsHtml(job) : "";
    }
    return html.empty() ? "" : "<section>\n<h2>" + heading + "</h2>\n" + html + "</section>\n";
}

} // namespace

std::string MakeBatchPage(const Batch& batch, const BatchStatus& status,
                          const std::vector<std::optional<SlurmTask>>& tasks)
{
    RequireSize(batch, "the status", status.jobs.size());
    if (!tasks.empty())
    {
        RequireSize(batch, "the tasks", tasks.size());
    }
    std::vector<BatchJobDetails> jobs;
    jobs.reserve(batch.jobs.size());
    bool hasSlurm = false;
    for (std::size_t i = 0; i < batch.jobs.size(); ++i)
    {
        const SlurmTask* const task = tasks.empty() || !tasks[i] ? nullptr : &*tasks[i];
        hasSlurm = hasSlurm || task != nullptr;
        jobs.push_back({batch.jobs[i], status.jobs[i], task});
    }
    Page page;
    page.title = batch.folder;
    page.main = SummaryHtml(batch, status) + TableHtml(jobs, hasSlurm) +
                DetailsSection(jobs, true, "What is not done") +
                DetailsSection(jobs, false, "What is to be known of the others");
    page.script = &kTableScript;
    return MakePage(page);
}

} // namespace Zelnor::Media
