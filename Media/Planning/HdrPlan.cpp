#include "Media/Planning/HdrPlan.h"

#include "Media/Planning/VideoSettings.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatFile;
using Core::Property;

constexpr const char* kX265Parameters = "x265-params";

/// Their muxers write what the source's container says of it; each of them was tried.
bool ContainerTellsHdr(const std::string& container)
{
    static const std::array<std::string, 4> s_containers = {IFormatFile::FORMAT_MATROSKA,
                                                            IFormatFile::FORMAT_WEBM, IFormatFile::FORMAT_MP4,
                                                            IFormatFile::FORMAT_MOV};
    return std::find(s_containers.begin(), s_containers.end(), container) != s_containers.end();
}

/// Adds "name=value" unless the parameters have the name already.
void AddParameter(std::string& parameters, const std::string& name, const std::string& value)
{
    const bool isThere = (":" + parameters).find(":" + name + "=") != std::string::npos;
    if (!value.empty() && !isThere)
    {
        parameters += (parameters.empty() ? "" : ":") + name + "=" + value;
    }
}

void TellX265(const VideoHdr& hdr, Property& record)
{
    Property& options = record.ChildExists(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE)
                            ? record[IFormatCodec::TAG_CODEC_OPTIONS_ENCODE]
                            : record.SetChild(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE);
    const auto own = options.FindChild(kX265Parameters);
    std::string parameters =
        own != options.end() && own->GetType() == PROPERTY_TYPE_STRING ? own->GetString() : "";
    AddParameter(parameters, "master-display", hdr.masteringDisplay);
    AddParameter(parameters, "max-cll", hdr.contentLight);
    options.SetChildT(kX265Parameters, parameters);
}

} // namespace

void PlanHdr(const MediaStream& source, const AVCodec& encoder, const std::string& container,
             const std::string& stream, Property& record, std::vector<std::string>& notes)
{
    const VideoHdr& hdr = source.hdr;
    const bool hasData = !hdr.masteringDisplay.empty() || !hdr.contentLight.empty();
    // What is mapped to standard dynamic range has no use for it.
    if (!hasData || !IsHdr(ColorIn(record).transfer))
    {
        return;
    }
    if (encoder.name == std::string_view("libx265"))
    {
        TellX265(hdr, record);
    }
    else if (hdr.isOnlyInFrames || !ContainerTellsHdr(container))
    {
        const std::string what = hdr.contentLight.empty()       ? "mastering display"
                                 : hdr.masteringDisplay.empty() ? "content light"
                                                                : "mastering display and the content light";
        notes.push_back("The " + what + " of " + stream + " will be left out; encoder " + encoder.name +
                        " does not write " + (what.find(" and ") == std::string::npos ? "it" : "them"));
    }
}

} // namespace Zelnor::Media
