#include "Media/Verifying/BitrateComparison.h"

#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

using Options = std::vector<std::pair<std::string, std::string>>;

/// A video or sound of ten seconds whose encoder got these options.
std::vector<std::string> Compare(const Options& options, std::int64_t bytes,
                                 const std::string& codec = "h264", std::int64_t end = 10000000)
{
    ExpectedStream wanted = Expecting(MakeMediaFile({MakeVideoStream()}));
    wanted.codec = codec;
    wanted.options = options;
    StreamScan scan = GoodScan();
    scan.bytes = bytes;
    scan.end = end;
    return Told(CompareBitrate(wanted, scan));
}

TEST(BitrateComparison, AStreamMayNeedLessThanItIsGiven)
{
    EXPECT_THAT(Compare({{"b", "1000000"}, {"minrate", "500000"}, {"maxrate", "2000000"}}, 1000), IsEmpty());
}

TEST(BitrateComparison, TellsAStreamAboveItsPeakAndWhatTheBufferHolds)
{
    const Options options = {{"b", "1000000"}, {"maxrate", "1000000"}, {"bufsize", "2000000"}};
    // 1.1 * (10 s * 1 Mb/s + 2 Mb)
    EXPECT_THAT(Compare(options, 1650000), IsEmpty());
    EXPECT_THAT(Compare(options, 1650001), ElementsAre("bitrate: wanted at most 1320 kb/s, found 1320 kb/s"));
}

TEST(BitrateComparison, X264FillsUpAConstantBitrateWhereItIsTold)
{
    const auto of = [](const std::string& option, const std::string& value, std::int64_t bytes,
                       const std::string& peak = "1000000") {
        return Compare(
            {{"c", "libx264"}, {"b", "1000000"}, {"maxrate", peak}, {"bufsize", "1000000"}, {option, value}},
            bytes);
    };
    // 0.95 * (10 s * 1 Mb/s - 1 Mb)
    EXPECT_THAT(of("nal-hrd", "cbr", 1068750), IsEmpty());
    EXPECT_THAT(of("nal-hrd", "cbr", 1068749),
                ElementsAre("bitrate: wanted at least 855 kb/s, found 855 kb/s"));
    EXPECT_THAT(of("x264-params", "ref=4:nal-hrd=cbr", 1000),
                ElementsAre("bitrate: wanted at least 855 kb/s, found 1 kb/s"));
    EXPECT_THAT(of("x264opts", "nal-hrd=cbr:ref=4", 1000),
                ElementsAre("bitrate: wanted at least 855 kb/s, found 1 kb/s"));
    EXPECT_THAT(of("x264-params", "nal-hrd=vbr", 1000), IsEmpty());
    EXPECT_THAT(of("nal-hrd", "cbr", 1000, "2000000"), IsEmpty());
    EXPECT_THAT(of("preset", "fast", 1000), IsEmpty());
    const std::pair<std::string, std::string> hrd("nal-hrd", "cbr");
    const std::pair<std::string, std::string> peak("maxrate", "1000000");
    const std::pair<std::string, std::string> buffer("bufsize", "1000000");
    EXPECT_THAT(Compare({{"c", "libx264"}, peak, buffer, hrd}, 1000), IsEmpty());
    EXPECT_THAT(Compare({{"c", "h264_nvenc"}, {"b", "1000000"}, peak, buffer, hrd}, 1000), IsEmpty());
}

TEST(BitrateComparison, AnAverageIsReachedOnlyAfterAWhile)
{
    const Options options = {{"b", "1000000"}};
    EXPECT_THAT(Compare(options, 1875001), ElementsAre("bitrate: wanted at most 1500 kb/s, found 1500 kb/s"));
    EXPECT_THAT(Compare(options, 1875000), IsEmpty());
    EXPECT_THAT(Compare(options, 100000000, "h264", 9999999), IsEmpty());
}

TEST(BitrateComparison, AConstantBitrateIsNeitherMoreNorLess)
{
    EXPECT_THAT(Compare({{"b", "192000"}}, 240000, "ac3"), IsEmpty());
    EXPECT_THAT(Compare({{"b", "192000"}}, 120000, "ac3"),
                ElementsAre("bitrate: wanted 192 kb/s, found 96 kb/s"));
    EXPECT_THAT(Compare({{"b", "192000"}}, 120000, "aac"), IsEmpty());
}

TEST(BitrateComparison, AnMp3HasTheNearestBitrateThatThereIs)
{
    const Options options = {{"c", "libmp3lame"}, {"b", "128000"}};
    EXPECT_THAT(Compare(options, 160000, "mp3"), IsEmpty());
    EXPECT_THAT(Compare(options, 144000, "mp3"), IsEmpty());
    EXPECT_THAT(Compare(options, 80000, "mp3"), ElementsAre("bitrate: wanted 128 kb/s, found 64 kb/s"));
    EXPECT_THAT(Compare({{"c", "libmp3lame"}, {"b", "128000"}, {"abr", "1"}}, 80000, "mp3"), IsEmpty());
    EXPECT_THAT(Compare({{"c", "libmp3lame"}, {"b", "200000"}}, 40000, "mp3"), IsEmpty());
}

TEST(BitrateComparison, OpusIsConstantWhereItIsToldSo)
{
    EXPECT_THAT(Compare({{"c", "libopus"}, {"b", "96000"}, {"vbr", "off"}}, 60000, "opus"),
                ElementsAre("bitrate: wanted 96 kb/s, found 48 kb/s"));
    EXPECT_THAT(Compare({{"c", "libopus"}, {"b", "96000"}, {"vbr", "on"}}, 60000, "opus"), IsEmpty());
}

TEST(BitrateComparison, AnEncoderThatFillsUpGivesTheLeastBitrateButForItsBuffer)
{
    Options options = {{"c", "mpeg2video"}, {"b", "1000000"}, {"minrate", "1000000"}, {"maxrate", "1000000"}};
    EXPECT_THAT(Compare(options, 1000, "mpeg2video"), IsEmpty());
    options.emplace_back("bufsize", "2000000");
    // 0.95 * (10 s * 1 Mb/s - 2 Mb)
    EXPECT_THAT(Compare(options, 950000, "mpeg2video"), IsEmpty());
    EXPECT_THAT(Compare(options, 949999, "mpeg2video"),
                ElementsAre("bitrate: wanted at least 760 kb/s, found 760 kb/s"));
    options.front().second = "libx264";
    EXPECT_THAT(Compare(options, 1000, "h264"), IsEmpty());
}

TEST(BitrateComparison, NothingIsSaidOfAStreamThatWasNotReadAsAWhole)
{
    ExpectedStream wanted = Expecting(MakeMediaFile({MakeVideoStream()}));
    wanted.options = {{"maxrate", "1"}};
    StreamScan scan = GoodScan();
    scan.packets = 0;
    EXPECT_THAT(CompareBitrate(wanted, scan), IsEmpty());
}

TEST(BitrateComparison, NothingIsSaidOfACopy)
{
    ExpectedStream wanted = Expecting(MakeMediaFile({MakeVideoStream()}));
    wanted.options = {{"maxrate", "1"}};
    EXPECT_THAT(CompareBitrate(wanted, GoodScan()), testing::SizeIs(1));
    wanted.isCopied = true;
    EXPECT_THAT(CompareBitrate(wanted, GoodScan()), IsEmpty());
}

TEST(BitrateComparison, OnlyNumbersAboveZeroAreBitrates)
{
    EXPECT_THAT(Compare({{"b", "192k"}}, 120000, "ac3"), IsEmpty());
    EXPECT_THAT(Compare({{"b", "0"}}, 120000, "ac3"), IsEmpty());
    EXPECT_THAT(Compare({{"b", "-1"}}, 120000, "ac3"), IsEmpty());
    EXPECT_THAT(Compare({}, 120000, "ac3"), IsEmpty());
}

TEST(BitrateComparison, APeakWithoutABufferMayBeStoredForASecond)
{
    const Options options = {{"maxrate", "1000000"}};
    // 1.1 * (10 s * 1 Mb/s + 1 Mb)
    EXPECT_THAT(Compare(options, 1512500), IsEmpty());
    EXPECT_THAT(Compare(options, 1512501), ElementsAre("bitrate: wanted at most 1210 kb/s, found 1210 kb/s"));
}

TEST(BitrateComparison, NothingIsSaidOfWhatIsTooShort)
{
    EXPECT_THAT(Compare({{"maxrate", "1"}}, 1000, "h264", 0), IsEmpty());
    ExpectedStream wanted = Expecting(MakeMediaFile({MakeAudioStream()}));
    wanted.codec = "ac3";
    wanted.options = {{"b", "192000"}};
    StreamScan scan = GoodScan();
    scan.bytes = 1;
    scan.packets = 24;
    EXPECT_THAT(CompareBitrate(wanted, scan), IsEmpty());
    scan.packets = 25;
    EXPECT_THAT(Told(CompareBitrate(wanted, scan)), ElementsAre("bitrate: wanted 192 kb/s, found 0 kb/s"));
}

TEST(BitrateComparison, AnMp3WithoutABitrateMayHaveAny)
{
    EXPECT_THAT(Compare({{"c", "libmp3lame"}}, 80000, "mp3"), IsEmpty());
    EXPECT_THAT(Compare({{"c", "libmp3lame"}, {"b", "16000"}}, 10000, "mp3"), IsEmpty());
}

} // namespace
