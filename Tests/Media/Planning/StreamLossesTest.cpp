#include "Media/Planning/StreamLosses.h"

#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kFields =
    "one of two fields of its interlaced frames is left out; 'deinterlace' 50p keeps the "
    "motion of all fields, 'keep' the fields";

TEST(StreamLosses, AreFieldsOfInterlacedFrames)
{
    MediaStream source = MakeVideoStream();
    source.isInterlaced = true;
    const auto losses = [&source](const std::string& more) {
        return StreamLosses(source, VideoRecord(R"("codec_id":"CODEC_ID_MPEG2VIDEO")" + more), "matroska");
    };
    EXPECT_THAT(losses(""), ElementsAre(kFields));
    EXPECT_THAT(losses(R"(,"deinterlace":"25p")"), ElementsAre(kFields));
    for (const std::string word : {"50p", "keep", "off"})
    {
        EXPECT_THAT(losses(R"(,"deinterlace":")" + word + "\""), IsEmpty()) << word;
    }
}

TEST(StreamLosses, AreAllKindsOfThem)
{
    MediaStream source = MakeVideoStream();
    source.pixelFormat = "yuva444p10le";
    source.color = {"tv", "bt2020nc", "bt2020", "smpte2084"};
    source.hdr.contentLight = "1000,400";
    source.hdr.dolbyVision = "8.4";
    EXPECT_THAT(
        StreamLosses(source, VideoRecord(R"("codec_id":"CODEC_ID_MPEG4","pixelFormat":"yuv420p")"), "avi"),
        ElementsAre("its colours (primaries bt2020, transfer smpte2084) cannot be named in the output, so "
                    "players will show others",
                    "its Dolby Vision data (profile 8.4) are left out",
                    "its content light is left out; encoder mpeg4 does not write it",
                    "its 10 bits a sample become 8", "its 4:4:4 chroma becomes 4:2:0",
                    "its transparency is left out"));
}

TEST(StreamLosses, AreNoneOfSubtitlesAndOfCodecsWithoutAnEncoder)
{
    EXPECT_THAT(StreamLosses(MakeSubtitleStream(),
                             RecordOf(R"({"format_codec_subtitle":{"codec_id":"CODEC_ID_SUBRIP"}})"),
                             "matroska"),
                IsEmpty());
    MediaStream source = MakeVideoStream();
    source.pixelFormat = "rgb24";
    EXPECT_THAT(StreamLosses(source, VideoRecord(R"("codec_id":"CODEC_ID_NOTHING")"), "matroska"), IsEmpty());
}

} // namespace
