#include "Media/Planning/PresetSupport.h"

#include "Media/Options/ValueNames.h"
#include "Media/Planning/CodecSupport.h"
#include "Media/Planning/CodecsInstead.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IPreset;
using Core::Property;

/// Why there is no such stream; empty when there can be.
std::string ReasonAgainst(const CodecSupport& support)
{
    if (!support.muxer.empty() && support.isHeld == CodecSupport::No)
    {
        return "the container " + support.container + " cannot hold " + support.codec +
               (support.codecs.empty() ? "" : "; it holds " + AlternativesText(support.codecs)) +
               (support.containers.empty()
                    ? ""
                    : "; " + support.codec + " goes into " + AlternativesText(support.containers));
    }
    return "";
}

/// Whether it can be explained; other names are faults of another kind.
bool IsKnown(const std::string& key, const std::string& name)
{
    const std::vector<std::string> names = NamesOfValues(key);
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

std::vector<UnsupportedStream> FindUnsupportedStreams(const Property& preset, const std::string& file)
{
    std::vector<UnsupportedStream> unsupported;
    if (preset.GetType() != PROPERTY_TYPE_GROUP)
    {
        return unsupported;
    }
    const std::string container = TextUnder(preset, Conf::IFormatFile::TAG_CONTAINER);
    const auto streams = preset.FindChild(IPreset::KEY_STREAMS);
    if (!IsKnown(Conf::IFormatFile::TAG_CONTAINER, container) || streams == preset.end() ||
        streams->GetType() != PROPERTY_TYPE_GROUP)
    {
        return unsupported;
    }
    const Place place = Place{file}.At(preset.GetName()).Under(IPreset::KEY_STREAMS);
    for (const Property& stream : *streams)
    {
        const auto codec = stream.GetType() == PROPERTY_TYPE_GROUP
                               ? stream.FindChild(IFormatCodec::TAG_CODEC_ID)
                               : stream.end();
        const std::string name = codec == stream.end() ? "" : TextUnder(stream, IFormatCodec::TAG_CODEC_ID);
        if (!IsKnown(IFormatCodec::TAG_CODEC_ID, name))
        {
            continue;
        }
        const CodecSupport support = ExplainCodecSupport(container, name);
        const std::string reason = ReasonAgainst(support);
        if (!reason.empty())
        {
            unsupported.push_back({place.Under(stream.GetName()).Under(IFormatCodec::TAG_CODEC_ID), reason,
                                   &*codec, support.codecs});
        }
    }
    return unsupported;
}

} // namespace Zelnor::Media
