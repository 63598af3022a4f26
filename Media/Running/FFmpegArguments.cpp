#include "Media/Running/FFmpegArguments.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Probe/Demuxers.h"
#include "Media/Running/TranscodeCommand.h"

#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>

namespace Zelnor::Media
{

namespace
{

enum class Pass
{
    Only,
    First,
    Second,
};

using Slot = FFmpegPass::Slot;

/// A time as ffmpeg's options take it.
std::string Microseconds(std::int64_t time) { return std::to_string(time) + "us"; }

/// Builds the arguments of one run.
class Builder
{
public:
    Builder(const TranscodeCommand& transcode, Pass pass) : m_transcode(transcode), m_pass(pass) {}

    FFmpegPass Build()
    {
        Add({"-hide_banner", "-nostdin", "-v", "error", "-nostats", "-progress", "pipe:1"});
        m_pass == Pass::First ? Add({"-y"}) : m_arguments.Add(Slot::Replace);
        for (std::size_t i = 0; i < m_transcode.inputs.size(); ++i)
        {
            AddInput(i);
        }
        unsigned int position = 0;
        for (const StreamCommand& stream : m_transcode.streams)
        {
            if (m_pass != Pass::First || stream.hasTwoPasses)
            {
                AddStream(stream, position++);
            }
        }
        if (m_transcode.span.end)
        {
            Add({"-t", Microseconds(*m_transcode.span.end - m_transcode.span.start)});
        }
        if (m_pass == Pass::First)
        {
            Add({"-f", "null", FFmpegFileName("/dev/null")});
        }
        else
        {
            AddOutput();
        }
        return std::move(m_arguments);
    }

private:
    void Add(std::initializer_list<std::string> arguments)
    {
        for (const std::string& argument : arguments)
        {
            m_arguments.Add(Slot::Text, argument);
        }
    }
    /// An option for one stream.
    void AddFor(unsigned int position, const std::string& option, const std::string& value)
    {
        Add({"-" + option + ":" + std::to_string(position), value});
    }

    void AddInput(std::size_t index)
    {
        const InputCommand& input = m_transcode.inputs[index];
        // Whatever the file holds by now, ffmpeg reads no other one.
        Add({"-protocol_whitelist", "file", "-f", input.demuxer});
        if (input.demuxer == kImageDemuxer)
        {
            // The name is that of one image, not the pattern of a series.
            Add({"-pattern_type", "none"});
        }
        if (m_transcode.span.start > 0)
        {
            // Before the input, ffmpeg goes to the key frame before it, and drops what it decodes too early.
            Add({"-ss", Microseconds(m_transcode.span.start)});
        }
        for (const StreamCommand& stream : m_transcode.streams)
        {
            for (const auto& [name, value] : stream.analysis)
            {
                if (stream.input == index)
                {
                    AddFor(stream.stream, name, value);
                }
            }
            if (stream.needsDurations && stream.input == index)
            {
                Add({"-fix_sub_duration:" + std::to_string(stream.stream)});
            }
        }
        Add({"-i", FFmpegFileName(input.file)});
    }

    void AddStream(const StreamCommand& stream, unsigned int position)
    {
        if (stream.merge.empty())
        {
            Add({"-map", std::to_string(stream.input) + ":" + std::to_string(stream.stream)});
            if (!stream.filters.empty())
            {
                AddFor(position, "filter", stream.filters);
            }
        }
        else
        {
            const std::string label = "[merged" + std::to_string(position) + "]";
            Add({"-filter_complex",
                 stream.merge + (stream.filters.empty() ? "" : "," + stream.filters) + label, "-map", label});
        }
        if (stream.isCopied)
        {
            AddFor(position, "c", "copy");
        }
        for (const auto& [name, value] : stream.options)
        {
            AddFor(position, name, value);
        }
        if (stream.hasTwoPasses)
        {
            AddPass(stream, position);
        }
        if (stream.isOneImage)
        {
            AddFor(position, "frames", "1");
        }
        for (const std::string& tag : stream.metadata)
        {
            Add({"-metadata:s:" + std::to_string(position), tag});
        }
    }

    void AddPass(const StreamCommand& stream, unsigned int position)
    {
        AddFor(position, "pass", m_pass == Pass::First ? "1" : "2");
        // Not the output's position, which is another one in the first pass.
        Add({"-passlogfile:" + std::to_string(position)});
        m_arguments.Add(Slot::PassLog, std::to_string(stream.input) + "-" + std::to_string(stream.stream));
    }

    void AddOutput()
    {
        // The records say what is known of the target; nothing is taken over behind their back.
        Add({"-map_metadata", "-1", "-map_metadata:s", "-1"});
        for (const std::string& tag : m_transcode.metadata)
        {
            Add({"-metadata", tag});
        }
        Add({"-max_muxing_queue_size", "4096"});
        if (m_transcode.isPicture)
        {
            // One image under exactly this name, even one that looks like a pattern.
            Add({"-update", "1"});
        }
        if (m_transcode.startsFast)
        {
            Add({"-movflags", "+faststart"});
        }
        if (m_transcode.muxer == Conf::IFormatFile::FORMAT_DVD)
        {
            Add({"-muxrate", "10080000", "-packetsize", "2048"});
        }
        Add({"-f", m_transcode.muxer});
        m_arguments.Add(Slot::Output);
    }

    const TranscodeCommand& m_transcode;
    Pass m_pass;
    FFmpegPass m_arguments;
};

} // namespace

std::vector<std::string> FFmpegPass::Arguments(const PassFiles& files) const
{
    std::vector<std::string> arguments;
    arguments.reserve(m_arguments.size());
    for (const auto& [slot, text] : m_arguments)
    {
        switch (slot)
        {
        case Slot::Text:
            arguments.push_back(text);
            break;
        case Slot::Replace:
            arguments.emplace_back(files.replace ? "-y" : "-n");
            break;
        case Slot::PassLog:
            arguments.push_back(files.passLog + text);
            break;
        case Slot::Output:
            arguments.push_back(FFmpegFileName(files.output));
            break;
        }
    }
    return arguments;
}

std::vector<FFmpegPass> MakeFFmpegArguments(const Transcode& transcode, FaultList& faults)
{
    const TranscodeCommand command = MakeTranscodeCommand(transcode, faults);
    const bool twoPasses = std::any_of(command.streams.begin(), command.streams.end(),
                                       [](const StreamCommand& stream) { return stream.hasTwoPasses; });
    std::vector<FFmpegPass> passes;
    for (const Pass pass :
         twoPasses ? std::vector<Pass>{Pass::First, Pass::Second} : std::vector<Pass>{Pass::Only})
    {
        passes.push_back(Builder(command, pass).Build());
    }
    return passes;
}

std::vector<FFmpegPass> MakeFFmpegArguments(const Transcode& transcode)
{
    FaultList faults;
    std::vector<FFmpegPass> passes = MakeFFmpegArguments(transcode, faults);
    faults.ThrowFirst();
    return passes;
}

} // namespace Zelnor::Media
