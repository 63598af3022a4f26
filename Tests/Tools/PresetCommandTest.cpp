#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>

#include <rapidjson/document.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kFlac =
    R"({"p":{"container":"flac","name":"Mine","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_FLAC"}}}})";

class PresetCommand : public MediaTest
{
protected:
    PresetCommand() { std::filesystem::create_directories(Folder() / "data/zelnor/presets"); }

    /// With presets of one's own in "data/zelnor/presets".
    ProcessResult Preset(std::vector<std::string> words) const
    {
        words.insert(words.begin(), "preset");
        return Here(std::move(words));
    }
    ProcessResult Here(std::vector<std::string> words) const
    {
        ProcessOptions options;
        options.environment = {"XDG_DATA_HOME=" + (Folder() / "data").string()};
        return Zconf(std::move(words), options);
    }
    static rapidjson::Document Json(const ProcessResult& result)
    {
        ExpectQuietSuccess(result);
        rapidjson::Document document;
        document.Parse(result.output.c_str());
        EXPECT_FALSE(document.HasParseError()) << result.output;
        return document;
    }
};

TEST_F(PresetCommand, ListsPresetsWithTitleAndFolder)
{
    Write("data/zelnor/presets/mine.json", kFlac);
    const ProcessResult result = Preset({"list", "mine"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "mine  Mine  " + (Folder() / "data/zelnor/presets").string() + "\n");
    const ProcessResult all = Preset({"list"});
    EXPECT_THAT(all.output, HasSubstr("\nweb-vp9-720p "));
}

TEST_F(PresetCommand, ListsWhatPresetsMakeForScripts)
{
    Write("data/zelnor/presets/mine.json", kFlac);
    const rapidjson::Document list = Json(Preset({"list", "mine", "--json"}));
    ASSERT_EQ(list.Size(), 1U);
    EXPECT_STREQ(list[0]["name"].GetString(), "mine");
    EXPECT_STREQ(list[0]["title"].GetString(), "Mine");
    EXPECT_STREQ(list[0]["makes"].GetString(), "flac; audio FLAC");
    EXPECT_EQ(list[0]["file"].GetString(), (Folder() / "data/zelnor/presets/mine.json").string());
    EXPECT_FALSE(list[0].HasMember("fault"));
}

TEST_F(PresetCommand, ListsAPresetThatCannotBeUsed)
{
    Write("data/zelnor/presets/zzz.json", "{");
    const rapidjson::Document list = Json(Preset({"list", "zzz", "--json"}));
    EXPECT_THAT(list[0]["fault"].GetString(), HasSubstr("zzz.json: line 1, column "));
    EXPECT_THAT(Preset({"list", "zzz"}).output, StartsWith("zzz  cannot be used: "));
}

TEST_F(PresetCommand, SaysNoWhereNoPresetMatches)
{
    const ProcessResult result = Preset({"list", "no preset of that name"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
}

TEST_F(PresetCommand, ShowsEverySettingOfAPreset)
{
    Write("p.json", R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H264",)"
                    R"("frameRateRatio":[25,1],"PIXELFORMAT":0,"codec.options.encode":{"crf":20}}}}})");
    const ProcessResult result = Preset({"show", "p.json"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "name       p\n"
                             "container  mp4\n"
                             "makes      mp4; video H264\n"
                             "file       p.json\n"
                             "video\n"
                             "  codec_id                  CODEC_ID_H264\n"
                             "  frameRateRatio            25/1\n"
                             "  PIXELFORMAT               YUV420P\n"
                             "  codec.options.encode.crf  20\n");
}

TEST_F(PresetCommand, ShowsWhyNoJobCanBeMadeWithAPreset)
{
    Write("p.json", R"({"p":{"container":"webm","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_MP3"}}}})");
    const ProcessResult result = Preset({"show", "p.json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("CODEC_ID_MP3"));
    EXPECT_EQ(result.messages,
              "zconf: note: p.json: p.$$STREAMS$$.audio.codec_id: the container webm cannot hold "
              "CODEC_ID_MP3; it holds "
              "CODEC_ID_OPUS or CODEC_ID_VORBIS; CODEC_ID_MP3 goes into avi, matroska or mov\n");
}

TEST_F(PresetCommand, ShowsAPresetForScripts)
{
    const rapidjson::Document shown = Json(Preset({"show", "mp3", "--json"}));
    EXPECT_STREQ(shown["container"].GetString(), "mp3");
    EXPECT_STREQ(shown["preset"]["mp3"]["$$STREAMS$$"]["audio"]["codec_id"].GetString(), "CODEC_ID_MP3");
}

TEST_F(PresetCommand, FindsOnesOwnPresetsBeforeOthers)
{
    Write("data/zelnor/presets/mp3.json", kFlac);
    EXPECT_THAT(Preset({"show", "mp3"}).output, HasSubstr("title      Mine\n"));
    Write("in.mkv", TinySound());
    ExpectQuietSuccess(Here({"job", "new", "-p", "mp3", "-i", "in.mkv", "-t", "out", "-o", "job.json"}));
    EXPECT_THAT(Read("job.json"), HasSubstr("out.flac"));
}

TEST_F(PresetCommand, MakesAPresetOfAPresetAndSettings)
{
    ExpectQuietSuccess(Preset({"new", "-p", "mp3", "--set", "audio.bitrate=256000", "--title", "Good MP3",
                               "-o", "data/zelnor/presets/good-mp3.json"}));
    const rapidjson::Document list = Json(Preset({"list", "good-mp3", "--json"}));
    EXPECT_STREQ(list[0]["title"].GetString(), "Good MP3");
    EXPECT_STREQ(list[0]["makes"].GetString(), "mp3; audio MP3 STEREO, 44100 Hz, 256 kbit/s");
    ExpectQuietSuccess(Zconf({"validate", "data/zelnor/presets/good-mp3.json", "-o", "answer"}));
}

TEST_F(PresetCommand, RefusesSettingsThatAPresetCannotHave)
{
    const auto refusal = [this](const std::string& setting) {
        const ProcessResult result = Preset({"new", "-p", "mp3", "--set", setting, "-o", "p.json"});
        EXPECT_EQ(result.exitCode, 2);
        return result.messages;
    };
    EXPECT_EQ(refusal("audio.bitrat=1"),
              "zconf: audio.bitrat: unknown setting 'bitrat'; did you mean 'bitrate' or 'bitrate_mode' or "
              "'peakBitrate'?\n");
    EXPECT_EQ(refusal("audio.bitrate=fast"),
              "zconf: audio.bitrate: expected a positive integer, found 'fast'\n");
    EXPECT_EQ(refusal("audio.bitrate=4294967296"),
              "zconf: audio.bitrate: expected an integer from 1 to 2147483647, found 4294967296\n");
    EXPECT_EQ(refusal("video.width=640"), "zconf: video.width: preset 'mp3' has no settings for video\n");
    EXPECT_EQ(refusal("container=webm"),
              "zconf: p.$$STREAMS$$.audio.codec_id: the container webm cannot hold CODEC_ID_MP3; it holds "
              "CODEC_ID_OPUS or CODEC_ID_VORBIS; CODEC_ID_MP3 goes into avi, matroska or mov\n");
    EXPECT_THAT(Files(), ElementsAre("data"));
}

TEST_F(PresetCommand, NeverReplacesAFileUnasked)
{
    Write("p.json", "old");
    std::filesystem::create_symlink("gone.json", Folder() / "link.json");
    ExpectFailure(Preset({"new", "-p", "mp3", "-o", "p.json"}),
                  "'p.json' exists already; --overwrite replaces it");
    ExpectFailure(Preset({"new", "-p", "mp3", "-o", "link.json"}),
                  "'link.json' exists already; --overwrite replaces it");
    EXPECT_EQ(Read("p.json"), "old");
    EXPECT_THAT(Files(), ElementsAre("data", "link.json", "p.json"));
    ExpectQuietSuccess(Preset({"new", "-p", "mp3", "-o", "p.json", "--overwrite"}));
    EXPECT_THAT(Read("p.json"), StartsWith("{\n  \"p\": {\n    \"$$TYPE_ID$$\": \"format_mp3\",\n"));
}

TEST_F(PresetCommand, NeverReplacesTheMediaFile)
{
    Write("in.mkv", TinySound());
    ExpectFailure(Preset({"new", "--from", "in.mkv", "-o", "./in.mkv", "--overwrite"}),
                  "The preset and the media file are the same file: './in.mkv'");
}

TEST_F(PresetCommand, NeedsOneThingToMakeAPresetOf)
{
    ExpectFailure(Preset({"new", "-o", "p.json"}),
                  "A preset is made from a media file (--from) or from a preset (--preset)");
    ExpectFailure(Preset({"new", "--from", "-"}), "--from needs a named file, not standard input");
    ExpectFailure(Preset({"new", "-p", "mp3", "-o", "gone/p.json"}),
                  "Cannot write 'gone/p.json': No such file or directory");
}

TEST_F(PresetCommand, MakesMoreLikeAMediaFile)
{
    Make({"-f", "lavfi", "-i", "testsrc2=s=96x64:r=30:d=0.2", "-f", "lavfi", "-i", "sine=r=44100:d=0.2",
          "-c:v", "libx264", "-profile:v", "main", "-pix_fmt", "yuv420p", "-c:a", "aac", "like.mp4"});
    Make({"-f", "lavfi", "-i", "testsrc2=s=160x120:r=25:d=0.2", "-f", "lavfi", "-i", "sine=r=48000:d=0.2",
          "-ac", "2", "-c:v", "ffv1", "-c:a", "pcm_s16le", "in.mkv"});
    ExpectQuietSuccess(Preset({"new", "--from", "like.mp4", "-o", "like.json"}));
    EXPECT_EQ(Zconf({"convert", "in.mkv", "out.mp4", "-p", "like.json"}).exitCode, 0);
    const MediaInfo like = Info("like.mp4");
    const MediaInfo made = Info("out.mp4");
    EXPECT_EQ(made.Video().codec, like.Video().codec);
    EXPECT_EQ(made.Video().width, like.Video().width);
    EXPECT_EQ(made.Video().height, like.Video().height);
    EXPECT_EQ(made.Video().rate, like.Video().rate);
    EXPECT_EQ(made.Audio().codec, like.Audio().codec);
    EXPECT_EQ(made.Audio().rate, like.Audio().rate);
    EXPECT_EQ(made.Audio().layout, like.Audio().layout);
}

TEST_F(PresetCommand, WritesAPresetToStandardOutputUnderTheNameOfItsOrigin)
{
    const rapidjson::Document made = Json(Preset({"new", "-p", "mp3"}));
    EXPECT_TRUE(made.HasMember("mp3"));
}

} // namespace
