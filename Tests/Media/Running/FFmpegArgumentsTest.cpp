#include "Media/Running/FFmpegArguments.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Arguments = std::vector<std::string>;

const std::string kSmallH264 =
    R"("codec_id":"CODEC_ID_H264","width":640,"height":360,"aspect_x":1,"aspect_y":1,"PIXELFORMAT":0,)"
    R"("frameRateRatio":[25,1],"bitrate":800000)";

MediaFile OneVideo() { return MakeMediaFile({MakeVideoStream()}); }

/// What every output ends with.
Arguments Ended(Arguments arguments, const std::string& muxer = "mp4")
{
    for (const std::string& word :
         {std::string("-map_metadata"), std::string("-1"), std::string("-map_metadata:s"), std::string("-1"),
          std::string("-map_chapters"), std::string("-1"), std::string("-max_muxing_queue_size"),
          std::string("4096")})
    {
        arguments.push_back(word);
    }
    if (muxer == "mp4")
    {
        arguments.insert(arguments.end(), {"-movflags", "+faststart"});
    }
    arguments.insert(arguments.end(), {"-f", muxer, "file:out.mp4"});
    return arguments;
}

void ExpectFault(const Transcode& transcode, const std::string& sentence)
{
    EXPECT_EQ(FaultsOf(transcode), Arguments{sentence});
}

TEST(FFmpegArguments, OfAVideo)
{
    const auto runs = ArgumentsOf(MakeTranscode(
        OneVideo(), VideoRecord(kSmallH264 + R"(,"profile":"high","preset":"slow","tune":"film")")));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0], Ended({"-n",
                              "-protocol_whitelist",
                              "file",
                              "-f",
                              "matroska",
                              "-i",
                              "file:in.mkv",
                              "-map",
                              "0:0",
                              "-filter:0",
                              "fps=25/1,scale=640:360,setsar=1/1:max=65535,format=yuv420p",
                              "-c:0",
                              "libx264",
                              "-b:0",
                              "800000",
                              "-profile:0",
                              "high",
                              "-preset:0",
                              "slow",
                              "-tune:0",
                              "film"}));
}

TEST(FFmpegArguments, OfSound)
{
    const auto runs = ArgumentsOf(MakeTranscode(
        MakeMediaFile({MakeAudioStream()}),
        AudioRecord(R"("codec_id":"CODEC_ID_MP3","bitrate":192000,"sample_rate":44100,"layout":"STEREO",)"
                    R"("sample_format":"SAMPLE_FMT_S16P")"),
        "mp3"));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0],
              Ended({"-n", "-protocol_whitelist", "file", "-f", "matroska", "-i", "file:in.mkv", "-map",
                     "0:0", "-filter:0", "aformat=sample_fmts=s16p:sample_rates=44100:channel_layouts=stereo",
                     "-c:0", "libmp3lame", "-b:0", "192000"},
                    "mp3"));
}

TEST(FFmpegArguments, OfTwoPassesAreTwoRuns)
{
    const auto runs = ArgumentsOf(
        MakeTranscode(OneVideo(), VideoRecord(kSmallH264 + R"(,"two_pass_encoding":"two_pass")")));
    ASSERT_EQ(runs.size(), 2U);
    const Arguments common = {"-protocol_whitelist",
                              "file",
                              "-f",
                              "matroska",
                              "-i",
                              "file:in.mkv",
                              "-map",
                              "0:0",
                              "-filter:0",
                              "fps=25/1,scale=640:360,setsar=1/1:max=65535,format=yuv420p",
                              "-c:0",
                              "libx264",
                              "-b:0",
                              "800000"};
    Arguments first = {"-y"};
    first.insert(first.end(), common.begin(), common.end());
    first.insert(first.end(), {"-pass:0", "1", "-passlogfile:0", "log-0-0", "-f", "null", "file:/dev/null"});
    EXPECT_EQ(runs[0], first);
    Arguments second = {"-n"};
    second.insert(second.end(), common.begin(), common.end());
    second.insert(second.end(), {"-pass:0", "2", "-passlogfile:0", "log-0-0"});
    EXPECT_EQ(runs[1], Ended(second));
}

TEST(FFmpegArguments, OfAStreamThatIsCopied)
{
    const auto runs = ArgumentsOf(MakeTranscode(
        OneVideo(), VideoRecord(R"("lossless":1,"odd":1,"language":"deu","metadata":{"a":"b"})")));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0],
              Ended({"-n", "-protocol_whitelist", "file", "-f", "matroska", "-i", "file:in.mkv", "-map",
                     "0:0", "-c:0", "copy", "-metadata:s:0", "a=b", "-metadata:s:0", "language=deu"}));
}

TEST(FFmpegArguments, OfMergedSounds)
{
    const auto runs = ArgumentsOf(
        MakeTranscode(MakeMediaFile({MakeAudioStream(), MakeAudioStream(), MakeAudioStream()}),
                      AudioRecord(R"("codec_id":"CODEC_ID_AAC","layout":"STEREO")"), "mp4", {2, 1}));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(
        runs[0],
        Ended({"-n", "-protocol_whitelist", "file", "-f", "matroska", "-i", "file:in.mkv", "-filter_complex",
               "[0:0][0:2][0:1]amix=inputs=3:normalize=0,aformat=channel_layouts=stereo[merged0]", "-map",
               "[merged0]", "-c:0", "aac"}));
}

TEST(FFmpegArguments, OfSubtitlesThatAreDrawn)
{
    const auto runs = ArgumentsOf(MakeTranscode(
        MakeMediaFile({MakeVideoStream(), MakeSubtitleStream(), MakeBitmapSubtitle()}, "it's.mkv"),
        VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":1)"), "mp4", {1, 2}));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0],
              Ended({"-n", "-protocol_whitelist", "file", "-f", "matroska", "-i", "file:it's.mkv",
                     "-filter_complex",
                     "[0:2]scale=1280:720:out_color_matrix=bt709[bitmap2];"
                     R"([0:0]subtitles=filename=file\\:it\\\'s.mkv:si=0[drawn];)"
                     "[drawn][bitmap2]overlay=x=(W-w)/2:y=(H-h)/2:eof_action=pass:format=auto[merged0]",
                     "-map", "[merged0]", "-c:0", "libx264", "-b:0", "1"}));
}

/// A subtitle of an unknown length ends with the next one, for which ffmpeg must read ahead.
TEST(FFmpegArguments, AskForTheDurationsOfSubtitlesInTheirOwnInputAlone)
{
    Transcode transcode =
        MakeTranscode(MakeMediaFile({MakeAudioStream()}, "one.mkv"),
                      AudioRecord(R"("codec_id":"CODEC_ID_AAC","bitrate":96000)"), "matroska");
    transcode.inputs.push_back(MakeMediaFile({MakeBitmapSubtitle("CODEC_ID_HDMV_PGS_SUBTITLE")}, "two.mkv"));
    transcode.streams.push_back(transcode.streams.front());
    transcode.streams.back().input = 1;
    transcode.streams.back().codec =
        RecordOf(R"({"format_codec_subtitle":{"codec_id":"CODEC_ID_DVD_SUBTITLE"}})");
    const std::vector<std::string> words = ArgumentsOf(transcode).at(0);
    const auto place = [&words](const std::string& word) {
        return std::find(words.begin(), words.end(), word) - words.begin();
    };
    EXPECT_EQ(std::count(words.begin(), words.end(), "-fix_sub_duration:0"), 1);
    EXPECT_LT(place("file:one.mkv"), place("-fix_sub_duration:0"));
    EXPECT_LT(place("-fix_sub_duration:0"), place("file:two.mkv"));
}

TEST(FFmpegArguments, GiveTheDecoderItsOptionsAndImagesTheirNames)
{
    MediaFile image = OneVideo();
    image.demuxer = "image2";
    image.name = "in%d.png";
    const auto runs = ArgumentsOf(MakeTranscode(
        image,
        VideoRecord(R"("codec_id":"CODEC_ID_PNG","codec.options.analyze":{"skip_frame":"nokey","lowres":1})"),
        "png"));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0], (Arguments{"-n",
                                  "-protocol_whitelist",
                                  "file",
                                  "-f",
                                  "image2",
                                  "-pattern_type",
                                  "none",
                                  "-skip_frame:0",
                                  "nokey",
                                  "-lowres:0",
                                  "1",
                                  "-i",
                                  "file:in%d.png",
                                  "-map",
                                  "0:0",
                                  "-c:0",
                                  "png",
                                  "-frames:0",
                                  "1",
                                  "-map_metadata",
                                  "-1",
                                  "-map_metadata:s",
                                  "-1",
                                  "-map_chapters",
                                  "-1",
                                  "-max_muxing_queue_size",
                                  "4096",
                                  "-update",
                                  "1",
                                  "-f",
                                  "image2",
                                  "file:out.mp4"}));
}

TEST(FFmpegArguments, CarryTheTargetsTags)
{
    Transcode transcode = MakeTranscode(OneVideo(), VideoRecord(R"("lossless":1)"));
    transcode.target = RecordOf(R"({"p":{"metadata":{"title":"T","rotate":90,"track":3,"group":{}}}})");
    EXPECT_EQ(ArgumentsOf(transcode)[0], (Arguments{"-n",          "-protocol_whitelist",
                                                    "file",        "-f",
                                                    "matroska",    "-i",
                                                    "file:in.mkv", "-map",
                                                    "0:0",         "-c:0",
                                                    "copy",        "-map_metadata",
                                                    "-1",          "-map_metadata:s",
                                                    "-1",          "-map_chapters",
                                                    "-1",          "-metadata",
                                                    "title=T",     "-metadata",
                                                    "track=3",     "-max_muxing_queue_size",
                                                    "4096",        "-movflags",
                                                    "+faststart",  "-f",
                                                    "mp4",         "file:out.mp4"}));
    transcode.target = RecordOf(R"({"p":{"metadata":{"title":"\u0000"}}})");
    ExpectFault(transcode, "node 2, metadata.title: a text with a NUL byte cannot be given to ffmpeg");
}

TEST(FFmpegArguments, TheFirstFaultIsThrownWithItsPlace)
{
    const Thrown thrown = ExpectThrow<JobException>([] {
        MakeFFmpegArguments(
            MakeTranscode(OneVideo(), VideoRecord(kSmallH264 + R"(,"profile":"odd","more":1)")));
    });
    EXPECT_EQ(thrown.description, "job.json: link 3 -> 2, video stream 0: unknown setting 'more'");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "job.json");
    EXPECT_EQ((thrown.Get<MediaException::TagLink>()), std::pair(3LL, 2LL));
    EXPECT_EQ(thrown.Get<MediaException::TagStream>(), 0U);
}

TEST(FFmpegArguments, EveryFaultOfAStreamIsTold)
{
    EXPECT_EQ(
        FaultsOf(
            MakeTranscode(OneVideo(),
                          VideoRecord(R"("codec_id":"CODEC_ID_H264","width":-640,"height":360,"aspect_x":1,)"
                                      R"("aspect_y":1,"PIXELFORMAT":28,"profile":"odd","more":1)"),
                          "webm")),
        (Arguments{"link 3 -> 2, video stream 0, width: expected an integer from 1 to 65535, found -640",
                   "link 3 -> 2, video stream 0: unknown setting 'more'",
                   "link 3 -> 2, video stream 0: the container webm cannot hold CODEC_ID_H264; it holds "
                   "CODEC_ID_VP9 "
                   "or CODEC_ID_VP8; CODEC_ID_H264 goes into matroska, mov or mp4",
                   "link 3 -> 2, video stream 0, PIXELFORMAT: encoder libx264 does not support "
                   "pixel format RGBA",
                   "link 3 -> 2, video stream 0, profile: encoder libx264 does not have a profile "
                   "'odd'"}));
}

TEST(FFmpegArguments, ThereIsAnEncoderForEachStream)
{
    const auto codec = [](const std::string& settings) {
        return MakeTranscode(OneVideo(), VideoRecord(settings));
    };
    const std::string place = "link 3 -> 2, video stream 0, codec_id: ";
    ExpectFault(codec(""), place + "expected the name of a codec, found nothing");
    ExpectFault(codec(R"("codec_id":"CODEC_ID_RV40")"),
                place + "the installed FFmpeg does not have an encoder for CODEC_ID_RV40; for mp4 it can "
                        "encode CODEC_ID_H264, "
                        "CODEC_ID_MPEG1VIDEO or CODEC_ID_MPEG2VIDEO");
    ExpectFault(codec(R"("codec_id":"CODEC_ID_H265")"),
                place + "encoding CODEC_ID_H265 is disabled unless its encoder is named ('libx265', under "
                        "preferred_encoder)");
    ExpectFault(codec(R"("codec_id":"CODEC_ID_AAC")"),
                place + "expected a codec for video, found 'CODEC_ID_AAC'");
    ExpectFault(
        codec(R"("codec_id":"CODEC_ID_H264","bitrate":1,"preferred_encoder":"libx265")"),
        "link 3 -> 2, video stream 0, preferred_encoder: the installed FFmpeg does not have an encoder "
        "'libx265' for CODEC_ID_H264; it has 'libx264'");
    // A C string would end before the rest.
    ExpectFault(
        codec(R"("codec_id":"CODEC_ID_H264","bitrate":1,"preferred_encoder":"libx264\u0000x")"),
        "link 3 -> 2, video stream 0, preferred_encoder: a text with a NUL byte cannot be given to ffmpeg");
}

TEST(FFmpegArguments, TheEncoderSupportsWhatItIsAskedFor)
{
    const auto fault = [](const std::string& settings, const std::string& keyAndReason) {
        SCOPED_TRACE(settings);
        ExpectFault(
            MakeTranscode(OneVideo(), VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":1,)" + settings)),
            "link 3 -> 2, video stream 0, " + keyAndReason);
    };
    fault(R"("preset":"glacial")", "preset: encoder libx264 does not have a preset 'glacial'");
    fault(R"("tune":"psychic")", "tune: encoder libx264 does not have a tune 'psychic'");
    fault(R"("codec.options.encode":{"no_such":1})",
          "codec.options.encode.no_such: encoder libx264 does not have an option 'no_such'");
    fault(R"("bitrate_mode":"CBR")",
          "bitrate_mode: CBR needs bounds, which can be told only for a record with "
          "width, height and frameRateRatio");
    ExpectFault(
        MakeTranscode(OneVideo(),
                      VideoRecord(R"("codec_id":"CODEC_ID_THEORA","bitrate":1,)"
                                  R"("two_pass_encoding":1)"),
                      "ogg"),
        "link 3 -> 2, video stream 0, two_pass_encoding: encoder libtheora does not support two passes");
    ExpectFault(
        MakeTranscode(OneVideo(), VideoRecord(R"("codec_id":"CODEC_ID_H264")")),
        "link 3 -> 2, video stream 0, bitrate: missing; one can be proposed only for a record with width, "
        "height and frameRateRatio");
    ExpectFault(
        MakeTranscode(MakeMediaFile({MakeAudioStream()}),
                      AudioRecord(R"("codec_id":"CODEC_ID_AC3","bitrate":192000,"bitrate_mode":"VBR")")),
        "link 3 -> 2, audio stream 0, bitrate_mode: encoder ac3 does not support a variable bitrate");
    EXPECT_EQ(FaultsOf(MakeTranscode(
                  MakeMediaFile({MakeAudioStream()}),
                  AudioRecord(R"("codec_id":"CODEC_ID_AC3","sample_rate":12345,"layout":"OCTAGONAL")"))),
              (Arguments{"link 3 -> 2, audio stream 0, layout: encoder ac3 does not support channel layout "
                         "OCTAGONAL",
                         "link 3 -> 2, audio stream 0, sample_rate: encoder ac3 does not support sample rate "
                         "12345"}));
}

TEST(FFmpegArguments, TheContainerIsKnownAndHoldsTheStreams)
{
    const Core::Property codec = VideoRecord(R"("codec_id":"CODEC_ID_VP8","bitrate":1)");
    ExpectFault(
        MakeTranscode(OneVideo(), codec, "mp4"),
        "link 3 -> 2, video stream 0: the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264, "
        "CODEC_ID_VP9 or CODEC_ID_MPEG1VIDEO; CODEC_ID_VP8 goes into avi, matroska or mov");
    ExpectFault(
        MakeTranscode(OneVideo(), codec, "a64x"),
        "node 2, container: the installed FFmpeg cannot write the container 'a64x'; did you mean 'a64' or "
        "'adx'?");
    ExpectFault(MakeTranscode(OneVideo(), codec, std::string("webm\0", 5)),
                "node 2, container: the installed FFmpeg cannot write the container '" +
                    std::string("webm\0", 5) + "'; did you mean 'webm'?");
}

TEST(FFmpegArguments, TheRecordIsThatOfTheStreamsKind)
{
    ExpectFault(
        MakeTranscode(MakeMediaFile({MakeAudioStream()}),
                      VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":1)")),
        "link 3 -> 2, audio stream 0: expected the record 'format_codec_audio', found 'format_codec_video'");
    ExpectFault(MakeTranscode(OneVideo(), RecordOf(R"({"other":{"codec_id":"CODEC_ID_H264","bitrate":1}})")),
                "link 3 -> 2, video stream 0: expected the record 'format_codec_video', found 'other'");
}

TEST(FFmpegArguments, SubtitlesStayTextOrBitmap)
{
    const Core::Property text = RecordOf(R"({"format_codec_subtitle":{"codec_id":"CODEC_ID_MOV_TEXT"}})");
    const Core::Property bitmap =
        RecordOf(R"({"format_codec_subtitle":{"codec_id":"CODEC_ID_DVD_SUBTITLE"}})");
    const std::string place = "link 3 -> 2, subtitle stream 0, codec_id: ";
    ExpectFault(MakeTranscode(MakeMediaFile({MakeBitmapSubtitle()}), text),
                place + "a bitmap subtitle cannot become text");
    ExpectFault(MakeTranscode(MakeMediaFile({MakeSubtitleStream()}), bitmap),
                place + "a text subtitle cannot become a bitmap subtitle");
}

TEST(FFmpegArguments, OnlyStreamsThatFitAreMerged)
{
    const MediaFile file = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeVideoStream()});
    const Core::Property codec = VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":1)");
    EXPECT_EQ(FaultsOf(MakeTranscode(file, codec, "mp4", {1, 2})),
              (Arguments{"link 3 -> 2, video stream 0: audio stream 1 cannot be merged into it",
                         "link 3 -> 2, video stream 0: video stream 2 cannot be merged into it"}));
    ExpectFault(MakeTranscode(file, VideoRecord(R"("lossless":1)"), "mp4", {1}),
                "link 3 -> 2, video stream 0: nothing can be merged into a stream that is copied");
    ExpectFault(MakeTranscode(MakeMediaFile({MakeAudioStream()}), AudioRecord(R"("codec_id":"CODEC_ID_AAC")"),
                              "mp4", {0}),
                "link 3 -> 2, audio stream 0: audio stream 0 cannot be merged into it");
    ExpectFault(MakeTranscode(file, codec, "mp4", {7}),
                "link 3 -> 2, video stream 0: there is no such input or stream");
}

TEST(FFmpegArguments, ATargetHasStreams)
{
    Transcode transcode = MakeTranscode(OneVideo(), VideoRecord(""));
    transcode.streams.clear();
    ExpectFault(transcode, "node 2: a target needs at least one stream");
}

TEST(FFmpegArguments, StreamsWithoutASourceAreCheckedAsFarAsTheyCanBe)
{
    Transcode transcode =
        MakeTranscode(OneVideo(), VideoRecord(R"("codec_id":"CODEC_ID_VP8","odd":1,"bitrate":1)"));
    transcode.streams[0].input = TranscodeStream::kNoInput;
    EXPECT_EQ(
        FaultsOf(transcode),
        (Arguments{"link 3 -> 2, video stream 0: unknown setting 'odd'",
                   "link 3 -> 2, video stream 0: the container mp4 cannot hold CODEC_ID_VP8; it holds "
                   "CODEC_ID_H264, "
                   "CODEC_ID_VP9 or CODEC_ID_MPEG1VIDEO; CODEC_ID_VP8 goes into avi, matroska or mov"}));
}

TEST(FFmpegArguments, HoldFreeOptionsBesideWhatSettingsGive)
{
    const auto options = [](const std::string& settings) {
        Arguments arguments = ArgumentsOf(MakeTranscode(
            OneVideo(), VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":1,)" + settings)))[0];
        return Arguments(arguments.begin() + 13,
                         std::find(arguments.begin(), arguments.end(), "-map_metadata"));
    };
    EXPECT_EQ(options(R"("codec.options.encode":{"crf":20,"x264-params":"no-mbtree:ref=4"})"),
              (Arguments{"-crf:0", "20", "-x264-params:0", "no-mbtree=1:ref=4"}));
    EXPECT_EQ(options(R"("codec_fourcc":"avc1")"), (Arguments{"-tag:0", "828601953"}));
    // Not the number 1234.
    EXPECT_EQ(options(R"("codec_fourcc":"1234")"), (Arguments{"-tag:0", "875770417"}));
    EXPECT_EQ(options(R"("codec_fourcc":4294967295)"), (Arguments{"-tag:0", "4294967295"}));
    EXPECT_EQ(options(R"("codec.options.encode":{"g":1},"keyOnly":1)"), (Arguments{"-g:0", "1"}));
    EXPECT_EQ(options(R"("codec.options.encode":{"flags":"+cgop"},"global_header":1)"),
              (Arguments{"-flags:0", "+cgop+global_header"}));
    EXPECT_EQ(options(R"("global_header":1,"codec.options.encode":{"flags":"cgop"})"),
              (Arguments{"-flags:0", "cgop+global_header"}));
}

TEST(FFmpegArguments, DoNotHoldAnOptionWithTwoValues)
{
    const auto fault = [](const std::string& settings, const std::string& keyAndReason) {
        SCOPED_TRACE(settings);
        ExpectFault(
            MakeTranscode(OneVideo(), VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":1,)" + settings)),
            "link 3 -> 2, video stream 0, codec.options.encode." + keyAndReason);
    };
    fault(R"("codec.options.encode":{"g":12},"keyOnly":1)",
          "g: another setting gives the encoder 'g' another value");
    fault(R"("preset":"slow","codec.options.encode":{"preset":"fast"})",
          "preset: another setting gives the encoder 'preset' another value");
    fault(R"("codec.options.encode":{"flags":"-global_header"},"global_header":1)",
          "flags: another setting gives the encoder 'flags' another value");
    fault(R"("codec.options.encode":[{"crf":1},{"crf":2}])", "crf: appears more than once");
}

TEST(FFmpegArguments, DecodeAStreamInOneWay)
{
    Transcode transcode = MakeTranscode(
        OneVideo(), VideoRecord(kSmallH264 + R"(,"codec.options.analyze":{"skip_frame":"nokey"})"),
        "matroska");
    transcode.streams.push_back(transcode.streams.front());
    transcode.streams.back().place.link = std::pair(3, 9);
    const Arguments arguments = ArgumentsOf(transcode)[0];
    EXPECT_EQ(std::count(arguments.begin(), arguments.end(), "-skip_frame:0"), 1);
    transcode.streams.back().codec =
        VideoRecord(kSmallH264 + R"(,"codec.options.analyze":{"skip_frame":"none"})");
    ExpectFault(transcode,
                "link 3 -> 9, video stream 0, codec.options.analyze.skip_frame: another link to the same "
                "stream asks for 'nokey', this one for 'none'");
}

TEST(FFmpegArguments, TellTheDecoderWhatItUnderstands)
{
    const auto fault = [](const std::string& options, const std::string& reason) {
        ExpectFault(MakeTranscode(OneVideo(),
                                  VideoRecord(kSmallH264 + R"(,"codec.options.analyze":{)" + options + "}")),
                    "link 3 -> 2, video stream 0, codec.options.analyze." + reason);
    };
    fault(R"("dump_attachment:t":"x")",
          "dump_attachment:t: decoder h264 does not have an option 'dump_attachment:t'");
    fault(R"("lowres":-1)", "lowres: expected an integer from 0 to 2147483647, found -1");
    fault(R"("codec_whitelist":"x")",
          "codec_whitelist: the option 'codec_whitelist' of decoder h264 cannot be set by a job or a preset");
}

} // namespace
