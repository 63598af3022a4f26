#include "Media/Probe/Demuxers.h"

#include "Media/MediaException.h"
#include "Media/Probe/MediaProbe.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <set>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

std::set<std::string> InstalledDemuxers(bool readOneFile)
{
    std::set<std::string> names;
    void* state = nullptr;
    while (const AVInputFormat* const demuxer = av_demuxer_iterate(&state))
    {
        if (ReadsOneFile(*demuxer) == readOneFile)
        {
            names.insert(demuxer->name);
        }
    }
    return names;
}

TEST(Demuxers, ThatNameOtherFilesOrPlacesInTheNetworkAreNotUsed)
{
    const std::set<std::string> refused = InstalledDemuxers(false);
    for (const char* const name : {"concat", "dash", "hls", "imf", "mlv", "rtp", "rtsp", "sap", "sdp",
                                   "vobsub", "webm_dash_manifest", "data"})
    {
        EXPECT_EQ(refused.count(name), av_find_input_format(name) == nullptr ? 0U : 1U) << name;
    }
}

TEST(Demuxers, OfMediaFilesAreUsed)
{
    const std::set<std::string> used = InstalledDemuxers(true);
    for (const char* const name : {"mov,mp4,m4a,3gp,3g2,mj2",
                                   "matroska,webm",
                                   "avi",
                                   "mpegts",
                                   "mpeg",
                                   "asf",
                                   "flv",
                                   "ogg",
                                   "wav",
                                   "mp3",
                                   "aac",
                                   "flac",
                                   "image2",
                                   "png_pipe",
                                   "srt",
                                   "ass",
                                   "webvtt",
                                   "gif",
                                   "mxf",
                                   "dv",
                                   "rm",
                                   "h264",
                                   "hevc",
                                   "rawvideo"})
    {
        EXPECT_EQ(used.count(name), 1U) << name;
    }
}

TEST(Demuxers, AreFoundAgainByTheirFirstName)
{
    for (const std::string& name : InstalledDemuxers(true))
    {
        const AVInputFormat* const found = av_find_input_format(name.substr(0, name.find(',')).c_str());
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found->name, name);
    }
}

/// Files that name another one, which is beside them.
class NamingOtherFiles : public testing::Test
{
protected:
    NamingOtherFiles() { WriteFile(m_folder / "secret.wav", SilentWav()); }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }

    void ExpectRefused(const std::string& name, const std::string& bytes, const std::string& reason) const
    {
        WriteFile(Name(name), bytes);
        const Thrown file = ExpectThrow<ProbeException>([&] { ProbeMedia(Name(name)); });
        EXPECT_EQ(file.description, Name(name) + ": cannot be read: " + reason);
        EXPECT_EQ(file.Get<MediaException::TagFile>(), Name(name));
    }
    void ExpectDemuxerRefused(const std::string& name, const std::string& bytes,
                              const std::string& demuxer) const
    {
        const std::string reason =
            "FFmpeg's demuxer '" + demuxer + "' may read other files than the one that is named";
        ExpectRefused(name, bytes, reason);
        const auto input = Core::MemoryDataInput::Create(bytes);
        EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia(*input, "a stream"); }).description,
                  "a stream: cannot be read: " + reason);
    }

    TemporaryFolder m_folder;
};

TEST_F(NamingOtherFiles, AListOfFilesIsNotRead)
{
    ExpectDemuxerRefused("x.mp4", "ffconcat version 1.0\nfile secret.wav\n", "concat");
    ExpectDemuxerRefused("y.mp4", "ffconcat version 1.0\nfile /etc/passwd\n", "concat");
}

TEST_F(NamingOtherFiles, APlaylistIsNotRead)
{
    const std::string playlist =
        "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + Name("secret.wav") + "\n#EXT-X-ENDLIST\n";
    ExpectDemuxerRefused("x.m3u8", playlist, "hls");
    ExpectDemuxerRefused("x.ts", playlist, "hls");
    ExpectDemuxerRefused("x.mkv", playlist, "hls");
}

TEST_F(NamingOtherFiles, AManifestIsNotRead)
{
    ExpectDemuxerRefused("x.mp4",
                         "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" "
                         "profiles=\"urn:mpeg:dash:profile:isoff-live:2011\"></MPD>\n",
                         "dash");
}

TEST_F(NamingOtherFiles, ADescriptionOfStreamsIsNotRead)
{
    ExpectDemuxerRefused("x.mp4",
                         "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
                         "m=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n",
                         "sdp");
}

TEST_F(NamingOtherFiles, AnIndexOfSubtitlesIsNotRead)
{
    WriteFile(Name("x.sub"), TinyClip());
    ExpectDemuxerRefused("x.idx", "# VobSub index file, v7\nid: en, index: 0\n", "vobsub");
}

TEST_F(NamingOtherFiles, PlanesInFilesBesideAreNotRead)
{
    // Luma; FFmpeg would take the colours from x.U and x.V.
    WriteFile(Name("x.U"), std::string(64, 'u'));
    WriteFile(Name("x.V"), std::string(64, 'v'));
    WriteFile(Name("x.Y"), std::string(352 * 288, 'y'));
    EXPECT_THROW(ProbeMedia(Name("x.Y")), ProbeException);
}

TEST_F(NamingOtherFiles, APatternIsTheNameOfOneImage)
{
    WriteFile(Name("img1.png"), "x");
    EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia(Name("img%d.png")); }).description,
              Name("img%d.png") + ": cannot be read: No such file or directory");
}

/// A QuickTime file whose only track keeps its samples in another file.
std::string MovieOfExternalData(const std::string& file)
{
    const auto number = [](std::size_t value, int bytes) {
        std::string text;
        for (int i = bytes - 1; i >= 0; --i)
        {
            constexpr int kBytes = sizeof value;
            text += i < kBytes ? static_cast<char>(value >> (8 * i) & 0xFFU) : '\0';
        }
        return text;
    };
    const auto box = [&number](const std::string& type, const std::string& content) {
        return number(content.size() + 8, 4) + type + content;
    };
    const std::string zeros(64, '\0');
    const std::string description = number(0, 6) + number(1, 2) + zeros.substr(0, 8) + number(1, 2) +
                                    number(16, 2) + number(0, 4) + number(8000U << 16U, 4);
    const std::string table =
        box("stsd", number(0, 4) + number(1, 4) + box("sowt", description)) +
        box("stts", number(0, 4) + number(1, 4) + number(100, 4) + number(1, 4)) +
        box("stsc", number(0, 4) + number(1, 4) + number(1, 4) + number(100, 4) + number(1, 4)) +
        box("stsz", number(0, 4) + number(2, 4) + number(100, 4)) +
        box("stco", number(0, 4) + number(1, 4) + number(44, 4));
    const std::string reference = box("url ", number(0, 4) + "file:" + file + std::string(1, '\0'));
    const std::string media =
        box("mdhd", number(0, 12) + number(8000, 4) + number(100, 4) + number(0, 4)) +
        box("hdlr", number(0, 4) + "mhlrsoun" + zeros.substr(0, 12) + std::string(1, '\0')) +
        box("minf", box("smhd", number(0, 8)) +
                        box("dinf", box("dref", number(0, 4) + number(1, 4) + reference)) +
                        box("stbl", table));
    const std::string track =
        box("tkhd", number(1, 4) + number(0, 8) + number(1, 4) + zeros + number(0, 4)) + box("mdia", media);
    return box("ftyp", "qt  " + number(0, 4) + "qt  ") +
           box("moov",
               box("mvhd", number(0, 12) + number(8000, 4) + number(100, 4) + zeros + zeros.substr(0, 16)) +
                   box("trak", track));
}

TEST_F(NamingOtherFiles, AMovieOfExternalDataDoesNotReadThem)
{
    WriteFile(Name("x.mov"), MovieOfExternalData(Name("secret.wav")));
    const MediaFile file = ProbeMedia(Name("x.mov"));
    ASSERT_EQ(file.streams.size(), 1U);
    EXPECT_EQ(file.streams[0].codec, "pcm_s16le");
}

TEST_F(NamingOtherFiles, PipesAndDevicesAreNotRead)
{
    ASSERT_EQ(::mkfifo(Name("pipe").c_str(), 0600), 0);
    EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia(Name("pipe")); }).description,
              Name("pipe") + ": cannot be read: expected a regular file, found a pipe");
    EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia("/dev/zero"); }).description,
              "/dev/zero: cannot be read: expected a regular file, found a device");
}

} // namespace
