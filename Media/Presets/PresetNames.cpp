#include "Media/Presets/PresetNames.h"

#include "Media/NearestNames.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/PixelFormatDescription.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IPreset;
using Core::Property;

void Resolve(Property& setting)
{
    if (setting.GetName() != Conf::TAG_PIX_FMT || setting.GetType() != PROPERTY_TYPE_STRING)
    {
        return;
    }
    const std::string name = BareName(setting.GetString());
    const auto& records = PixFmtDescription::s_pixelFormatRecords;
    const auto found = std::find_if(records.begin(), records.end(),
                                    [&name](const auto& record) { return BareName(record.name) == name; });
    if (found != records.end())
    {
        setting = static_cast<long long>(found->pixFmt);
    }
}

} // namespace

void ResolveNames(Property& preset)
{
    // A preset that is not of this form is refused later.
    const auto streams = preset.GetType() == PROPERTY_TYPE_GROUP && preset.ChildExists(IPreset::KEY_STREAMS)
                             ? &preset[IPreset::KEY_STREAMS]
                             : nullptr;
    if (streams == nullptr || streams->GetType() != PROPERTY_TYPE_GROUP)
    {
        return;
    }
    for (Property& stream : *streams)
    {
        if (stream.GetType() == PROPERTY_TYPE_GROUP)
        {
            for (Property& setting : stream)
            {
                Resolve(setting);
            }
        }
    }
}

Property WithNumbers(Property setting)
{
    Resolve(setting);
    return setting;
}

} // namespace Zelnor::Media
