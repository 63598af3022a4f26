#include "Media/Probe/StreamDescription.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Probe/FrameRates.h"
#include "Media/Probe/VideoColors.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

/// FFmpeg's names of profiles that the vocabulary has a constant for.
struct ProfileRow
{
    AVCodecID codec;
    std::string_view name;
    const std::string* word;
};

const ProfileRow* FindProfile(AVCodecID codec, std::string_view name)
{
    static const ProfileRow s_names[] = {
        {AV_CODEC_ID_H264, "Baseline", &IFormatCodecVideo::TAG_X264_PROFILE_BASELINE},
        {AV_CODEC_ID_H264, "Constrained Baseline", &IFormatCodecVideo::TAG_X264_PROFILE_BASELINE},
        {AV_CODEC_ID_H264, "Main", &IFormatCodecVideo::TAG_X264_PROFILE_MAIN},
        {AV_CODEC_ID_H264, "High", &IFormatCodecVideo::TAG_X264_PROFILE_HIGH},
        {AV_CODEC_ID_H264, "High 10", &IFormatCodecVideo::TAG_X264_PROFILE_HIGH10},
        {AV_CODEC_ID_H264, "High 4:2:2", &IFormatCodecVideo::TAG_X264_PROFILE_HIGH422},
        {AV_CODEC_ID_H264, "High 4:4:4 Predictive", &IFormatCodecVideo::TAG_X264_PROFILE_HIGH444},
        {AV_CODEC_ID_MPEG4, "Simple Profile", &IFormatCodecVideo::TAG_MPEG4_PROFILE_SIMPLE},
        {AV_CODEC_ID_MPEG4, "Advanced Simple Profile", &IFormatCodecVideo::TAG_MPEG4_PROFILE_ADVANCED_SIMPLE},
        {AV_CODEC_ID_AAC, "Main", &IFormatCodecAudio::TAG_AAC_PROFILE_MAIN},
        {AV_CODEC_ID_AAC, "LC", &IFormatCodecAudio::TAG_AAC_PROFILE_LOW},
        {AV_CODEC_ID_AAC, "SSR", &IFormatCodecAudio::TAG_AAC_PROFILE_SSR},
        {AV_CODEC_ID_AAC, "LTP", &IFormatCodecAudio::TAG_AAC_PROFILE_LTP},
        {AV_CODEC_ID_AAC, "HE-AAC", &IFormatCodecAudio::TAG_AAC_PROFILE_HE},
        {AV_CODEC_ID_AAC, "HE-AACv2", &IFormatCodecAudio::TAG_AAC_PROFILE_HE_V2},
        {AV_CODEC_ID_AAC, "LD", &IFormatCodecAudio::TAG_AAC_PROFILE_LD},
        {AV_CODEC_ID_AAC, "ELD", &IFormatCodecAudio::TAG_AAC_PROFILE_ELD},
    };
    const auto* const found = std::find_if(std::begin(s_names), std::end(s_names), [&](const auto& row) {
        return row.codec == codec && row.name == name;
    });
    return found == std::end(s_names) ? nullptr : found;
}

unsigned int RotationOf(const AVStream& stream)
{
    const std::uint8_t* const matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix == nullptr)
    {
        return 0;
    }
    // FFmpeg counts counter-clockwise; an angle between quarters is rounded to the nearest one.
    const double quarters = -av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix)) / 90.0;
    if (!std::isfinite(quarters))
    {
        return 0;
    }
    const long turns = std::lround(quarters) % 4;
    return static_cast<unsigned int>((turns + 4) % 4) * 90U;
}

/// \param usual  where the codec does not say it
unsigned int BitsOf(const AVCodecParameters& codec, unsigned int usual)
{
    return codec.bits_per_raw_sample > 0 ? static_cast<unsigned int>(codec.bits_per_raw_sample) : usual;
}

void DescribeVideo(AVFormatContext& context, AVStream& stream, MediaStream& described)
{
    auto& video = dynamic_cast<IFormatCodecVideo&>(*described.descriptor);
    const AVCodecParameters& codec = *stream.codecpar;
    if (codec.width > 0 && codec.height > 0)
    {
        const AVRational aspect = av_guess_sample_aspect_ratio(&context, &stream, nullptr);
        const bool known = aspect.num > 0 && aspect.den > 0;
        video.InitByPixelAspect(static_cast<unsigned int>(codec.width),
                                static_cast<unsigned int>(codec.height),
                                known ? static_cast<unsigned int>(aspect.num) : 1,
                                known ? static_cast<unsigned int>(aspect.den) : 1);
    }
    else
    {
        described.notes.push_back("its size is not known");
    }
    const AVRational rate = FrameRateOf(context, stream);
    if (rate.num > 0)
    {
        video.SetFrameRate(static_cast<unsigned int>(rate.num), static_cast<unsigned int>(rate.den));
    }
    const auto pixelFormat = static_cast<AVPixelFormat>(codec.format);
    if (const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(pixelFormat))
    {
        described.pixelFormat = format->name;
        described.bitsPerSample = BitsOf(codec, static_cast<unsigned int>(format->comp[0].depth));
    }
    if (const auto known = FromFFmpeg(pixelFormat))
    {
        video.SetPixelFormat(*known);
    }
    else if (!described.pixelFormat.empty())
    {
        described.notes.push_back("the vocabulary has no pixel format for " + described.pixelFormat);
    }
    described.color = ColorOf(codec);
    described.hdr = HdrOf(stream);
    described.fieldOrder = FieldOrderName(codec.field_order);
    described.isInterlaced =
        codec.field_order != AV_FIELD_UNKNOWN && codec.field_order != AV_FIELD_PROGRESSIVE;
    described.rotation = RotationOf(stream);
    described.isAttachedPicture = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    const AVPacket& picture = stream.attached_pic;
    if (described.isAttachedPicture && picture.size > 0 &&
        static_cast<std::size_t>(picture.size) <= kLargestPicture)
    {
        described.picture.assign(reinterpret_cast<const char*>(picture.data),
                                 static_cast<std::size_t>(picture.size));
    }
}

std::string LayoutNameOf(const AVChannelLayout& layout)
{
    char name[128] = "";
    av_channel_layout_describe(&layout, name, sizeof name);
    return name;
}

void DescribeAudio(const AVStream& stream, MediaStream& described)
{
    auto& audio = dynamic_cast<IFormatCodecAudio&>(*described.descriptor);
    const AVCodecParameters& codec = *stream.codecpar;
    Property record = audio.GetProperty();
    described.channels = static_cast<unsigned int>(std::max(codec.ch_layout.nb_channels, 0));
    if (codec.sample_rate > 0)
    {
        record.SetChildT(IFormatCodecAudio::TAG_SAMPLE_RATE, static_cast<long long>(codec.sample_rate));
        audio.SetProperty(record);
    }
    else
    {
        described.notes.push_back("its sample rate is not known");
    }
    if (const char* const name = av_get_sample_fmt_name(static_cast<AVSampleFormat>(codec.format)))
    {
        described.sampleFormat = name;
    }
    described.bitsPerSample =
        BitsOf(codec, static_cast<unsigned int>(std::max(0, av_get_bits_per_sample(codec.codec_id))));
    if (const auto format = FromFFmpeg(static_cast<AVSampleFormat>(codec.format)))
    {
        audio.SetSampleFormat(*format);
    }
    else if (!described.sampleFormat.empty())
    {
        described.notes.push_back("the vocabulary has no sample format for " + described.sampleFormat);
    }
    if (const auto layout = FromFFmpeg(codec.ch_layout))
    {
        audio.SetChannelLayout(*layout);
    }
    else if (codec.ch_layout.nb_channels > 0)
    {
        described.notes.push_back("the vocabulary has no channel layout for " +
                                  LayoutNameOf(codec.ch_layout));
    }
}

std::optional<std::int64_t> StartOf(const AVStream& stream)
{
    const bool isKnown =
        stream.start_time != AV_NOPTS_VALUE && stream.time_base.num > 0 && stream.time_base.den > 0;
    return isKnown
               ? std::optional(av_rescale_q(stream.start_time, stream.time_base, AVRational{1, AV_TIME_BASE}))
               : std::nullopt;
}

void DescribeCodec(const AVCodecParameters& codec, MediaStream& described, Property& record)
{
    record.SetChildT(IFormatCodec::TAG_NAME, described.codec);
    if (const auto textId = CodecTextOf(codec.codec_id))
    {
        record.SetChildT(IFormatCodec::TAG_CODEC_ID, *textId);
    }
    else if (codec.codec_id != AV_CODEC_ID_NONE)
    {
        described.notes.push_back("the vocabulary has no identifier for the codec " + described.codec);
    }
    else
    {
        described.notes.push_back("FFmpeg knows no codec for it");
    }
    if (codec.codec_tag != 0)
    {
        char fourcc[AV_FOURCC_MAX_STRING_SIZE] = "";
        record.SetChildT(IFormatCodec::TAG_FOURCC,
                         std::string(av_fourcc_make_string(fourcc, codec.codec_tag)));
    }
    if (codec.bit_rate > 0)
    {
        record.SetChildT(IFormatCodec::TAG_BITRATE, static_cast<long long>(codec.bit_rate));
    }
    if (const char* const name = avcodec_profile_name(codec.codec_id, codec.profile))
    {
        described.profile = name;
        const ProfileRow* const profile = FindProfile(codec.codec_id, name);
        record.SetChildT(IFormatCodec::TAG_PROFILE, profile != nullptr ? *profile->word : std::string(name));
    }
}

std::vector<int> ProgramsOf(AVFormatContext& context, const AVStream& stream)
{
    std::vector<int> programs;
    AVProgram* program = nullptr;
    while ((program = av_find_program_from_stream(&context, program, stream.index)) != nullptr)
    {
        programs.push_back(program->id);
    }
    return programs;
}

void DescribeTags(const AVStream& stream, const MediaStream& described, Property& record)
{
    Property& metadata = record[Conf::IFormat::TAG_METADATA];
    AddTags(stream.metadata, metadata);
    if (described.rotation != 0)
    {
        metadata.SetChildT(Conf::IFormatFile::TAG_ROTATION, std::to_string(described.rotation));
    }
}

} // namespace

void AddTags(const AVDictionary* tags, Property& metadata)
{
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(tags, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr)
    {
        if (!metadata.ChildExists(tag->key))
        {
            metadata.SetChildT(tag->key, std::string(tag->value));
        }
    }
}

std::string TagOf(const AVDictionary* tags, const char* key)
{
    const AVDictionaryEntry* const tag = av_dict_get(tags, key, nullptr, 0);
    return tag == nullptr ? "" : tag->value;
}

std::optional<std::int64_t> Microseconds(std::int64_t count, AVRational base)
{
    if (count == AV_NOPTS_VALUE || count <= 0 || base.num <= 0 || base.den <= 0)
    {
        return std::nullopt;
    }
    return av_rescale_q(count, base, AVRational{1, AV_TIME_BASE});
}

std::vector<MediaChapter> ChaptersOf(const AVFormatContext& context)
{
    std::vector<MediaChapter> chapters;
    for (unsigned int i = 0; i < context.nb_chapters; ++i)
    {
        const AVChapter& chapter = *context.chapters[i];
        const auto time = [&chapter](std::int64_t count) {
            return Microseconds(count, chapter.time_base).value_or(0);
        };
        chapters.push_back({time(chapter.start), time(chapter.end), TagOf(chapter.metadata, "title")});
    }
    return chapters;
}

MediaStream DescribeStream(AVFormatContext& context, AVStream& stream)
{
    const AVCodecParameters& codec = *stream.codecpar;
    MediaStream described;
    described.index = static_cast<unsigned int>(stream.index);
    described.kind = KindOfCodecType(codec.codec_type);
    described.codec = avcodec_get_name(codec.codec_id);
    described.descriptor = MakeDescriptor(described.kind);
    described.isDefault = (stream.disposition & AV_DISPOSITION_DEFAULT) != 0;
    described.isForced = (stream.disposition & AV_DISPOSITION_FORCED) != 0;
    described.duration = Microseconds(stream.duration, stream.time_base);
    described.programs = ProgramsOf(context, stream);
    described.start = StartOf(stream);
    if (described.kind == StreamKind::Video)
    {
        DescribeVideo(context, stream, described);
    }
    else if (described.kind == StreamKind::Audio)
    {
        DescribeAudio(stream, described);
    }
    else if (const AVCodecDescriptor* const codecInfo = avcodec_descriptor_get(codec.codec_id))
    {
        described.isBitmap = (codecInfo->props & AV_CODEC_PROP_BITMAP_SUB) != 0;
    }
    described.timecode = TagOf(stream.metadata, "timecode");
    if (described.kind == StreamKind::Attachment)
    {
        described.fileName = TagOf(stream.metadata, "filename");
        described.mimeType = TagOf(stream.metadata, "mimetype");
    }
    Property record = described.descriptor->GetProperty();
    DescribeCodec(codec, described, record);
    DescribeTags(stream, described, record);
    described.descriptor->SetProperty(record);
    return described;
}

} // namespace Zelnor::Media
