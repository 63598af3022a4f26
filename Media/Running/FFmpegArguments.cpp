#include "Media/Running/FFmpegArguments.h"

#include "Media/MediaException.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/EncoderCheck.h"
#include "Media/Running/CodecArguments.h"
#include "Media/Running/FilterArguments.h"

#include "Conf/Interfaces/IFormat.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatFile;
using Core::Property;

constexpr const char* kUnit = "Media/Running/FFmpegArguments";

enum class Pass
{
    Only,
    First,
    Second,
};

using Slot = FFmpegPass::Slot;

/// Builds the arguments of one run.
class Builder
{
public:
    Builder(const Transcode& transcode, Pass pass) : m_transcode(transcode), m_pass(pass) {}

    FFmpegPass Build()
    {
        if (FindMuxer(m_transcode.container) == nullptr)
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>("The installed FFmpeg cannot write the container '" +
                                                        m_transcode.container + "'"));
        }
        Add({"-hide_banner", "-nostdin", "-v", "error", "-nostats", "-progress", "pipe:1"});
        m_pass == Pass::First ? Add({"-y"}) : m_arguments.Add(Slot::Replace);
        for (std::size_t i = 0; i < m_transcode.inputs.size(); ++i)
        {
            AddInput(i);
        }
        unsigned int position = 0;
        for (const TranscodeStream& stream : m_transcode.streams)
        {
            if (m_pass != Pass::First || WantsTwoPasses(stream.codec))
            {
                AddStream(stream, position++);
            }
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
    /// An option for one stream of the output.
    void AddFor(unsigned int position, const std::string& option, const std::string& value)
    {
        Add({"-" + option + ":" + std::to_string(position), value});
    }

    void AddInput(std::size_t index)
    {
        const MediaFile& file = m_transcode.inputs[index];
        if (file.demuxer == "image2")
        {
            // The name is one picture's, not the pattern of a series.
            Add({"-f", "image2", "-pattern_type", "none"});
        }
        for (const TranscodeStream& stream : m_transcode.streams)
        {
            if (stream.input == index)
            {
                AddAnalysis(stream);
            }
        }
        Add({"-i", FFmpegFileName(file.name)});
    }

    void AddAnalysis(const TranscodeStream& stream)
    {
        const auto options = stream.codec.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE);
        if (options == stream.codec.end())
        {
            return;
        }
        for (const Property& option : *options)
        {
            AddFor(stream.stream, option.GetName(),
                   option.GetType() == PROPERTY_TYPE_INT64 ? std::to_string(option.GetInt64())
                                                           : option.GetString());
        }
    }

    void AddStream(const TranscodeStream& stream, unsigned int position)
    {
        const MediaStream& source = m_transcode.SourceOf(stream);
        CheckRecord(stream, source);
        if (IsCopied(stream.codec))
        {
            AddCopied(stream, source, position);
        }
        else
        {
            AddEncoded(stream, source, position);
        }
        AddTags("-metadata:s:" + std::to_string(position), stream.codec);
        const auto language = stream.codec.FindChild(IFormatCodec::TAG_LANGUAGE);
        if (language != stream.codec.end())
        {
            Add({"-metadata:s:" + std::to_string(position), "language=" + language->GetString()});
        }
    }

    static void CheckRecord(const TranscodeStream& stream, const MediaStream& source)
    {
        if (stream.codec.GetName() != *DescribeKind(source.kind).recordName)
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>(
                                    "Stream " + std::to_string(stream.stream) + " is " + NameOf(source.kind) +
                                    ", and the record of what it becomes is '" + stream.codec.GetName() +
                                    "', not '" + *DescribeKind(source.kind).recordName + "'"));
        }
    }

    void CheckContainer(AVCodecID codec) const
    {
        if (!MayHold(m_transcode.container, codec))
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>("The container " + m_transcode.container +
                                                        " cannot hold " + avcodec_get_name(codec)));
        }
    }

    void AddCopied(const TranscodeStream& stream, const MediaStream& source, unsigned int position)
    {
        if (!stream.merged.empty())
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>("Nothing can be merged into stream " +
                                                        std::to_string(stream.stream) +
                                                        ", which is to stay as it is"));
        }
        const auto codec = source.descriptor->GetProperty().FindChild(IFormatCodec::TAG_CODEC_ID);
        if (codec != source.descriptor->GetProperty().end())
        {
            CheckContainer(CodecNumberOf(codec->GetString()));
        }
        Map(stream);
        AddFor(position, "c", "copy");
    }

    void AddEncoded(const TranscodeStream& stream, const MediaStream& source, unsigned int position)
    {
        const AVCodec& encoder = EncoderFor(stream.codec);
        CheckContainer(encoder.id);
        RequireAccepted(stream.codec, encoder);
        const std::string filters = StreamFilters(m_transcode, stream);
        if (stream.merged.empty())
        {
            Map(stream);
            if (!filters.empty())
            {
                AddFor(position, "filter", filters);
            }
        }
        else
        {
            const std::string label = "[merged" + std::to_string(position) + "]";
            Add({"-filter_complex",
                 MergeFilters(m_transcode, stream) + (filters.empty() ? "" : "," + filters) + label, "-map",
                 label});
        }
        for (const auto& [name, value] : EncodingOptions(stream.codec, encoder))
        {
            AddFor(position, name, value);
        }
        AddPass(stream, position);
        if (source.kind == StreamKind::Video && IsPicture(m_transcode.container))
        {
            AddFor(position, "frames", "1");
        }
    }

    void Map(const TranscodeStream& stream)
    {
        Add({"-map", std::to_string(stream.input) + ":" + std::to_string(stream.stream)});
    }

    void AddPass(const TranscodeStream& stream, unsigned int position)
    {
        if (m_pass == Pass::Only || !WantsTwoPasses(stream.codec))
        {
            return;
        }
        AddFor(position, "pass", m_pass == Pass::First ? "1" : "2");
        // Not the output's position, which is another one in the first pass.
        Add({"-passlogfile:" + std::to_string(position)});
        m_arguments.Add(Slot::PassLog, std::to_string(stream.input) + "-" + std::to_string(stream.stream));
    }

    /// A record's texts about the stream or file.
    void AddTags(const std::string& option, const Property& record)
    {
        const auto metadata = record.FindChild(IFormat::TAG_METADATA);
        if (metadata == record.end())
        {
            return;
        }
        for (const Property& tag : *metadata)
        {
            const bool isText = tag.GetType() == PROPERTY_TYPE_STRING;
            if ((isText || tag.GetType() == PROPERTY_TYPE_INT64) && !IsAboutSource(tag.GetName()))
            {
                Add({option,
                     tag.GetName() + "=" + (isText ? tag.GetString() : std::to_string(tag.GetInt64()))});
            }
        }
    }

    /// Pictures are turned when they are converted.
    static bool IsAboutSource(const std::string& tag) { return tag == IFormatFile::TAG_ROTATION; }

    void AddOutput()
    {
        const AVOutputFormat* const muxer = FindMuxer(m_transcode.container);
        // The records say what is known of the target; nothing is taken over behind their back.
        Add({"-map_metadata", "-1", "-map_metadata:s", "-1"});
        AddTags("-metadata", m_transcode.target);
        Add({"-max_muxing_queue_size", "4096"});
        if (IsPicture(m_transcode.container))
        {
            // One picture under exactly this name, even one that looks like a pattern.
            Add({"-update", "1"});
        }
        if (std::string(muxer->name) == IFormatFile::FORMAT_DVD)
        {
            Add({"-muxrate", "10080000", "-packetsize", "2048"});
        }
        Add({"-f", muxer->name});
        m_arguments.Add(Slot::Output);
    }

    const Transcode& m_transcode;
    Pass m_pass;
    FFmpegPass m_arguments;
};

/// An argument cannot hold a NUL byte; what comes after it would be cut off silently.
void CheckArguments(const std::vector<std::string>& arguments)
{
    for (const std::string& argument : arguments)
    {
        if (argument.find('\0') != std::string::npos)
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>("ffmpeg cannot be given a text with a NUL byte: '" +
                                                        argument + "'"));
        }
    }
}

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

std::vector<FFmpegPass> MakeFFmpegArguments(const Transcode& transcode)
{
    const bool twoPasses =
        std::any_of(transcode.streams.begin(), transcode.streams.end(),
                    [](const TranscodeStream& stream) { return WantsTwoPasses(stream.codec); });
    std::vector<FFmpegPass> passes;
    for (const Pass pass :
         twoPasses ? std::vector<Pass>{Pass::First, Pass::Second} : std::vector<Pass>{Pass::Only})
    {
        passes.push_back(Builder(transcode, pass).Build());
        CheckArguments(passes.back().Arguments({transcode.output, "", false}));
    }
    return passes;
}

} // namespace Zelnor::Media
