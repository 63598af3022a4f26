#include "Media/Pages/BatchJobDetails.h"

#include "Media/Batch/BatchFolder.h"
#include "Media/Batch/BatchTexts.h"
#include "Media/Pages/HtmlText.h"
#include "Media/Running/ShellWords.h"

#include <optional>
#include <vector>

namespace Zelnor::Media
{

namespace
{

/// Why the job stands as it does; empty where its state says all.
std::string ReasonOf(const BatchJobDetails& details)
{
    switch (details.status.state)
    {
    case BatchJobState::Refused:
        return details.job.refusal;
    case BatchJobState::Failed:
        return details.status.result ? details.status.result->reason : "";
    case BatchJobState::Interrupted:
        return "The process that ran it is gone.";
    case BatchJobState::Missing:
        return "It was done, and its output is not there any more.";
    case BatchJobState::Changed:
        return "It was done, and its output has another size now.";
    case BatchJobState::Cancelled:
        return "Somebody stopped the run.";
    case BatchJobState::Waiting:
    case BatchJobState::Running:
    case BatchJobState::Done:
        break;
    }
    return "";
}

std::string Paragraph(const std::string& kind, const std::string& text)
{
    return text.empty() ? "" : "<p class=\"" + kind + "\">" + HtmlText(text) + "</p>\n";
}

std::string ListHtml(const std::string& heading, const std::vector<std::string>& texts)
{
    std::string html;
    for (const std::string& text : texts)
    {
        html += "<li class=\"value\">" + HtmlText(text) + "</li>\n";
    }
    return html.empty() ? "" : "<p class=\"neighbours\">" + heading + "</p>\n<ul>\n" + html + "</ul>\n";
}

/// "exit code 1, 2 attempts, quick verification, on node7 from 2026-11-22T11:03:07Z to ..."
std::string AttemptText(const BatchResult& result)
{
    std::string text;
    if (result.failure == BatchResult::Failure::FFmpeg)
    {
        text += "exit code " + std::to_string(result.exitCode) + ", ";
    }
    text += Count(result.attempts, "attempt");
    text += result.verification.empty() ? "" : ", verification " + result.verification;
    text += result.host.empty() ? "" : ", on " + result.host;
    text += result.started.empty() ? "" : ", from " + result.started;
    return text + (result.ended.empty() ? "" : " to " + result.ended);
}

/// The commands as a reader copies them into a shell. Nothing is escaped but what HTML needs: a shell line
/// shows by itself what nobody would see.
std::string CommandsHtml(const std::vector<std::vector<std::string>>& commands)
{
    std::string html = commands.size() == 1 ? "<p class=\"neighbours\">ffmpeg's command:</p>\n"
                                            : "<p class=\"neighbours\">ffmpeg's commands:</p>\n";
    for (const std::vector<std::string>& words : commands)
    {
        html += "<pre>";
        AppendHtml(ShellLine(words), html);
        html += "</pre>\n";
    }
    return html;
}

/// What ffmpeg was given, or how to learn what it would be given: that depends on what the sources hold,
/// which are not opened for a page.
std::string CommandHtml(const BatchJob& job, const std::optional<BatchResult>& result)
{
    if (result && !result->commands.empty())
    {
        return CommandsHtml(result->commands);
    }
    return job.IsPlanned() ? "<p class=\"neighbours\">ffmpeg's command, asked in the batch's folder: "
                             "<code>zconf job run --dry-run --overwrite jobs/" +
                                 BatchFileName(job.number) + "</code></p>\n"
                           : "";
}

} // namespace

bool BatchJobDetails::IsBad() const
{
    return status.state == BatchJobState::Failed || status.state == BatchJobState::Missing ||
           status.state == BatchJobState::Changed || status.state == BatchJobState::Refused;
}

bool BatchJobDetails::IsOpen() const
{
    return status.state != BatchJobState::Done && status.state != BatchJobState::Waiting &&
           status.state != BatchJobState::Running;
}

bool BatchJobDetails::HasMore() const
{
    const bool hasTask = task != nullptr && status.state != BatchJobState::Done;
    return IsOpen() || hasTask || !job.notes.empty() ||
           (status.result && !(status.result->messages.empty() && status.result->notes.empty()));
}

std::string DetailsHtml(const BatchJobDetails& details)
{
    const BatchJob& job = details.job;
    const std::optional<BatchResult>& result = details.status.result;
    std::string html = "<section class=\"record\" id=\"" + details.Anchor() + "\">\n<h3><a href=\"#job-" +
                       std::to_string(job.number) + "\">Job " + std::to_string(job.number) +
                       "</a>: " + NameOf(details.status.state) + "</h3>\n";
    html += Paragraph("neighbours",
                      job.input + ", preset " + job.preset + (job.IsPlanned() ? ", to " + job.output : ""));
    html += Paragraph("bad", ReasonOf(details));
    html += result ? Paragraph("neighbours", AttemptText(*result)) : "";
    html += details.task != nullptr ? Paragraph("neighbours", SlurmTaskText(*details.task)) : "";
    html += result ? ListHtml("ffmpeg's last lines:", result->messages) : "";
    html += result ? ListHtml("Of the run:", result->notes) : "";
    html += ListHtml("Of the plan:", job.notes);
    html += details.IsOpen() ? CommandHtml(job, result) : "";
    return html + "</section>\n";
}

} // namespace Zelnor::Media
