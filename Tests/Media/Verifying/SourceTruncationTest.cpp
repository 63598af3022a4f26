#include "Media/Verifying/SourceTruncation.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// A format and what is cut of it.
struct Source
{
    const char* name; ///< of FFmpeg's muxer
    const char* demuxer;
    std::vector<std::string> codecs;
    const char* wanted; ///< what is said when it is cut; empty: a number of bytes
};

std::ostream& operator<<(std::ostream& os, const Source& source) { return os << source.name; }

const Source kSources[] = {
    {"wav", "wav", {"-vn", "-c:a", "pcm_s16le"}, ""},
    {"w64", "w64", {"-vn", "-c:a", "pcm_s16le"}, ""},
    {"caf", "caf", {"-vn", "-c:a", "pcm_s16le"}, ""},
    {"avi", "avi", {"-c:v", "mpeg4", "-c:a", "mp2"}, ""},
    {"asf", "asf", {"-c:v", "wmv2", "-c:a", "wmav2"}, ""},
    {"mpeg", "mpeg", {"-c:v", "mpeg2video", "-c:a", "mp2"}, ""},
    {"dvd", "mpeg", {"-c:v", "mpeg2video", "-c:a", "mp2"}, ""},
    {"ogg", "ogg", {"-vn", "-c:a", "libvorbis"}, "an end-of-stream page"},
    {"ogv", "ogg", {"-c:v", "libtheora", "-c:a", "flac"}, "an end-of-stream page"},
    {"mpegts", "mpegts", {"-c:v", "mpeg2video", "-c:a", "mp2"}, "packets of 188 bytes"},
};

class SourceTruncation : public testing::TestWithParam<Source>
{
protected:
    /// Half a second in the format.
    std::string Made(const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments = {"-f", "lavfi", "-i", "testsrc2=s=176x144:r=25:d=0.6",
                                              "-f", "lavfi", "-i", "sine=r=48000:d=0.6"};
        arguments.insert(arguments.end(), GetParam().codecs.begin(), GetParam().codecs.end());
        arguments.insert(arguments.end(), more.begin(), more.end());
        arguments.insert(arguments.end(), {"-f", GetParam().name, Name()});
        MakeClip(arguments);
        return ReadFile(m_folder / "source");
    }
    std::string Name() const { return (m_folder / "source").string(); }

    std::optional<Truncation> Find(const std::string& bytes) const
    {
        WriteFile(m_folder / "source", bytes);
        return Find();
    }
    std::optional<Truncation> Find() const
    {
        MediaFile file;
        file.name = Name();
        file.demuxer = GetParam().demuxer;
        return FindTruncation(file);
    }

    TemporaryFolder m_folder;
};

TEST_P(SourceTruncation, IsNotFoundInAWholeFile)
{
    Made();
    EXPECT_FALSE(Find().has_value());
}

TEST_P(SourceTruncation, IsFoundWhereverTheFileIsCut)
{
    const std::string whole = Made();
    for (const std::size_t percent : {31U, 50U, 73U, 90U, 97U})
    {
        // Not between two packets of a transport stream.
        const std::string cut = whole.substr(0, whole.size() * percent / 100 / 188 * 188 + 77);
        const auto found = Find(cut);
        ASSERT_TRUE(found.has_value()) << percent;
        const std::string wanted = GetParam().wanted;
        if (!wanted.empty())
        {
            EXPECT_EQ(found->wanted, wanted);
        }
        else
        {
            EXPECT_EQ(found->found, std::to_string(cut.size()) + " bytes");
        }
    }
}

TEST_P(SourceTruncation, IsNotFoundInWhatWasWrittenToAPipe)
{
    std::vector<std::string> command = {"ffmpeg", "-nostdin", "-v", "error",
                                        "-f",     "lavfi",    "-i", "testsrc2=s=176x144:r=25:d=0.6",
                                        "-f",     "lavfi",    "-i", "sine=r=48000:d=0.6"};
    command.insert(command.end(), GetParam().codecs.begin(), GetParam().codecs.end());
    command.insert(command.end(), {"-f", GetParam().name, "pipe:1"});
    const ProcessResult result = RunProcess(command);
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_FALSE(Find(result.output).has_value());
}

/// Whatever an enemy writes there, it is read as far as it goes.
TEST_P(SourceTruncation, AnyBytesAreReadWithoutHarm)
{
    const std::string whole = Made().substr(0, 4096);
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i)
    {
        std::string bytes = whole.substr(0, random() % whole.size());
        for (unsigned int change = 0; change < 8 && !bytes.empty(); ++change)
        {
            bytes[random() % std::min<std::size_t>(bytes.size(), 128)] = static_cast<char>(random());
        }
        const auto found = Find(bytes);
        EXPECT_TRUE(!found || !found->wanted.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, SourceTruncation, testing::ValuesIn(kSources),
                         [](const auto& parameter) { return std::string("Of_") + parameter.param.name; });

std::optional<Truncation> FindIn(const std::string& demuxer, const std::string& bytes)
{
    const TemporaryFolder folder;
    WriteFile(folder / "source", bytes);
    MediaFile file;
    file.name = (folder / "source").string();
    file.demuxer = demuxer;
    return FindTruncation(file);
}

TEST(SourceTruncationOf, AFileThatIsGoneIsNothing)
{
    MediaFile file;
    file.name = "no such file";
    file.demuxer = "ogg";
    EXPECT_FALSE(FindTruncation(file).has_value());
}

TEST(SourceTruncationOf, AWavWhoseHeaderCountsItselfIsWhole)
{
    using namespace std::string_literals;
    const std::string header =
        "RIFF\x2C\x08\0\0WAVEfmt \x10\0\0\0"s + std::string(16, '\1') + "data\x2C\x08\0\0"s;
    EXPECT_FALSE(FindIn("wav", header + std::string(2048, '\0')).has_value());
    const auto cut = FindIn("wav", header + std::string(1000, '\0'));
    ASSERT_TRUE(cut.has_value());
    EXPECT_EQ(cut->wanted, "2136 bytes");
    EXPECT_EQ(cut->found, "1044 bytes");
}

TEST(SourceTruncationOf, ATransportStreamThatEndsBetweenPacketsIsWhole)
{
    const std::string packet = "G" + std::string(187, '\1');
    std::string stream;
    for (int i = 0; i < 10; ++i)
    {
        stream += packet;
    }
    EXPECT_FALSE(FindIn("mpegts", stream).has_value());
    EXPECT_TRUE(FindIn("mpegts", stream + packet.substr(0, 100)).has_value());
    // What follows is not a packet.
    EXPECT_FALSE(FindIn("mpegts", stream + std::string(100, '\0')).has_value());
}

} // namespace
