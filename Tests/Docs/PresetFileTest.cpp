#include "Tests/Docs/Document.h"
#include "Tests/Docs/VocabularyKeys.h"
#include "Tests/Support/MediaFixtures.h"

#include "Conf/Interfaces/IPreset.h"
#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/PropertySerializer.h"
#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using Conf::IPreset;
using Core::Property;

boost::intrusive_ptr<Media::PresetFile> Read(const std::string& text)
{
    return Media::PresetFile::Read(*Core::MemoryDataInput::Create(text), "preset.json");
}

/// Why the preset is refused; empty when it is not.
std::string Refusal(const Property& preset)
{
    rapidjson::Document json;
    Core::PropertySerializer::Save(preset, json, json.GetAllocator());
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    json.Accept(writer);
    try
    {
        Read(text.GetString());
        return "";
    }
    catch (const Media::PresetFileException& refused)
    {
        return *boost::get_error_info<TagDescription>(refused);
    }
}

class PresetDocument : public testing::Test
{
protected:
    Property Example() const { return Read(m_document.Block("json"))->GetProperty(); }
    static Property& Audio(Property& preset)
    {
        return preset[IPreset::KEY_STREAMS][IPreset::STREAM_TYPE_AUDIO];
    }
    static std::string AudioPlace() { return "preset.json: small-mp4.$$STREAMS$$.audio."; }

    Document m_document{"preset-file.md"};
};

TEST_F(PresetDocument, ShowsAPresetThatAJobIsPlannedWith)
{
    Media::JobRequest request;
    request.output = "out";
    const Media::PlannedJob job =
        Media::PlanJob(MakeMediaFile({MakeVideoStream(1920, 1080), MakeAudioStream()}),
                       Read(m_document.Block("json")), request);
    EXPECT_TRUE(job.graph->TopologyIsValid());
    std::vector<Conf::NodeId> nodes;
    job.graph->Nodes(nodes);
    EXPECT_EQ(nodes.size(), 4U);
}

TEST_F(PresetDocument, ListsWhatIsExpectedOfAPreset)
{
    for (const auto& row : m_document.Table("Key of the preset | Expected"))
    {
        Property preset = Example();
        preset.SetChild(row[0], Property::None(row[0]));
        EXPECT_EQ(Refusal(preset),
                  "preset.json: small-mp4." + row[0] + ": expected " + row[1] + ", found null");
        preset.RemoveChild(row[0]);
        const bool isNeeded = row[2].rfind("must be there", 0) == 0;
        EXPECT_EQ(Refusal(preset),
                  isNeeded ? "preset.json: small-mp4." + row[0] + ": expected " + row[1] + ", found nothing"
                           : "");
    }
}

TEST_F(PresetDocument, ListsWhatIsExpectedOfAStream)
{
    for (const auto& row : m_document.Table("Key of a stream | Expected"))
    {
        Property preset = Example();
        Audio(preset).SetChild(row[0], Property::None(row[0]));
        EXPECT_EQ(Refusal(preset), AudioPlace() + row[0] + ": expected " + row[1] + ", found null");
        Audio(preset).RemoveChild(row[0]);
        const bool isNeeded = row[2].rfind("must be there", 0) == 0;
        EXPECT_EQ(Refusal(preset),
                  isNeeded ? AudioPlace() + row[0] + ": expected " + row[1] + ", found nothing" : "");
    }
}

TEST_F(PresetDocument, ListsEveryKeyThatIsChecked)
{
    std::vector<std::string> listed;
    for (const auto& row : m_document.Table("Key of a stream | Expected"))
    {
        listed.push_back(row[0]);
    }
    for (const std::string& key : VocabularyKeys())
    {
        Property preset = Example();
        Audio(preset).SetChild(key, Property::None(key));
        const bool isListed = std::find(listed.begin(), listed.end(), key) != listed.end();
        const bool isUnknown = Refusal(preset).find("unknown setting '" + key + "'") != std::string::npos;
        // These describe a stream, and may be anything.
        const bool isFree = key == "image_flag" || key == "frame_size" || key == "sub_charenc";
        EXPECT_EQ(isUnknown, !isListed && !isFree) << key;
        EXPECT_EQ(Refusal(preset) == "", isFree) << key;
    }
}

TEST_F(PresetDocument, ListsTheTypesOfStreams)
{
    const std::string text = m_document.WithoutBlanks();
    for (const std::string* const type :
         {&IPreset::STREAM_TYPE_VIDEO, &IPreset::STREAM_TYPE_AUDIO, &IPreset::STREAM_TYPE_SUBTITLES_VIDEO,
          &IPreset::STREAM_TYPE_SUBTITLES_TEXT})
    {
        EXPECT_THAT(text, testing::HasSubstr("`" + *type + "`")); // Somewhere in the prose.
    }
}

TEST_F(PresetDocument, QuotesARefusalAsItIs)
{
    Property preset("mp3");
    preset.SetChildT("container", std::string("mp3"));
    Property& audio = preset.SetChild(IPreset::KEY_STREAMS).SetChild(IPreset::STREAM_TYPE_AUDIO);
    audio.SetChildT("codec_id", std::string("CODEC_ID_MP3"));
    audio.SetChildT("bitrate", std::string("fast"));
    std::string refusal = Refusal(preset).substr(std::string("preset").size());
    refusal.erase(std::remove(refusal.begin(), refusal.end(), ' '), refusal.end());
    EXPECT_THAT(m_document.WithoutBlanks(), testing::HasSubstr("`mp3" + refusal + "`")); // One quote of many.
}

} // namespace
