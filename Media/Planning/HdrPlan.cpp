#include "Media/Planning/HdrPlan.h"

#include "Media/Planning/VideoSettings.h"
#include "Media/RecordText.h"

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
constexpr const char* kMasterDisplay = "master-display";
constexpr const char* kContentLight = "max-cll";

/// Their muxers write what the source's container says of it; each of them was tried.
bool ContainerTellsHdr(const std::string& container)
{
    static const std::array<std::string, 4> s_containers = {IFormatFile::FORMAT_MATROSKA,
                                                            IFormatFile::FORMAT_WEBM, IFormatFile::FORMAT_MP4,
                                                            IFormatFile::FORMAT_MOV};
    return std::find(s_containers.begin(), s_containers.end(), container) != s_containers.end();
}

std::string X265Parameters(const Property& record)
{
    const auto options = record.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE);
    return options == record.end() ? "" : TextUnder(*options, kX265Parameters);
}

bool HasParameter(const std::string& parameters, const std::string& name)
{
    return (":" + parameters).find(":" + name + "=") != std::string::npos;
}

/// Adds "name=value" unless the parameters have the name already.
void AddParameter(std::string& parameters, const std::string& name, const std::string& value)
{
    if (!value.empty() && !HasParameter(parameters, name))
    {
        parameters += (parameters.empty() ? "" : ":") + name + "=" + value;
    }
}

bool IsX265(const AVCodec& encoder) { return encoder.name == std::string_view("libx265"); }

/// What is mapped to standard dynamic range has no use for the data.
bool NeedsHdr(const MediaStream& source, const Property& record)
{
    const std::string target = ColorIn(record).transfer;
    return IsHdr(target.empty() ? source.color.transfer : target);
}

} // namespace

void PlanHdr(const MediaStream& source, const AVCodec& encoder, Property& record)
{
    const VideoHdr& hdr = source.hdr;
    if (!IsX265(encoder) || !NeedsHdr(source, record) ||
        (hdr.masteringDisplay.empty() && hdr.contentLight.empty()))
    {
        return;
    }
    std::string parameters = X265Parameters(record);
    AddParameter(parameters, kMasterDisplay, hdr.masteringDisplay);
    AddParameter(parameters, kContentLight, hdr.contentLight);
    Property& options = record.ChildExists(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE)
                            ? record[IFormatCodec::TAG_CODEC_OPTIONS_ENCODE]
                            : record.SetChild(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE);
    options.SetChildT(kX265Parameters, parameters);
}

std::string HdrLoss(const MediaStream& source, const Property& record, const AVCodec& encoder,
                    const std::string& container)
{
    const VideoHdr& hdr = source.hdr;
    if (!NeedsHdr(source, record) || (!hdr.isOnlyInFrames && ContainerTellsHdr(container)))
    {
        return "";
    }
    const std::string parameters = IsX265(encoder) ? X265Parameters(record) : "";
    const bool losesDisplay = !hdr.masteringDisplay.empty() && !HasParameter(parameters, kMasterDisplay);
    const bool losesLight = !hdr.contentLight.empty() && !HasParameter(parameters, kContentLight);
    if (!losesDisplay && !losesLight)
    {
        return "";
    }
    const std::string what = !losesLight     ? "mastering display is"
                             : !losesDisplay ? "content light is"
                                             : "mastering display and its content light are";
    const std::string why = IsX265(encoder) ? " is not told " : " does not write ";
    return "its " + what + " left out; encoder " + encoder.name + why +
           (losesDisplay && losesLight ? "them" : "it");
}

} // namespace Zelnor::Media
