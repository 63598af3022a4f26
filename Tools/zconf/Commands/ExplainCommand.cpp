#include "Media/Planning/CodecSupport.h"
#include "Media/Probe/FFmpegInfo.h"
#include "Tools/zconf/Commands/Catalogue.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/FrameSizeText.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/Text.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/MediaTypeUtils.h"

#include <algorithm>
#include <memory>

namespace Zelnor::Tool
{

namespace
{

struct ExplainArguments
{
    bool hasName = false; ///< which may be empty
    std::string name;
    std::string size;
    std::string container;
    std::string codec;
    bool json = false;
};

bool Holds(const std::vector<std::string>& list, const std::string& text)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

struct NamedList
{
    const char* name;
    const std::vector<std::string>& list;
};

std::vector<std::string> ListsWith(const std::string& text, const std::vector<NamedList>& lists)
{
    std::vector<std::string> names;
    for (const NamedList& candidate : lists)
    {
        if (Holds(candidate.list, text))
        {
            names.emplace_back(candidate.name);
        }
    }
    return names;
}

Description ExplainCodec(const CodecEntry& codec)
{
    Description description = {
        {"name", codec.id}, {"is", codec.kind + " codec"}, {"ffmpeg", codec.ffmpegName}};
    const AVCodecID number = Media::CodecNumberOf(codec.id);
    const bool isInTables = number != AV_CODEC_ID_NONE || codec.id == Conf::IFormatCodec::CODEC_ID_NONE;
    if (isInTables)
    {
        description.push_back({"number", static_cast<long long>(number)});
    }
    description.push_back({"in the codec tables", isInTables});
    description.push_back(
        {"lists", ListsWith(codec.id, {{"external decoders", Conf::GetExternalDecoderList()},
                                       {"external encoders", Conf::GetExternalEncoderList()},
                                       {"disabled decoders", Conf::GetDisabledDecoderList()},
                                       {"disabled encoders", Conf::GetDisabledEncoderList()}})});
    description.push_back({"accelerated encoders", AcceleratedEncodersOf(codec.id)});
    description.push_back({"accelerated decoders", AcceleratedDecodersOf(codec.id)});
    if (codec.kind == "audio")
    {
        try
        {
            description.push_back({"bitrate required", Conf::IsAudioBitrateRequired(codec.id)});
        }
        catch (const Conf::FormatException&)
        {
            // The library does not know this of codecs that are not in its tables.
        }
    }
    return description;
}

Description ExplainContainer(const std::string& format)
{
    return {{"name", format},
            {"is", std::string("container")},
            {"ffmpeg muxer", Media::MuxerDescription(format)},
            {"ffmpeg demuxer", Media::DemuxerDescription(format)},
            {"default extension", DefaultExtension(format)},
            {"lists", ListsWith(format, {{"formats", Conf::GetFormatList()},
                                         {"image containers", Conf::GetImageContainerList()},
                                         {"audio containers", Conf::GetAudioContainerList()},
                                         {"disabled parsers", Conf::GetDisabledFormatParserList()},
                                         {"disabled muxers", Conf::GetDisabledFormatMuxerList()}})}};
}

std::vector<FrameSize> PlanesOf(const PixFmtDescription& format, const FrameSize& frame)
{
    std::vector<FrameSize> planes;
    for (int plane = 0; plane < format.components; ++plane)
    {
        planes.push_back({format.GetPlanWidth(static_cast<std::int32_t>(frame.width), plane),
                          format.GetPlanHeight(static_cast<std::int32_t>(frame.height), plane)});
    }
    return planes;
}

Description ExplainPixelFormat(const PixFmtDescription& format, const FrameSize* frame)
{
    Description description = {{"name", format.name},
                               {"is", std::string("pixel format")},
                               {"value", static_cast<long long>(format.pixFmt)},
                               {"ffmpeg", Media::FFmpegNameOf(format.pixFmt)},
                               {"components", static_cast<long long>(format.components)},
                               {"flags", PixelFormatFlags(format.flags)},
                               {"colour range", ColorRangeName(format.colorRange)},
                               {"chroma divided by", std::vector<FrameSize>{{1LL << format.log2ChromaW,
                                                                             1LL << format.log2ChromaH}}}};
    if (frame != nullptr)
    {
        description.push_back({"planes", PlanesOf(format, *frame)});
    }
    return description;
}

Description ExplainSampleFormat(const std::string& name)
{
    const Conf::SampleFmtRecord& record = *Conf::SampleFmtRecord::Find(name);
    return {{"name", name},
            {"is", std::string("sample format")},
            {"value", static_cast<long long>(record.format)},
            {"ffmpeg", Media::FFmpegNameOf(record.format)},
            {"bits", static_cast<long long>(record.bitsPerSample)},
            {"planar", record.planar},
            {"counterpart", Conf::SampleFmtRecord::Find(record.counterpart)->textId}};
}

Description ExplainLayout(const std::string& name)
{
    const Conf::LayoutRecord& record = *Conf::LayoutRecord::Find(name);
    return {{"name", name},
            {"is", std::string("channel layout")},
            {"value", static_cast<long long>(record.layout)},
            {"ffmpeg", Media::FFmpegNameOf(record.layout)},
            {"channels", static_cast<long long>(record.channels)}};
}

/// Everything with that name, which a codec and a container may share.
std::vector<Description> Explain(const std::string& name, const FrameSize* frame)
{
    const std::string bare = BareName(name);
    const auto isMeant = [&](const std::string& known) { return BareName(known) == bare; };
    std::vector<Description> things;
    if (const CodecEntry* const codec = FindCodec(name))
    {
        things.push_back(ExplainCodec(*codec));
    }
    for (const std::string& format : ContainerNames())
    {
        if (isMeant(format))
        {
            things.push_back(ExplainContainer(format));
        }
    }
    for (const PixFmtDescription& format : PixFmtDescription::s_pixelFormatRecords)
    {
        if (isMeant(format.name))
        {
            things.push_back(ExplainPixelFormat(format, frame));
        }
    }
    for (const std::string& format : SampleFormatNames())
    {
        if (isMeant(format))
        {
            things.push_back(ExplainSampleFormat(format));
        }
    }
    for (const std::string& layout : LayoutNames())
    {
        if (isMeant(layout))
        {
            things.push_back(ExplainLayout(layout));
        }
    }
    return things;
}

std::string TextFor(const std::vector<Description>& things, const Painter& paint)
{
    constexpr std::size_t kIndent = 2;
    std::string text;
    for (const Description& description : things)
    {
        // The first two fields are the heading.
        text += (text.empty() ? "" : "\n") + paint(Style::Heading, FieldText(description[0].value)) + ": " +
                FieldText(description[1].value) + "\n" +
                LinesText(Description(description.begin() + 2, description.end()), kIndent, paint);
    }
    return text;
}

/// The container of that name, ignoring case.
std::string ContainerNamed(const std::string& name)
{
    const std::string bare = BareName(name);
    for (const std::string& known : ContainerNames())
    {
        if (BareName(known) == bare)
        {
            return known;
        }
    }
    ThrowUnknownName("container", name, ContainerNames());
}

std::string CodecNamed(const std::string& name)
{
    const CodecEntry* const codec = FindCodec(name);
    if (codec == nullptr)
    {
        ThrowUnknownName("codec", name, CodecNames());
    }
    return codec->id;
}

const char* AnswerText(Media::CodecSupport::Answer answer)
{
    switch (answer)
    {
    case Media::CodecSupport::No:
        return "no";
    case Media::CodecSupport::Yes:
        return "yes";
    case Media::CodecSupport::Unknown:
        break;
    }
    return "unknown";
}

int ExplainPair(const ExplainArguments& options)
{
    const Media::CodecSupport support =
        Media::ExplainCodecSupport(ContainerNamed(options.container), CodecNamed(options.codec));
    Description description = {{"container", support.container},
                               {"codec", support.codec},
                               {"held", std::string(AnswerText(support.isHeld))},
                               {"ffmpeg muxer", support.muxer},
                               {"ffmpeg encoder", support.encoder},
                               {"encoding disabled", support.isEncodingDisabled}};
    if (support.hasBitrateCurve)
    {
        description.push_back({"bitrate curve", *support.hasBitrateCurve});
    }
    description.push_back({"other codecs", support.codecs});
    description.push_back({"containers", support.containers});
    if (options.json)
    {
        description.push_back({"reasons", support.reasons});
        WriteJsonAnswer(description);
    }
    else
    {
        std::string text = LinesText(description, 0, Painter::ForStandardOutput());
        for (const std::string& reason : support.reasons)
        {
            text += Printable(reason) + "\n";
        }
        WriteText(text);
    }
    return support.reasons.empty() ? kExitSuccess : kExitNo;
}

int RunExplain(const ExplainArguments& options)
{
    const bool isPair = !options.container.empty() && !options.codec.empty();
    if (options.hasName == isPair || options.container.empty() != options.codec.empty())
    {
        throw ToolError("expected a NAME, or --container and --codec (see zconf explain --help)");
    }
    if (isPair)
    {
        return ExplainPair(options);
    }
    const FrameSize frame = options.size.empty() ? FrameSize{} : ParseFrameSize(options.size);
    const std::vector<Description> things = Explain(options.name, options.size.empty() ? nullptr : &frame);
    if (things.empty())
    {
        ThrowUnknownName("name", options.name, AllNames());
    }
    if (options.json)
    {
        WriteJsonAnswer(things);
    }
    else
    {
        WriteText(TextFor(things, Painter::ForStandardOutput()));
    }
    return kExitSuccess;
}

} // namespace

void AddExplainCommand(CLI::App& app)
{
    CLI::App* const command =
        AddCommand(app, "explain",
                   "Explain the name of a codec, container, pixel format, sample format or channel layout");
    const auto options = std::make_shared<ExplainArguments>();
    const CLI::Option* const name =
        command->add_option("NAME", options->name, "The name, ignoring case, with or without its prefix");
    command
        ->add_option("--container", options->container,
                     "With --codec: whether this container can hold the codec, FFmpeg can encode it and a "
                     "bitrate is calculated for it; exit code 1 with reasons, and what is near, if it cannot "
                     "be made")
        ->type_name("CONTAINER");
    command->add_option("--codec", options->codec, "The codec that --container is asked about")
        ->type_name("CODEC");
    command
        ->add_option("--size", options->size,
                     "Also show the plane sizes of a pixel format for frames of this size, such as 1920x1080")
        ->type_name("WIDTHxHEIGHT");
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options, name] {
        options->hasName = name->count() != 0;
        return RunExplain(*options);
    });
}

} // namespace Zelnor::Tool
