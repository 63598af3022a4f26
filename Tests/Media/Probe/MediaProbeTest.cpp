#include "Media/Probe/MediaProbe.h"

#include "Media/MediaException.h"
#include "Media/Probe/FFmpegLog.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TestStreams.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

class MediaProbe : public testing::Test
{
protected:
    MediaProbe() { KeepFFmpegMessages(); }

    /// What the probe of a stream of these bytes is refused with.
    static Thrown ExpectRefused(const std::string& bytes)
    {
        return ExpectThrow<ProbeException>(
            [&] { ProbeMedia(*Core::MemoryDataInput::Create(bytes), "a stream"); });
    }
};

TEST_F(MediaProbe, FindsTheStreamsOfAFile)
{
    const TemporaryFolder folder;
    WriteFile(folder / "in.mkv", TinyClip());
    const MediaFile file = ProbeMedia(folder / "in.mkv");
    EXPECT_EQ(file.name, (folder / "in.mkv").string());
    EXPECT_EQ(file.demuxer, "matroska,webm");
    ASSERT_EQ(file.streams.size(), 2U);
    EXPECT_EQ(file.streams[0].kind, StreamKind::Video);
    EXPECT_EQ(file.streams[0].codec, "mpeg4");
    EXPECT_EQ(file.streams[1].kind, StreamKind::Audio);
    EXPECT_EQ(file.streams[1].index, 1U);
}

TEST_F(MediaProbe, FindsChaptersTimecodeAndAttachments)
{
    const TemporaryFolder folder;
    WriteFile(folder / "chapters",
              ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=80\nEND=200\ntitle=One\n");
    WriteFile(folder / "a.ttf", "font");
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-i", "chapters", "-attach", "a.ttf",
              "-metadata:s:t", "mimetype=font/ttf", "-metadata:s:v", "timecode=01:00:00:00", "all.mkv"},
             folder.Path().string());
    const MediaFile file = ProbeMedia(folder / "all.mkv");
    EXPECT_EQ(file.timecode, "01:00:00:00");
    ASSERT_EQ(file.chapters.size(), 1U);
    EXPECT_EQ(file.chapters[0].start, 80000);
    EXPECT_EQ(file.chapters[0].end, 200000);
    EXPECT_EQ(file.chapters[0].title, "One");
    ASSERT_EQ(file.streams.size(), 2U);
    EXPECT_EQ(file.streams[0].timecode, "01:00:00:00");
    EXPECT_EQ(file.streams[1].fileName, "a.ttf");
    EXPECT_EQ(file.streams[1].mimeType, "font/ttf");
}

TEST_F(MediaProbe, FindsTheSameInAStreamThatComesInSmallPieces)
{
    TestInput input(TinyClip(), 7);
    const MediaFile file = ProbeMedia(input, "a stream");
    EXPECT_EQ(file.name, "a stream");
    const MediaFile whole = ProbeMedia(*Core::MemoryDataInput::Create(TinyClip()), "a stream");
    ASSERT_EQ(file.streams.size(), whole.streams.size());
    for (std::size_t i = 0; i < whole.streams.size(); ++i)
    {
        EXPECT_TRUE(file.streams[i].descriptor->Compare(whole.streams[i].descriptor));
    }
}

TEST_F(MediaProbe, NamesAFileThatItCannotRead)
{
    const TemporaryFolder folder;
    const std::string gone = (folder / "gone").string();
    const Thrown thrown = ExpectThrow<ProbeException>([&] { ProbeMedia(gone); });
    EXPECT_EQ(thrown.description, gone + ": cannot be read: No such file or directory");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), gone);
    EXPECT_EQ(thrown.file, "Media/Probe/MediaProbe");
    EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia(folder.Path()); }).description,
              folder.Path().string() + ": cannot be read: Is a directory");
    EXPECT_EQ(ExpectThrow<ProbeException>([] { ProbeMedia(""); }).description,
              "'': cannot be read: No such file or directory");
}

TEST_F(MediaProbe, DoesNotEndANameAtANulByte)
{
    const TemporaryFolder folder;
    WriteFile(folder / "in.mkv", TinyClip());
    const std::string name = (folder / "in.mkv").string() + std::string(1, '\0') + "x";
    EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia(name); }).description,
              name + ": cannot be read: a file name cannot hold a NUL byte");
}

TEST_F(MediaProbe, TellsFFmpegsMessageWithItsError)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-c:v", "mpeg4", "v.mp4"},
             folder.Path().string());
    WriteFile(folder / "cut.mp4", ReadFile(folder / "v.mp4").substr(0, 600));
    EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia(folder / "cut.mp4"); }).description,
              (folder / "cut.mp4").string() +
                  ": cannot be read: Invalid data found when processing input (moov atom not found)");
    // The message of one failure is not that of the next one.
    const Thrown gone = ExpectThrow<ProbeException>([&] { ProbeMedia(folder / "gone"); });
    EXPECT_EQ(gone.description, (folder / "gone").string() + ": cannot be read: No such file or directory");
}

TEST_F(MediaProbe, RefusesStreamsWithoutMedia)
{
    const std::string reason = "a stream: cannot be read: Invalid data found when processing input";
    EXPECT_EQ(ExpectRefused("").description, reason);
    EXPECT_EQ(ExpectRefused("no media").description, reason);
    EXPECT_EQ(ExpectRefused(std::string(100000, '\xa5')).Get<MediaException::TagFile>(), "a stream");
}

TEST_F(MediaProbe, LetsTheFailureOfAStreamPass)
{
    for (std::size_t call = 1; call <= 3; ++call)
    {
        TestInput input(TinyClip(), 1000, call);
        EXPECT_EQ(ExpectThrow<Core::CoreException>([&] { ProbeMedia(input, "a stream"); }).description,
                  "test stream: no more");
    }
}

TEST_F(MediaProbe, RefusesAStreamThatClaimsTooMuch)
{
    for (const std::size_t lieAt : {1U, 2U, 3U})
    {
        LyingInput input('x', 1, lieAt);
        const Thrown thrown = ExpectThrow<Core::CoreException>([&] { ProbeMedia(input, "a stream"); });
        EXPECT_EQ(thrown.description.value_or("").find("The input claims to have read "), 0U)
            << "FFmpeg decides how much it asks for: " << thrown.description.value_or("");
    }
}

/// A stream that probes another one before it gives its first bytes.
class Nested final : public OnStack<Core::IDataInput>
{
public:
    std::size_t Read(void* buffer, std::size_t size) override
    {
        ExpectThrow<ProbeException>([] { ProbeMedia(*Core::MemoryDataInput::Create("none"), "inner"); });
        return m_bytes.Read(buffer, size);
    }

private:
    TestInput m_bytes{TinyClip()};
};

TEST_F(MediaProbe, OfAStreamMayProbeAnotherOne)
{
    Nested input;
    EXPECT_EQ(ProbeMedia(input, "outer").streams.size(), 2U);
}

} // namespace
