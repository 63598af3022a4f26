#include "Media/Pages/TargetTables.h"

#include "Media/Pages/HtmlText.h"
#include "Media/Pages/JobItems.h"
#include "Media/Pages/RecordComparison.h"
#include "Media/Planning/EncoderChoice.h"

#include "Conf/Interfaces/IFormatFile.h"

#include <optional>

namespace Zelnor::Media
{

namespace
{

std::string Heading(const std::string& text, const std::string& anchor)
{
    return "<tbody>\n<tr><th colspan=\"4\" scope=\"rowgroup\"><a href=\"#" + anchor + "\">" + HtmlText(text) +
           "</a></th></tr>\n";
}

/// What of the source's file a target can have as well. The others, times of the file system among them,
/// change without the job.
Core::Property ComparedKeys(const MediaFile& source)
{
    const Core::Property& all = source.descriptor->GetProperty();
    Core::Property compared(all.GetName());
    for (const std::string& key : {Conf::IFormatFile::TAG_CONTAINER, Conf::IFormatFile::TAG_METADATA})
    {
        const auto child = all.FindChild(key);
        if (child != all.end())
        {
            compared.Add(*child);
        }
    }
    return compared;
}

std::string StreamRows(const Transcode& transcode, const TranscodeStream& stream)
{
    const bool isKnown = stream.input != TranscodeStream::kNoInput;
    const bool isCopied = IsCopied(stream.codec);
    std::string text = stream.place.streamKind.empty() ? "stream" : stream.place.streamKind + " stream";
    text += stream.place.stream ? " " + std::to_string(*stream.place.stream) : "";
    text += isKnown ? " of " + transcode.inputs[stream.input].name : "";
    text += isCopied ? ", copied" : "";
    const Core::Property* const source =
        isKnown ? &transcode.SourceOf(stream).descriptor->GetProperty() : nullptr;
    return Heading(text, LinkAnchor(*stream.place.link)) + ComparisonRows(source, stream.codec, isCopied) +
           "</tbody>\n";
}

std::string TableOf(const Transcode& transcode)
{
    // Of several sources, none is the one that the target's own keys compare with.
    std::optional<Core::Property> source;
    if (transcode.inputs.size() == 1)
    {
        source = ComparedKeys(transcode.inputs.front());
    }
    std::string html = "<div class=\"wide\"><table>\n<caption>" +
                       HtmlText(transcode.output.empty() ? "a target without a name" : transcode.output) +
                       "</caption>\n<thead><tr><th scope=\"col\">Key</th><th scope=\"col\">Source</th>"
                       "<th scope=\"col\">Target</th><th scope=\"col\">Change</th></tr></thead>\n" +
                       Heading("file", NodeAnchor(*transcode.place.node)) +
                       ComparisonRows(source ? &*source : nullptr, transcode.target, false) + "</tbody>\n";
    for (const TranscodeStream& stream : transcode.streams)
    {
        html += StreamRows(transcode, stream);
    }
    return html + "</table></div>\n";
}

} // namespace

std::string TargetTablesHtml(const std::vector<Transcode>& transcodes)
{
    std::string html;
    for (const Transcode& transcode : transcodes)
    {
        html += TableOf(transcode);
    }
    return html.empty() ? "<p>No node of the job is a target.</p>\n" : html;
}

} // namespace Zelnor::Media
