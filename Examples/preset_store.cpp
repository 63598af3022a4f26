#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <iostream>
#include <map>

using namespace Zelnor;
using namespace Zelnor::Conf;

namespace
{

/// A preset of an application that keeps its presets in its own way. A stream's index is its position.
class StoredPreset final : public Counted<IPreset>
{
public:
    StoredPreset(const std::string& id, const std::string& container,
                 const std::vector<std::pair<std::string, std::string>>& streams)
        : m_record(id)
    {
        m_record.SetChildT(IFormatFile::TAG_CONTAINER, container);
        Core::Property& list = m_record.SetChild(KEY_STREAMS);
        for (const auto& [type, codecId] : streams)
        {
            m_indexes[type].push_back(static_cast<int>(list.Count()));
            Core::Property stream(type);
            stream.SetChildT("codec_id", codecId);
            list.Add(std::move(stream)); // Several streams may be of one type.
        }
    }

    const Core::Property& GetProperty() const override { return m_record; }
    std::uint32_t GetStreamCount() const override { return std::uint32_t(m_record[KEY_STREAMS].Count()); }
    void GetStreamIndexes(const std::string& streamType, std::vector<int>& out) const override
    {
        const auto found = m_indexes.find(streamType);
        out = found == m_indexes.end() ? std::vector<int>() : found->second;
    }

private:
    Core::Property m_record;
    std::map<std::string, std::vector<int>> m_indexes;
};

} // namespace

int main()
{
    std::map<std::string, boost::intrusive_ptr<const IPreset>> store;
    store["music"] = new StoredPreset("music", "mp3", {{"audio", "CODEC_ID_MP3"}});
    store["phone"] =
        new StoredPreset("phone", "mp4", {{"video", "CODEC_ID_H264"}, {"audio", "CODEC_ID_AAC"}});
    for (const auto& [id, preset] : store)
    {
        const auto target = ITranscodingMetaGraph::MakeOutFileDescription(preset, "/media/" + id, false);
        std::cout << id << ": " << (IsAudioOnlyPreset(preset) ? "sound" : "video") << " as "
                  << target[IFormatFile::TAG_CONTAINER].GetString() << "\n";
    }
}
