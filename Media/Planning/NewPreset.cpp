#include "Media/Planning/NewPreset.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/MediaException.h"
#include "Media/Planning/CodecSupport.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Planning/PresetSupport.h"
#include "Media/Planning/SettingOverrides.h"
#include "Media/Planning/StreamPlan.h"
#include "Media/Presets/PresetNames.h"
#include "Media/Presets/PresetRules.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/PixelFormatDescription.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Conf::IPreset;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/NewPreset";

/// A profile that is an option of an encoder, for which the vocabulary has no word.
struct ProfileRow
{
    const char* codec;
    const char* profile; ///< FFmpeg's name
    const char* encoder; ///< null: the usual one
    const char* option;
};

constexpr ProfileRow kProfiles[] = {
    {"CODEC_ID_PRORES", "Proxy", "prores_ks", "proxy"},
    {"CODEC_ID_PRORES", "LT", "prores_ks", "lt"},
    {"CODEC_ID_PRORES", "Standard", "prores_ks", "standard"},
    {"CODEC_ID_PRORES", "HQ", "prores_ks", "hq"},
    {"CODEC_ID_DNXHD", "DNXHR LB", nullptr, "dnxhr_lb"},
    {"CODEC_ID_DNXHD", "DNXHR SQ", nullptr, "dnxhr_sq"},
    {"CODEC_ID_DNXHD", "DNXHR HQ", nullptr, "dnxhr_hq"},
    {"CODEC_ID_DNXHD", "DNXHR HQX", nullptr, "dnxhr_hqx"},
    {"CODEC_ID_DNXHD", "DNXHR 444", nullptr, "dnxhr_444"},
};

/// The stream that stands for those of its kind: the one that a player chooses by default, else the first.
const MediaStream* MainStream(const MediaFile& source, StreamKind kind)
{
    const MediaStream* main = nullptr;
    for (const MediaStream& stream : source.streams)
    {
        const bool isMeant = stream.kind == kind && !stream.isAttachedPicture && stream.descriptor != nullptr;
        if (isMeant && (main == nullptr || (stream.isDefault && !main->isDefault)))
        {
            main = &stream;
        }
    }
    return main;
}

/// Builds the preset of a file.
class PresetMaker
{
public:
    explicit PresetMaker(const MediaFile& source) : m_source(source)
    {
        m_video = MainStream(source, StreamKind::Video);
        m_audio = MainStream(source, StreamKind::Audio);
        if (m_video == nullptr && m_audio == nullptr)
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(Place{source.name},
                                                  "there is no video and no audio to make a preset of"));
        }
    }

    NewPreset Make(const std::string& name)
    {
        m_container = ChooseContainer();
        Property streams(IPreset::KEY_STREAMS);
        if (m_video != nullptr)
        {
            streams.Add(MakeVideo());
        }
        if (m_audio != nullptr)
        {
            streams.Add(MakeAudio());
        }
        for (const MediaStream& stream : m_source.streams)
        {
            const bool isSibling = (stream.kind == StreamKind::Video || stream.kind == StreamKind::Audio) &&
                                   !stream.isAttachedPicture && &stream != m_video && &stream != m_audio;
            if (isSibling)
            {
                Note(stream, "is not described; the preset has one stream of each type");
            }
        }
        NewPreset made = {Property(name)};
        made.record.SetChildT(IPreset::KEY_TYPE_ID, "format_" + m_container);
        made.record.SetChildT(IPreset::KEY_NAME, name);
        made.record.SetChildT(IPreset::KEY_ID, name);
        made.record.SetChildT(IFormatFile::TAG_CONTAINER, m_container);
        made.record.Add(streams);
        made.notes = std::move(m_notes);
        return made;
    }

private:
    void Note(const MediaStream& stream, const std::string& sentence)
    {
        m_notes.push_back(PlaceOf(m_source, stream).Text() + ": " + sentence);
    }

    std::string CodecOf(const MediaStream& stream) const
    {
        return TextUnder(stream.descriptor->GetProperty(), IFormatCodec::TAG_CODEC_ID);
    }

    /// The file's own, or what is nearest of those that can be written.
    std::string ChooseContainer()
    {
        const std::string own = m_source.descriptor == nullptr ? ""
                                                               : TextUnder(m_source.descriptor->GetProperty(),
                                                                           IFormatFile::TAG_CONTAINER);
        // FFmpeg demuxes a single image under names like "png_pipe".
        const std::size_t pipe = own.rfind("_pipe");
        if (pipe != std::string::npos)
        {
            return IsWritable(own.substr(0, pipe)) ? own.substr(0, pipe) : IFormatFile::FORMAT_IMAGE2;
        }
        if (IsWritable(own))
        {
            return own;
        }
        const MediaStream& main = m_video != nullptr ? *m_video : *m_audio;
        const std::string codec = CodecOf(main);
        const std::vector<std::string> containers =
            codec.empty() ? std::vector<std::string>()
                          : ExplainCodecSupport(IFormatFile::FORMAT_MATROSKA, codec).containers;
        const std::string instead = containers.empty() ? IFormatFile::FORMAT_MATROSKA : containers.front();
        m_notes.push_back(m_source.name + ": files like it (" + m_source.demuxer +
                          ") cannot be written; the preset makes " + instead);
        return instead;
    }

    static bool IsWritable(const std::string& container)
    {
        return Conf::IsContainer(container) && FindMuxer(container) != nullptr && IsOneFile(container);
    }

    /// A codec that can be made and that the container holds: the stream's own, or the nearest.
    std::string ChooseCodec(const MediaStream& stream, const std::string& usual)
    {
        const std::string own = CodecOf(stream);
        const CodecSupport support = ExplainCodecSupport(m_container, own.empty() ? usual : own);
        const bool isMade = support.isHeld != CodecSupport::No && !support.encoder.empty();
        if (!own.empty() && isMade)
        {
            return own;
        }
        if (!isMade && support.codecs.empty())
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>(PlaceOf(m_source, stream),
                                                         own.empty() || support.reasons.empty()
                                                             ? stream.codec + " cannot be encoded"
                                                             : support.reasons.front()));
        }
        const std::string instead = isMade ? usual : support.codecs.front();
        Note(stream, own.empty()
                         ? "presets do not know the codec " + stream.codec + "; the preset makes " + instead
                         : support.reasons.front() + " The preset makes " + instead);
        return instead;
    }

    Property Begin(const MediaStream& stream, const std::string& type, const std::string& usual)
    {
        Property made(type);
        const std::string codec = ChooseCodec(stream, usual);
        made.SetChildT(IFormatCodec::TAG_CODEC_ID, codec);
        const CodecSupport support = ExplainCodecSupport(m_container, codec);
        if (support.isEncodingDisabled)
        {
            made.SetChildT(IFormatCodec::TAG_PREFERREDIMPL, support.encoder);
        }
        if (codec == CodecOf(stream))
        {
            AddProfile(stream, codec, made);
            AddBitrate(stream, codec, made);
        }
        return made;
    }

    static AVCodecID CodecNumber(const std::string& codec)
    {
        const AVCodec* const encoder = FindEncoder(codec);
        return encoder == nullptr ? AV_CODEC_ID_NONE : encoder->id;
    }

    static void AddBitrate(const MediaStream& stream, const std::string& codec, Property& made)
    {
        if (!IsWithoutBitrate(CodecNumber(codec)))
        {
            Copy(stream, IFormatCodec::TAG_BITRATE, made);
        }
        if (codec == IFormatCodecVideo::CODEC_ID_DNXHD && made.ChildExists(IFormatCodec::TAG_BITRATE))
        {
            // DNxHD has a few nominal bitrates, which are named in round numbers; frames are a little larger.
            constexpr long long kSmall = 50000000;
            const long long bitrate = made[IFormatCodec::TAG_BITRATE].GetInt64();
            const long long step = bitrate < kSmall ? 1000000 : 5000000;
            made.SetChildT(IFormatCodec::TAG_BITRATE, (bitrate + step / 2) / step * step);
        }
    }

    static void AddProfile(const MediaStream& stream, const std::string& codec, Property& made)
    {
        const auto* const row =
            std::find_if(std::begin(kProfiles), std::end(kProfiles), [&](const ProfileRow& candidate) {
                return codec == candidate.codec && stream.profile == candidate.profile;
            });
        if (row == std::end(kProfiles))
        {
            // Of AAC's other profiles, FFmpeg's own encoder makes none that players want.
            const std::string word = TextUnder(stream.descriptor->GetProperty(), IFormatCodec::TAG_PROFILE);
            if (codec != IFormatCodecAudio::CODEC_ID_AAC || word == IFormatCodecAudio::TAG_AAC_PROFILE_LOW)
            {
                Copy(stream, IFormatCodec::TAG_PROFILE, made);
            }
            return;
        }
        if (row->encoder != nullptr)
        {
            made.SetChildT(IFormatCodec::TAG_PREFERREDIMPL, std::string(row->encoder));
        }
        Property options(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE);
        options.SetChildT(IFormatCodec::TAG_PROFILE, std::string(row->option));
        made.Add(options);
    }

    /// A value of the stream, if a preset may have it.
    static void Copy(const MediaStream& stream, const std::string& key, Property& made)
    {
        const Property& record = stream.descriptor->GetProperty();
        const auto value = record.FindChild(key);
        if (value != record.end() && FindStreamSettingFault(*value).empty())
        {
            made.SetChild(key, *value);
        }
    }

    Property MakeVideo()
    {
        Property made = Begin(*m_video, IPreset::STREAM_TYPE_VIDEO, IFormatCodecVideo::CODEC_ID_H264);
        for (const std::string* const key :
             {&IFormatCodecVideo::TAG_WIDTH, &IFormatCodecVideo::TAG_HEIGHT, &IFormatCodecVideo::TAG_ASPECTX,
              &IFormatCodecVideo::TAG_ASPECTY})
        {
            Copy(*m_video, *key, made);
        }
        if (!IsPicture(m_container))
        {
            Copy(*m_video, IFormatCodecVideo::TAG_FPS, made);
        }
        const unsigned int kHalfTurn = 180;
        if (m_video->rotation % kHalfTurn != 0)
        {
            Swap(IFormatCodecVideo::TAG_WIDTH, IFormatCodecVideo::TAG_HEIGHT, made);
            Swap(IFormatCodecVideo::TAG_ASPECTX, IFormatCodecVideo::TAG_ASPECTY, made);
        }
        AddPixelFormat(made);
        return made;
    }

    static void Swap(const std::string& one, const std::string& other, Property& made)
    {
        if (made.ChildExists(one) && made.ChildExists(other))
        {
            const long long first = made[one].GetInt64();
            made.SetChildT(one, made[other].GetInt64());
            made.SetChildT(other, first);
        }
    }

    /// By FFmpeg's name, which says more than the vocabulary's; nothing when the encoder does not have it.
    void AddPixelFormat(Property& made) const
    {
        const std::string preferred = TextUnder(made, IFormatCodec::TAG_PREFERREDIMPL);
        const AVCodec* const encoder = preferred.empty()
                                           ? FindEncoder(TextUnder(made, IFormatCodec::TAG_CODEC_ID))
                                           : avcodec_find_encoder_by_name(preferred.c_str());
        const AVPixelFormat format = av_get_pix_fmt(m_video->pixelFormat.c_str());
        if (encoder != nullptr && format != AV_PIX_FMT_NONE && Supports(*encoder, format))
        {
            made.SetChildT(JobKeys::kPixelFormat, m_video->pixelFormat);
        }
    }

    Property MakeAudio()
    {
        Property made = Begin(*m_audio, IPreset::STREAM_TYPE_AUDIO, IFormatCodecAudio::CODEC_ID_AAC);
        Copy(*m_audio, IFormatCodecAudio::TAG_SAMPLE_RATE, made);
        Copy(*m_audio, IFormatCodecAudio::TAG_LAYOUT, made);
        return made;
    }

    const MediaFile& m_source;
    const MediaStream* m_video = nullptr;
    const MediaStream* m_audio = nullptr;
    std::string m_container;
    std::vector<std::string> m_notes;
};

/// Pixel formats by their names, as people write them.
void NamePixelFormats(Property& preset)
{
    for (Property& stream : preset[IPreset::KEY_STREAMS])
    {
        if (!stream.ChildExists(Conf::TAG_PIX_FMT) ||
            stream[Conf::TAG_PIX_FMT].GetType() != PROPERTY_TYPE_INT64)
        {
            continue;
        }
        const auto& records = PixFmtDescription::s_pixelFormatRecords;
        const long long number = stream[Conf::TAG_PIX_FMT].GetInt64();
        const auto found = std::find_if(records.begin(), records.end(), [number](const auto& record) {
            return static_cast<long long>(record.pixFmt) == number;
        });
        if (found != records.end())
        {
            stream.SetChildT(Conf::TAG_PIX_FMT, std::string(found->name));
        }
    }
}

} // namespace

NewPreset MakePresetLike(const MediaFile& source, const std::string& name)
{
    return PresetMaker(source).Make(name);
}

NewPreset ChangePreset(const Property& preset, const std::string& name,
                       const std::vector<SettingOverride>& settings)
{
    JobRequest request;
    request.settings = settings;
    NewPreset made;
    const Property changed = ApplyOverrides(preset, request, made.notes);
    made.record = Property(name);
    for (const Property& child : changed)
    {
        made.record.Add(child);
    }
    const std::string container = TextUnder(changed, IFormatFile::TAG_CONTAINER);
    if (container != TextUnder(preset, IFormatFile::TAG_CONTAINER))
    {
        made.record.SetChildT(IPreset::KEY_TYPE_ID, "format_" + container);
    }
    made.record.SetChildT(IPreset::KEY_NAME, name);
    made.record.SetChildT(IPreset::KEY_ID, name);
    ResolveNames(made.record);
    CheckPreset(made.record);
    const std::vector<UnsupportedSetting> unsupported = FindUnsupportedSettings(made.record);
    if (!unsupported.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(unsupported.front().place, unsupported.front().reason));
    }
    NamePixelFormats(made.record);
    return made;
}

} // namespace Zelnor::Media
