#include "Media/Running/FFmpegArguments.h"

#include "Media/FFmpeg/Base64.h"
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
        if (HasChapters())
        {
            // They are data, so that no other file needs to be written or read.
            Add({"-protocol_whitelist", "data", "-f", "ffmetadata", "-i",
                 "data:text/plain;base64," + Base64(ChaptersText(m_transcode.chapters))});
        }
        unsigned int position = 0;
        for (const StreamCommand& stream : m_transcode.streams)
        {
            if (m_pass != Pass::First || stream.hasTwoPasses)
            {
                AddStream(stream, position++);
            }
        }
        if (m_transcode.span.start > 0 && !m_transcode.seeksInInputs)
        {
            Add({"-ss", Microseconds(m_transcode.span.start)});
        }
        if (m_transcode.span.end)
        {
            Add({"-t", Microseconds(*m_transcode.span.end - m_transcode.span.start)});
        }
        if (m_pass != Pass::First)
        {
            AddCarried(position);
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

    /// Takes a cover out of an input, for a container that holds covers as attachments.
    FFmpegPass BuildForCover(const CarriedCommand& cover)
    {
        Add({"-hide_banner", "-nostdin", "-v", "error", "-nostats", "-progress", "pipe:1", "-y"});
        AddInputFile(m_transcode.inputs[cover.input]);
        Add({"-map", "0:" + std::to_string(cover.stream), "-c:0", "copy", "-frames:0", "1", "-update", "1",
             "-f", "image2"});
        m_arguments.Add(Slot::Cover, NameOf(cover));
        return std::move(m_arguments);
    }

private:
    static std::string NameOf(const CarriedCommand& cover)
    {
        return "cover-" + std::to_string(cover.input) + "-" + std::to_string(cover.stream);
    }

    bool HasChapters() const { return m_pass != Pass::First && !m_transcode.chapters.empty(); }

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

    void AddInputFile(const InputCommand& input)
    {
        AddDemuxer(input);
        Add({"-i", FFmpegFileName(input.file)});
    }

    void AddDemuxer(const InputCommand& input)
    {
        // Whatever the file holds by now, ffmpeg reads no other one.
        Add({"-protocol_whitelist", "file", "-f", input.demuxer});
        if (input.demuxer == kImageDemuxer)
        {
            // The name is that of one image, not the pattern of a series.
            Add({"-pattern_type", "none"});
        }
    }

    void AddInput(std::size_t index)
    {
        const InputCommand& input = m_transcode.inputs[index];
        AddDemuxer(input);
        if (m_transcode.span.start > 0 && m_transcode.seeksInInputs)
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

    /// Those that ffmpeg maps stand before those that it reads from files of their own.
    void AddCarried(unsigned int position)
    {
        for (const bool isFile : {false, true})
        {
            for (const CarriedCommand& carried : m_transcode.carried)
            {
                if ((carried.form == CarriedStream::CoverFile) == isFile)
                {
                    AddCarried(carried, position++);
                }
            }
        }
    }

    void AddCarried(const CarriedCommand& carried, unsigned int position)
    {
        if (carried.form == CarriedStream::CoverFile)
        {
            Add({"-attach"});
            m_arguments.Add(Slot::Cover, NameOf(carried));
        }
        else
        {
            Add({"-map", std::to_string(carried.input) + ":" + std::to_string(carried.stream)});
            AddFor(position, "c", "copy");
        }
        if (carried.form == CarriedStream::Cover)
        {
            AddFor(position, "disposition", "attached_pic");
        }
        for (const std::string& tag : carried.metadata)
        {
            Add({"-metadata:s:" + std::to_string(position), tag});
        }
    }

    void AddOutput()
    {
        // The records say what is known of the target; nothing is taken over behind their back. Without a
        // kind, it would be the titles of the chapters, too.
        Add({HasChapters() ? "-map_metadata:g" : "-map_metadata", "-1", "-map_metadata:s", "-1"});
        Add({"-map_chapters", HasChapters() ? std::to_string(m_transcode.inputs.size()) : "-1"});
        for (const std::string& tag : m_transcode.metadata)
        {
            Add({"-metadata", tag});
        }
        if (!m_transcode.coverTag.empty())
        {
            // A tag of the file would become one of each stream, and the cover several.
            Add({"-metadata:s:0", m_transcode.coverTag});
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
        for (const auto& [name, value] : m_transcode.muxerOptions)
        {
            Add({"-" + name, value});
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
        case Slot::Cover:
            arguments.push_back(FFmpegFileName(files.passLog + text));
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
    for (const CarriedCommand& carried : command.carried)
    {
        if (carried.form == CarriedStream::CoverFile)
        {
            passes.push_back(Builder(command, Pass::Only).BuildForCover(carried));
        }
    }
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
