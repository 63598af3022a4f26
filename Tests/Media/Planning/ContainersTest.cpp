#include "Media/Planning/Containers.h"

#include "Conf/Interfaces/IFormatFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using Conf::IFormatFile;
using testing::ElementsAre;
using testing::IsEmpty;

std::string MuxerOf(const std::string& container)
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    return muxer == nullptr ? "" : muxer->name;
}

TEST(Containers, HaveTheMuxerOfTheirNameOrOfTheirAlias)
{
    EXPECT_EQ(MuxerOf(IFormatFile::FORMAT_MP4), "mp4");
    EXPECT_EQ(MuxerOf(IFormatFile::FORMAT_MATROSKA), "matroska");
    EXPECT_EQ(MuxerOf(IFormatFile::FORMAT_M4A), "ipod");
    EXPECT_EQ(MuxerOf(IFormatFile::FORMAT_MPEG2TS), "mpegts");
    EXPECT_EQ(MuxerOf(IFormatFile::FORMAT_WMV), "asf");
    EXPECT_EQ(MuxerOf(IFormatFile::FORMAT_TIF), "image2");
    EXPECT_EQ(MuxerOf("no such"), "");
    EXPECT_EQ(MuxerOf(""), "");
}

TEST(Containers, HoldOneImageWhereTheirMuxerIsThatOfImages)
{
    EXPECT_TRUE(IsPicture(IFormatFile::FORMAT_PNG));
    EXPECT_FALSE(IsPicture(IFormatFile::FORMAT_GIF));
    EXPECT_FALSE(IsPicture(IFormatFile::FORMAT_MP4));
}

TEST(Containers, AreOneFileWhereTheirMuxerIsKnownToWriteOne)
{
    for (const char* const container : {"mp4", "matroska", "webm", "mpegts", "mpeg2ts", "wav", "png", "tif",
                                        "gif", "srt", "webvtt", "opus", "dvd", "m4a", "wmv", "latm"})
    {
        EXPECT_TRUE(IsOneFile(container)) << container;
    }
    for (const char* const container : {"hls", "dash", "segment", "ssegment", "stream_segment", "tee", "fifo",
                                        "null", "rtp", "rtsp", "sap", "uncodedframecrc", "no such", ""})
    {
        EXPECT_FALSE(IsOneFile(container)) << container;
    }
}

TEST(Containers, HoldWhatFFmpegSaysTheyHold)
{
    EXPECT_TRUE(CertainlyHolds(IFormatFile::FORMAT_MP4, AV_CODEC_ID_H264));
    EXPECT_FALSE(MayHold(IFormatFile::FORMAT_WEBM, AV_CODEC_ID_H264));
    EXPECT_TRUE(CertainlyHolds(IFormatFile::FORMAT_WEBM, AV_CODEC_ID_VP9));
    EXPECT_FALSE(MayHold("no such", AV_CODEC_ID_H264));
}

TEST(Containers, OfDvdsHoldWhatDvdPlayersPlay)
{
    EXPECT_TRUE(CertainlyHolds(IFormatFile::FORMAT_DVD, AV_CODEC_ID_AC3));
    EXPECT_TRUE(CertainlyHolds(IFormatFile::FORMAT_VOB, AV_CODEC_ID_MPEG2VIDEO));
    EXPECT_FALSE(MayHold(IFormatFile::FORMAT_DVD, AV_CODEC_ID_AAC));
    EXPECT_FALSE(MayHold(IFormatFile::FORMAT_DVD, AV_CODEC_ID_SUBRIP));
}

TEST(Containers, TakeSubtitlesInTheirOwnCodecFirst)
{
    EXPECT_THAT(SubtitleCodecsFor("matroska", "CODEC_ID_ASS", false),
                ElementsAre("CODEC_ID_ASS", "CODEC_ID_SUBRIP", "CODEC_ID_WEBVTT", "CODEC_ID_ASS"));
    EXPECT_THAT(SubtitleCodecsFor("mp4", "CODEC_ID_SUBRIP", false), ElementsAre("CODEC_ID_MOV_TEXT"));
    EXPECT_THAT(SubtitleCodecsFor("webm", "", false), ElementsAre("CODEC_ID_WEBVTT"));
}

TEST(Containers, KeepTextTextAndBitmapsBitmaps)
{
    EXPECT_THAT(SubtitleCodecsFor("dvd", "CODEC_ID_DVD_SUBTITLE", true),
                ElementsAre("CODEC_ID_DVD_SUBTITLE", "CODEC_ID_DVD_SUBTITLE"));
    EXPECT_THAT(SubtitleCodecsFor("dvd", "CODEC_ID_SUBRIP", false), IsEmpty());
    EXPECT_THAT(SubtitleCodecsFor("webm", "CODEC_ID_DVD_SUBTITLE", true), IsEmpty());
    EXPECT_THAT(SubtitleCodecsFor("mp3", "CODEC_ID_SUBRIP", false), IsEmpty());
}

TEST(Containers, ThatFFmpegDoesNotKnowCannotStartFast)
{
    EXPECT_TRUE(CanStartFast("mp4"));
    EXPECT_FALSE(CanStartFast("no such"));
}

} // namespace
