#pragma once

#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Probe/MediaProbe.h"
#include "Media/Running/JobRun.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/MediaInfo.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// Makes clips, converts them through the library, and looks at the samples of what was made.
class PictureTest : public testing::Test
{
protected:
    std::string Name(const std::string& name) const { return (m_folder / name).string(); }

    /// A clip of the source that the first words of lavfi describe.
    void Make(const std::string& lavfi, std::vector<std::string> more) const
    {
        more.insert(more.begin(), {"-f", "lavfi", "-i", lavfi});
        MakeClip(more, m_folder.Path().string());
    }

    /// Plans the job and runs it. The target is "out" and the container's extension.
    Media::PlannedJob Convert(const std::string& source, const std::string& container,
                              const std::string& streams, Media::JobRequest request = {})
    {
        request.output = Name("out");
        Media::PlannedJob job =
            Media::PlanJob(Media::ProbeMedia(Name(source)), MakePreset(container, streams), request);
        Media::RunOptions options;
        options.overwrite = true;
        Media::RunJob(*job.graph, options);
        m_output = job.output;
        return job;
    }

    /// The note that names what the source's first stream loses.
    std::string Loss(const std::string& source, const std::string& reason) const
    {
        return Name(source) + ": video stream 0: " + reason;
    }

    /// What the probe says of the video that was made.
    Media::MediaStream Video() const
    {
        for (const Media::MediaStream& stream : Media::ProbeMedia(m_output).streams)
        {
            if (stream.kind == Media::StreamKind::Video)
            {
                return stream;
            }
        }
        throw std::runtime_error("no video in " + m_output);
    }
    /// The record of the codec of the job's first stream.
    static Core::Property Codec(const Media::PlannedJob& job) { return job.graph->GetLink(3, 2); }

    /// The samples of the frames of a file, decoded as they are stored, or to `format`.
    static std::vector<std::uint8_t> SamplesOf(const std::string& file, const std::string& format = "",
                                               const std::string& frames = "1")
    {
        std::vector<std::string> command = {"ffmpeg", "-nostdin", "-v",    "error",     "-i",
                                            file,     "-map",     "0:v:0", "-frames:v", frames};
        if (!format.empty())
        {
            command.insert(command.end(), {"-pix_fmt", format});
        }
        command.insert(command.end(), {"-f", "rawvideo", "pipe:1"});
        const ProcessResult result = RunProcess(command);
        if (result.exitCode != 0)
        {
            throw std::runtime_error("ffmpeg cannot decode: " + result.messages);
        }
        return {result.output.begin(), result.output.end()};
    }
    std::vector<std::uint8_t> Samples(const std::string& format = "") const
    {
        return SamplesOf(m_output, format);
    }

    /// How many frames can be decoded.
    std::size_t FrameCount(std::size_t width, std::size_t height) const
    {
        return SamplesOf(m_output, "gray", "100000").size() / (width * height);
    }

    /// How much the lines of grey frames differ from the next ones; large where fields are of two moments.
    double Combing(std::size_t width, std::size_t height) const
    {
        const std::vector<std::uint8_t> samples = SamplesOf(m_output, "gray", "5");
        const std::size_t frame = samples.size() / (width * height) / 2 * width * height;
        double sum = 0;
        for (std::size_t i = frame; i + width < frame + (height - 1) * width; ++i)
        {
            sum += std::abs(samples[i] - samples[i + width]);
        }
        return sum / static_cast<double>(width * height);
    }

    const TemporaryFolder m_folder;
    std::string m_output;
};

} // namespace Zelnor::Testing
