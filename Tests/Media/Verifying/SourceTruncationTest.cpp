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

TEST(SourceTruncationOf, WhatLooksLikeAnOggPageIsPassedOver)
{
    EXPECT_TRUE(FindIn("ogg", "xOggS" + std::string(60, '\0')).has_value());
    EXPECT_TRUE(FindIn("ogg", "OggS" + std::string(60, '\0')).has_value());
}

TEST(SourceTruncationOf, AWavWithoutALengthIsNotJudged)
{
    using namespace std::string_literals;
    for (const std::string& length : {"\0\0\0\0"s, "\xFF\xFF\xFF\xFF"s, "\0\0\xFF\x7F"s})
    {
        EXPECT_FALSE(FindIn("wav", "RIFF\x24\x08\0\0WAVEdata"s + length + "abcd").has_value());
    }
    EXPECT_FALSE(FindIn("wav", "RF64\xFF\xFF\xFF\xFFWAVEdata\0\1\0\0"s).has_value());
}

TEST(SourceTruncationOf, AWavOfChunksWithoutEndIsNotJudged)
{
    using namespace std::string_literals;
    const auto wav = [](int chunks) {
        std::string bytes = "RIFF\0\0\1\0WAVE"s;
        for (int i = 0; i < chunks; ++i)
        {
            bytes += "junk\1\0\0\0x\0"s;
        }
        return bytes + "data\0\0\1\0"s;
    };
    EXPECT_TRUE(FindIn("wav", wav(999)).has_value());
    EXPECT_FALSE(FindIn("wav", wav(1000)).has_value());
}

TEST(SourceTruncationOf, AnAviOrAsfOfUnknownLengthIsNotJudged)
{
    using namespace std::string_literals;
    EXPECT_FALSE(FindIn("avi", "RIFF\0\0\0\0AVI "s).has_value());
    EXPECT_FALSE(FindIn("avi", "RIFF\0\0\xFF\x7F"
                               "AVI "s)
                     .has_value());
    EXPECT_TRUE(FindIn("avi", "RIFF\0\x10\0\0AVI "s).has_value());
    // A header of 24 bytes, after which the data begin.
    const std::string header = std::string(16, 'h') + "\x18\0\0\0\0\0\0\0"s;
    const std::string data = "\x36\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"s;
    EXPECT_TRUE(FindIn("asf", header + data + "\0\1\0\0\0\0\0\0"s).has_value());
    EXPECT_FALSE(FindIn("asf", header + data + "\0\0\0\0\0\0\0\x40"s).has_value());
    EXPECT_FALSE(FindIn("asf", header + std::string(24, 'x')).has_value());
}

TEST(SourceTruncationOf, AProgramStreamIsFollowedToItsEnd)
{
    using namespace std::string_literals;
    const std::string pack = "\0\0\1\xBA"s + std::string(1, '\x44') + std::string(9, '\0');
    const std::string packet = "\0\0\1\xE0\0\4"s;
    EXPECT_FALSE(FindIn("mpeg", pack + packet + "abcd" + "\0\0\1\xB9"s).has_value());
    EXPECT_TRUE(FindIn("mpeg", pack + packet + "ab").has_value());
    // What is too short to tell its length is not judged.
    EXPECT_FALSE(FindIn("mpeg", pack + "\0\0\1\xE0"s).has_value());
    EXPECT_FALSE(FindIn("mpeg", pack + packet + "abcd" + "\0\0\1"s).has_value());
    EXPECT_FALSE(FindIn("mpeg", "\0\0\1\xBA"s).has_value());
}

TEST(SourceTruncationOf, ATransportStreamBeginsAndEndsWithPackets)
{
    std::string stream;
    for (int i = 0; i < 10; ++i)
    {
        stream += "G" + std::string(187, '\1');
    }
    EXPECT_TRUE(FindIn("mpegts", stream + "G").has_value());
    EXPECT_FALSE(FindIn("mpegts", stream.substr(0, 188 * 9) + std::string(188, '\1') + "G").has_value());
    // Those of a disc have a time of four bytes before them, of which the file may end.
    std::string disc;
    for (int i = 0; i < 10; ++i)
    {
        disc += "time" + ("G" + std::string(187, '\1'));
    }
    EXPECT_FALSE(FindIn("mpegts", disc).has_value());
    const auto cut = FindIn("mpegts", disc + "tim");
    ASSERT_TRUE(cut.has_value());
    EXPECT_EQ(cut->wanted, "packets of 192 bytes");
    EXPECT_EQ(cut->found, "one of 3 bytes");
}

} // namespace
