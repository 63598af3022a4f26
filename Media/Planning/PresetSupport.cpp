#include "Media/Planning/PresetSupport.h"

#include "Media/Options/ValueNames.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/CodecsInstead.h"
#include "Media/Planning/Containers.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IPreset;
using Core::Property;

/// Whether it can be explained; other names are faults of another kind.
bool IsKnown(const std::string& key, const std::string& name)
{
    const std::vector<std::string> names = NamesOfValues(key);
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Finds what keeps jobs from being made with the streams.
class SupportCheck
{
public:
    SupportCheck(std::string container, std::vector<UnsupportedSetting>& found)
        : m_container(std::move(container)), m_found(found)
    {}

    void CheckStream(const Property& stream, const Place& place)
    {
        const std::string codec = TextUnder(stream, IFormatCodec::TAG_CODEC_ID);
        if (!IsKnown(IFormatCodec::TAG_CODEC_ID, codec))
        {
            return;
        }
        if (!MayHold(m_container, CodecNumberOf(codec)))
        {
            Add(JobFault::Container, stream, IFormatCodec::TAG_CODEC_ID, place,
                CannotHoldText(m_container, codec));
            return;
        }
        const EncoderChoice choice = ChooseEncoderFor(stream, m_container);
        const bool isDisabled = choice.key == IFormatCodec::TAG_CODEC_ID && FindEncoder(codec) != nullptr;
        if (choice.encoder == nullptr && !isDisabled)
        {
            Add(JobFault::Encoder, stream, choice.key, place, choice.fault);
        }
    }

private:
    void Add(JobFault::Kind kind, const Property& stream, const std::string& key, const Place& place,
             const std::string& reason)
    {
        const bool isOfCodec = key == IFormatCodec::TAG_CODEC_ID;
        m_found.push_back(
            {kind, place.Under(key), reason, &*stream.FindChild(key),
             isOfCodec ? CodecsFor(m_container, TextUnder(stream, key)) : std::vector<std::string>()});
    }

    std::string m_container;
    std::vector<UnsupportedSetting>& m_found;
};

} // namespace

std::vector<UnsupportedSetting> FindUnsupportedSettings(const Property& preset, const std::string& file)
{
    std::vector<UnsupportedSetting> found;
    const std::string container =
        preset.GetType() == PROPERTY_TYPE_GROUP ? TextUnder(preset, Conf::IFormatFile::TAG_CONTAINER) : "";
    if (!IsKnown(Conf::IFormatFile::TAG_CONTAINER, container))
    {
        return found;
    }
    const Place place = Place{file}.At(preset.GetName());
    const std::string cannotWrite = CannotWriteText(container);
    if (!cannotWrite.empty())
    {
        found.push_back({JobFault::Container,
                         place.Under(Conf::IFormatFile::TAG_CONTAINER),
                         cannotWrite,
                         &*preset.FindChild(Conf::IFormatFile::TAG_CONTAINER),
                         {}});
        return found;
    }
    const auto streams = preset.FindChild(IPreset::KEY_STREAMS);
    if (streams == preset.end() || streams->GetType() != PROPERTY_TYPE_GROUP)
    {
        return found;
    }
    SupportCheck check(container, found);
    for (const Property& stream : *streams)
    {
        if (stream.GetType() == PROPERTY_TYPE_GROUP)
        {
            check.CheckStream(stream, place.Under(IPreset::KEY_STREAMS).Under(stream.GetName()));
        }
    }
    return found;
}

} // namespace Zelnor::Media
