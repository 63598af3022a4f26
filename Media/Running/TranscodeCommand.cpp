#include "Media/Running/TranscodeCommand.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/Options/OptionRules.h"
#include "Media/Options/SettingRules.h"
#include "Media/Options/ValueNames.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/CoverTag.h"
#include "Media/Planning/EncoderCheck.h"
#include "Media/Planning/EncoderChoice.h"
#include "Media/Planning/VideoSettings.h"
#include "Media/Planning/WorkTags.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Probe/StreamKinds.h"
#include "Media/Running/CodecArguments.h"
#include "Media/Running/CodecSettings.h"
#include "Media/Running/FilterArguments.h"
#include "Media/Running/VideoFilters.h"
#include "Media/ValueText.h"

#include "Conf/Interfaces/IFormat.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Core::Property;

bool IsBitmapCodec(AVCodecID codec)
{
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_BITMAP_SUB) != 0;
}

std::string Scalar(const Property& value)
{
    return value.GetType() == PROPERTY_TYPE_INT64 ? std::to_string(value.GetInt64()) : value.GetString();
}

/// Frames are rotated when they are converted.
bool IsAboutSource(const std::string& tag) { return tag == IFormatFile::TAG_ROTATION; }

/// The texts and numbers of a group of metadata.
std::vector<std::string> Tags(const Property& metadata)
{
    std::vector<std::string> tags;
    for (const Property& tag : metadata)
    {
        const bool isText = tag.GetType() == PROPERTY_TYPE_STRING;
        if ((isText || tag.GetType() == PROPERTY_TYPE_INT64) && !IsAboutSource(tag.GetName()))
        {
            tags.push_back(tag.GetName() + "=" + Scalar(tag));
        }
    }
    return tags;
}

class StreamCommandMaker
{
public:
    StreamCommandMaker(const Transcode& transcode, const TranscodeStream& stream, bool isMuxerKnown,
                       FaultList& faults)
        : m_transcode(transcode), m_stream(stream), m_isMuxerKnown(isMuxerKnown), m_faults(faults)
    {}

    StreamCommand Make()
    {
        const MediaStream* const source = Source();
        CheckRecord(source);
        m_command.isCopied = IsCopied(m_stream.codec);
        m_codec = CheckSettings(m_stream.codec, m_command.isCopied, m_stream.place, m_faults);
        if (m_command.isCopied)
        {
            MakeCopied(source);
        }
        else
        {
            MakeEncoded(source);
        }
        AddAnalysis(source);
        AddTags();
        return std::move(m_command);
    }

private:
    void AddFault(JobFault::Kind kind, const std::string& reason)
    {
        m_faults.Add(kind, m_stream.place, reason);
    }

    /// Null when there is none; the reader of the job said why.
    const MediaStream* Source()
    {
        if (m_stream.input == TranscodeStream::kNoInput)
        {
            return nullptr;
        }
        const auto isThere = [this](unsigned int index) {
            return m_stream.input < m_transcode.inputs.size() &&
                   index < m_transcode.inputs[m_stream.input].streams.size();
        };
        if (!isThere(m_stream.stream) ||
            !std::all_of(m_stream.merged.begin(), m_stream.merged.end(), isThere))
        {
            AddFault(JobFault::Input, "there is no such input or stream");
            return nullptr;
        }
        m_command.input = m_stream.input;
        m_command.stream = m_stream.stream;
        return &m_transcode.SourceOf(m_stream);
    }

    void CheckRecord(const MediaStream* source)
    {
        const std::string& name = m_stream.codec.GetName();
        if (source == nullptr)
        {
            if (!IsConvertible(KindOfRecord(name)))
            {
                AddFault(JobFault::Structure, "expected the record of a codec, found '" + name + "'");
            }
        }
        else if (!IsConvertible(source->kind))
        {
            AddFault(JobFault::Structure, "such a stream cannot go into a target");
        }
        else if (name != *DescribeKind(source->kind).recordName)
        {
            AddFault(JobFault::Structure, "expected the record '" + *DescribeKind(source->kind).recordName +
                                              "', found '" + name + "'");
        }
    }

    void CheckContainer(AVCodecID codec)
    {
        if (m_isMuxerKnown && !MayHold(m_transcode.container, codec))
        {
            AddFault(JobFault::Container, CannotHoldText(m_transcode.container, codec));
        }
    }

    void MakeCopied(const MediaStream* source)
    {
        if (!m_stream.merged.empty())
        {
            AddFault(JobFault::Structure, "nothing can be merged into a stream that is copied");
        }
        if (source == nullptr)
        {
            return;
        }
        if (source->kind == StreamKind::Video && m_transcode.span.start > 0 && !m_transcode.SeeksInInputs())
        {
            AddFault(JobFault::Setting,
                     "a video that is copied from such a container can only begin with it");
        }
        const Property& facts = source->descriptor->GetProperty();
        const auto codec = facts.FindChild(IFormatCodec::TAG_CODEC_ID);
        if (codec != facts.end())
        {
            CheckContainer(CodecNumberOf(codec->GetString()));
        }
    }

    void MakeEncoded(const MediaStream* source)
    {
        const AVCodec* const encoder =
            m_faults.IsAt(m_stream.place.At(IFormatCodec::TAG_CODEC_ID))
                ? nullptr
                : EncoderFor(m_codec, m_transcode.container, m_stream.place, m_faults);
        if (encoder == nullptr || !CheckType(*encoder, source))
        {
            return;
        }
        CheckContainer(encoder->id);
        for (const EncoderFault& fault : FindEncoderFaults(m_codec, *encoder))
        {
            m_faults.Add(JobFault::Encoder, m_stream.place.At(fault.key), fault.reason);
        }
        m_command.options = EncodingOptions(m_codec, *encoder, m_stream.place, m_faults);
        m_command.hasTwoPasses = WantsTwoPasses(m_codec);
        if (source != nullptr && m_stream.merged.empty())
        {
            m_command.filters = StreamFilters(*source, m_codec, m_transcode.BeginsBetweenFrames());
        }
        else if (source != nullptr)
        {
            m_command.merge = MergeFilters(m_transcode, m_stream, m_codec, m_faults);
            m_command.filters = MergedFilters(*source, m_codec);
        }
        if (source != nullptr)
        {
            CheckFrames(*source);
            m_command.needsDurations = source->codec == "hdmv_pgs_subtitle";
        }
        m_command.isOneImage = encoder->type == AVMEDIA_TYPE_VIDEO && IsPicture(m_transcode.container);
    }

    /// What only the source and the record together say of a video's frames.
    void CheckFrames(const MediaStream& source)
    {
        if (source.kind != StreamKind::Video)
        {
            return;
        }
        std::string key;
        const std::string fault = FindColorFault(source, m_codec, key);
        if (!fault.empty())
        {
            m_faults.Add(JobFault::Setting, m_stream.place.At(key), fault);
        }
        if (source.isInterlaced && DeinterlacingIn(m_codec) == Deinterlacing::Keep)
        {
            KeepInterlaced(source);
        }
    }

    void KeepInterlaced(const MediaStream& source)
    {
        const Property& facts = source.descriptor->GetProperty();
        const auto rate = facts.FindChild(IFormatCodecVideo::TAG_FPS);
        const auto wanted = m_codec.FindChild(IFormatCodecVideo::TAG_FPS);
        if (rate != facts.end() && wanted != m_codec.end() && rate->GetRatio() != wanted->GetRatio())
        {
            m_faults.Add(JobFault::Setting, m_stream.place.At(JobKeys::kDeinterlace),
                         "interlaced frames keep the frame rate of their source, " + ValueText(*rate) +
                             "; found " + ValueText(*wanted));
        }
        AddInterlacedFlags(m_command.options);
    }

    /// Whether the encoder makes streams of the record's kind, from such a source.
    bool CheckType(const AVCodec& encoder, const MediaStream* source)
    {
        const StreamKind kind = KindOfRecord(m_codec.GetName());
        if (!IsConvertible(kind))
        {
            return false;
        }
        if (encoder.type != DescribeKind(kind).codecType)
        {
            m_faults.Add(JobFault::Encoder, m_stream.place.At(IFormatCodec::TAG_CODEC_ID),
                         std::string("expected a codec for ") + NameOf(kind) + ", found '" +
                             m_codec[IFormatCodec::TAG_CODEC_ID].GetString() + "'");
            return false;
        }
        if (source != nullptr && source->kind == StreamKind::Subtitle &&
            source->isBitmap != IsBitmapCodec(encoder.id))
        {
            m_faults.Add(JobFault::Encoder, m_stream.place.At(IFormatCodec::TAG_CODEC_ID),
                         source->isBitmap ? "a bitmap subtitle cannot become text"
                                          : "a text subtitle cannot become a bitmap subtitle");
            return false;
        }
        return true;
    }

    void AddAnalysis(const MediaStream* source)
    {
        const auto options = m_codec.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE);
        if (options == m_codec.end())
        {
            return;
        }
        const AVCodec* const decoder = source == nullptr ? nullptr : FindDecoder(source->codec);
        if (source != nullptr && decoder == nullptr && options->Count() != 0)
        {
            m_faults.Add(JobFault::Setting, m_stream.place.At(options->GetName()),
                         "the installed FFmpeg does not have a decoder for " + source->codec);
            return;
        }
        for (const Property& option : *options)
        {
            const CheckedOption checked = CheckDecoderOption(decoder, option.GetName(), option);
            if (checked.fault.empty())
            {
                m_command.analysis.emplace_back(option.GetName(), checked.value);
            }
            else
            {
                m_faults.Add(JobFault::Setting,
                             m_stream.place.At(options->GetName() + "." + option.GetName()), checked.fault);
            }
        }
    }

    void AddTags()
    {
        const auto metadata = m_codec.FindChild(IFormat::TAG_METADATA);
        if (metadata != m_codec.end())
        {
            m_command.metadata = Tags(*metadata);
        }
        const auto language = m_codec.FindChild(IFormatCodec::TAG_LANGUAGE);
        if (language != m_codec.end())
        {
            m_command.metadata.push_back("language=" + language->GetString());
        }
    }

    const Transcode& m_transcode;
    const TranscodeStream& m_stream;
    bool m_isMuxerKnown;
    FaultList& m_faults;
    StreamCommand m_command;
    Property m_codec;
};

/// Leaves the muxer empty where there is a fault.
void ChooseMuxer(const Transcode& transcode, TranscodeCommand& command, FaultList& faults)
{
    const Place place = transcode.place.At(IFormatFile::TAG_CONTAINER);
    const std::string& container = transcode.container;
    const AVOutputFormat* const muxer = HasNul(container) ? nullptr : FindMuxer(container);
    if (muxer != nullptr && IsOneFile(container))
    {
        command.muxer = muxer->name;
        command.isPicture = IsPicture(container);
        command.startsFast = CanStartFast(container);
    }
    else if (muxer != nullptr || !faults.IsAt(place))
    {
        const bool isMisspelt = muxer == nullptr;
        faults.Add(JobFault::Container, place,
                   CannotWriteText(container) +
                       (isMisspelt ? SuggestName(IFormatFile::TAG_CONTAINER, container) : ""));
    }
}

/// A stream is decoded once, whatever is made of it: two links to it must not ask for different decoding.
void UniteAnalysis(const Transcode& transcode, TranscodeCommand& command, FaultList& faults)
{
    std::map<std::tuple<std::size_t, unsigned int, std::string>, std::string> known;
    for (std::size_t i = 0; i < command.streams.size(); ++i)
    {
        StreamCommand& stream = command.streams[i];
        if (transcode.streams[i].input == TranscodeStream::kNoInput)
        {
            continue;
        }
        CodecOptions unique;
        for (const auto& [name, value] : stream.analysis)
        {
            const auto [other, isNew] = known.try_emplace({stream.input, stream.stream, name}, value);
            if (isNew)
            {
                unique.emplace_back(name, value);
            }
            else if (other->second != value)
            {
                faults.Add(
                    JobFault::Setting,
                    transcode.streams[i].place.At(IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE + "." + name),
                    "another link to the same stream asks for '" + other->second + "', this one for '" +
                        value + "'");
            }
        }
        stream.analysis = unique;
    }
}

/// Matroska needs a name and a type for each.
CarriedCommand MakeCarried(const Transcode& transcode, const CarriedStream& carried)
{
    const MediaStream& stream = transcode.inputs[carried.input].streams[carried.stream];
    CarriedCommand command = {carried.input, carried.stream, carried.form, {}};
    const bool isPng = stream.codec == "png";
    const auto add = [&command](const std::string& name, const std::string& text) {
        command.metadata.push_back(name + "=" + text);
    };
    if (carried.form == CarriedStream::CoverFile)
    {
        add("filename", isPng ? "cover.png" : "cover.jpg");
        add("mimetype", isPng ? "image/png" : "image/jpeg");
    }
    else if (carried.form == CarriedStream::Attachment)
    {
        add("filename",
            stream.fileName.empty() ? "attachment-" + std::to_string(stream.index) : stream.fileName);
        add("mimetype", stream.mimeType.empty() ? "application/octet-stream" : stream.mimeType);
    }
    for (const auto& [name, text] : WorkTagsOf(transcode.inputs[carried.input], stream))
    {
        if (FindTagFault(name, text).empty())
        {
            add(name, text);
        }
    }
    return command;
}

/// The chapters of the part of the sources that is read, as ffmpeg is given them.
std::vector<MediaChapter> ChaptersOf(const Transcode& transcode)
{
    const std::int64_t begin = transcode.span.start;
    // Where ffmpeg itself drops what comes before, it counts the chapters from there, too.
    const std::int64_t shift = transcode.SeeksInInputs() ? begin : 0;
    std::vector<MediaChapter> chapters;
    for (MediaChapter chapter : transcode.contents.chapters)
    {
        chapter.end = std::min(chapter.end, transcode.span.end.value_or(chapter.end));
        if (chapter.end > begin && (!transcode.span.end || chapter.start < *transcode.span.end))
        {
            chapter.start = std::max(chapter.start, begin) - shift;
            chapter.end -= shift;
            chapters.push_back(std::move(chapter));
        }
    }
    return chapters;
}

void AddContents(const Transcode& transcode, TranscodeCommand& command)
{
    for (const CarriedStream& carried : transcode.contents.carried)
    {
        if (carried.form == CarriedStream::CoverTag)
        {
            const MediaStream& cover = transcode.inputs[carried.input].streams[carried.stream];
            command.coverTag = std::string(kCoverTag) + "=" + CoverTagText(cover, cover.picture);
            continue;
        }
        command.carried.push_back(MakeCarried(transcode, carried));
    }
    command.chapters = ChaptersOf(transcode);
    if (!command.metadata.empty() || !command.chapters.empty() || !command.carried.empty())
    {
        command.muxerOptions = MuxerOptionsFor(transcode.container);
    }
}

} // namespace

TranscodeCommand MakeTranscodeCommand(const Transcode& transcode, FaultList& faults)
{
    TranscodeCommand command;
    for (const MediaFile& input : transcode.inputs)
    {
        // FFmpeg finds a demuxer by any of its names.
        command.inputs.push_back({input.name, input.demuxer.substr(0, input.demuxer.find(','))});
    }
    command.span = transcode.span;
    command.seeksInInputs = transcode.SeeksInInputs();
    ChooseMuxer(transcode, command, faults);
    command.metadata = Tags(CheckMetadata(transcode.target, transcode.place, faults));
    if (transcode.streams.empty() && !faults.IsAt(transcode.place))
    {
        faults.Add(JobFault::Structure, transcode.place, "a target needs at least one stream");
    }
    for (const TranscodeStream& stream : transcode.streams)
    {
        command.streams.push_back(
            StreamCommandMaker(transcode, stream, !command.muxer.empty(), faults).Make());
    }
    UniteAnalysis(transcode, command, faults);
    AddContents(transcode, command);
    return command;
}

} // namespace Zelnor::Media
