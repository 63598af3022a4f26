#include "Media/Pages/JobPage.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Pages/HtmlText.h"
#include "Media/Pages/JobDrawing.h"
#include "Media/Pages/JobItems.h"
#include "Media/Pages/PageFrame.h"
#include "Media/Pages/RecordTree.h"
#include "Media/Pages/TargetTables.h"
#include "Media/Running/JobPreparation.h"
#include "Media/Text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// What is known of a job.
struct JobKnowledge
{
    std::vector<Transcode> transcodes;
    std::vector<JobFault> faults;
    std::vector<JobFault> losses; ///< only of a job without faults
};

JobKnowledge LookInto(const Conf::ITranscodingMetaGraph& job, const JobPageOptions& options)
{
    JobKnowledge known;
    FaultList faults;
    if (options.opensSources)
    {
        PreparationOptions preparation;
        preparation.document = options.document;
        for (PreparedTranscode& prepared : PrepareJob(job, preparation, faults))
        {
            known.transcodes.push_back(std::move(prepared.transcode));
            std::move(prepared.losses.begin(), prepared.losses.end(), std::back_inserter(known.losses));
        }
    }
    else
    {
        FaultList ignored;
        known.transcodes = ReadTranscodes(job, options.document, ignored, SourceFiles::Ignored);
        CheckJobDocument(job, options.document, faults);
    }
    known.faults = faults.Get();
    if (!known.faults.empty())
    {
        known.losses.clear();
    }
    return known;
}

std::string LinkHtml(const PageLink& link)
{
    std::string html = "<a href=\"#" + link.anchor + "\">";
    AppendHtml(link.text, html);
    return html + "</a>";
}

std::string HeaderHtml(const JobItems& items, const JobKnowledge& known, const JobPageOptions& options)
{
    const std::size_t faults = known.faults.size();
    const std::string good = options.opensSources ? "It can be run." : "Nothing is wrong with the document.";
    return "<h1>" + HtmlText(options.document.empty() ? "Job" : options.document) +
           "</h1>\n<p class=\"verdict\">" + Count(items.nodes.size(), "node") + " and " +
           Count(items.links.size(), "link") + ". " +
           (faults == 0 ? good
                        : "<span class=\"bad\">It cannot be run: " + Count(faults, "fault") + ".</span>") +
           (options.opensSources ? "" : " The sources were not opened.") + "</p>\n";
}

/// The anchor of what the fault is about; empty when that is the job itself.
std::string AnchorOf(const JobFault& fault)
{
    if (fault.place.link)
    {
        return LinkAnchor(*fault.place.link);
    }
    return fault.place.node ? NodeAnchor(*fault.place.node) : "";
}

std::string FaultsHtml(const std::vector<JobFault>& faults)
{
    std::string html;
    for (std::size_t i = 0; i < faults.size(); ++i)
    {
        const JobFault& fault = faults[i];
        const std::string anchor = AnchorOf(fault);
        html += "<li id=\"" + FaultAnchor(i + 1) + "\">";
        html += anchor.empty() ? HtmlText(fault.Sentence())
                               : LinkHtml({anchor, ShownText(fault.place.TextInDocument())}) + ": " +
                                     HtmlText(fault.reason);
        html += "</li>\n";
    }
    return html.empty()
               ? ""
               : "<section class=\"faults\">\n<h2>Faults</h2>\n<ol>\n" + html + "</ol>\n</section>\n";
}

std::string LossesHtml(const std::vector<JobFault>& losses)
{
    std::string html;
    for (const JobFault& loss : losses)
    {
        html += "<li>" + HtmlText(loss.Sentence()) + "</li>\n";
    }
    return html.empty() ? ""
                        : "<section>\n<h2>What the targets will not have of their sources</h2>\n<ul>\n" +
                              html + "</ul>\n</section>\n";
}

std::string DrawingHtml(const JobItems& items)
{
    const BoxGraph boxes = BoxesOf(items);
    const auto layout = LayOut(boxes);
    if (!layout)
    {
        return "<p>The job is not drawn: it has " + std::to_string(boxes.boxes) + " boxes and " +
               std::to_string(boxes.arrows.size()) + " lines" + ", and a drawing has at most " +
               std::to_string(kMostBoxesAndArrows) + " of both.</p>\n";
    }
    return items.nodes.empty() ? "<p>The job does not have a node.</p>\n"
                               : "<figure>\n" + JobDrawingSvg(items, *layout) + "</figure>\n";
}

std::string RecordHtml(const JobItem& item)
{
    std::string html = "<section class=\"record\" id=\"" + item.anchor + "\">\n<h3>";
    AppendHtml(item.title + ": " + item.name, html);
    html += "</h3>\n";
    std::string neighbours;
    for (const PageLink& link : item.links)
    {
        neighbours += (neighbours.empty() ? "" : ", ") + LinkHtml(link);
    }
    html += neighbours.empty() ? "" : "<p class=\"neighbours\">" + neighbours + "</p>\n";
    std::string faults;
    for (const PageLink& fault : item.faults)
    {
        faults += "<li>" + LinkHtml(fault) + "</li>\n";
    }
    html += faults.empty() ? "" : "<ul class=\"faults\">\n" + faults + "</ul>\n";
    html += item.isHidden ? "<p>An earlier node has this id, and hides this one.</p>\n" : "";
    html += item.hasRecord ? RecordTreeHtml(item.record) : "";
    return html + "</section>\n";
}

std::string RecordsHtml(const JobItems& items)
{
    std::string html = "<section class=\"records\" id=\"records\" tabindex=\"0\" aria-label=\"Records\">\n"
                       "<p class=\"all\"><a href=\"#records\">All records</a></p>\n";
    for (const std::vector<JobItem>* const list : {&items.nodes, &items.links})
    {
        for (const JobItem& item : *list)
        {
            html += RecordHtml(item);
        }
    }
    return html + "</section>\n";
}

} // namespace

std::string MakeJobPage(const Conf::ITranscodingMetaGraph& job, const JobPageOptions& options)
{
    const JobKnowledge known = LookInto(job, options);
    const JobItems items = ReadItems(job, known.transcodes, known.faults);
    Page page;
    page.title = options.document.empty() ? "Job" : options.document;
    page.main = HeaderHtml(items, known, options) + FaultsHtml(known.faults) + LossesHtml(known.losses) +
                "<section>\n<h2>Nodes and links</h2>\n<div class=\"beside\">\n" + DrawingHtml(items) +
                RecordsHtml(items) + "</div>\n</section>\n<section>\n<h2>Source and target</h2>\n" +
                TargetTablesHtml(known.transcodes) + "</section>\n";
    return MakePage(page);
}

} // namespace Zelnor::Media
