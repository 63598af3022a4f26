#include "Media/Probe/FrameLook.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavformat/avformat.h>
}

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// Probes clips that ffmpeg makes.
class FrameLook : public testing::Test
{
protected:
    /// The video of a clip of `filters`, coded as `codec` says.
    MediaStream Video(const std::string& filters, std::vector<std::string> codec, const std::string& name)
    {
        codec.insert(codec.begin(), {"-f", "lavfi", "-i", "testsrc2=s=352x288:r=50:d=0.2", "-vf", filters});
        codec.push_back(name);
        MakeClip(codec, m_folder.Path().string());
        return ProbeMedia(m_folder / name).streams.at(0);
    }

    const TemporaryFolder m_folder;
};

TEST_F(FrameLook, FindsInterlacedDv)
{
    const MediaStream video = Video("scale=720:576,interlace=scan=bff", {"-c:v", "dvvideo"}, "dv.avi");
    EXPECT_TRUE(video.isInterlaced);
    EXPECT_FALSE(video.isInterlacedByHeader);
    EXPECT_EQ(video.fieldOrder, "bb");
}

TEST_F(FrameLook, FindsInterlacedDnxhd)
{
    const MediaStream video =
        Video("scale=1920:1080,interlace,format=yuv422p",
              {"-c:v", "dnxhd", "-b:v", "120M", "-flags", "+ildct+ilme", "-frames:v", "2"}, "dnx.mxf");
    EXPECT_TRUE(video.isInterlaced);
    EXPECT_EQ(video.fieldOrder, "tt");
}

TEST_F(FrameLook, FindsInterlacedMpeg4)
{
    const MediaStream video = Video("interlace", {"-c:v", "mpeg4", "-flags", "+ildct+ilme"}, "m4.avi");
    EXPECT_TRUE(video.isInterlaced);
    EXPECT_EQ(video.fieldOrder, "tt");
}

TEST_F(FrameLook, BelievesAHeaderWhoseFramesAreSilent)
{
    const MediaStream video = Video("interlace", {"-c:v", "mjpeg", "-pix_fmt", "yuvj422p"}, "mj.mov");
    EXPECT_TRUE(video.isInterlaced);
    EXPECT_TRUE(video.isInterlacedByHeader);
    EXPECT_EQ(video.fieldOrder, "tt");
}

TEST_F(FrameLook, LeavesProgressiveVideoAsItIs)
{
    const MediaStream video = Video("null", {"-c:v", "libx264", "-preset", "ultrafast"}, "p.mkv");
    EXPECT_FALSE(video.isInterlaced);
    EXPECT_FALSE(video.isInterlacedByHeader);
    EXPECT_EQ(video.fieldOrder, "progressive");
}

TEST_F(FrameLook, FindsHighDynamicRangeThatTheContainerDoesNotTell)
{
    const MediaStream video =
        Video("scale=64:64,format=yuv420p10le",
              {"-c:v", "libx265", "-x265-params",
               "log-level=none:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc:"
               "master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50):"
               "max-cll=1000,400",
               "-f", "hevc"},
              "hdr.hevc");
    EXPECT_EQ(video.hdr.masteringDisplay,
              "G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)");
    EXPECT_EQ(video.hdr.contentLight, "1000,400");
    EXPECT_EQ(video.color.transfer, "smpte2084");
}

TEST_F(FrameLook, GoesOnWhereAVideoCannotBeDecoded)
{
    Video("scale=64:48", {"-c:v", "mpeg4", "-g", "1"}, "good.mkv");
    std::string bytes = ReadFile(m_folder / "good.mkv");
    for (std::size_t i = bytes.size() / 2; i < bytes.size(); i += 3)
    {
        bytes[i] = static_cast<char>(i);
    }
    WriteFile(m_folder / "bad.mkv", bytes);
    EXPECT_EQ(ProbeMedia(m_folder / "bad.mkv").streams.at(0).codec, "mpeg4");
}

TEST_F(FrameLook, LetsTheFailureOfAStreamPass)
{
    Video("null", {"-c:v", "mpeg4", "-q:v", "1"}, "large.mkv");
    const std::string bytes = ReadFile(m_folder / "large.mkv");
    // The failure after which the probe is done is not met.
    bool isMet = true;
    std::size_t call = 1;
    for (; isMet && call < 2000; ++call)
    {
        TestInput input(bytes, 4096, call);
        try
        {
            ProbeMedia(input, "a stream");
            isMet = false;
        }
        catch (const Core::CoreException&)
        {}
    }
    EXPECT_FALSE(isMet);
}

/// What the frames of a file tell of its one video, of which nothing else is known.
MediaStream SeenIn(const std::string& name)
{
    AVFormatContext* context = nullptr;
    EXPECT_EQ(avformat_open_input(&context, name.c_str(), nullptr, nullptr), 0);
    std::vector<MediaStream> streams(1);
    streams[0].kind = StreamKind::Video;
    LookAtFrames(*context, streams);
    avformat_close_input(&context);
    return streams[0];
}

TEST_F(FrameLook, FindsColoursThatOnlyTheFramesTell)
{
    Video("scale=64:48",
          {"-c:v", "mpeg2video", "-colorspace", "smpte170m", "-color_primaries", "bt470bg", "-color_trc",
           "bt709", "-frames:v", "2"},
          "color.m2v");
    const VideoColor color = SeenIn(m_folder / "color.m2v").color;
    EXPECT_EQ(color.range, "tv");
    EXPECT_EQ(color.matrix, "smpte170m");
    EXPECT_EQ(color.primaries, "bt470bg");
    EXPECT_EQ(color.transfer, "bt709");
}

TEST_F(FrameLook, LooksAtTheFirstFramesAlone)
{
    Video("scale=64:48,interlace", {"-c:v", "mpeg2video", "-flags", "+ildct+ilme", "-frames:v", "4"},
          "i.m2v");
    const std::string interlaced = ReadFile(m_folder / "i.m2v");
    const auto isInterlaced = [&](const char* progressive) {
        Video("scale=64:48", {"-c:v", "mpeg2video", "-frames:v", progressive}, "p.m2v");
        WriteFile(m_folder / "film.m2v", ReadFile(m_folder / "p.m2v") + interlaced);
        return SeenIn(m_folder / "film.m2v").isInterlaced;
    };
    EXPECT_TRUE(isInterlaced("4"));
    EXPECT_FALSE(isInterlaced("10"));
}

} // namespace
