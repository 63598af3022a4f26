#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Conf/Private/GraphUnit.h"
#include "Conf/Private/Log.h"
#include "Core/Interfaces/Exception.h"

#include <stdexcept>
#include <utility>

namespace Zelnor::Conf
{

namespace
{

using Core::Property;

Property WithoutStreams(const Property& preset)
{
    if (preset.GetType() != PROPERTY_TYPE_GROUP)
    {
        return preset;
    }
    Property record(preset.GetName());
    for (const Property& child : preset)
    {
        if (child.GetName() != IPreset::KEY_STREAMS)
        {
            record.Add(child);
        }
    }
    return record;
}

} // namespace

Property ITranscodingMetaGraph::GetControlledBy(unsigned int index)
{
    Property record(CONTROLLED_BY);
    record.SetChildT(CONTROLLED_BY, static_cast<long long>(index)); // kept: the record's own name
    return record;
}

Property ITranscodingMetaGraph::MakeInFileDescription(const ioPath& path)
{
    Property record(KEY_SOURCE);
    record.SetChildT(IPreset::KEY_TYPE_ID, KEY_SOURCE_TYPE_FILE);
    record.SetChildT(KEY_FILEPATH, path.utf8string());
    return record;
}

Property ITranscodingMetaGraph::MakeOutFileDescription(const boost::intrusive_ptr<const IPreset>& preset,
                                                       const ioPath& path, bool losslessDvd)
{
    if (preset == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, std::invalid_argument("preset is NULL"));
    }
    Property record = WithoutStreams(preset->GetProperty());
    record.SetChildT(KEY_FILEPATH, path.utf8string());
    if (losslessDvd)
    {
        LogInfo(kGraphSource, __LINE__, "Replacing output format for lossless conversion to DVD");
        record.SetChildT(IFormatFile::TAG_CONTAINER, IFormatFile::FORMAT_DVD);
    }
    return record;
}

Property ITranscodingMetaGraph::MakeRawStreamDescription(unsigned int index)
{
    Property record(KEY_STREAM_RAW);
    record.SetChildT(KEY_STREAM_RAW_ID, static_cast<long long>(index));
    return record;
}

void ITranscodingMetaGraph::AddSlaveStreamIndex(Property& target, const Property& settings,
                                                unsigned int index)
{
    // Completed before the target is changed: `settings` may be the target or part of it.
    Property entry;
    entry.SetChildT(MERGE_WITH, static_cast<long long>(index)); // kept: MERGE_WITH, not MERGE_WITH_INDEX
    entry.SetChild(MERGE_SETTINGS, settings);
    const Property::iterator list = target.FindChild(MERGE_WITH);
    if (list != target.end())
    {
        list->Add(std::move(entry));
        return;
    }
    Property newList;
    newList.Add(std::move(entry));
    target.SetChild(MERGE_WITH, std::move(newList));
}

} // namespace Zelnor::Conf
