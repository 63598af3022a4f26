#include "Media/Running/TranscodeCommand.h"

#include "Media/Jobs/FaultList.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const std::string kCopy = R"("lossless":1)";

/// What ffmpeg is told about a transcode in which nothing is wrong.
TranscodeCommand CommandOf(const Transcode& transcode)
{
    FaultList faults;
    TranscodeCommand command = MakeTranscodeCommand(transcode, faults);
    EXPECT_THAT(Sentences(faults.Get()), IsEmpty());
    return command;
}

MediaStream StreamOf(StreamKind kind, const std::string& codec)
{
    MediaStream stream = MakeStream(kind, MakeDescriptor(kind));
    stream.codec = codec;
    return stream;
}

TEST(TranscodeCommand, OpensItsInputWithTheFirstNameOfTheDemuxer)
{
    MediaFile file = MakeMediaFile({MakeVideoStream()}, "in.mov");
    file.demuxer = "mov,mp4,m4a";
    const TranscodeCommand command = CommandOf(MakeTranscode(file, VideoRecord(kCopy), "matroska"));
    ASSERT_EQ(command.inputs.size(), 1U);
    EXPECT_EQ(command.inputs[0].file, "in.mov");
    EXPECT_EQ(command.inputs[0].demuxer, "mov");
    EXPECT_EQ(command.muxer, "matroska");
    EXPECT_FALSE(command.isPicture);
}

TEST(TranscodeCommand, CopiesAStreamOfWhichNoCodecIsKnown)
{
    // The vocabulary has no name for its codec, so nothing can be said about the container.
    const MediaFile file = MakeMediaFile({StreamOf(StreamKind::Video, "avui")});
    const TranscodeCommand command = CommandOf(MakeTranscode(file, VideoRecord(kCopy), "mp4"));
    EXPECT_TRUE(command.streams.at(0).isCopied);
    EXPECT_THAT(command.streams.at(0).options, IsEmpty());
}

TEST(TranscodeCommand, DoesNotCopyWhatTheContainerCannotHold)
{
    const MediaFile file = MakeMediaFile({MakeVideoStream(640, 480, "CODEC_ID_VP8")});
    EXPECT_THAT(
        FaultsOf(MakeTranscode(file, VideoRecord(kCopy), "mp4")),
        ElementsAre("link 3 -> 2, video stream 0: the container mp4 cannot hold CODEC_ID_VP8; it holds "
                    "CODEC_ID_H264, CODEC_ID_VP9 or CODEC_ID_MPEG1VIDEO; CODEC_ID_VP8 goes into avi, "
                    "matroska or mov"));
    EXPECT_THAT(FaultsOf(MakeTranscode(file, VideoRecord(kCopy), "webm")), IsEmpty());
}

TEST(TranscodeCommand, CopiesNothingThatIsNotThere)
{
    Transcode transcode = MakeTranscode(MakeMediaFile({MakeVideoStream()}), VideoRecord(kCopy), "webm");
    transcode.streams[0].input = TranscodeStream::kNoInput;
    // The reader of the job has said why.
    EXPECT_THAT(FaultsOf(transcode), IsEmpty());
}

TEST(TranscodeCommand, ASourceThatIsNotThereStillNeedsTheRecordOfACodec)
{
    Transcode transcode =
        MakeTranscode(MakeMediaFile({MakeVideoStream()}), RecordOf(R"({"odd":{"lossless":1}})"), "webm");
    transcode.streams[0].input = TranscodeStream::kNoInput;
    EXPECT_THAT(FaultsOf(transcode),
                ElementsAre("link 3 -> 2, video stream 0: expected the record of a codec, found 'odd'"));
}

TEST(TranscodeCommand, AnInputBeyondTheLastIsAFault)
{
    Transcode transcode = MakeTranscode(MakeMediaFile({MakeVideoStream()}), VideoRecord(kCopy), "matroska");
    transcode.streams[0].input = 1;
    EXPECT_THAT(FaultsOf(transcode),
                ElementsAre("link 3 -> 2, video stream 0: there is no such input or stream"));
    transcode.streams[0].input = 0;
    transcode.streams[0].stream = 1;
    EXPECT_THAT(FaultsOf(transcode),
                ElementsAre("link 3 -> 2, video stream 0: there is no such input or stream"));
}

TEST(TranscodeCommand, MakesNoStreamFromOneOfData)
{
    for (const StreamKind kind : {StreamKind::Data, StreamKind::Attachment, StreamKind::Unknown})
    {
        const std::vector<std::string> faults = FaultsOf(
            MakeTranscode(MakeMediaFile({StreamOf(kind, "bin_data")}), VideoRecord(kCopy), "matroska"));
        EXPECT_THAT(faults, ElementsAre(std::string("link 3 -> 2, ") + NameOf(kind) +
                                        " stream 0: such a stream cannot go into a target"));
    }
}

TEST(TranscodeCommand, AnEncoderMakesStreamsOfTheRecordsKind)
{
    EXPECT_THAT(FaultsOf(MakeTranscode(MakeMediaFile({MakeVideoStream()}),
                                       VideoRecord(R"("codec_id":"CODEC_ID_MP3","bitrate":1)"), "matroska")),
                ElementsAre("link 3 -> 2, video stream 0, codec_id: expected a codec for video, found "
                            "'CODEC_ID_MP3'"));
}

TEST(TranscodeCommand, SetsNoOptionOfADecoderThatIsNotThere)
{
    const MediaFile file = MakeMediaFile({StreamOf(StreamKind::Video, "nothing_decodes_this")});
    const auto record = [](const std::string& options) {
        return VideoRecord(kCopy + R"(,"codec.options.analyze":{)" + options + "}");
    };
    EXPECT_THAT(
        FaultsOf(MakeTranscode(file, record(R"("skip_frame":"nokey")"), "matroska")),
        ElementsAre("link 3 -> 2, video stream 0, codec.options.analyze: the installed FFmpeg does not "
                    "have a decoder for nothing_decodes_this"));
    EXPECT_THAT(FaultsOf(MakeTranscode(file, record(""), "matroska")), IsEmpty());
}

TEST(TranscodeCommand, ADecodersOptionsAreThoseOfTheStream)
{
    const TranscodeCommand command = CommandOf(MakeTranscode(
        MakeMediaFile({MakeVideoStream()}),
        VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":500000,"codec.options.analyze":{"lowres":0})"),
        "matroska"));
    EXPECT_THAT(command.streams.at(0).analysis, ElementsAre(Pair("lowres", "0")));
}

TEST(TranscodeCommand, TagsAreTextsAndNumbersButNotAboutTheSource)
{
    const TranscodeCommand command = CommandOf(MakeTranscode(
        MakeMediaFile({MakeAudioStream()}),
        AudioRecord(kCopy + R"(,"language":"eng","metadata":{"title":"a=b","track":7})"), "matroska"));
    EXPECT_THAT(command.streams.at(0).metadata, ElementsAre("title=a=b", "track=7", "language=eng"));
}

TEST(TranscodeCommand, AFrameIsOneOnlyInAPicture)
{
    const MediaFile file = MakeMediaFile({MakeVideoStream()});
    const TranscodeCommand picture = CommandOf(
        MakeTranscode(file, VideoRecord(R"("codec_id":"CODEC_ID_MJPEG","bitrate":1000000)"), "mjpeg"));
    const TranscodeCommand film = CommandOf(
        MakeTranscode(file, VideoRecord(R"("codec_id":"CODEC_ID_MJPEG","bitrate":1000000)"), "avi"));
    EXPECT_FALSE(film.isPicture);
    EXPECT_FALSE(film.streams.at(0).isOneImage);
    EXPECT_EQ(picture.streams.at(0).isOneImage, picture.isPicture);
}

TEST(TranscodeCommand, OnlyAStreamWithASourceIsFiltered)
{
    Transcode transcode = MakeTranscode(
        MakeMediaFile({MakeVideoStream(1280, 720)}),
        VideoRecord(
            R"("codec_id":"CODEC_ID_H264","bitrate":500000,"width":640,"height":360,"aspect_x":1,"aspect_y":1)"),
        "matroska");
    EXPECT_NE(CommandOf(transcode).streams.at(0).filters, "");
    transcode.streams[0].input = TranscodeStream::kNoInput;
    EXPECT_EQ(CommandOf(transcode).streams.at(0).filters, "");
}

TEST(TranscodeCommand, AContainerOfManyFilesIsAFault)
{
    EXPECT_THAT(FaultsOf(MakeTranscode(MakeMediaFile({MakeVideoStream()}), VideoRecord(kCopy), "hls")),
                ElementsAre("node 2, container: the container 'hls' is not written as one file"));
}

TEST(TranscodeCommand, ACodecThatIsNotATextIsOneFault)
{
    EXPECT_EQ(
        FaultsOf(MakeTranscode(MakeMediaFile({MakeAudioStream()}), AudioRecord(R"("codec_id":5)"), "mp4")),
        std::vector<std::string>{"link 3 -> 2, audio stream 0, codec_id: expected a string, found 5"});
}

TEST(TranscodeCommand, ColoursThatNoFilterConvertsAreAFault)
{
    MediaStream source = MakeVideoStream();
    source.color.transfer = "bt709";
    EXPECT_EQ(
        FaultsOf(MakeTranscode(
            MakeMediaFile({source}),
            VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":800000,"colorTransfer":"smpte2084")"),
            "mp4")),
        std::vector<std::string>{
            "link 3 -> 2, video stream 0, colorTransfer: colours of bt709 cannot be converted to smpte2084"});
}

} // namespace
