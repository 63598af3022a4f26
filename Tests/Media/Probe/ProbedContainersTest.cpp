// Which container a probe finds in files that ffmpeg has made.

#include "Media/Probe/MediaProbe.h"

#include "Media/MediaException.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::Contains;
using testing::IsEmpty;

class ProbedContainer : public testing::Test
{
protected:
    /// A file of a fifth of a second of silence, and its name. The arguments choose encoder and muxer.
    std::string Make(const std::string& name, const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> words = {"-f", "lavfi", "-i", "anullsrc=r=8000:cl=mono:d=0.2"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        words.push_back((m_folder / name).string());
        MakeClip(words);
        return words.back();
    }

    /// Empty when there is none.
    static std::string ContainerOf(const MediaFile& file)
    {
        const Core::Property& record = file.descriptor->GetProperty();
        const auto container = record.FindChild(Conf::IFormatFile::TAG_CONTAINER);
        return container == record.end() ? "" : container->GetString();
    }

    TemporaryFolder m_folder;
};

TEST_F(ProbedContainer, OfADemuxerForManyIsThatOfItsBrand)
{
    struct Case
    {
        const char* muxer;
        const char* container;
    };
    for (const Case& each : {Case{"mov", "mov"}, Case{"ipod", "m4a"}, Case{"3gp", "3gp"}, Case{"3g2", "3g2"},
                             Case{"mp4", "mp4"}})
    {
        const std::string name = Make("file", {"-c:a", "aac", "-f", each.muxer});
        EXPECT_EQ(ContainerOf(ProbeMedia(name)), each.container) << each.muxer;
    }
}

TEST_F(ProbedContainer, OfADemuxerForManyIsTheEldestWithoutABrand)
{
    const std::string name = Make("file", {"-c:a", "pcm_s16be", "-f", "mov"});
    const std::string bytes = ReadFile(name);
    ASSERT_EQ(bytes.substr(4, 4), "ftyp");
    // The length of the box that holds the brand. An empty one of the same length takes its place, so that
    // all else stays where it is.
    const std::size_t length = static_cast<unsigned char>(bytes[3]);
    WriteFile(name, bytes.substr(0, 4) + "free" + bytes.substr(8, length - 8) + bytes.substr(length));
    EXPECT_EQ(ContainerOf(ProbeMedia(name)), "mov");
}

TEST_F(ProbedContainer, OfStreamsInAdtsIsCalledSo)
{
    EXPECT_EQ(ContainerOf(ProbeMedia(Make("file.aac", {"-c:a", "aac", "-f", "adts"}))), "adts");
}

TEST_F(ProbedContainer, IsNamedByTheExtensionWhereTheDemuxerReadsSeveral)
{
    EXPECT_EQ(ContainerOf(ProbeMedia(Make("file.mkv", {"-c:a", "libopus", "-ar", "48000"}))), "matroska");
    EXPECT_EQ(ContainerOf(ProbeMedia(Make("file.webm", {"-c:a", "libopus", "-ar", "48000"}))), "webm");
}

TEST_F(ProbedContainer, ThatTheVocabularyDoesNotHaveIsANote)
{
    const MediaFile file = ProbeMedia(Make("file", {"-c:a", "pcm_s16le", "-f", "w64"}));
    EXPECT_EQ(file.demuxer, "w64");
    EXPECT_EQ(ContainerOf(file), "");
    EXPECT_THAT(file.notes, Contains("the vocabulary has no container for w64"));
    EXPECT_THAT(ProbeMedia(Make("file", {"-f", "wav"})).notes, IsEmpty());
}

TEST_F(ProbedContainer, WithoutStreamsIsRefused)
{
    // What ffmpeg reads tags from.
    const std::string name = (m_folder / "tags").string();
    WriteFile(name, ";FFMETADATA1\ntitle=x\n");
    EXPECT_EQ(ExpectThrow<ProbeException>([&] { ProbeMedia(name); }).description,
              name + ": cannot be read: there is no stream in it");
}

TEST_F(ProbedContainer, HasTheSizeAndTimesOfItsFile)
{
    const std::string name = Make("file.wav", {});
    const timespec times[] = {{1000000000, 0}, {1234567890, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, name.c_str(), times, 0), 0);
    const MediaFile file = ProbeMedia(name);
    const Core::Property& record = file.descriptor->GetProperty();
    EXPECT_EQ(record[Conf::IFormatFile::TAG_FORMAT_FILE_SIZE].GetInt64(),
              static_cast<long long>(ReadFile(name).size()));
    EXPECT_EQ(record[Conf::IFormatFile::TAG_FILE_MODIFY_TIME].GetString(), "2009-02-13T23:31:30Z");
    EXPECT_EQ(record[Conf::IFormatFile::TAG_FILE_EXTENSION].GetString(), "wav");
    EXPECT_EQ(record[Conf::IFormatFile::TAG_FILE_PATH].GetString(), name);
}

} // namespace
