#include "Media/Probe/FrameRates.h"

#include "Media/Probe/MediaProbe.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/FormatContext.h"
#include "Tests/Support/TemporaryFolder.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;

std::string Snapped(AVRational rate, double tolerance)
{
    const AVRational snapped = SnapToStandardRate(rate, tolerance);
    return std::to_string(snapped.num) + "/" + std::to_string(snapped.den);
}

/// "60000/1001" of the first video stream; "unknown" when there is none.
std::string ProbedRate(const Core::Property& record)
{
    const auto rate = record.FindChild(Conf::IFormatCodecVideo::TAG_FPS);
    return rate == record.end() ? "unknown"
                                : std::to_string(rate->GetRatio().numerator()) + "/" +
                                      std::to_string(rate->GetRatio().denominator());
}

std::string ProbedRate(const ioPath& path)
{
    for (const MediaStream& stream : ProbeMedia(path).streams)
    {
        if (stream.kind == StreamKind::Video)
        {
            return ProbedRate(stream.descriptor->GetProperty());
        }
    }
    return "no video";
}

/// Turns the element in which Matroska says how long each frame is into an empty one.
std::string WithoutFrameDuration(std::string file)
{
    const std::size_t element = file.find("\x23\xe3\x83");
    EXPECT_NE(element, std::string::npos);
    const auto length = static_cast<std::size_t>(static_cast<unsigned char>(file[element + 3]) & 0x7FU);
    file.replace(element, 4 + length,
                 "\xec" + std::string(1, static_cast<char>(0x80U | (2 + length))) +
                     std::string(2 + length, '\0'));
    return file;
}

TEST(FrameRates, OfAContainerThatRoundsAreTheStandardOnes)
{
    EXPECT_EQ(Snapped({19001, 317}, 1e-6), "60000/1001");
    EXPECT_EQ(Snapped({959, 16}, 4e-4), "60000/1001");
    EXPECT_EQ(Snapped({983, 41}, 4e-4), "24000/1001");
    EXPECT_EQ(Snapped({2997, 100}, 4e-4), "30000/1001");
}

TEST(FrameRates, ThatAreNotStandardStayAsTheyAre)
{
    EXPECT_EQ(Snapped({18, 1}, 4e-4), "18/1");
    EXPECT_EQ(Snapped({5995, 100}, 1e-6), "5995/100");
    EXPECT_EQ(Snapped({0, 1}, 4e-4), "0/1");
}

TEST(FrameRates, OfFilmAndTelevisionAreNotTakenForEachOther)
{
    for (const int rate : {24, 30, 48, 60, 120})
    {
        EXPECT_EQ(Snapped({rate, 1}, 4e-4), std::to_string(rate) + "/1");
        EXPECT_EQ(Snapped({rate * 1000, 1001}, 4e-4), std::to_string(rate * 1000) + "/1001");
    }
}

TEST(FrameRates, AreTrustedAsFarAsTheContainersClockGoes)
{
    EXPECT_EQ(RateTolerance({1, 1000}, 7200), 1e-6);
    EXPECT_DOUBLE_EQ(RateTolerance({1, 1000}, 10), 1e-4);
    EXPECT_EQ(RateTolerance({1, 1000}, 0.1), 4e-4);
    EXPECT_EQ(RateTolerance({1, 90000}, 60), 1e-6);
    EXPECT_EQ(RateTolerance({0, 1}, 60), 1e-6);
}

TEST(FrameRates, OfMatroskaIsTheOneThatWasWritten)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=60000/1001:d=0.5", "-c:v", "mpeg4", folder / "in.mkv"});
    EXPECT_EQ(ProbedRate(folder / "in.mkv"), "60000/1001");
}

TEST(FrameRates, OfFramesThatComeAtOddTimesAreCounted)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=30:d=3", "-vf", "settb=1/1000,setpts=PTS+20*mod(N\\,2)",
              "-frames:v", "89", "-vsync", "passthrough", "-enc_time_base", "1/1000", "-c:v", "libvpx",
              "-deadline", "realtime", "-live", "1", folder / "in.webm"});
    WriteFile(folder / "in.webm", WithoutFrameDuration(ReadFile(folder / "in.webm")));
    EXPECT_EQ(ProbedRate(folder / "in.webm"), "30/1");
}

TEST(FrameRates, OfOneFrameASecondAreKnownWhereFramesComeAtOddTimes)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=1:d=30", "-vf",
              "settb=1/1000,setpts=PTS+mod(37*N*(28-N)\\,311)", "-frames:v", "29", "-vsync", "passthrough",
              "-enc_time_base", "1/1000", "-c:v", "libvpx", "-deadline", "realtime", "-live", "1",
              folder / "in.webm"});
    WriteFile(folder / "in.webm", WithoutFrameDuration(ReadFile(folder / "in.webm")));
    EXPECT_EQ(ProbedRate(folder / "in.webm"), "1/1");
}

/// "30/1", or "unknown", of each stream.
std::vector<std::string> CountedRates(const std::string& name)
{
    AVFormatContext* input = nullptr;
    EXPECT_EQ(avformat_open_input(&input, name.c_str(), nullptr, nullptr), 0);
    EXPECT_GE(avformat_find_stream_info(input, nullptr), 0);
    std::vector<std::string> rates;
    for (const std::optional<AVRational>& rate : MeasureFrameRates(*input))
    {
        rates.push_back(rate ? std::to_string(rate->num) + "/" + std::to_string(rate->den) : "unknown");
    }
    avformat_close_input(&input);
    return rates;
}

/// libavformat looks at the first of these 101 frames only, which come a thousand a second; the last one
/// comes late.
std::vector<std::string> CountedRatesUntil(const std::string& secondsOfLast)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=1000:d=1", "-vf",
              "settb=1/1000,setpts=if(eq(N\\,100)\\," + secondsOfLast + "000\\,N)", "-frames:v", "101",
              "-vsync", "passthrough", "-enc_time_base", "1/1000", "-c:v", "libvpx", "-deadline", "realtime",
              "-live", "1", folder / "in.webm"});
    return CountedRates((folder / "in.webm").string());
}

TEST(FrameRates, OfOneFrameASecondAndLessAreCounted)
{
    EXPECT_THAT(CountedRatesUntil("100"), ElementsAre("1/1"));
    EXPECT_THAT(CountedRatesUntil("200"), ElementsAre("1/2"));
}

TEST(FrameRates, AreCountedOverAFewHundredFramesOfVideo)
{
    const TemporaryFolder folder;
    // After 350 frames, they come half as often.
    MakeClip({"-f",
              "lavfi",
              "-i",
              "testsrc=s=64x48:r=1000:d=1",
              "-f",
              "lavfi",
              "-i",
              "sine=d=1",
              "-vf",
              "settb=1/1000,setpts=if(lt(N\\,350)\\,N\\,2*N-350)",
              "-frames:v",
              "500",
              "-vsync",
              "passthrough",
              "-enc_time_base",
              "1/1000",
              "-c:v",
              "libvpx",
              "-deadline",
              "realtime",
              "-c:a",
              "libopus",
              "-live",
              "1",
              folder / "in.webm"});
    EXPECT_THAT(CountedRates((folder / "in.webm").string()), ElementsAre("1000/1", "unknown"));
}

TEST(FrameRates, OfACoverAreNotMadeUp)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "sine=d=0.2", "-f", "lavfi", "-i", "color=red:s=64x48:r=25:d=0.04", "-map",
              "0", "-map", "1", "-c:v", "mjpeg", "-disposition:v", "attached_pic", folder / "in.m4a"});
    EXPECT_EQ(ProbedRate(folder / "in.m4a"), "unknown");
}

TEST(FrameRates, ThatAreNoneStayNone)
{
    EXPECT_EQ(Snapped({25, 0}, 4e-4), "25/0");
    EXPECT_EQ(Snapped({-25, 1}, 4e-4), "-25/1");
    EXPECT_EQ(RateTolerance({1, 0}, 60), 1e-6);
}

TEST(FrameRates, OfOneFrameAreNotKnown)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=30:d=1", "-frames:v", "1", "-c:v", "libvpx",
              "-deadline", "realtime", "-live", "1", folder / "in.webm"});
    WriteFile(folder / "in.webm", WithoutFrameDuration(ReadFile(folder / "in.webm")));
    EXPECT_EQ(ProbedRate(folder / "in.webm"), "unknown");
}

/// The rate of a stream of which a demuxer tells these two.
std::string ToldRate(AVRational real, AVRational average, AVMediaType type = AVMEDIA_TYPE_VIDEO)
{
    const FormatContext context = MakeFormatContext();
    AVStream* const stream = avformat_new_stream(context.get(), nullptr);
    stream->codecpar->codec_type = type;
    stream->time_base = {1, 1000};
    stream->r_frame_rate = real;
    stream->avg_frame_rate = average;
    const AVRational rate = FrameRateOf(*context, *stream);
    return std::to_string(rate.num) + "/" + std::to_string(rate.den);
}

TEST(FrameRates, AboveThoseOfAnyCameraAreNotBelieved)
{
    EXPECT_EQ(ToldRate({300, 1}, {300, 1}), "300/1");
    EXPECT_EQ(ToldRate({301, 1}, {301, 1}), "0/1");
    EXPECT_EQ(ToldRate({1000, 1}, {100, 1}), "100/1");
    EXPECT_EQ(ToldRate({0, 1}, {0, 0}), "0/1");
    EXPECT_EQ(ToldRate({-25, 1}, {-25, 1}), "0/1");
    EXPECT_EQ(ToldRate({25, 1}, {25, 1}, AVMEDIA_TYPE_AUDIO), "0/1");
}

TEST(FrameRates, AreRoundedByTheLengthOfTheStreamOrElseOfItsFile)
{
    const FormatContext context = MakeFormatContext();
    AVStream* const stream = avformat_new_stream(context.get(), nullptr);
    stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream->time_base = {1, 1000};
    // Nearer to 30000/1001 than what a clock of milliseconds rounds in three seconds, but not in an hour.
    stream->r_frame_rate = stream->avg_frame_rate = {29976, 1000};
    const auto isStandard = [&] { return FrameRateOf(*context, *stream).den == 1001; };
    stream->duration = AV_NOPTS_VALUE;
    context->duration = AV_NOPTS_VALUE;
    EXPECT_TRUE(isStandard());
    context->duration = 3600LL * AV_TIME_BASE;
    EXPECT_FALSE(isStandard());
    stream->duration = 3000;
    EXPECT_TRUE(isStandard());
}

TEST(FrameRates, AreNotMeasuredWhereTheyAreTold)
{
    const FormatContext context = MakeFormatContext();
    AVStream* const stream = avformat_new_stream(context.get(), nullptr);
    stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream->r_frame_rate = stream->avg_frame_rate = {25, 1};
    avformat_new_stream(context.get(), nullptr)->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    for (const std::optional<AVRational>& rate : MeasureFrameRates(*context))
    {
        EXPECT_FALSE(rate);
    }
}

} // namespace
