#include "Tests/Support/Clip.h"
#include "Tests/Support/ZconfTest.h"

#include "Core/Interfaces/PropertySerializer.h"

#include <gmock/gmock.h>

#include <rapidjson/document.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

class Probe : public ZconfTest
{
protected:
    void Make(const std::vector<std::string>& arguments) const { MakeClip(arguments, Folder().string()); }

    rapidjson::Document Json(const std::string& name) const
    {
        const ProcessResult result = Zconf({"probe", "--json", "--", name});
        EXPECT_EQ(result.exitCode, 0) << result.messages;
        rapidjson::Document json;
        json.Parse(result.output.data(), result.output.size());
        EXPECT_FALSE(json.HasParseError());
        return json;
    }
    static Core::Property Record(rapidjson::Value& value)
    {
        Core::Property record;
        Core::PropertySerializer::Load(record, value["record"]);
        return record;
    }
};

TEST_F(Probe, FillsAVideoDescriptor)
{
    Make({"-f", "lavfi", "-i", "testsrc2=s=720x576:r=24000/1001:d=0.2", "-vf", "setsar=64/45", "-c:v",
          "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-metadata:s:v", "language=deu",
          "v.mp4"});
    rapidjson::Document json = Json("v.mp4");
    const Core::Property record = Record(json["streams"][0]);
    EXPECT_EQ(record.GetName(), "format_codec_video");
    EXPECT_EQ(record["codec_id"].GetString(), "CODEC_ID_H264");
    EXPECT_EQ(record["width"].GetInt64(), 720);
    EXPECT_EQ(record["height"].GetInt64(), 576);
    EXPECT_EQ(record["aspect_x"].GetInt64(), 64);
    EXPECT_EQ(record["aspect_y"].GetInt64(), 45);
    EXPECT_EQ(record["frameRateRatio"].GetRatio(), Core::Property::Ratio(24000, 1001));
    EXPECT_EQ(record["PIXELFORMAT"].GetInt64(), 0);
    EXPECT_EQ(record["profile"].GetString(), "baseline");
    EXPECT_EQ(record["codec_fourcc"].GetString(), "avc1");
    EXPECT_GT(record["bitrate"].GetInt64(), 0);
    EXPECT_EQ(record["metadata"]["language"].GetString(), "deu");
}

TEST_F(Probe, FillsTheFileDescriptor)
{
    Make({"-f", "lavfi", "-i", "sine=d=0.5", "-metadata", "title=A \"title\"", "-c:a", "aac", "a.m4a"});
    rapidjson::Document json = Json("a.m4a");
    const Core::Property record = Record(json);
    EXPECT_EQ(record.GetName(), "format_file");
    EXPECT_EQ(record["container"].GetString(), "m4a");
    EXPECT_EQ(record["filePath"].GetString(), "a.m4a");
    EXPECT_EQ(record["fileExtension"].GetString(), "m4a");
    EXPECT_EQ(record["file_size"].GetInt64(),
              static_cast<long long>(std::filesystem::file_size(Folder() / "a.m4a")));
    EXPECT_EQ(record["metadata"]["title"].GetString(), "A \"title\"");
    EXPECT_THAT(record["date_modified"].GetString(),
                MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z"));
    EXPECT_NEAR(static_cast<double>(json["durationMicroseconds"].GetInt64()), 500000, 50000);
}

TEST_F(Probe, TheTwoLayoutsWithSixChannelsAreNotMixedUp)
{
    for (const auto& [layout, text] : {std::pair("5.1", "5POINT1_BACK"), std::pair("5.1(side)", "5POINT1")})
    {
        Make({"-f", "lavfi", "-i", std::string("anullsrc=cl=") + layout + ":d=0.1", "-c:a", "flac", "-t",
              "0.1", "a.mka"});
        rapidjson::Document json = Json("a.mka");
        const Core::Property record = Record(json["streams"][0]);
        EXPECT_EQ(record["layout"].GetString(), text);
        EXPECT_EQ(record["sample_rate"].GetInt64(), 44100);
        EXPECT_EQ(record["sample_format"].GetString(), "SAMPLE_FMT_S16");
        EXPECT_EQ(record["codec_id"].GetString(), "CODEC_ID_FLAC");
    }
}

TEST_F(Probe, ShowsHowAVideoIsRotated)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.1", "-c:v", "mpeg4", "plain.mp4"});
    Make({"-i", "plain.mp4", "-c", "copy", "-metadata:s:v:0", "rotate=270", "rotated.mp4"});
    EXPECT_EQ(Json("plain.mp4")["streams"][0]["rotation"].GetUint(), 0U);
    rapidjson::Document json = Json("rotated.mp4");
    EXPECT_EQ(json["streams"][0]["rotation"].GetUint(), 90U);
    EXPECT_EQ(Record(json["streams"][0])["metadata"]["rotate"].GetString(), "90");
    // The rest of the line is compared in MediaTextTest.
    EXPECT_THAT(Zconf({"probe", "rotated.mp4"}).output, HasSubstr("rotated 90 degrees"));
}

TEST_F(Probe, ShowsWhatTheVocabularyDoesNotName)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=64x64:d=0.1", "-c:v", "cfhd", "-pix_fmt", "yuv422p10le", "c.mov"});
    EXPECT_THAT(Zconf({"probe", "c.mov"}).output,
                HasSubstr("the vocabulary has no pixel format for yuv422p10le"));
    rapidjson::Document json = Json("c.mov");
    EXPECT_EQ(json["streams"].Size(), 1U);
    EXPECT_STREQ(json["streams"][0]["notes"][1].GetString(),
                 "the vocabulary has no identifier for the codec cfhd");
    EXPECT_FALSE(Record(json["streams"][0]).ChildExists("codec_id"));
}

TEST_F(Probe, ShowsAttachedPicturesAttachmentsAndDataStreams)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.04", "-frames:v", "1", "cover.png"});
    Make({"-f", "lavfi", "-i", "sine=d=0.2", "-i", "cover.png", "-map", "0", "-map", "1", "-c:v", "copy",
          "-disposition:v", "attached_pic", "song.mp3"});
    EXPECT_TRUE(Json("song.mp3")["streams"][1]["attachedPicture"].GetBool());
    Write("notes.txt", "text");
    Make({"-f", "lavfi", "-i", "sine=d=0.2", "-attach", "notes.txt", "-metadata:s:t", "mimetype=text/plain",
          "with.mkv"});
    EXPECT_STREQ(Json("with.mkv")["streams"][1]["kind"].GetString(), "attachment");
    Make({"-f", "lavfi", "-i", "testsrc=s=720x576:r=25:d=0.1", "-c:v", "mpeg2video", "-f", "dvd", "d.vob"});
    EXPECT_THAT(Zconf({"probe", "d.vob"}).output, HasSubstr("dvd_nav_packet"));
}

TEST_F(Probe, ShowsChaptersTimecodeAndTheNamesOfAttachments)
{
    Write("chapters", ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=80\ntitle=One\n"
                      "[CHAPTER]\nTIMEBASE=1/1000\nSTART=80\nEND=200\n");
    Write("a font.ttf", "font");
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-i", "chapters", "-attach", "a font.ttf",
          "-metadata:s:t", "mimetype=font/ttf", "-metadata:s:v", "timecode=01:00:00:00", "all.mkv"});
    rapidjson::Document json = Json("all.mkv");
    EXPECT_STREQ(json["timecode"].GetString(), "01:00:00:00");
    ASSERT_EQ(json["chapters"].Size(), 2U);
    EXPECT_EQ(json["chapters"][0]["startMicroseconds"].GetInt64(), 0);
    EXPECT_EQ(json["chapters"][0]["endMicroseconds"].GetInt64(), 80000);
    EXPECT_STREQ(json["chapters"][0]["title"].GetString(), "One");
    EXPECT_STREQ(json["chapters"][1]["title"].GetString(), "");
    EXPECT_STREQ(json["streams"][0]["timecode"].GetString(), "01:00:00:00");
    EXPECT_FALSE(json["streams"][0].HasMember("fileName"));
    EXPECT_STREQ(json["streams"][1]["fileName"].GetString(), "a font.ttf");
    EXPECT_STREQ(json["streams"][1]["mimeType"].GetString(), "font/ttf");
}

TEST_F(Probe, AMissingDurationIsNotMadeUp)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.04", "-frames:v", "1", "one.png"});
    EXPECT_TRUE(Json("one.png")["durationMicroseconds"].IsNull());
    EXPECT_THAT(Zconf({"probe", "one.png"}).output, HasSubstr("duration   unknown"));
}

TEST_F(Probe, ShowsThatVideoIsInterlaced)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=720x576:r=50:d=0.2", "-vf", "interlace", "-c:v", "mpeg2video",
          "-flags", "+ilme+ildct", "i.mpg"});
    rapidjson::Document json = Json("i.mpg");
    bool found = false;
    for (const auto& stream : json["streams"].GetArray())
    {
        found = found || stream["interlaced"].GetBool();
    }
    EXPECT_TRUE(found);
}

TEST_F(Probe, TellsProgramsHowSamplesAreCoded)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.1", "-f", "lavfi", "-i", "sine=d=0.1", "-vf",
          "format=yuv422p10le,setparams=range=tv:colorspace=bt709:color_primaries=bt709:color_trc=bt709",
          "-c:v", "prores_ks", "-c:a", "pcm_s24le", "c.mov"});
    rapidjson::Document json = Json("c.mov");
    const auto& video = json["streams"][0];
    EXPECT_STREQ(video["pixelFormat"].GetString(), "yuv422p10le");
    EXPECT_EQ(video["bitsPerSample"].GetUint(), 10U);
    EXPECT_STREQ(video["fieldOrder"].GetString(), "progressive");
    EXPECT_STREQ(video["color"]["range"].GetString(), "tv");
    EXPECT_STREQ(video["color"]["matrix"].GetString(), "bt709");
    EXPECT_STREQ(video["color"]["primaries"].GetString(), "bt709");
    EXPECT_STREQ(video["color"]["transfer"].GetString(), "bt709");
    EXPECT_TRUE(video["hdr"]["masteringDisplay"].IsNull());
    EXPECT_TRUE(video["hdr"]["contentLight"].IsNull());
    EXPECT_TRUE(video["hdr"]["dolbyVision"].IsNull());
    EXPECT_EQ(video["startMicroseconds"].GetInt64(), 0);
    const auto& audio = json["streams"][1];
    EXPECT_STREQ(audio["sampleFormat"].GetString(), "s32");
    EXPECT_EQ(audio["bitsPerSample"].GetUint(), 24U);
}

TEST_F(Probe, RefusesWhatIsNotMedia)
{
    Write("text.mp4", "This is only text.\n" + std::string(2000, 'x') + "\n");
    const ProcessResult text = Zconf({"probe", "text.mp4"});
    EXPECT_EQ(text.exitCode, 2);
    EXPECT_EQ(text.output, "");
    // The reason is FFmpeg's.
    EXPECT_THAT(text.messages, StartsWith("zconf: text.mp4: cannot be read: "));
    ExpectFailure(Zconf({"probe", "gone"}), "gone: cannot be read: No such file or directory");
    ExpectFailure(Zconf({"probe", "."}), ".: cannot be read: Is a directory");
    Write("empty.mkv", "");
    EXPECT_EQ(Zconf({"probe", "empty.mkv"}).exitCode, 2);
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-c:v", "mpeg4", "v.mp4"});
    Write("cut.mp4", Read("v.mp4").substr(0, 600));
    ExpectFailure(Zconf({"probe", "cut.mp4"}),
                  "cut.mp4: cannot be read: Invalid data found when processing input (moov atom not found)");
}

TEST_F(Probe, ATruncatedFileIsShownAsFarAsItGoes)
{
    Write("cut.mkv", TinyClip().substr(0, TinyClip().size() / 2));
    rapidjson::Document json = Json("cut.mkv");
    EXPECT_EQ(json["streams"].Size(), 2U);
}

TEST_F(Probe, EveryNameIsAPlainFile)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.04", "-frames:v", "1", "-update", "1", "pic.png"});
    const std::string picture = Read("pic.png");
    for (const std::string& name :
         {std::string("-dash.mkv"), std::string("http:x.mkv"), std::string("50%d 'n' \"q\".mkv"),
          std::string("two\nlines.mkv"), std::string("pipe:0"), std::string("concat:a|b")})
    {
        SCOPED_TRACE(name);
        Write(name, TinyClip());
        EXPECT_EQ(Json(name)["streams"].Size(), 2U);
    }
    for (const std::string& name :
         {std::string("pic%03d.png"), std::string("p*.png"), std::string("{a}.png")})
    {
        SCOPED_TRACE(name);
        Write(name, picture);
        EXPECT_EQ(Json(name)["streams"].Size(), 1U);
    }
}

TEST_F(Probe, ReadsStandardInput)
{
    ProcessOptions options;
    options.input = TinyClip();
    const ProcessResult result = Zconf({"probe", "-"}, options);
    ExpectQuietSuccess(result);
    // That the last stream is found shows that the whole input was read.
    EXPECT_THAT(result.output, HasSubstr("CODEC_ID_AC3"));
}

TEST_F(Probe, ShowsPeopleWhatMatters)
{
    Write("clip.mkv", TinyClip());
    const ProcessResult result = Zconf({"probe", "clip.mkv"});
    ExpectQuietSuccess(result);
    // Duration, size, date and tags depend on the FFmpeg that made the clip; MediaTextTest compares whole
    // texts.
    EXPECT_THAT(result.output, StartsWith("clip.mkv\n  container  matroska\n  duration   0:00:00."));
    EXPECT_THAT(result.output,
                HasSubstr("stream 0  video  CODEC_ID_MPEG4  64x48 (4:3)  25 fps  YUV420P  simple\n"));
    EXPECT_THAT(result.output,
                HasSubstr("stream 1  audio  CODEC_ID_AC3  44100 Hz  STEREO  SAMPLE_FMT_FLTP  192000 bit/s"));
    EXPECT_THAT(result.output, Not(HasSubstr("note")));
}

} // namespace
