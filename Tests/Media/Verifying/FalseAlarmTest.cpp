#include "Media/Planning/JobPlan.h"
#include "Media/Running/JobRun.h"

#include "Tests/Support/EverythingClip.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// A container and what goes into it; empty: nothing.
struct Target
{
    const char* container;
    const char* video;
    const char* audio;
    bool isReadBack = true;
};

std::ostream& operator<<(std::ostream& os, const Target& target)
{
    return os << target.container << " " << target.video << " " << target.audio;
}

const Target kTargets[] = {
    {"3gp", "H263", "AAC"},
    {"ac3", "", "AC3"},
    {"adts", "", "AAC"},
    {"aiff", "", "PCM_S16BE"},
    {"asf", "MSMPEG4V3", "WMAV2"},
    {"au", "", "PCM_S16BE"},
    {"avi", "MPEG4", "MP3"},
    {"bmp", "BMP", ""},
    {"caf", "", "PCM_S16LE"},
    {"dvd", "MPEG2VIDEO", "AC3"},
    {"flac", "", "FLAC"},
    {"flv", "FLV1", "MP3"},
    {"gif", "GIF", ""},
    {"h264", "H264", ""},
    {"ivf", "VP8", ""},
    {"m4a", "", "ALAC"},
    {"m4v", "MPEG4", ""},
    {"matroska", "FFV1", "PCM_S16LE"},
    {"mjpeg", "MJPEG", ""},
    {"mov", "MJPEG", "PCM_S16BE"},
    {"mp2", "", "MP2"},
    {"mp3", "", "MP3"},
    {"mp4", "H264", "AAC"},
    {"mpeg", "MPEG1VIDEO", "MP2"},
    {"mpegts", "MPEG2VIDEO", "AC3"},
    {"nut", "MPEG4", "AC3"},
    {"ogg", "THEORA", "VORBIS"},
    {"png", "PNG", ""},
    {"rm", "RV10", "AC3"},
    {"s16le", "", "PCM_S16LE", false},
    {"tiff", "TIFF", ""},
    {"wav", "", "PCM_S24LE"},
    {"wmv", "WMV2", "WMAV2"},
    {"wv", "", "WAVPACK"},
};

/// A second of video and sound with everything that a file can have, converted to everything there is.
class FalseAlarm : public testing::TestWithParam<Target>
{
protected:
    static void SetUpTestSuite()
    {
        s_folder = new TemporaryFolder;
        MakeEverything(*s_folder, "in.mkv");
    }
    static void TearDownTestSuite() { delete s_folder; }
    static std::string Name(const std::string& name) { return (*s_folder / name).string(); }

    static std::string Codec(const char* kind, const std::string& codec)
    {
        return codec.empty() ? "" : std::string("\"") + kind + R"(":{"codec_id":"CODEC_ID_)" + codec + "\"}";
    }

    static TemporaryFolder* s_folder;
};
TemporaryFolder* FalseAlarm::s_folder = nullptr;

TEST_P(FalseAlarm, IsNotRaised)
{
    const Target target = GetParam();
    const std::string video = Codec("video", target.video);
    const std::string audio = Codec("audio", target.audio);
    JobRequest request;
    request.output = Name(std::string("out.") + target.container);
    const PlannedJob job = PlanJob(
        ProbeMedia(Name("in.mkv")),
        MakePreset(target.container, "{" + video + (video.empty() || audio.empty() ? "" : ",") + audio + "}"),
        request);
    RunOptions options;
    options.verification = VerificationDepth::Full;
    const RunResult result = RunJob(*job.graph, options);
    EXPECT_EQ(result.targets.at(0).notes.empty(), target.isReadBack);
}

INSTANTIATE_TEST_SUITE_P(Containers, FalseAlarm, testing::ValuesIn(kTargets), [](const auto& parameter) {
    return std::string("In_") + parameter.param.container;
});

} // namespace
