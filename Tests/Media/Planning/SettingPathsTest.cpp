#include "Media/Planning/SettingPaths.h"

#include "Media/Planning/JobRequest.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

TEST(CompleteSetting, BeginsWithWhatAPresetHas)
{
    EXPECT_THAT(CompleteSetting(""), ElementsAre("video.", "audio.", "subtitles_video.", "subtitles_text.",
                                                 "container=", "metadata."));
    EXPECT_THAT(CompleteSetting("con"), ElementsAre("container="));
}

TEST(CompleteSetting, NamesTheKeysOfAStream)
{
    EXPECT_THAT(CompleteSetting("video.bit"), ElementsAre("video.bitrate=", "video.bitrate_mode="));
    EXPECT_THAT(CompleteSetting("audio[1].lay"), ElementsAre("audio[1].layout="));
    EXPECT_THAT(CompleteSetting("video.codec.options."),
                ElementsAre("video.codec.options.analyze.", "video.codec.options.encode."));
}

TEST(CompleteSetting, KeepsTheKeysOfOtherTypesApart)
{
    EXPECT_THAT(CompleteSetting("video.lay"), IsEmpty());
    EXPECT_THAT(CompleteSetting("audio.wid"), IsEmpty());
    EXPECT_THAT(CompleteSetting("subtitles_text.lang"), ElementsAre("subtitles_text.language="));
}

TEST(CompleteSetting, NamesTheWordsOfAKey)
{
    EXPECT_THAT(CompleteSetting("audio[1].layout=STEREO"),
                ElementsAre("audio[1].layout=STEREO", "audio[1].layout=STEREO_DOWNMIX"));
    EXPECT_THAT(
        CompleteSetting("video.bitrate_mode="),
        ElementsAre("video.bitrate_mode=CBR", "video.bitrate_mode=CBR_AUTO", "video.bitrate_mode=VBR"));
    EXPECT_THAT(CompleteSetting("container=matr"), ElementsAre("container=matroska"));
    EXPECT_THAT(CompleteSetting("audio.profile="),
                IsSupersetOf({"audio.profile=aac_low", "audio.profile=aac_he"}));
    EXPECT_THAT(CompleteSetting("video.codec_id=CODEC_ID_AA"), ElementsAre("video.codec_id=CODEC_ID_AASC"));
    EXPECT_THAT(CompleteSetting("audio.codec_id=CODEC_ID_AAC"),
                ElementsAre("audio.codec_id=CODEC_ID_AAC", "audio.codec_id=CODEC_ID_AAC_LATM"));
}

TEST(CompleteSetting, SaysNothingOfOtherValues)
{
    for (const char* const typed : {"video.bitrate=", "metadata.title=", "video.metadata.t",
                                    "audio.width=", "dance.", "video", "=", ".", "video[", "x=y=z"})
    {
        EXPECT_THAT(CompleteSetting(typed), testing::AnyOf(IsEmpty(), ElementsAre(std::string(typed) + ".")))
            << typed;
    }
}

TEST(CompleteSetting, NamesNothingThatIsRefused)
{
    std::size_t count = 0;
    for (const char* const type : {"video.", "audio.", "subtitles_video.", "subtitles_text."})
    {
        for (const std::string& path : CompleteSetting(type))
        {
            for (const std::string& setting : CompleteSetting(path))
            {
                EXPECT_TRUE(setting == path || !ParseSetting(setting).path.empty()) << setting;
                ++count;
            }
        }
    }
    EXPECT_GT(count, 500U);
}

} // namespace
